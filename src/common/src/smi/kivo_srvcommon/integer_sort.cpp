#include <uvelcommon_base/kivo_array.h>

/* Positions are 64 bits wide inside, so that the ones beside a part and its length never overflow. */

/* Splits llLow..llHigh around its first element and returns where that ends up: what is not greater stands before it,
 * what is greater behind. The pivot is taken out and leaves a hole, which wanders as elements are moved into it. */
static int64_t Split(uint32_t *pulArray, int64_t llLow, int64_t llHigh) {
    const uint32_t ulPivot = pulArray[llLow];
    while (true) { /* the hole is at llLow */
        while (llHigh > llLow && pulArray[llHigh] > ulPivot)
            --llHigh;
        if (llHigh == llLow)
            break;
        pulArray[llLow++] = pulArray[llHigh]; /* the hole is at llHigh */
        while (llLow < llHigh && pulArray[llLow] <= ulPivot)
            ++llLow;
        if (llLow == llHigh)
            break;
        pulArray[llHigh--] = pulArray[llLow];
    }
    pulArray[llLow] = ulPivot;
    return llLow;
}

/* The parts do not overlap, so their order does not matter to the outcome. Recursing into the shorter one, which holds
 * less than half of the elements, bounds the depth by 32; always recursing into the left one would go as deep as there
 * are elements, when all of them are equal, and overflow the stack of a task. */
static void Sort(uint32_t *pulArray, int64_t llLow, int64_t llHigh) {
    while (llLow < llHigh) {
        const int64_t llPivot = Split(pulArray, llLow, llHigh);
        if (llPivot - llLow < llHigh - llPivot) {
            Sort(pulArray, llLow, llPivot - 1);
            llLow = llPivot + 1;
        } else {
            Sort(pulArray, llPivot + 1, llHigh);
            llHigh = llPivot - 1;
        }
    }
}

void UVEL_QuickSort(uint32_t *pulArray, int32_t lLow, int32_t lHigh) {
    if (pulArray != nullptr)
        Sort(pulArray, lLow, lHigh);
}
