// The ordered table beside a naive model: contents, cursor and results are compared after every step.

#include "host/sanitizers.h"
#include "ordered_tables.h"
#include "random_walk.h"
#include "sorted_model.h"

namespace {

using namespace ordered_tables;

uint32_t IdOfSession(const Session &session) {
    return session.id;
}

class Model : public SortedModel<Session, IdOfSession> {
  public:
    using SortedModel::SortedModel;

    uint32_t RemoveAt(uint32_t index, bool memory) {
        if (index >= Count())
            return 5;
        if (Count() == 1) {
            RemoveAll();
            return 0;
        }
        if (!memory)
            return 2;
        items.erase(items.begin() + index);
        if (cursor >= index)
            --cursor;
        return 0;
    }

    uint32_t RemoveByKey(uint32_t id, bool memory) {
        if (!Has(id))
            return 5;
        if (memory || Count() == 1)
            cursor = Nearest(id);
        return RemoveAt(Nearest(id), memory);
    }
};

class OrderedTableBesideItsModel : public Table {
  protected:
    static constexpr uint32_t SPEC = 24;
    static constexpr uint32_t IDS = 40;

    void SetUp() override { Fill(SPEC, {}); }

    /* Expects the element at a position of the model, null for a position past the end. */
    void ExpectElement(uint32_t index, const void *element) const {
        const void *expected = index < model.Count() ? At(index) : nullptr;
        EXPECT_EQ(expected, element);
    }

    void Compare() const {
        ASSERT_EQ(model.Count(), tbl->ulCount);
        ASSERT_EQ(model.cursor, tbl->ulCursor);
        ASSERT_EQ(model.Count() == 0, tbl->pElmts == nullptr);
        ASSERT_TRUE(std::equal(model.items.begin(), model.items.end(), At(0)));
        ASSERT_EQ(SPEC, tbl->ulSpec);
    }

    void Insert() {
        const uint32_t id = random.Below(IDS);
        const Session session = {id, random.Below(1000), {1, 2, 3, 4}};
        const bool memory = Memory();
        EXPECT_EQ(model.Add(session, memory), SRVOT_AddElmt(tbl, &id, &session));
    }

    void Remove() {
        const bool memory = Memory();
        if (random.OnceIn(3)) {
            const uint32_t id = random.Below(IDS);
            EXPECT_EQ(model.RemoveByKey(id, memory), RemoveByKey(id));
        } else if (random.OnceIn(2)) {
            EXPECT_EQ(model.RemoveAt(model.cursor, memory), SRVOT_RemoveCurrElmt(tbl));
        } else if (model.Count() != 0) {
            const uint32_t index = random.Below(model.Count() + 2);
            EXPECT_EQ(model.RemoveAt(index, memory), SRVOT_RemoveNode(tbl, At(index)));
        }
        if (random.OnceIn(2000)) {
            model.RemoveAll();
            EXPECT_EQ(0u, SRVOT_RemoveAllElmt(tbl));
        }
    }

    void LookUp() {
        const uint32_t id = random.Below(IDS);
        if (random.OnceIn(2))
            ExpectElement(model.Has(id) ? model.GoTo(model.Nearest(id)) : NONE, Find(id));
        else
            ExpectElement(model.GoTo(model.Nearest(id)), FindProx(id));
    }

    void Step() {
        switch (random.Below(4)) {
        case 0:
            return ExpectElement(model.Next(), SRVOT_GetNextElmt(tbl));
        case 1:
            return ExpectElement(model.Previous(), SRVOT_GetPrevElmt(tbl));
        case 2:
            return ExpectElement(model.GoTo(0), SRVOT_GetFirstElmt(tbl));
        default:
            return ExpectElement(model.GoTo(model.Count() - 1), SRVOT_GetLastElmt(tbl));
        }
    }

    void Copy() {
        const uint32_t id = random.Below(IDS);
        Session copy{};
        uint32_t result = 0;
        uint32_t index = 0;
        if (random.OnceIn(2)) {
            index = model.GoTo(model.FirstAbove(id));
            result = SRVOT_GetNextNode(tbl, &id, &copy);
        } else {
            result = SRVOT_GetFirstNode(tbl, &copy);
        }
        EXPECT_EQ(index < model.Count() ? 0u : 1u, result);
        EXPECT_EQ(index < model.Count() ? model.items[index] : Session{}, copy);
    }

    void Ask() {
        const uint32_t index = random.Below(SPEC + 4);
        ExpectElement(index, SRVOT_GetElmt(tbl, index));
        ExpectElement(model.cursor, SRVOT_GetCurrElmt(tbl));
        EXPECT_EQ(model.cursor, SRVOT_GetCurrElmtIndex(tbl));
        EXPECT_EQ(model.Count(), SRVOT_GetCount(tbl));
        const uint32_t user = random.Below(1000);
        const SRVOT_COND_S condition = {4, &user, 4};
        uint32_t expected = index;
        while (expected < model.Count() && model.items[expected].user != user)
            ++expected;
        EXPECT_EQ(expected < model.Count() ? expected : NONE, SRVOT_FindElmtIdByConds(tbl, index, 1, &condition));
    }

    void DoSomething() {
        const uint32_t choice = random.Below(100);
        if (choice < 25)
            Insert();
        else if (choice < 48)
            Remove();
        else if (choice < 65)
            LookUp();
        else if (choice < 85)
            Step();
        else if (choice < 92)
            Copy();
        else
            Ask();
    }

    /* Whether there shall be memory for the next operation. */
    bool Memory() {
        const bool memory = !random.OnceIn(25);
        kit::Op<QAL_MemAlloc_F>().FailsOn(memory ? 0 : 1);
        return memory;
    }

    RandomWalk random{3101};
    Model model{SPEC};
};

/* A million; the sanitizers, which take fifteen times as long, get the first of them. */
TEST_F(OrderedTableBesideItsModel, StaysTheSameOverAMillionOperations) {
    for (uint32_t operation = 0; operation < (UNDER_SANITIZER ? 100000 : 1000000); ++operation) {
        DoSomething();
        Compare();
        if (HasFailure())
            FAIL() << "operation " << operation << " of seed " << random.Seed();
    }
}

} // namespace
