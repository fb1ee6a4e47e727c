#include <kit.h>

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_settings.h>

namespace {

constexpr uint32_t kMid = 0xC0DE0001U;
const kit::Sources kOneAssert = {"src/common/src/smi/kivo_common"};

class IfTemplate : public testing::Test {
  protected:
    ~IfTemplate() override { Release(templet); }

    static void Release(KIVO_IF_TEMPLET_S &list) {
        for (uint32_t i = 0; list.pstEntries != nullptr && i < list.ulCount; ++i)
            KIVO_MemFree(list.pstEntries[i].pszName);
        KIVO_MemFree(list.pstEntries);
        list = {};
    }

    void Init(uint32_t capacity) {
        templet.ulCapacity = capacity;
        ASSERT_EQ(0u, KIVO_InitIfTemplet(&templet, kMid));
    }

    KIVO_IF_TEMPLET_S templet{};
};

TEST_F(IfTemplate, StartsEmptyWithTheCapacityThatTheCallerNamed) {
    templet.ulCount = 99;
    Init(3);
    EXPECT_EQ(3u, templet.ulCapacity);
    EXPECT_EQ(0u, templet.ulCount);
    EXPECT_EQ(48u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST_F(IfTemplate, CapacityZeroBecomesSixtyFour) {
    Init(0);
    EXPECT_EQ(64u, templet.ulCapacity);
    EXPECT_EQ(1024u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST_F(IfTemplate, EntriesStartZeroed) {
    kit::Op<QAL_MemAlloc>().Does([](uint32_t handle, uint8_t partition, uint32_t size) {
        void *block = kit::Op<QAL_MemAlloc>().Real(handle, partition, size);
        memset(block, 0xEE, size);
        return block;
    });
    Init(4);
    const KIVO_IF_TEMPLET_ENTRY_S zero[4] = {};
    EXPECT_EQ(0, memcmp(zero, templet.pstEntries, sizeof zero));
}

TEST_F(IfTemplate, NoTemplateCannotBeInitialised) {
    EXPECT_EQ(1u, KIVO_InitIfTemplet(nullptr, kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
}

TEST_F(IfTemplate, InitialisingForNoModuleIsRefusedAndChangesNothing) {
    KIVO_IF_TEMPLET_ENTRY_S entry{};
    KIVO_IF_TEMPLET_S other{&entry, 0, 5};
    EXPECT_EQ(1u, KIVO_InitIfTemplet(&other, 0xFFFFFFFFU));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(&entry, other.pstEntries);
    EXPECT_EQ(0u, other.ulCapacity);
    EXPECT_EQ(5u, other.ulCount);
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc>().Calls());
}

TEST_F(IfTemplate, InitialisingWithoutMemoryFailsWithoutAssertion) {
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, KIVO_InitIfTemplet(&templet, kMid));
    EXPECT_EQ(64u, templet.ulCapacity);
    EXPECT_EQ(nullptr, templet.pstEntries);
    EXPECT_EQ(0u, KIVO_InitIfTemplet(&templet, kMid));
}

TEST_F(IfTemplate, ATemplateWhoseInitialisationFailedTakesNoNames) {
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    ASSERT_EQ(1u, KIVO_InitIfTemplet(&templet, kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 1, "Eth", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
}

TEST_F(IfTemplate, ACapacityBeyondWhatAnAllocationCanAskForIsAMemoryShortage) {
    for (const uint32_t capacity : {0x10000000U, 0x10000001U, 0xFFFFFFFFU}) {
        KIVO_IF_TEMPLET_S huge{nullptr, capacity, 0};
        EXPECT_EQ(1u, KIVO_InitIfTemplet(&huge, kMid)) << capacity;
        EXPECT_EQ(nullptr, huge.pstEntries);
    }
    EXPECT_EQ(0u, kit::Op<QAL_MemAlloc>().Calls());
}

TEST_F(IfTemplate, TheLargestCapacityThatCanBeAskedForIsAskedFor) {
    kit::Op<QAL_MemAlloc>().Returns(nullptr);
    KIVO_IF_TEMPLET_S huge{nullptr, 0x0FFFFFFFU, 0};
    EXPECT_EQ(1u, KIVO_InitIfTemplet(&huge, kMid));
    EXPECT_EQ(0xFFFFFFF0U, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
}

TEST_F(IfTemplate, NamesAreCopiedInOrder) {
    Init(4);
    char name[] = "GigabitEthernet";
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 8, name, kMid));
    EXPECT_EQ(16u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 0, "x", kMid));
    EXPECT_EQ(2u, std::get<2>(kit::Op<QAL_MemAlloc>().Last()));
    memset(name, '?', sizeof name - 1);

    ASSERT_EQ(2u, templet.ulCount);
    EXPECT_EQ(8u, templet.pstEntries[0].ulIfType);
    EXPECT_STREQ("GigabitEthernet", templet.pstEntries[0].pszName);
    EXPECT_EQ(0u, templet.pstEntries[1].ulIfType);
    EXPECT_STREQ("x", templet.pstEntries[1].pszName);
    EXPECT_EQ(0u, templet.pstEntries[2].ulIfType);
    EXPECT_EQ(nullptr, templet.pstEntries[2].pszName);
}

TEST_F(IfTemplate, NullAndEmptyArgumentsAreRefused) {
    Init(2);
    EXPECT_EQ(1u, KIVO_SetIfTemplet(nullptr, 1, "Eth", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 1, nullptr, kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 1, "", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(0u, templet.ulCount);
}

TEST_F(IfTemplate, NoModuleIsRefused) {
    Init(2);
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 1, "Eth", 0xFFFFFFFFU));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(0u, templet.ulCount);
}

TEST_F(IfTemplate, AFullTemplateRefuses) {
    Init(2);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 3, "c", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(2u, templet.ulCount);
}

TEST_F(IfTemplate, ADefaultTemplateTakesSixtyFourNames) {
    Init(0);
    for (uint32_t i = 0; i < 64; ++i)
        ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, i, ("port" + std::to_string(i)).c_str(), kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 64, "port64", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_STREQ("port63", templet.pstEntries[63].pszName);
}

TEST_F(IfTemplate, ATypeIsThereOnlyOnce) {
    Init(4);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 2, "other", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(2u, templet.ulCount);
}

TEST_F(IfTemplate, WithMoreNamesThanItsCapacityRefuses) {
    Init(2);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    templet.ulCapacity = 1;
    const uint64_t calls = kit::Op<QAL_MemAlloc>().Calls();
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 3, "c", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(calls, kit::Op<QAL_MemAlloc>().Calls());
    EXPECT_EQ(2u, templet.ulCount);
}

TEST_F(IfTemplate, ANameIsThereOnlyOnce) {
    Init(4);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 3, "a", kMid));
    EXPECT_EQ(kOneAssert, kit::TakeAsserts());
    EXPECT_EQ(2u, templet.ulCount);
}

TEST_F(IfTemplate, NamesThatDifferInLetterCaseOrLengthAreDifferent) {
    Init(4);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "eth", kMid));
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "Eth", kMid));
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 3, "eth0", kMid));
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 4, "et", kMid));
    EXPECT_EQ(4u, templet.ulCount);
}

TEST_F(IfTemplate, ARefusedNameAllocatesNothing) {
    Init(2);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    const uint64_t calls = kit::Op<QAL_MemAlloc>().Calls();
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 1, "b", kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 2, "a", kMid));
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 2, "b", 0xFFFFFFFFU));
    EXPECT_EQ(3u, kit::TakeAsserts().size());
    EXPECT_EQ(calls, kit::Op<QAL_MemAlloc>().Calls());
}

TEST_F(IfTemplate, WithoutMemoryForTheNameTheTemplateStaysAsItWas) {
    Init(2);
    ASSERT_EQ(0u, KIVO_SetIfTemplet(&templet, 1, "a", kMid));
    kit::Op<QAL_MemAlloc>().FailsOn(1);
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    EXPECT_EQ(1u, templet.ulCount);
    EXPECT_EQ(0u, KIVO_SetIfTemplet(&templet, 2, "b", kMid));
    EXPECT_STREQ("b", templet.pstEntries[1].pszName);
}

TEST_F(IfTemplate, SurvivesEveryAllocationFailing) {
    const auto fill = [](bool mustWork) {
        KIVO_IF_TEMPLET_S list{};
        bool done = KIVO_InitIfTemplet(&list, kMid) == 0;
        if (done) {
            done = KIVO_SetIfTemplet(&list, 1, "first", kMid) == 0;
            done = KIVO_SetIfTemplet(&list, 2, "second", kMid) == 0 && done;
        }
        EXPECT_TRUE(done || !mustWork);
        EXPECT_TRUE(!done || list.ulCount == 2);
        Release(list);
    };
    const int injected = kit::SweepAllocations([&] { fill(false); }, [&] { fill(true); });
    EXPECT_GE(injected, 6);
}

#if defined(__SANITIZE_THREAD__)
constexpr bool kShadowsEveryByte = true;
#elif defined(__has_feature)
constexpr bool kShadowsEveryByte = __has_feature(thread_sanitizer);
#else
constexpr bool kShadowsEveryByte = false;
#endif

/* Address space that shows one small piece of memory over and over. */
class RepeatedMemory {
  public:
    explicit RepeatedMemory(std::size_t size) : size_(size) {
        const int file = memfd_create("repeated", MFD_CLOEXEC);
        void *base = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (file < 0 || base == MAP_FAILED || ftruncate(file, kPiece) != 0)
            return;
        text_ = static_cast<char *>(base);
        for (std::size_t at = 0; at < size; at += kPiece) {
            const int sharing = at + kPiece < size ? MAP_SHARED : MAP_PRIVATE; /* the last piece is one of its own */
            if (mmap(text_ + at, kPiece, PROT_READ | PROT_WRITE, MAP_FIXED | sharing, file, 0) == MAP_FAILED)
                mapped_ = false;
        }
        close(file);
    }
    ~RepeatedMemory() {
        if (text_ != nullptr)
            munmap(text_, size_);
    }
    RepeatedMemory(const RepeatedMemory &) = delete;
    RepeatedMemory &operator=(const RepeatedMemory &) = delete;

    bool Ready() const { return text_ != nullptr && mapped_; }

    /* A text of `length` times 'x' that ends in the last piece. */
    const char *Text(std::size_t length) {
        memset(text_, 'x', kPiece);
        memset(text_ + size_ - kPiece, 'x', kPiece);
        text_[length] = '\0';
        return text_;
    }

    static constexpr std::size_t kPiece = std::size_t{4} << 20;

  private:
    char *text_ = nullptr;
    std::size_t size_;
    bool mapped_ = true;
};

TEST_F(IfTemplate, ANameBeyondWhatAnAllocationCanAskForIsAMemoryShortage) {
    if (kShadowsEveryByte)
        GTEST_SKIP() << "the thread sanitizer would need several times 4 GiB";
    RepeatedMemory name((std::size_t{1} << 32) + RepeatedMemory::kPiece);
    if (!name.Ready())
        GTEST_SKIP() << "no address space for a name of 4 GiB: " << strerror(errno);
    Init(2);
    const uint64_t calls = kit::Op<QAL_MemAlloc>().Calls();
    EXPECT_EQ(1u, KIVO_SetIfTemplet(&templet, 5, name.Text((std::size_t{1} << 32) + 3), kMid));
    EXPECT_EQ(0u, templet.ulCount);
    EXPECT_EQ(calls, kit::Op<QAL_MemAlloc>().Calls());
}

} // namespace
