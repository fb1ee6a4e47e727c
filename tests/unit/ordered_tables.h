/* What the tests of the ordered table share. */
#ifndef UVEL_TESTS_UNIT_ORDERED_TABLES_H
#define UVEL_TESTS_UNIT_ORDERED_TABLES_H

#include <uvelcommon_base/kivo_ordered_table.h>

#include <cstring>
#include <vector>

#include "kit.h"

namespace ordered_tables {

inline constexpr char SOURCE[] = "src/common/src/smi/kivo_srvcommon";
inline constexpr uint32_t NONE = 0xFFFFFFFF;
inline constexpr uint32_t MODULE = 0x00420000;

using U32 = std::vector<uint32_t>;

/* Its size is no power of two, so that a position in bytes is not taken for one in elements. */
struct Session {
    uint32_t id;
    uint32_t user;
    uint8_t state[4];

    bool operator==(const Session &other) const = default;
};
static_assert(sizeof(Session) == 12);

inline Session Make(uint32_t id) {
    return {id, id * 1000, {1, 2, 3, static_cast<uint8_t>(id)}};
}

inline int32_t ById(const void *element, const void *key) {
    const uint32_t id = static_cast<const Session *>(element)->id;
    const uint32_t wanted = *static_cast<const uint32_t *>(key);
    return (id > wanted) - (id < wanted);
}

inline U32 IdsOf(const SRVOT_TBL_S *table) {
    U32 ids;
    for (uint32_t i = 0; i < table->ulCount; ++i)
        ids.push_back(static_cast<const Session *>(table->pElmts)[i].id);
    return ids;
}

inline uint32_t Add(SRVOT_TBL_S *table, uint32_t id) {
    const Session session = Make(id);
    return SRVOT_AddElmt(table, &id, &session);
}

/* A table of sessions, released without loss. */
class Table : public testing::Test {
  protected:
    Table() { Create(100); }

    ~Table() override {
        if (tbl != nullptr)
            SRVOT_DeleteOTbl(&tbl);
        EXPECT_EQ(before, kit::LiveBlocks()) << "memory lost";
    }

    /* A new table, with sessions of these ids, the cursor before the first. */
    void Fill(uint32_t spec, const U32 &ids) {
        SRVOT_DeleteOTbl(&tbl);
        Create(spec);
        for (const uint32_t id : ids)
            ASSERT_EQ(0u, Add(tbl, id));
        tbl->ulCursor = NONE;
    }

    void Fill(const U32 &ids) { Fill(100, ids); }

    void *Find(uint32_t id) { return SRVOT_FindElmt(tbl, &id); }
    void *FindProx(uint32_t id) { return SRVOT_FindProxElmt(tbl, &id); }
    uint32_t RemoveByKey(uint32_t id) { return SRVOT_RemoveElmtByKey(tbl, &id); }
    U32 Ids() const { return IdsOf(tbl); }
    uint32_t Cursor() const { return tbl->ulCursor; }

    /* The id of an element, 0 for none. */
    static uint32_t IdOf(const void *element) {
        return element == nullptr ? 0 : static_cast<const Session *>(element)->id;
    }

    /* The element at a position of the array, wherever the cursor is. */
    Session *At(uint32_t index) const { return static_cast<Session *>(tbl->pElmts) + index; }

    const uint64_t before = kit::LiveBlocks();
    SRVOT_TBL_S *tbl = nullptr;

  private:
    void Create(uint32_t spec) {
        tbl = SRVOT_CreateNew(MODULE, sizeof(Session), spec, ById);
        ASSERT_NE(nullptr, tbl);
    }
};

} // namespace ordered_tables

#endif
