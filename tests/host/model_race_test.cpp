/* Readers against a feeder without pause. Under ThreadSanitizer every access is checked; everywhere a reader must only
 * see states that were published. */
#include "model_fixtures.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <random>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <uvelhost/model_view.h>
#include <vector>

namespace {

using HostModelRace = ModelTest;

constexpr uint32_t INTERFACES = 300;
constexpr auto DURATION = std::chrono::milliseconds(300);

void RunReaders(const std::function<void()> &read, const std::function<void(uint32_t)> &change) {
    std::atomic<bool> stop = false;
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            while (!stop)
                read();
        });
    const auto end = std::chrono::steady_clock::now() + DURATION;
    for (uint32_t round = 1; std::chrono::steady_clock::now() < end; ++round)
        change(round);
    stop = true;
    for (std::thread &reader : readers)
        reader.join();
}

/* Makes the system call fail as it does on kernels that do not know it. */
void ForbidMembarrier() {
    sock_filter refuse[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_membarrier, 0, 1),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program = {std::size(refuse), refuse};
    ASSERT_EQ(0, prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0));
    ASSERT_EQ(0, prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program));
}

} // namespace

TEST_F(HostModelRace, AReaderNeverSeesHalfAChange) {
    const auto put = [](uint32_t round) {
        InBatch([&](MDL_BATCH *batch) {
            for (uint32_t i = 1; i <= 3; ++i) {
                MDL_IF_S interface = Interface(round % INTERFACES + i);
                interface.ulPortType = interface.ulPhyType = round;
                EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
            }
        });
    };
    std::atomic<uint64_t> seen = 0;
    RunReaders(
        [&] {
            for (uint32_t i = 1; i <= INTERFACES; ++i) {
                const IF_IFNET_S *record = IF_GetIfByIndex(i);
                if (record == nullptr)
                    continue;
                ASSERT_EQ(record->ulPortType, record->ulPhyType);
                ++seen;
            }
        },
        put);
    EXPECT_LT(0u, seen);
}

TEST_F(HostModelRace, NoAnswerIsOlderThanTheOneBefore) {
    constexpr uint32_t MAIN = 1, SUB = 2;
    const auto put = [](uint32_t round) {
        InBatch([&](MDL_BATCH *batch) {
            for (uint32_t if_index : {MAIN, SUB}) {
                MDL_IF_S interface = Interface(if_index);
                interface.ulMainIfIndex = MAIN;
                interface.ulPortType = round;
                EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
            }
        });
    };
    put(0);
    RunReaders(
        [] {
            uint32_t last = 0;
            for (int i = 0; i < 100; ++i) {
                const IF_IFNET_S *sub = IF_FindFirstSubIfnet(MAIN); /* walks through the whole model */
                ASSERT_NE(nullptr, sub);
                ASSERT_LE(last, sub->ulPortType);
                last = sub->ulPortType;
                uint32_t type = 0; /* asks for the one interface */
                ASSERT_EQ(0u, BDS_IfnetGetPortType(MAIN, &type));
                ASSERT_LE(last, type);
                last = type;
            }
        },
        put);
}

TEST_F(HostModelRace, ReadersAreSafeAlsoWhereTheKernelDoesNotHelpThem) {
    std::thread([] {
        ForbidMembarrier(); /* to this thread and those that it begins */
        for (uint32_t i = 1; i <= 10; ++i)
            PutIf(Interface(i));
        RunReaders(
            [] {
                for (uint32_t i = 1; i <= 10; ++i) {
                    const IF_IFNET_S *record = IF_GetIfByIndex(i);
                    ASSERT_NE(nullptr, record);
                    ASSERT_EQ(i, record->ulIfIndex);
                    ASSERT_EQ(record->ulPortType, record->ulPhyType);
                }
            },
            [](uint32_t round) {
                MDL_IF_S interface = Interface(round % 10 + 1);
                interface.ulPortType = interface.ulPhyType = round;
                PutIf(interface);
            });
    }).join();
}

TEST_F(HostModelRace, WhatComesAndGoesIsThereWholeOrNotAtAll) {
    RunReaders(
        [] {
            uint32_t members[4], count = 4, is_trunk = 0, index = 0;
            if (BDS_TrunkGetTrunkMem(0, members, &count) == 0) {
                ASSERT_TRUE(count == 0 || count == 2) << count;
            }
            BDS_TrunkGetTrunkIndex(7, &is_trunk, &index);
            char name[VRF_NAME_SIZE];
            uint32_t vrf;
            for (uint32_t result = L3VPN_GetFirstVrfIdAndVrfName(&vrf, name); result == 0;
                 result = L3VPN_GetNextVrfIdAndVrfName(&vrf, name))
                ASSERT_EQ("vrf" + std::to_string(vrf), name);
            L3VPN_ScanVrfIdAndVrfNameFinish();
        },
        [](uint32_t round) {
            InBatch([&](MDL_BATCH *batch) {
                const MDL_TRUNK_S trunk = {0, 50, 100};
                const uint32_t vrf_index = round % 100;
                MDL_VRF_S vrf = {vrf_index, 1, 1, 1, {}};
                std::snprintf(vrf.szName, sizeof vrf.szName, "vrf%u", vrf_index);
                if (round % 2 == 0) {
                    EXPECT_EQ(0u, MDL_RemoveTrunk(batch, 50));
                    EXPECT_EQ(0u, MDL_RemoveVrf(batch, (round + 37) % 100));
                    return;
                }
                EXPECT_EQ(0u, MDL_PutTrunk(batch, &trunk));
                for (uint32_t if_index : {7u, 8u}) {
                    const MDL_MEMBER_S member = {if_index, 50, 1};
                    EXPECT_EQ(0u, MDL_PutMember(batch, &member));
                }
                EXPECT_EQ(0u, MDL_PutVrf(batch, &vrf));
            });
        });
}

TEST_F(HostModelRace, GivenUpBatchesAreNeverSeen) {
    for (uint32_t i = 1; i <= 10; ++i)
        PutIf(Interface(i));
    RunReaders(
        [] {
            for (uint32_t i = 1; i <= 10; ++i) {
                const IF_IFNET_S *record = IF_GetIfByIndex(i);
                ASSERT_NE(nullptr, record);
                ASSERT_EQ(0u, record->ulPortType);
            }
        },
        [](uint32_t round) {
            MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
            MDL_IF_S interface = Interface(round % 10 + 1);
            interface.ulPortType = 1;
            EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
            EXPECT_EQ(0u, MDL_RemoveIf(batch, (round + 5) % 10 + 1));
            MDL_Abort(batch);
            if (round % 8 == 0)
                PutIf(Interface(round % 10 + 1, "x" + std::to_string(round)));
        });
}

TEST_F(HostModelRace, FeedersTakeTurns) {
    constexpr uint32_t EACH = 200;
    std::vector<std::thread> feeders;
    for (uint32_t feeder = 1; feeder <= 4; ++feeder)
        feeders.emplace_back([feeder] {
            for (uint32_t i = 0; i < EACH; ++i)
                InBatch(
                    [&](MDL_BATCH *batch) {
                        const MDL_IF_S interface = Interface(feeder * 1000 + i);
                        EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
                    },
                    feeder);
        });
    for (std::thread &feeder : feeders)
        feeder.join();
    uint32_t count = 0;
    MDL_IF_S interface;
    for (uint32_t next = 0; MDL_NextIf(next, &interface) == 0; next = interface.ulIfIndex + 1)
        ++count;
    EXPECT_EQ(4 * EACH, count);
}

TEST_F(HostModelRace, TheMapIsANaiveMapUnderAnyChanges) {
    const uint32_t seed = 20251121;
    std::mt19937 random(seed);
    std::map<uint32_t, uint32_t> expected;
    for (int round = 0; round < 60; ++round) {
        const std::map<uint32_t, uint32_t> before = expected;
        MDL_BATCH *batch = MDL_Begin(FEEDER, 0);
        for (int i = 0; i < 100; ++i) {
            const auto if_index = static_cast<uint32_t>(random() % 700 + 1);
            if (random() % (round < 30 ? 4 : 2) == 0) {
                EXPECT_EQ(0u, MDL_RemoveIf(batch, if_index));
                expected.erase(if_index);
                continue;
            }
            MDL_IF_S interface = Interface(if_index);
            interface.ulPortType = static_cast<uint32_t>(random());
            EXPECT_EQ(0u, MDL_PutIf(batch, &interface));
            expected[if_index] = interface.ulPortType;
        }
        if (random() % 3 == 0) {
            MDL_Abort(batch);
            expected = before;
        } else {
            EXPECT_EQ(0u, MDL_Commit(batch));
        }
        std::map<uint32_t, uint32_t> seen;
        MDL_IF_S interface;
        for (uint32_t next = 0; MDL_NextIf(next, &interface) == 0; next = interface.ulIfIndex + 1)
            seen[interface.ulIfIndex] = interface.ulPortType;
        ASSERT_EQ(expected, seen) << "seed " << seed << " round " << round;
        for (uint32_t if_index = 1; if_index <= 700; ++if_index)
            ASSERT_EQ(expected.count(if_index), IF_GetIfByIndex(if_index) != nullptr) << if_index;
    }
}
