// Ordered tables, link tables and address arrays, each beside a plain model of what it holds.

#include "../scenario.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_quicksort.h>

namespace {

constexpr uint32_t MODULE = 0x00770000;
constexpr uint32_t COUNT = 300;

/* Keys in no order; all below COUNT, each once. */
uint32_t Shuffled(uint32_t i) {
    return i * 77 % COUNT;
}

using Keys = std::set<uint32_t>;

/* Whether a step that may lack memory did its work. */
bool Done(uint32_t result, bool faultless) {
    EXPECT_TRUE(result == 0 || (!faultless && result == 2)) << "result " << result;
    return result == 0;
}

struct Record {
    uint32_t key;
    uint32_t twice;
};

int32_t ByKey(const void *record, const void *key) {
    const uint32_t a = static_cast<const Record *>(record)->key;
    const uint32_t b = *static_cast<const uint32_t *>(key);
    return (a > b) - (a < b);
}

class OrderedTable : public sweeps::Scenario {
    void Operate(bool faultless) override {
        SRVOT_TBL_S *table = SRVOT_CreateNew(MODULE, sizeof(Record), COUNT, ByKey);
        EXPECT_TRUE(table != nullptr || !faultless);
        if (table == nullptr)
            return;
        Keys keys;
        for (uint32_t i = 0; i < COUNT; ++i) {
            const Record record{Shuffled(i), Shuffled(i) * 2};
            if (Done(SRVOT_AddElmt(table, &record.key, &record), faultless))
                keys.insert(record.key);
            ExpectCount(table, keys);
        }
        ExpectHolds(table, keys);
        for (uint32_t i = 0; i < COUNT; i += 3)
            RemoveByKey(table, keys, Shuffled(i), faultless);
        ExpectHolds(table, keys);
        RemoveSome(table, keys, faultless);
        ExpectHolds(table, keys);
        EXPECT_EQ(0u, SRVOT_DeleteOTbl(&table));
    }

    static void RemoveByKey(SRVOT_TBL_S *table, Keys &keys, uint32_t key, bool faultless) {
        const uint32_t cursor = SRVOT_GetCurrElmtIndex(table);
        const uint32_t result = SRVOT_RemoveElmtByKey(table, &key);
        if (!keys.contains(key)) {
            EXPECT_EQ(5u, result);
        } else if (Done(result, faultless)) {
            keys.erase(key);
        } else {
            EXPECT_EQ(cursor, SRVOT_GetCurrElmtIndex(table));
        }
        ExpectCount(table, keys);
    }

    /* Every other element of a walk, in turns as the current one and by its address. */
    static void RemoveSome(SRVOT_TBL_S *table, Keys &keys, bool faultless) {
        uint32_t step = 0;
        for (void *p = SRVOT_GetFirstElmt(table); p != nullptr; p = SRVOT_GetNextElmt(table), ++step) {
            const uint32_t key = static_cast<const Record *>(p)->key;
            if (step % 2 == 0)
                continue;
            if (Done(step % 4 == 1 ? SRVOT_RemoveCurrElmt(table) : SRVOT_RemoveNode(table, p), faultless))
                keys.erase(key);
            ExpectCount(table, keys);
        }
    }

    static void ExpectCount(const SRVOT_TBL_S *table, const Keys &keys) {
        ASSERT_EQ(keys.size(), SRVOT_GetCount(table));
    }

    static void ExpectHolds(const SRVOT_TBL_S *table, const Keys &keys) {
        uint32_t index = 0;
        for (const uint32_t key : keys) {
            const auto *record = static_cast<const Record *>(SRVOT_GetElmt(table, index++));
            ASSERT_NE(nullptr, record);
            ASSERT_EQ(key, record->key);
            ASSERT_EQ(key * 2, record->twice);
        }
        ASSERT_EQ(index, SRVOT_GetCount(table));
    }
};

class LinkTable : public sweeps::Scenario {
    void Operate(bool faultless) override {
        for (uint32_t key = 0; key < COUNT; ++key)
            records_[key] = {key, 0};
        SRVSTL_TBL_S *table = SRVSTL_CreateNew(MODULE, COUNT, ByKey);
        EXPECT_TRUE(table != nullptr || !faultless);
        if (table == nullptr)
            return;
        Keys keys;
        for (uint32_t i = 0; i < COUNT; ++i) {
            const uint32_t key = Shuffled(i);
            if (Done(SRVSTL_SetLink(table, &key, &records_[key]), faultless))
                keys.insert(key);
            ASSERT_EQ(keys.size(), SRVSTL_GetLinkCount(table));
        }
        ExpectHolds(table, keys);
        for (uint32_t i = 0; i < COUNT; i += 3) {
            const uint32_t key = Shuffled(i);
            const uint32_t result = SRVSTL_RemoveLink(table, &key);
            if (!keys.contains(key)) {
                EXPECT_EQ(5u, result);
            } else if (Done(result, faultless)) {
                keys.erase(key);
            }
        }
        ExpectHolds(table, keys);
        for (const void *p = SRVSTL_GetFirstLink(table); p != nullptr; p = SRVSTL_GetNextLink(table)) {
            const uint32_t key = static_cast<const Record *>(p)->key;
            if (key % 2 == 0 && Done(SRVSTL_RemoveCurr(table), faultless))
                keys.erase(key);
        }
        ExpectHolds(table, keys);
        EXPECT_EQ(0u, SRVSTL_DeleteSTbl(&table, nullptr));
    }

    void ExpectHolds(const SRVSTL_TBL_S *table, const Keys &keys) const {
        uint32_t index = 0;
        for (const uint32_t key : keys)
            ASSERT_EQ(&records_[key], SRVSTL_GetLink(table, index++));
        ASSERT_EQ(index, SRVSTL_GetLinkCount(table));
    }

    Record records_[COUNT];
};

class AddressArray : public sweeps::Scenario {
    void Operate(bool faultless) override {
        SRVQS_ADDR_ARRAY_S array;
        std::memset(&array, 0xEE, sizeof array);
        const uint32_t result = SRVQS_AddrArrayInit(MODULE, &array, COUNT);
        EXPECT_TRUE(result == 0 || (!faultless && result == 1));
        EXPECT_EQ(0u, array.ulCount);
        EXPECT_EQ(result == 0 ? COUNT : 0, array.ulCapacity);
        std::vector<uint32_t> pushed;
        for (uint32_t i = 0; i < COUNT; ++i) {
            const uint32_t outcome = SRVQS_PushDataToAddrArray(MODULE, &i, sizeof i, &array);
            EXPECT_TRUE(outcome == 0 || (!faultless && outcome == 1));
            if (outcome == 0)
                pushed.push_back(i);
            ASSERT_EQ(pushed.size(), array.ulCount);
        }
        for (uint32_t i = 0; i < pushed.size(); ++i)
            ASSERT_EQ(0, std::memcmp(&pushed[i], array.ppEntries[i], sizeof pushed[i]));
        SRVQS_AddrArrayFree(&array);
    }
};

const bool g_added[] = {
    sweeps::Add<OrderedTable>("ordered_table"),
    sweeps::Add<LinkTable>("link_table"),
    sweeps::Add<AddressArray>("address_array"),
};

} // namespace
