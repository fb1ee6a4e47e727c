/* What the tests of the sorted link table share. */
#ifndef UVEL_TESTS_UNIT_LINK_TABLES_H
#define UVEL_TESTS_UNIT_LINK_TABLES_H

#include <uvelcommon_base/kivo_link_table.h>

#include <array>
#include <vector>

#include "kit.h"

namespace link_tables {

inline constexpr char SOURCE[] = "src/common/src/smi/kivo_srvcommon";
inline constexpr uint32_t NONE = 0xFFFFFFFF;
inline constexpr uint32_t MODULE = 0x00420000;

using U32 = std::vector<uint32_t>;

/* A null link stands for this id in the order, so that one can be stored, found and removed by its key. */
inline constexpr uint32_t NULL_ID = 25;

struct Session {
    uint32_t id;
    uint32_t user;
};

inline uint32_t IdOf(const void *link) {
    return link == nullptr ? NULL_ID : static_cast<const Session *>(link)->id;
}

inline int32_t ById(const void *link, const void *key) {
    const uint32_t id = IdOf(link);
    const uint32_t wanted = *static_cast<const uint32_t *>(key);
    return (id > wanted) - (id < wanted);
}

inline U32 IdsOf(const SRVSTL_TBL_S *table) {
    U32 ids;
    for (uint32_t i = 0; i < table->ulCount; ++i)
        ids.push_back(IdOf(table->ppLinks[i]));
    return ids;
}

/* A table of links to sessions that the fixture owns, released without loss. */
class Table : public testing::Test {
  protected:
    Table() {
        for (uint32_t id = 0; id < sessions.size(); ++id)
            sessions[id] = {id, id * 1000};
        Create(100);
    }

    ~Table() override {
        if (tbl != nullptr)
            SRVSTL_DeleteSTbl(&tbl, nullptr);
        EXPECT_EQ(before, kit::LiveBlocks()) << "memory lost";
    }

    /* A new table, with links to the sessions of these ids, the cursor before the first. */
    void Fill(uint32_t spec, const U32 &ids) {
        SRVSTL_DeleteSTbl(&tbl, nullptr);
        Create(spec);
        for (const uint32_t id : ids)
            ASSERT_EQ(0u, Set(id));
        tbl->ulCursor = NONE;
    }

    void Fill(const U32 &ids) { Fill(100, ids); }

    /* The session of this id; null for the id that a null link stands for. */
    Session *Link(uint32_t id) { return id == NULL_ID ? nullptr : &sessions[id]; }

    uint32_t Set(uint32_t id) { return SRVSTL_SetLink(tbl, &id, Link(id)); }
    uint32_t Remove(uint32_t id) { return SRVSTL_RemoveLink(tbl, &id); }
    void *Find(uint32_t id) { return SRVSTL_FindLink(tbl, &id); }
    void *FindProx(uint32_t id) { return SRVSTL_FindProxLink(tbl, &id); }
    U32 Ids() const { return IdsOf(tbl); }
    uint32_t Cursor() const { return tbl->ulCursor; }

    const uint64_t before = kit::LiveBlocks();
    std::array<Session, 2100> sessions;
    SRVSTL_TBL_S *tbl = nullptr;

  private:
    void Create(uint32_t spec) {
        tbl = SRVSTL_CreateNew(MODULE, spec, ById);
        ASSERT_NE(nullptr, tbl);
    }
};

} // namespace link_tables

#endif
