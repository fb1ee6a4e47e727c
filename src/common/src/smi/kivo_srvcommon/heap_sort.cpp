#include "heap_sort.h"

#include <cstddef>

#include "pace.h"

/* Lets the entry at ulRoot sink into the heap below it, of ulCount entries in all: a hole goes down along the larger
 * children to the bottom, one comparison a level, and the entry rises from there, seldom far. */
static void Sink(void **ppHeap, size_t ulRoot, size_t ulCount, SRVQS_CMP_FUNC pfCompare, uint32_t *pulComparisons) {
    void *pEntry = ppHeap[ulRoot];
    size_t ulHole = ulRoot;
    while (ulHole * 2 + 1 < ulCount) {
        size_t ulChild = ulHole * 2 + 1;
        if (ulChild + 1 < ulCount) {
            Pace(pulComparisons);
            if (pfCompare(ppHeap[ulChild + 1], ppHeap[ulChild]) > 0)
                ++ulChild;
        }
        ppHeap[ulHole] = ppHeap[ulChild];
        ulHole = ulChild;
    }
    while (ulHole > ulRoot) {
        const size_t ulParent = (ulHole - 1) / 2;
        Pace(pulComparisons);
        if (pfCompare(pEntry, ppHeap[ulParent]) <= 0)
            break;
        ppHeap[ulHole] = ppHeap[ulParent];
        ulHole = ulParent;
    }
    ppHeap[ulHole] = pEntry;
}

void HeapSort(void **ppArray, uint32_t ulCount, SRVQS_CMP_FUNC pfCompare) {
    uint32_t ulComparisons = 0;
    for (size_t ulRoot = ulCount / 2; ulRoot-- > 0;)
        Sink(ppArray, ulRoot, ulCount, pfCompare, &ulComparisons);
    for (size_t ulLast = ulCount; ulLast-- > 1;) {
        SRVQS_InterChange(&ppArray[0], &ppArray[ulLast]);
        Sink(ppArray, 0, ulLast, pfCompare, &ulComparisons);
    }
}
