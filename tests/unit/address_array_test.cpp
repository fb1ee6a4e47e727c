// The address array: pointers to private copies of records, up to a fixed capacity.

#include "guarded_memory.h"

#include <uvelcommon_base/kivo_quicksort.h>

namespace {

constexpr char SOURCE[] = "src/common/src/smi/kivo_srvcommon";
constexpr uint32_t MODULE = 0x00420000;

using Released = std::vector<const void *>;

struct Record {
    uint32_t id;
    char name[8];
};

class AddressArray : public testing::Test {
  protected:
    ~AddressArray() override { SRVQS_AddrArrayFree(&array); }

    void Init(uint32_t capacity) { ASSERT_EQ(0u, SRVQS_AddrArrayInit(MODULE, &array, capacity)); }

    uint32_t Push(uint32_t id) {
        const Record record = {id, "record"};
        return SRVQS_PushDataToAddrArray(MODULE, &record, sizeof record, &array);
    }

    const Record *At(uint32_t index) const { return static_cast<const Record *>(array.ppEntries[index]); }

    GuardedMemory memory;
    SRVQS_ADDR_ARRAY_S array{};
};

TEST_F(AddressArray, BeginsWithEmptySlotsUpToItsCapacity) {
    array.ulCount = 99;
    Init(5);
    ASSERT_NE(nullptr, array.ppEntries);
    EXPECT_EQ(40u, memory.SizeOf(array.ppEntries));
    EXPECT_EQ(5u, array.ulCapacity);
    EXPECT_EQ(0u, array.ulCount);
    for (uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(nullptr, array.ppEntries[i]);
    EXPECT_STREQ(SOURCE, std::get<3>(kit::Op<QAL_MemAlloc_F>().Last()));
    EXPECT_NE(0u, std::get<4>(kit::Op<QAL_MemAlloc_F>().Last()));
}

TEST_F(AddressArray, OfCapacityZeroHasNoSlotsAndRefusesEveryPush) {
    array.ppEntries = reinterpret_cast<void **>(&array);
    Init(0);
    EXPECT_EQ(nullptr, array.ppEntries);
    EXPECT_EQ(0u, array.ulCapacity);
    EXPECT_EQ(0u, memory.Blocks());
    EXPECT_EQ(1u, Push(1));
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc_F>().Calls());
}

TEST_F(AddressArray, IsClearedWhenThereIsNoMemoryForIt) {
    array = {reinterpret_cast<void **>(&array), 3, 2};
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(1u, SRVQS_AddrArrayInit(MODULE, &array, 5));
    EXPECT_EQ(nullptr, array.ppEntries);
    EXPECT_EQ(0u, array.ulCapacity);
    EXPECT_EQ(0u, array.ulCount);
}

TEST_F(AddressArray, IsRefusedWhenItsSlotsExceedFourGigabytes) {
    /* 0x20000000 times 8 is 2^32, which is 0 in 32 bits. */
    for (const uint32_t capacity : {0x20000000u, 0x20000001u, 0xFFFFFFFFu}) {
        array = {reinterpret_cast<void **>(&array), 3, 2};
        EXPECT_EQ(1u, SRVQS_AddrArrayInit(MODULE, &array, capacity));
        EXPECT_EQ(nullptr, array.ppEntries);
        EXPECT_EQ(0u, array.ulCapacity);
    }
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc_F>().Calls());
}

TEST_F(AddressArray, NeedsARecord) {
    EXPECT_EQ(1u, SRVQS_AddrArrayInit(MODULE, nullptr, 5));
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc_F>().Calls());
}

TEST_F(AddressArray, KeepsCopiesInTheOrderOfThePushes) {
    Init(3);
    Record record = {7, "seven"};
    EXPECT_EQ(0u, SRVQS_PushDataToAddrArray(MODULE, &record, sizeof record, &array));
    record = {8, "eight"};
    EXPECT_EQ(0u, SRVQS_PushDataToAddrArray(MODULE, &record, sizeof record, &array));
    EXPECT_EQ(2u, array.ulCount);
    EXPECT_EQ(3u, array.ulCapacity);
    EXPECT_NE(&record, At(0));
    EXPECT_EQ(7u, At(0)->id);
    EXPECT_STREQ("seven", At(0)->name);
    EXPECT_EQ(8u, At(1)->id);
    EXPECT_EQ(nullptr, array.ppEntries[2]);
}

TEST_F(AddressArray, TakesDataOfAnyLength) {
    Init(3);
    const char text[] = "some text";
    for (const uint32_t length : {1u, 5u, 10u}) {
        EXPECT_EQ(0u, SRVQS_PushDataToAddrArray(MODULE, text, length, &array));
        const void *copy = array.ppEntries[array.ulCount - 1];
        EXPECT_EQ(length, memory.SizeOf(copy));
        EXPECT_EQ(0, std::memcmp(text, copy, length));
    }
}

TEST_F(AddressArray, ThatIsFullRefusesAPushAndAllocatesNothing) {
    Init(2);
    EXPECT_EQ(0u, Push(1));
    EXPECT_EQ(0u, Push(2));
    const uint64_t allocations = kit::Op<QAL_MemAlloc_F>().Calls();
    EXPECT_EQ(1u, Push(3));
    EXPECT_EQ(allocations, kit::Op<QAL_MemAlloc_F>().Calls());
    EXPECT_EQ(2u, array.ulCount);
    EXPECT_EQ(2u, At(1)->id);
}

TEST_F(AddressArray, RefusesAPushOfNothingOrToNothing) {
    Init(2);
    const Record record = {1, "one"};
    EXPECT_EQ(1u, SRVQS_PushDataToAddrArray(MODULE, nullptr, sizeof record, &array));
    EXPECT_EQ(1u, SRVQS_PushDataToAddrArray(MODULE, &record, 0, &array));
    EXPECT_EQ(1u, SRVQS_PushDataToAddrArray(MODULE, &record, sizeof record, nullptr));
    EXPECT_EQ(0u, array.ulCount);
    EXPECT_EQ(1u, memory.Blocks());
}

TEST_F(AddressArray, IsAsItWasWhenThereIsNoMemoryForAPush) {
    Init(2);
    EXPECT_EQ(0u, Push(1));
    kit::Op<QAL_MemAlloc_F>().FailsOn(1);
    EXPECT_EQ(1u, Push(2));
    EXPECT_EQ(1u, array.ulCount);
    EXPECT_EQ(nullptr, array.ppEntries[1]);
    EXPECT_EQ(0u, Push(3));
    EXPECT_EQ(3u, At(1)->id);
}

TEST_F(AddressArray, IsReleasedFromTheLastCopyToTheFirstAndThenItsSlots) {
    Init(4);
    Push(1);
    Push(2);
    Push(3);
    const Released expected = {array.ppEntries[2], array.ppEntries[1], array.ppEntries[0], array.ppEntries};
    SRVQS_AddrArrayFree(&array);
    EXPECT_EQ(expected, memory.Released());
}

TEST_F(AddressArray, KeepsItsCountAndCapacityWhenItIsReleasedAndTakesNoMorePushes) {
    Init(4);
    Push(1);
    SRVQS_AddrArrayFree(&array);
    EXPECT_EQ(nullptr, array.ppEntries);
    EXPECT_EQ(1u, array.ulCount);
    EXPECT_EQ(4u, array.ulCapacity);
    EXPECT_EQ(0u, memory.Blocks());
    EXPECT_EQ(1u, Push(2));
    EXPECT_EQ(0u, memory.Blocks());
}

TEST_F(AddressArray, IsReleasedOnlyOnce) {
    Init(4);
    Push(1);
    SRVQS_AddrArrayFree(&array);
    const uint64_t releases = kit::Op<QAL_MemFree_F>().Calls();
    SRVQS_AddrArrayFree(&array);
    SRVQS_AddrArrayFree(nullptr);
    EXPECT_EQ(releases, kit::Op<QAL_MemFree_F>().Calls());
}

TEST_F(AddressArray, MayBeMadeAnewAfterItsRelease) {
    Init(1);
    Push(1);
    SRVQS_AddrArrayFree(&array);
    Init(2);
    EXPECT_EQ(0u, Push(5));
    EXPECT_EQ(0u, Push(6));
    EXPECT_EQ(5u, At(0)->id);
    EXPECT_EQ(6u, At(1)->id);
}

int32_t ById(const void *a, const void *b) {
    const uint32_t x = static_cast<const Record *>(a)->id;
    const uint32_t y = static_cast<const Record *>(b)->id;
    return (x > y) - (x < y);
}

TEST_F(AddressArray, IsSortedByItsRecords) {
    Init(50);
    for (uint32_t i = 0; i < 40; ++i)
        ASSERT_EQ(0u, Push(i * 7 % 40));
    SRVQS_QuickSort(array.ppEntries, array.ulCount, ById);
    for (uint32_t i = 0; i < 40; ++i)
        EXPECT_EQ(i, At(i)->id);
    EXPECT_EQ(nullptr, array.ppEntries[40]);
}

/* What the pushes say they did is what the array holds, whichever of them had no memory. */
void UseAnArray() {
    SRVQS_ADDR_ARRAY_S array;
    if (SRVQS_AddrArrayInit(MODULE, &array, 4) != 0)
        return;
    std::vector<uint32_t> expected;
    for (uint32_t id = 1; id <= 5; ++id) {
        if (SRVQS_PushDataToAddrArray(MODULE, &id, sizeof id, &array) == 0)
            expected.push_back(id);
    }
    std::vector<uint32_t> held;
    for (uint32_t i = 0; i < array.ulCount; ++i)
        held.push_back(*static_cast<const uint32_t *>(array.ppEntries[i]));
    EXPECT_EQ(expected, held);
    SRVQS_AddrArrayFree(&array);
}

TEST(AddressArrayMemory, IsNotLostWhicheverAllocationFails) {
    UseAnArray(); // the account is open now, whichever test ran before
    /* The slots and four copies; each fails once, and with all that follow. */
    EXPECT_EQ(2 * (1 + 4), kit::SweepAllocations(UseAnArray, UseAnArray));
}

} // namespace
