/* A plain quicksort by the rules of SRVQS_QuickSort, to compare the library's with comparison for comparison and pause
 * for pause. It defends itself against no input: descending arrays and others take it quadratically many comparisons. */
#ifndef UVEL_TESTS_UNIT_QUICKSORT_REFERENCE_H
#define UVEL_TESTS_UNIT_QUICKSORT_REFERENCE_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

class QuicksortReference {
  public:
    using Entries = std::vector<void *>;
    using Compare = std::function<int32_t(const void *, const void *)>;
    using Pause = std::function<void()>;

    QuicksortReference(Compare compare, Pause pause) : compare_(std::move(compare)), pause_(std::move(pause)) {}

    /* The most ranges that waited at one time in the last sort. */
    std::size_t deepest = 0;

    void Sort(Entries &entries) {
        deepest = 1;
        std::vector<Range> waiting = {{0, static_cast<int64_t>(entries.size()) - 1}};
        int64_t steps = 0;
        while (!waiting.empty()) {
            Range range = waiting.back();
            waiting.pop_back();
            CountOne(steps);
            while (range.hi - range.lo > 10) {
                const int64_t pivot = Split(entries, range);
                const Range left = {range.lo, pivot - 1};
                const Range right = {pivot + 1, range.hi};
                const bool right_waits = range.hi - pivot >= pivot - range.lo;
                waiting.push_back(right_waits ? right : left);
                deepest = std::max(deepest, waiting.size());
                range = right_waits ? left : right;
                CountOne(steps);
            }
            Insert(entries, range);
        }
    }

  private:
    struct Range {
        int64_t lo;
        int64_t hi;
    };

    static void *&At(Entries &entries, int64_t index) { return entries[static_cast<std::size_t>(index)]; }

    void CountOne(int64_t &count) {
        if (++count % 64 == 0)
            pause_();
    }

    void *&Median(void *&first, void *&middle, void *&last) {
        const bool turned = compare_(first, middle) >= 0;
        void *&smaller = turned ? middle : first;
        void *&larger = turned ? first : middle;
        if (compare_(last, smaller) <= 0)
            return smaller;
        return compare_(last, larger) > 0 ? larger : last;
    }

    int64_t Split(Entries &entries, const Range &range) {
        void *&first = At(entries, range.lo);
        std::swap(first, Median(first, At(entries, (range.lo + range.hi) / 2), At(entries, range.hi)));
        int64_t comparisons = 0;
        const auto order = [&](int64_t index) {
            CountOne(comparisons);
            return compare_(At(entries, index), first);
        };
        int64_t up = range.lo;
        int64_t down = range.hi + 1;
        while (true) {
            while (order(--down) > 0) {
            }
            while (order(++up) < 0) {
            }
            if (down <= up)
                break;
            std::swap(At(entries, up), At(entries, down));
        }
        std::swap(first, At(entries, down));
        return down;
    }

    void Insert(Entries &entries, const Range &range) {
        for (int64_t k = range.lo + 1; k <= range.hi; ++k) {
            for (int64_t j = k; j > range.lo && compare_(At(entries, j - 1), At(entries, j)) > 0; --j)
                std::swap(At(entries, j - 1), At(entries, j));
        }
    }

    Compare compare_;
    Pause pause_;
};

#endif
