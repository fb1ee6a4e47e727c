/* Test kit: stands between the library under test and the host.
 *
 * Every host operation that a test executable's library calls passes through the kit. A test names the operation and
 * says what it shall do; what it does not name goes to the real host.
 *
 *     kit::Op<QAL_MemAlloc>().FailsOn(2);                        // the second call from now gives null, once
 *     kit::Op<HA_GetBoardType>().Returns(1);
 *     kit::Op<QAL_SecondNow>().Does([](uint32_t *s, uint32_t *r) { *s = 7; *r = 0; return 0U; });
 *     EXPECT_EQ(3u, kit::Op<QAL_MemFree>().Calls());
 *     EXPECT_EQ(0u, std::get<0>(kit::Op<QAL_MemFree>().Last()));
 *
 * Each test runs in a process of its own (CTest starts one per test), so once-flags and lazily opened handles are
 * fresh; scripts are dropped and counts zeroed after each test all the same. A failed assertion or fatal error of the
 * library that the test did not take with TakeAsserts or TakeFatals fails the test. */
#ifndef UVEL_TESTS_KIT_KIT_H
#define UVEL_TESTS_KIT_KIT_H

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "host_operations.h"

namespace kit {

namespace detail {

std::string RenderNumber(uint64_t value);
std::string RenderText(const char *text);
std::string RenderPointer(const void *pointer);
std::string RenderFunction(const void *function);

template <typename T>
std::string Render(T value) {
    if constexpr (std::is_same_v<std::remove_cv_t<T>, const char *>) {
        return RenderText(value);
    } else if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>) {
        return RenderFunction(reinterpret_cast<const void *>(value));
    } else if constexpr (std::is_pointer_v<T>) {
        return RenderPointer(value);
    } else if constexpr (std::is_integral_v<T>) {
        return RenderNumber(static_cast<std::make_unsigned_t<T>>(value));
    } else {
        return "...";
    }
}

std::recursive_mutex &Mutex();
bool Recording(const char *operation);
void Record(std::string call);
void AddReset(void (*reset)());
void *RealOperation(const char *name);

} // namespace detail

/* One host operation; get it with kit::Op<NAME>(). */
template <auto Fn>
class Operation;

template <typename R, typename... A, R (*Fn)(A...)>
class Operation<Fn> {
  public:
    using Function = std::function<R(A...)>;
    using Arguments = std::tuple<std::decay_t<A>...>;
    using Result = std::conditional_t<std::is_void_v<R>, int, R>;

    /* The result of every call from now on; the real operation is not called. */
    Operation &Returns(Result result) {
        return Does([result](A...) -> R {
            if constexpr (!std::is_void_v<R>)
                return result;
        });
    }

    /* What every call from now on does in place of the real operation. */
    Operation &Does(Function function) {
        std::lock_guard lock(detail::Mutex());
        replacement_ = std::move(function);
        return *this;
    }

    /* The n-th call from now (1 is the next) gives `result`, once. */
    Operation &FailsOn(uint64_t n, Result result = Failure()) { return Fails(n, n, result); }

    /* The n-th call from now and every later one give `result`. */
    Operation &FailsFrom(uint64_t n, Result result = Failure()) { return Fails(n, UINT64_MAX, result); }

    /* Calls since the test began. */
    uint64_t Calls() const {
        std::lock_guard lock(detail::Mutex());
        return calls_;
    }

    /* Arguments of the latest call. */
    Arguments Last() const {
        std::lock_guard lock(detail::Mutex());
        EXPECT_TRUE(last_.has_value()) << name_ << " was not called";
        return last_.value_or(Arguments{});
    }

    /* Calls the real host. */
    R Real(A... arguments) const { return real_(arguments...); }

    void Reset() {
        std::lock_guard lock(detail::Mutex());
        replacement_ = nullptr;
        failFirst_ = failLast_ = 0;
        calls_ = 0;
        last_.reset();
    }

    static Operation &Instance() {
        static Operation instance;
        return instance;
    }

    /* Called once at load for every operation; the address is what the operation's trampoline jumps to. */
    static void *Install(const char *name) {
        Instance().name_ = name;
        Instance().real_ = reinterpret_cast<R (*)(A...)>(detail::RealOperation(name));
        detail::AddReset([] { Instance().Reset(); });
        return reinterpret_cast<void *>(&Thunk);
    }

  private:
    static Result Failure() {
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return Result{1};
    }

    Operation &Fails(uint64_t first, uint64_t last, Result result) {
        std::lock_guard lock(detail::Mutex());
        failFirst_ = calls_ + first;
        failLast_ = last == UINT64_MAX ? last : calls_ + last;
        failure_ = result;
        return *this;
    }

    static R Thunk(A... arguments) {
        Operation &self = Instance();
        Function replacement;
        {
            std::lock_guard lock(detail::Mutex());
            ++self.calls_;
            self.last_.emplace(arguments...);
            if (detail::Recording(self.name_)) {
                std::string text = std::string(self.name_) + "(";
                std::size_t index = 0;
                ((text += (index++ == 0 ? "" : ", ") + detail::Render<std::decay_t<A>>(arguments)), ...);
                detail::Record(text + ")");
            }
            if (self.failFirst_ != 0 && self.calls_ >= self.failFirst_ && self.calls_ <= self.failLast_) {
                if constexpr (std::is_void_v<R>)
                    return;
                else
                    return self.failure_;
            }
            replacement = self.replacement_;
        }
        if (replacement)
            return replacement(arguments...);
        if (self.real_ == nullptr) {
            ADD_FAILURE() << self.name_
                          << " was called, but the host does not provide it and the test did not say what it does";
            std::abort();
        }
        return self.real_(arguments...);
    }

    const char *name_ = "";
    R (*real_)(A...) = nullptr;
    Function replacement_;
    uint64_t failFirst_ = 0;
    uint64_t failLast_ = 0;
    Result failure_{};
    uint64_t calls_ = 0;
    std::optional<Arguments> last_;
};

template <auto Fn>
Operation<Fn> &Op() {
    return Operation<Fn>::Instance();
}

/* Records host calls in order while it lives: "QAL_MemFree(0, ptr)". Numbers of up to 65535 are decimal, larger ones
 * hexadecimal; texts are quoted, functions named, other pointers "ptr" or "null". With prefixes only the operations
 * that begin with one of them are recorded. One recorder at a time. */
class Recorder {
  public:
    explicit Recorder(std::vector<std::string> prefixes = {});
    ~Recorder();
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    std::vector<std::string> Calls() const;
    void Clear();
};

/* Source texts of the library's failed assertions since the last call, oldest first. */
std::vector<std::string> TakeAsserts();

/* Source texts of the fatal errors since the last call. Under the kit a fatal error returns to the library. */
std::vector<std::string> TakeFatals();

using Sources = std::vector<std::string>;

/* Replaces the host's clocks while it lives. Both clocks stand still until the test moves them. */
class VirtualClock {
  public:
    VirtualClock();
    ~VirtualClock();
    VirtualClock(const VirtualClock &) = delete;
    VirtualClock &operator=(const VirtualClock &) = delete;

    void SetBoot(uint32_t seconds, uint32_t remainder = 0);
    /* Calendar time, both for the local and for the UTC operations. */
    void SetCalendar(QAL_DATE_S date, QAL_TIME_S time, uint32_t remainder = 0);
    void Advance(uint32_t milliseconds);
};

/* Blocks in use on the library's memory account "nac-util". */
uint64_t LiveBlocks();

/* Blocks in use on all memory accounts of the host: those of the library, and what the host made for it. */
uint64_t LiveBlocksOfAllAccounts();

/* Runs `body` in a forked child, so that what it does to the process is gone afterwards; a test that uses it before it
 * touches the library runs the body on fresh library state each time. Failed expectations inside fail the test. */
void InFreshProcess(const std::function<void()> &body);

/* As InFreshProcess, and gives the wait status of the child in place of judging it: for bodies that end the process. */
int StatusOfFreshProcess(const std::function<void()> &body);

/* Makes every allocation that `scenario` asks the host for fail in turn, first once and then from there on, each in a
 * fresh process, and runs `after` there without fault. Returns the number of injected failures. Memory that the
 * scenario and `after` left allocated beyond what a run without fault leaves fails the test. */
int SweepAllocations(
    const std::function<void()> &scenario, const std::function<void()> &after = [] {});

} // namespace kit

#endif
