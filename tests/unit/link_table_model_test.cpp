// The sorted link table beside a naive model: contents, cursor and results are compared after every step.

#include "host/sanitizers.h"
#include "link_tables.h"
#include "random_walk.h"
#include "sorted_model.h"

namespace {

using namespace link_tables;

uint32_t IdOfLink(const void *const &link) {
    return IdOf(link);
}

class Model : public SortedModel<const void *, IdOfLink> {
  public:
    using SortedModel::SortedModel;

    uint32_t Remove(uint32_t id, bool memory) {
        if (!Has(id))
            return 5;
        const uint32_t found = Nearest(id);
        const uint32_t walker = cursor;
        cursor = found;
        if (!memory && Count() > 1)
            return 2;
        Erase(found, walker >= found ? walker - 1 : walker);
        return 0;
    }

    uint32_t RemoveCurrent(bool memory) {
        if (cursor >= Count() || items[cursor] == nullptr)
            return 5;
        if (!memory && Count() > 1)
            return 2;
        Erase(cursor, cursor - 1);
        return 0;
    }

  private:
    void Erase(uint32_t index, uint32_t cursor_after) {
        items.erase(items.begin() + index);
        cursor = Count() == 0 ? NONE : cursor_after;
    }
};

U32 g_freed;

class LinkTableBesideItsModel : public Table {
  protected:
    static constexpr uint32_t SPEC = 24;
    static constexpr uint32_t IDS = 40;

    void SetUp() override { Fill(SPEC, {}); }

    /* Expects the link at a position of the model, null for a position past the end. */
    void ExpectLink(uint32_t index, const void *link) const {
        EXPECT_EQ(index < model.Count() ? model.items[index] : nullptr, link);
    }

    void Compare() const {
        ASSERT_EQ(model.Count(), tbl->ulCount);
        ASSERT_EQ(model.cursor, tbl->ulCursor);
        ASSERT_EQ(model.Count() == 0, tbl->ppLinks == nullptr);
        ASSERT_TRUE(std::equal(model.items.begin(), model.items.end(), tbl->ppLinks));
        ASSERT_EQ(SPEC, tbl->ulSpec);
    }

    void Insert() {
        const uint32_t id = random.Below(IDS);
        const bool memory = Memory();
        EXPECT_EQ(model.Add(Link(id), memory), Set(id));
    }

    void TakeOut() {
        const bool memory = Memory();
        if (random.OnceIn(2)) {
            const uint32_t id = random.Below(IDS);
            EXPECT_EQ(model.Remove(id, memory), Remove(id));
        } else {
            EXPECT_EQ(model.RemoveCurrent(memory), SRVSTL_RemoveCurr(tbl));
        }
    }

    void Empty() {
        U32 expected;
        for (uint32_t index = model.Count(); index-- > 0;)
            expected.push_back(IdOf(model.items[index]));
        g_freed.clear();
        EXPECT_EQ(0u, SRVSTL_RemoveAllLink(tbl, [](void *link) { g_freed.push_back(IdOf(link)); }));
        EXPECT_EQ(expected, g_freed);
        model.RemoveAll();
    }

    void LookUp() {
        const uint32_t id = random.Below(IDS);
        if (random.OnceIn(2))
            ExpectLink(model.Has(id) ? model.GoTo(model.Nearest(id)) : NONE, Find(id));
        else
            ExpectLink(model.GoTo(model.Nearest(id)), FindProx(id));
    }

    void Step() {
        switch (random.Below(4)) {
        case 0:
            return ExpectLink(model.Next(), SRVSTL_GetNextLink(tbl));
        case 1:
            return ExpectLink(model.Previous(), SRVSTL_GetPrevLink(tbl));
        case 2:
            return ExpectLink(model.GoTo(0), SRVSTL_GetFirstLink(tbl));
        default:
            return ExpectLink(model.GoTo(model.Count() - 1), SRVSTL_GetLastLink(tbl));
        }
    }

    void Ask() {
        const uint32_t index = random.Below(SPEC + 4);
        ExpectLink(index, SRVSTL_GetLink(tbl, index));
        ExpectLink(model.cursor, SRVSTL_GetCurrLink(tbl));
        EXPECT_EQ(model.Count(), SRVSTL_GetLinkCount(tbl));
    }

    void DoSomething() {
        const uint32_t choice = random.Below(100);
        if (choice < 28)
            Insert();
        else if (choice < 54)
            TakeOut();
        else if (choice < 72)
            LookUp();
        else if (choice < 92)
            Step();
        else if (random.OnceIn(100))
            Empty();
        else
            Ask();
    }

    /* Whether there shall be memory for the next operation. */
    bool Memory() {
        const bool memory = !random.OnceIn(25);
        kit::Op<QAL_MemAlloc_F>().FailsOn(memory ? 0 : 1);
        return memory;
    }

    RandomWalk random{3201};
    Model model{SPEC};
};

/* A million; the sanitizers, which take fifteen times as long, get the first of them. */
TEST_F(LinkTableBesideItsModel, StaysTheSameOverAMillionOperations) {
    for (uint32_t operation = 0; operation < (UNDER_SANITIZER ? 100000 : 1000000); ++operation) {
        DoSomething();
        Compare();
        if (HasFailure())
            FAIL() << "operation " << operation << " of seed " << random.Seed();
    }
}

} // namespace
