// What the others see of a queue while one task has got no further than the middle of an element.

#include <uvelhost/queue.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t SIZE = 4096; /* of a page, and of an element */

/* An element whose second half lies on a page that is slow to touch, like one that has to come from a disk: the first
 * touch reports itself and takes TOUCH_TIME. One at a time. */
class SlowElement {
  public:
    static constexpr timespec TOUCH_TIME = {0, 30000000};

    SlowElement() : pages_(mmap(nullptr, 2 * SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        s_slow_page = static_cast<char *>(pages_) + SIZE;
        s_touched = false;
        struct sigaction action = {};
        action.sa_sigaction = Touch;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &before_);
    }

    ~SlowElement() {
        sigaction(SIGSEGV, &before_, nullptr);
        munmap(pages_, 2 * SIZE);
    }

    SlowElement(const SlowElement &) = delete;
    SlowElement &operator=(const SlowElement &) = delete;

    void *Address() { return static_cast<char *>(pages_) + SIZE / 2; }
    void Fill(int value) { std::memset(Address(), value, SIZE); }
    void MakeSlow() { mprotect(s_slow_page, SIZE, PROT_NONE); }

    static void AwaitTouch() {
        while (!s_touched)
            std::this_thread::yield();
    }

  private:
    static void Touch(int, siginfo_t *info, void *) {
        auto *page = static_cast<char *>(s_slow_page);
        if (info->si_addr < page || info->si_addr >= page + SIZE) {
            signal(SIGSEGV, SIG_DFL);
            return;
        }
        s_touched = true;
        nanosleep(&TOUCH_TIME, nullptr);
        mprotect(page, SIZE, PROT_READ | PROT_WRITE);
    }

    static inline void *s_slow_page;
    static inline std::atomic<bool> s_touched;

    void *pages_;
    struct sigaction before_ = {};
};

/* A queue of three elements, each filled with one byte value. */
class HostQueueSlowCopy : public testing::Test {
  protected:
    HostQueueSlowCopy() { EXPECT_EQ(0u, QAL_QueueCreate("slow", 3, SIZE, &queue_)); }

    ~HostQueueSlowCopy() override {
        if (other_.joinable())
            other_.join();
        EXPECT_EQ(0u, QAL_QueueDelete(queue_));
    }

    bool Write(int value) {
        std::vector<char> element(SIZE, static_cast<char>(value));
        return QAL_QueueAsyWrite(queue_, element.data(), SIZE) == 0;
    }

    /* The value of the element that was read, -1 when there was none. */
    int Read(uint32_t timeout_ms = 0) {
        std::vector<char> element(SIZE, '?');
        if (QAL_QueueRead(queue_, element.data(), SIZE, timeout_ms) != 0)
            return -1;
        EXPECT_EQ(std::vector<char>(SIZE, element[0]), element) << "half an element";
        return element[0];
    }

    /* Another task begins to read and is held up in the middle. */
    void BeginSlowRead() {
        slow_.MakeSlow();
        other_ = std::thread([this] { EXPECT_EQ(0u, QAL_QueueRead(queue_, slow_.Address(), SIZE, 0)); });
        SlowElement::AwaitTouch();
    }

    void BeginSlowWrite(int value) {
        slow_.Fill(value);
        slow_.MakeSlow();
        other_ = std::thread([this] { EXPECT_EQ(0u, QAL_QueueAsyWrite(queue_, slow_.Address(), SIZE)); });
        SlowElement::AwaitTouch();
    }

    uint32_t queue_ = 0;
    SlowElement slow_;
    std::thread other_;
};

} // namespace

TEST_F(HostQueueSlowCopy, APlaceThatIsBeingEmptiedIsNotFreeYet) {
    for (int value : {1, 2, 3})
        EXPECT_TRUE(Write(value));
    BeginSlowRead();
    EXPECT_FALSE(Write(4));
    other_.join();
    EXPECT_TRUE(Write(4));
    for (int value : {2, 3, 4})
        EXPECT_EQ(value, Read());
}

TEST_F(HostQueueSlowCopy, APlaceThatAnotherReaderEmptiedMeanwhileIsFree) {
    for (int value : {1, 2, 3})
        EXPECT_TRUE(Write(value));
    BeginSlowRead();
    EXPECT_EQ(2, Read());
    EXPECT_TRUE(Write(4)) << "there was a free place for the whole call";
    EXPECT_EQ(3, Read());
    EXPECT_EQ(4, Read());
}

TEST_F(HostQueueSlowCopy, ASlowReaderHoldsUpNoOtherReader) {
    for (int value : {1, 2, 3})
        EXPECT_TRUE(Write(value));
    BeginSlowRead();
    EXPECT_EQ(2, Read());
    EXPECT_EQ(3, Read());
    EXPECT_EQ(-1, Read());
}

TEST_F(HostQueueSlowCopy, AnElementThatIsBeingWrittenIsNotThereYet) {
    BeginSlowWrite(1);
    EXPECT_EQ(-1, Read());
    other_.join();
    EXPECT_EQ(1, Read());
}

TEST_F(HostQueueSlowCopy, AnElementBehindOneThatIsBeingWrittenIsNotMissed) {
    BeginSlowWrite(1);
    EXPECT_TRUE(Write(2));
    EXPECT_EQ(1, Read()) << "an element was there for the whole call, and this one is the first";
    EXPECT_EQ(2, Read());
    EXPECT_EQ(-1, Read());
}

TEST_F(HostQueueSlowCopy, AWaitingReaderGetsTheElementThatIsBeingWritten) {
    BeginSlowWrite(1);
    EXPECT_EQ(1, Read(60000));
}

TEST_F(HostQueueSlowCopy, ASlowWriterHoldsUpNoOtherWriter) {
    BeginSlowWrite(1);
    EXPECT_TRUE(Write(2));
    EXPECT_TRUE(Write(3));
    EXPECT_FALSE(Write(4)) << "three are in it, one of them on its way";
    for (int value : {1, 2, 3})
        EXPECT_EQ(value, Read());
}
