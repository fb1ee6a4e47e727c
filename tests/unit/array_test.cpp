#include <uvelcommon_base/kivo_array.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <sys/mman.h>
#include <vector>

#include "kit.h"

namespace {

constexpr char SOURCE[] = "src/common/src/smi/kivo_srvcommon";
constexpr uint32_t UNTOUCHED = 0xDEADBEEF;

using U32 = std::vector<uint32_t>;

/* Fills whole bytes, so that a comparison of bytes and one of values agree. */
struct Port {
    uint32_t index;
    uint16_t vlan;
    uint8_t mac[6];

    bool operator==(const Port &other) const = default;
};
static_assert(sizeof(Port) == 12);

constexpr Port FIRST{1, 10, {2, 0, 0, 0, 0, 1}};
constexpr Port SECOND{2, 20, {2, 0, 0, 0, 0, 2}};
constexpr Port THIRD{3, 30, {2, 0, 0, 0, 0, 3}};
constexpr Port NOTHING{};

TEST(ArrayFindU32, GivesTheFirstOfEqualElements) {
    const uint32_t array[] = {7, 9, 9, 7};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindElmtFromU32Array(array, 4, 9, &index));
    EXPECT_EQ(1u, index);
}

TEST(ArrayFindU32, FindsTheLastElementAndNothingBehindIt) {
    const uint32_t array[] = {1, 2, 0xFFFFFFFF};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindElmtFromU32Array(array, 2, 0xFFFFFFFF, &index));
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_EQ(0u, SRVAR_FindElmtFromU32Array(array, 3, 0xFFFFFFFF, &index));
    EXPECT_EQ(2u, index);
}

TEST(ArrayFindU32, OfNoElementsLooksAtNothing) {
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindElmtFromU32Array(nullptr, 0, 0, &index));
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_EQ(1u, SRVAR_FindElmtFromU32Array(nullptr, 0, 0, nullptr));
}

TEST(ArrayFindU16, GivesTheFirstOfEqualElements) {
    const uint16_t array[] = {4095, 1, 0, 1};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindElmtFromU16Array(array, 4, 1, &index));
    EXPECT_EQ(1u, index);
    EXPECT_EQ(0u, SRVAR_FindElmtFromU16Array(array, 4, 4095, &index));
    EXPECT_EQ(0u, index);
}

TEST(ArrayFindU16, LeavesTheIndexAloneWhenNothingMatches) {
    const uint16_t array[] = {1, 2};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindElmtFromU16Array(array, 2, 3, &index));
    EXPECT_EQ(1u, SRVAR_FindElmtFromU16Array(nullptr, 0, 1, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArrayFindMin, GivesTheFirstOfTheSmallest) {
    const uint32_t array[] = {5, 3, 3};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindMinElmtFromU32Array(array, 3, &index));
    EXPECT_EQ(1u, index);
}

TEST(ArrayFindMin, ComparesUnsigned) {
    const uint32_t array[] = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindMinElmtFromU32Array(array, 3, &index));
    EXPECT_EQ(2u, index);
}

TEST(ArrayFindMin, OfOneElementIsThatElement) {
    const uint32_t array[] = {0xFFFFFFFF};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindMinElmtFromU32Array(array, 1, &index));
    EXPECT_EQ(0u, index);
}

TEST(ArrayFindMin, OfNoElementsLooksAtNothing) {
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindMinElmtFromU32Array(nullptr, 0, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArrayFindNext, GivesTheFirstOfTheSmallestGreaterElements) {
    const uint32_t array[] = {4, 9, 6, 6};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindNextSmallElmtFromU32Array(array, 4, 4, &index));
    EXPECT_EQ(2u, index);
}

TEST(ArrayFindNext, FindsNothingAboveTheGreatest) {
    const uint32_t array[] = {4, 9, 6, 6};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindNextSmallElmtFromU32Array(array, 4, 9, &index));
    EXPECT_EQ(1u, SRVAR_FindNextSmallElmtFromU32Array(array, 4, 0xFFFFFFFF, &index));
    EXPECT_EQ(1u, SRVAR_FindNextSmallElmtFromU32Array(nullptr, 0, 0, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArrayFindNext, AcceptsAValueThatIsNotInTheArray) {
    const uint32_t array[] = {0xFFFFFFFF, 0x80000001, 0x80000000};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindNextSmallElmtFromU32Array(array, 3, 0x7FFFFFFF, &index));
    EXPECT_EQ(2u, index);
    EXPECT_EQ(0u, SRVAR_FindNextSmallElmtFromU32Array(array, 3, 0x80000001, &index));
    EXPECT_EQ(0u, index);
}

TEST(ArrayFindNext, AfterTheMinimumWalksEveryValueOnceInAscendingOrder) {
    const uint32_t seed = 3303;
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        U32 array(1 + random() % 40);
        for (uint32_t &value : array)
            value = static_cast<uint32_t>(random() % 25);
        U32 expected = array;
        std::sort(expected.begin(), expected.end());
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());

        U32 walked;
        const uint32_t count = static_cast<uint32_t>(array.size());
        uint32_t index = 0;
        uint32_t result = SRVAR_FindMinElmtFromU32Array(array.data(), count, &index);
        while (result == 0 && walked.size() <= array.size()) {
            EXPECT_EQ(std::find(array.begin(), array.end(), array[index]) - array.begin(), index);
            walked.push_back(array[index]);
            result = SRVAR_FindNextSmallElmtFromU32Array(array.data(), count, array[index], &index);
        }
        ASSERT_EQ(expected, walked) << "seed " << seed << ", round " << round;
    }
}

uint32_t SameVlan(const void *element, const void *key) {
    return static_cast<const Port *>(element)->vlan == *static_cast<const uint16_t *>(key) ? 1 : 0;
}

TEST(ArraySearchByKey, GivesTheFirstElementThatMatches) {
    const Port ports[] = {FIRST, SECOND, THIRD, SECOND};
    const uint16_t vlan = 20;
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_SearchElmtByKey(ports, 4, sizeof(Port), &vlan, SameVlan, &index));
    EXPECT_EQ(1u, index);
}

TEST(ArraySearchByKey, LeavesTheIndexAloneWhenNothingMatches) {
    const Port ports[] = {FIRST, SECOND, THIRD};
    const uint16_t vlan = 30;
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(ports, 2, sizeof(Port), &vlan, SameVlan, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArraySearchByKey, TakesOnlyTheValueOneForAMatch) {
    const uint32_t array[] = {0, 2, 0xFFFFFFFF, 0x101, 1, 1};
    const auto itself = [](const void *element, const void *) { return *static_cast<const uint32_t *>(element); };
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(array, 4, 4, array, itself, &index));
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_EQ(0u, SRVAR_SearchElmtByKey(array, 6, 4, array, itself, &index));
    EXPECT_EQ(4u, index);
}

TEST(ArraySearchByKey, HandsTheCallbackTheElementAndTheKeyAsTheyAre) {
    static std::vector<std::pair<const void *, const void *>> asked;
    asked.clear();
    const Port ports[] = {FIRST, SECOND};
    const uint16_t vlan = 1;
    uint32_t index = UNTOUCHED;
    const auto record = [](const void *element, const void *key) {
        asked.emplace_back(element, key);
        return 0U;
    };
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(ports, 2, sizeof(Port), &vlan, record, &index));
    const std::vector<std::pair<const void *, const void *>> expected = {{&ports[0], &vlan}, {&ports[1], &vlan}};
    EXPECT_EQ(expected, asked);
}

TEST(ArraySearchByKey, StopsAskingAtTheFirstMatch) {
    static int asked;
    asked = 0;
    const uint32_t array[] = {1, 2, 3};
    uint32_t index = UNTOUCHED;
    const auto second = [](const void *, const void *) { return ++asked == 2 ? 1U : 0U; };
    EXPECT_EQ(0u, SRVAR_SearchElmtByKey(array, 3, 4, array, second, &index));
    EXPECT_EQ(1u, index);
    EXPECT_EQ(2, asked);
}

TEST(ArraySearchByKey, MayBeCalledFromTheCallbackItself) {
    const uint32_t outer[] = {3, 1};
    const uint32_t key = 1;
    uint32_t index = UNTOUCHED;
    const auto inner = [](const void *element, const void *wanted) {
        const auto equal = [](const void *a, const void *b) { return std::memcmp(a, b, 4) == 0 ? 1U : 0U; };
        uint32_t unused = 0;
        return SRVAR_SearchElmtByKey(element, 1, 4, wanted, equal, &unused) == 0 ? 1U : 0U;
    };
    EXPECT_EQ(0u, SRVAR_SearchElmtByKey(outer, 2, 4, &key, inner, &index));
    EXPECT_EQ(1u, index);
}

TEST(ArraySearchByKey, RefusesNullPointersAndAsksNothingOfNoElements) {
    const uint32_t array[] = {1};
    uint32_t index = UNTOUCHED;
    const auto always = [](const void *, const void *) { return 1U; };
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(nullptr, 1, 4, array, always, &index));
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(array, 1, 4, nullptr, always, &index));
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(array, 1, 4, array, always, nullptr));
    EXPECT_EQ(1u, SRVAR_SearchElmtByKey(array, 0, 4, array, nullptr, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArrayFindIndex, ComparesAllBytesOfAnElement) {
    Port almost = SECOND;
    almost.mac[5] ^= 1;
    const Port ports[] = {FIRST, almost, SECOND, SECOND};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindElmtIndex(ports, 4, sizeof(Port), &SECOND, &index));
    EXPECT_EQ(2u, index);
}

TEST(ArrayFindIndex, ComparesNoByteBeyondTheElementSize) {
    const uint8_t array[] = {1, 2, 9, 3, 4, 9};
    const uint8_t key[] = {3, 4, 7};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindElmtIndex(array, 2, 3, key, &index));
    EXPECT_EQ(UNTOUCHED, index);
    EXPECT_EQ(0u, SRVAR_FindElmtIndex(array + 1, 2, 2, key, &index)); // {2, 9}, {3, 4}
    EXPECT_EQ(1u, index);
}

TEST(ArrayFindIndex, RefusesNullPointersAndNoElements) {
    const uint32_t array[] = {1};
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(1u, SRVAR_FindElmtIndex(nullptr, 1, 4, array, &index));
    EXPECT_EQ(1u, SRVAR_FindElmtIndex(array, 1, 4, nullptr, &index));
    EXPECT_EQ(1u, SRVAR_FindElmtIndex(array, 1, 4, array, nullptr));
    EXPECT_EQ(1u, SRVAR_FindElmtIndex(array, 0, 4, array, &index));
    EXPECT_EQ(UNTOUCHED, index);
}

TEST(ArrayFindIndex, FindsElementsOfNoBytesEqual) {
    const uint32_t array[] = {1};
    const uint32_t key = 2;
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindElmtIndex(array, 1, 0, &key, &index));
    EXPECT_EQ(0u, index);
}

TEST(ArrayInsert, CopiesTheElementBehindTheLastOne) {
    std::array<Port, 3> ports = {FIRST, NOTHING, THIRD};
    SRVAR_InsertElmtIntail(ports.data(), 1, sizeof(Port), &SECOND);
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, THIRD}), ports);
}

TEST(ArrayInsert, FillsAnEmptyArrayAtItsBeginning) {
    std::array<Port, 2> ports = {NOTHING, THIRD};
    SRVAR_InsertElmtIntail(ports.data(), 0, sizeof(Port), &FIRST);
    EXPECT_EQ((std::array<Port, 2>{FIRST, THIRD}), ports);
}

TEST(ArrayInsert, DoesNothingForANullArray) {
    SRVAR_InsertElmtIntail(nullptr, 1, sizeof(Port), &FIRST);
    SRVAR_InsertElmtIntail(nullptr, 0, 0, nullptr);
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

TEST(ArrayInsert, ReachesSlotsBeyondFourGigabytes) {
    constexpr uint32_t SIZE = 0x10000;
    constexpr uint32_t COUNT = 0x10001; // 2^32 bytes and one element more
    constexpr std::size_t ROOM = (std::size_t{COUNT} + 1) * SIZE;
    void *room = mmap(nullptr, ROOM, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, room);
    std::vector<uint8_t> element(SIZE, 0xA5);
    SRVAR_InsertElmtIntail(room, COUNT, SIZE, element.data());
    EXPECT_EQ(0, std::memcmp(static_cast<uint8_t *>(room) + 0x100010000, element.data(), SIZE));
    uint32_t index = UNTOUCHED;
    EXPECT_EQ(0u, SRVAR_FindElmtIndex(room, COUNT + 1, SIZE, element.data(), &index));
    EXPECT_EQ(COUNT, index);
    munmap(room, ROOM);
}

TEST(ArrayInsert, AssertsWhenTheCopyCannotBeMade) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    SRVAR_InsertElmtIntail(ports.data(), 1, sizeof(Port), nullptr);
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ((std::array<Port, 3>{FIRST, NOTHING, THIRD}), ports);
    SRVAR_InsertElmtIntail(ports.data(), 1, 0, &FIRST);
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ((std::array<Port, 3>{FIRST, NOTHING, THIRD}), ports);
}

TEST(ArrayRemove, MovesTheLaterElementsDownAndClearsTheFreedSlot) {
    std::array<Port, 4> ports = {FIRST, SECOND, THIRD, FIRST};
    EXPECT_EQ(0u, SRVAR_RemoveElmt(ports.data(), 3, sizeof(Port), &FIRST));
    EXPECT_EQ((std::array<Port, 4>{SECOND, THIRD, NOTHING, FIRST}), ports);
}

TEST(ArrayRemove, TakesTheFirstOfEqualElements) {
    std::array<Port, 4> ports = {SECOND, FIRST, SECOND, THIRD};
    EXPECT_EQ(0u, SRVAR_RemoveElmt(ports.data(), 4, sizeof(Port), &SECOND));
    EXPECT_EQ((std::array<Port, 4>{FIRST, SECOND, THIRD, NOTHING}), ports);
}

TEST(ArrayRemove, ClearsTheLastElement) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    EXPECT_EQ(0u, SRVAR_RemoveElmt(ports.data(), 3, sizeof(Port), &THIRD));
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, NOTHING}), ports);
}

TEST(ArrayRemove, ClearsTheOnlyElement) {
    Port port = FIRST;
    EXPECT_EQ(0u, SRVAR_RemoveElmt(&port, 1, sizeof(Port), &FIRST));
    EXPECT_EQ(NOTHING, port);
}

TEST(ArrayRemove, AcceptsAKeyInsideTheArray) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    EXPECT_EQ(0u, SRVAR_RemoveElmt(ports.data(), 3, sizeof(Port), &ports[1]));
    EXPECT_EQ((std::array<Port, 3>{FIRST, THIRD, NOTHING}), ports);
}

TEST(ArrayRemove, ChangesNothingWhenTheElementIsNotThere) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    EXPECT_EQ(1u, SRVAR_RemoveElmt(ports.data(), 2, sizeof(Port), &THIRD));
    EXPECT_EQ(1u, SRVAR_RemoveElmt(ports.data(), 0, sizeof(Port), &FIRST));
    EXPECT_EQ(1u, SRVAR_RemoveElmt(ports.data(), 3, sizeof(Port), nullptr));
    EXPECT_EQ(1u, SRVAR_RemoveElmt(nullptr, 3, sizeof(Port), &FIRST));
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, THIRD}), ports);
}

TEST(ArrayRemove, AssertsForEveryCopyThatCannotBeMadeAndGoesOn) {
    uint32_t array[] = {1, 2, 3};
    EXPECT_EQ(0u, SRVAR_RemoveElmt(array, 3, 0, array)); // elements of no bytes: two refused copies
    EXPECT_EQ((kit::Sources{SOURCE, SOURCE}), kit::TakeAsserts());
    EXPECT_EQ(1u, array[0]);
    EXPECT_EQ(2u, array[1]);
    EXPECT_EQ(3u, array[2]);
}

TEST(ArrayRemoveSwapping, FillsTheGapWithTheLastElementAndClearsItsSlot) {
    std::array<Port, 4> ports = {FIRST, SECOND, THIRD, FIRST};
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(ports.data(), 3, sizeof(Port), &FIRST));
    EXPECT_EQ((std::array<Port, 4>{THIRD, SECOND, NOTHING, FIRST}), ports);
}

TEST(ArrayRemoveSwapping, LeavesTheBytesOfTheLastElementWhenItIsTheOneRemoved) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(ports.data(), 3, sizeof(Port), &THIRD));
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, THIRD}), ports);
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(ports.data(), 1, sizeof(Port), &FIRST));
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, THIRD}), ports);
}

TEST(ArrayRemoveSwapping, TakesTheFirstOfEqualElements) {
    std::array<Port, 4> ports = {SECOND, FIRST, SECOND, THIRD};
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(ports.data(), 4, sizeof(Port), &SECOND));
    EXPECT_EQ((std::array<Port, 4>{THIRD, FIRST, SECOND, NOTHING}), ports);
}

TEST(ArrayRemoveSwapping, ChangesNothingWhenTheElementIsNotThere) {
    std::array<Port, 3> ports = {FIRST, SECOND, THIRD};
    EXPECT_EQ(1u, SRVAR_RemoveElmt_Sw(ports.data(), 2, sizeof(Port), &THIRD));
    EXPECT_EQ(1u, SRVAR_RemoveElmt_Sw(ports.data(), 0, sizeof(Port), &FIRST));
    EXPECT_EQ(1u, SRVAR_RemoveElmt_Sw(ports.data(), 3, sizeof(Port), nullptr));
    EXPECT_EQ(1u, SRVAR_RemoveElmt_Sw(nullptr, 3, sizeof(Port), &FIRST));
    EXPECT_EQ((std::array<Port, 3>{FIRST, SECOND, THIRD}), ports);
}

TEST(ArrayRemoveSwapping, AssertsWhenTheCopyCannotBeMade) {
    uint32_t array[] = {1, 2, 3};
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(array, 3, 0, array));
    EXPECT_EQ(kit::Sources{SOURCE}, kit::TakeAsserts());
    EXPECT_EQ(0u, SRVAR_RemoveElmt_Sw(array, 1, 0, array)); // the last one: nothing is copied
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
}

/* Appends and removals of both kinds against a vector; what lies behind the elements is part of the comparison. */
TEST(ArrayMaintenance, AgreesWithAVectorOverRandomOperations) {
    const uint32_t seed = 3300;
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        U32 array(20, 0xA5A5A5A5);
        U32 model = array;
        uint32_t count = 0;
        for (int step = 0; step < 60; ++step) {
            const uint32_t value = static_cast<uint32_t>(random() % 12);
            const auto end = model.begin() + count;
            const auto found = std::find(model.begin(), end, value);
            const uint32_t result = found == end ? 1 : 0;
            const uint32_t what = static_cast<uint32_t>(random() % 4);
            if (what < 2 && count < 20) {
                SRVAR_InsertElmtIntail(array.data(), count, 4, &value);
                model[count++] = value;
            } else if (what == 2) {
                ASSERT_EQ(result, SRVAR_RemoveElmt(array.data(), count, 4, &value));
                if (result == 0) {
                    std::rotate(found, found + 1, end);
                    model[--count] = 0;
                }
            } else {
                ASSERT_EQ(result, SRVAR_RemoveElmt_Sw(array.data(), count, 4, &value));
                if (result == 0 && found != end - 1) {
                    *found = *(end - 1);
                    *(end - 1) = 0;
                }
                count -= result == 0 ? 1 : 0;
            }
            ASSERT_EQ(model, array) << "seed " << seed << ", round " << round << ", step " << step;
        }
    }
}

TEST(MemCmp, TellsEqualFromDifferentBytes) {
    int32_t result = 77;
    EXPECT_EQ(0u, KIVO_MemCmp("abcd", "abcx", 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(0u, KIVO_MemCmp("abcd", "abcx", 4, &result));
    EXPECT_GT(0, result);
    EXPECT_EQ(0u, KIVO_MemCmp("\xFF", "\x01", 1, &result));
    EXPECT_LT(0, result);
}

TEST(MemCmp, OfNoBytesIsEqual) {
    int32_t result = 77;
    EXPECT_EQ(0u, KIVO_MemCmp("a", "b", 0, &result));
    EXPECT_EQ(0, result);
}

TEST(MemCmp, PassesOnWhatTheHostSays) {
    const char a[] = "same";
    const char b[] = "same";
    int32_t result = 77;
    kit::Op<QAL_MemCmp>().Returns(-123);
    EXPECT_EQ(0u, KIVO_MemCmp(a, b, 4, &result));
    EXPECT_EQ(-123, result);
    EXPECT_EQ(1u, kit::Op<QAL_MemCmp>().Calls());
    EXPECT_EQ((std::tuple<const void *, const void *, uint32_t>{a, b, 4}), kit::Op<QAL_MemCmp>().Last());
}

TEST(MemCmp, RefusesNullPointersAndLeavesTheResultAlone) {
    int32_t result = 77;
    EXPECT_EQ(1u, KIVO_MemCmp(nullptr, "a", 1, &result));
    EXPECT_EQ(1u, KIVO_MemCmp("a", nullptr, 1, &result));
    EXPECT_EQ(1u, KIVO_MemCmp("a", "a", 1, nullptr));
    EXPECT_EQ(1u, KIVO_MemCmp(nullptr, nullptr, 0, &result));
    EXPECT_EQ(77, result);
    EXPECT_EQ(0u, kit::Op<QAL_MemCmp>().Calls());
}

} // namespace
