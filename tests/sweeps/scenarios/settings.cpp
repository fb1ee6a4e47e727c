// Memory service, show registries, interface templates, index pools, start-up.

#include "../scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <uvelcommon_base/kivo_index.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>
#include <uvelcommon_base/kivo_show.h>
#include <uvelcommon_base/kivo_startup.h>

namespace {

constexpr uint32_t MODULE = 0x00770000;
constexpr uint32_t COUNT = 300;

class Memory : public sweeps::Scenario {
    void Operate(bool faultless) override {
        for (uint32_t size = 1; size <= COUNT; ++size) {
            char *block = static_cast<char *>(size % 2 == 0 ? KIVO_MemAlloc(MODULE, size)
                                                            : KIVO_MemAlloc_F(MODULE, size, "sweep", 1));
            EXPECT_TRUE(block != nullptr || !faultless);
            if (block == nullptr)
                continue;
            std::memset(block, 'x', size);
            char *moved = static_cast<char *>(KIVO_MemReAlloc(block, size * 2));
            EXPECT_TRUE(moved != nullptr || !faultless);
            block = moved != nullptr ? moved : block;
            EXPECT_EQ(size, static_cast<uint32_t>(std::count(block, block + size, 'x')));
            EXPECT_EQ(0u, size % 2 == 0 ? KIVO_MemFree(block) : KIVO_MemFree_F(block, "sweep", 2));
        }
    }
};

/* The first allocation of a process opens the library's account, which is tried again when it fails. */
class FirstAllocation : public sweeps::Scenario {
    void Operate(bool faultless) override {
        void *block = KIVO_MemAlloc(MODULE, 10);
        EXPECT_TRUE(block != nullptr || !faultless);
        EXPECT_EQ(0u, block == nullptr ? 0 : KIVO_MemFree(block));
    }
};

uint32_t Show() {
    return 0;
}

class ShowRegistries : public sweeps::Scenario {
    void Operate(bool faultless) override {
        Use(UVEL_FuncRegShowFeature, UVEL_FuncUnRegShowFeature, g_stDllShowFeatureTbl, faultless);
        Use(UVEL_FuncRegShowModuleID, UVEL_FuncUnRegShowModule, g_stDllShowModuleTbl, faultless);
    }

    using Function = uint32_t (*)(uint32_t, UVEL_SHOW_FUNC);

    static void Use(Function add, Function remove, const DLL_S &list, bool faultless) {
        std::vector<uint32_t> modules;
        for (uint32_t module = 1; module <= COUNT; ++module) {
            const uint32_t result = add(module, Show);
            EXPECT_TRUE(result == 0 || (!faultless && result == 1));
            if (result == 0)
                modules.push_back(module);
            ASSERT_EQ(modules.size(), list.ulCount);
        }
        for (const uint32_t module : modules)
            EXPECT_EQ(0u, remove(module, Show));
        EXPECT_EQ(0u, list.ulCount);
    }
};

class IfTemplates : public sweeps::Scenario {
    void Operate(bool faultless) override {
        KIVO_IF_TEMPLET_S templet{};
        templet.ulCapacity = COUNT;
        const uint32_t result = KIVO_InitIfTemplet(&templet, MODULE);
        EXPECT_TRUE(result == 0 || (!faultless && result == 1));
        if (result != 0)
            return;
        std::vector<std::string> names;
        for (uint32_t type = 0; type < COUNT; ++type) {
            const std::string name = "type " + std::to_string(type);
            const uint32_t outcome = KIVO_SetIfTemplet(&templet, type, name.c_str(), MODULE);
            EXPECT_TRUE(outcome == 0 || (!faultless && outcome == 1));
            if (outcome == 0)
                names.push_back(name);
            ASSERT_EQ(names.size(), templet.ulCount);
        }
        for (uint32_t i = 0; i < templet.ulCount; ++i) {
            EXPECT_EQ(names[i], templet.pstEntries[i].pszName);
            EXPECT_EQ(0u, KIVO_MemFree(templet.pstEntries[i].pszName));
        }
        EXPECT_EQ(0u, KIVO_MemFree(templet.pstEntries));
    }
};

/* Pools stay for good, and so does their registry, which grows twice here. */
class IndexPools : public sweeps::Scenario {
    void Operate(bool faultless) override {
        for (uint32_t i = 0; i < 40 || (faultless && created_ < 80); ++i) {
            uint32_t pool = 0xEEEE;
            const uint32_t result = KIVO_InitTableIndex(&pool, i, i + 3);
            EXPECT_TRUE(result == 0 || (!faultless && result == 1));
            if (result != 0) {
                EXPECT_EQ(0xEEEEu, pool);
                continue;
            }
            EXPECT_EQ(created_++, pool);
            for (uint32_t index = i; index <= i + 3; ++index)
                EXPECT_EQ(index, KIVO_AllocTableIndex(pool));
            EXPECT_EQ(KIVO_NONE, KIVO_AllocTableIndex(pool));
        }
    }

    uint32_t created_ = 0;
};

/* A start-up that failed is not tried again: the process is to end. */
class StartUp : public sweeps::Scenario {
    void Operate(bool faultless) override {
        const uint32_t result = UVEL_GlobalVarInit();
        if (faultless) {
            EXPECT_EQ(1u, result) << "a second start";
        } else {
            EXPECT_EQ(result == 0, g_stTableIndex != nullptr);
        }
    }
};

const bool g_added[] = {
    sweeps::Add<Memory>("memory"),
    sweeps::Add<FirstAllocation>("first_allocation", sweeps::Process::OWN),
    sweeps::Add<ShowRegistries>("show_registries"),
    sweeps::Add<IfTemplates>("interface_templates"),
    sweeps::Add<IndexPools>("index_pools", sweeps::Process::OWN),
    sweeps::Add<StartUp>("start_up", sweeps::Process::OWN),
};

} // namespace
