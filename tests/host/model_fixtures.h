/* What tests of the model share: a model that is empty at the start, batches that must succeed, usual objects. */
#ifndef UVEL_TESTS_HOST_MODEL_FIXTURES_H
#define UVEL_TESTS_HOST_MODEL_FIXTURES_H

#include <gtest/gtest.h>
#include <string>
#include <uvelhost/device.h>
#include <uvelhost/interface.h>
#include <uvelhost/ip.h>
#include <uvelhost/l2if.h>
#include <uvelhost/model.h>
#include <uvelhost/model_events.h>
#include <uvelhost/trunk.h>
#include <uvelhost/vrf.h>

constexpr uint32_t FEEDER = 7;
constexpr uint32_t UNTOUCHED = 0x5A5A5A5A;

/* Changes the model in one batch of the test's feeder. */
template <typename Change>
void InBatch(Change &&change, uint32_t feeder = FEEDER, uint32_t user = 0) {
    MDL_BATCH *batch = MDL_Begin(feeder, user);
    ASSERT_NE(nullptr, batch);
    change(batch);
    ASSERT_EQ(0u, MDL_Commit(batch));
}

inline MDL_IF_S Interface(uint32_t if_index, const std::string &name = "eth") {
    MDL_IF_S interface;
    MDL_InitIf(&interface, if_index, name.c_str());
    return interface;
}

inline void PutIf(const MDL_IF_S &interface) {
    InBatch([&](MDL_BATCH *batch) { ASSERT_EQ(0u, MDL_PutIf(batch, &interface)); });
}

inline MDL_BOARD_S Board(uint32_t slot, uint32_t role, uint32_t cpus = 1) {
    MDL_BOARD_S board = {};
    board.ulSlot = board.ulLocalSlot = slot;
    board.ulPhySlot = slot + 100;
    board.ulRole = role;
    board.ulPresent = board.ulRegistered = board.ulOnline = 1;
    board.ulCpuCount = cpus;
    board.ulFirstCpu = slot * MDL_MAX_CPUS;
    board.aulAddr[0] = 0x0A000000 + slot;
    return board;
}

class ModelTest : public testing::Test {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }

  private:
    static void Clear() {
        InBatch([](MDL_BATCH *batch) { ASSERT_EQ(0u, MDL_RemoveAll(batch)); });
        ASSERT_EQ(0u, MDL_Drain(10000));
    }
};

#endif
