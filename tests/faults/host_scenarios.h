/* Scenarios for the sweep of host failures: pieces of work for the library, whose answers go into a transcript.
 *
 * Run is called with the host in order, then with a failing operation, then with the host in order again, and must come
 * to an end in all cases. What it says when the host is in order is the same every time: it begins with bringing the
 * library to a known state and leaves no memory behind. */
#ifndef UVEL_TESTS_FAULTS_HOST_SCENARIOS_H
#define UVEL_TESTS_FAULTS_HOST_SCENARIOS_H

#include "kit.h"

#include <cstring>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace host_scenarios {

/* What the library answered. Out-parameters are rooms of the transcript: what they hold afterwards is part of it. */
class Transcript {
  public:
    /* 2 KiB for the callee to write to; the first word is given. */
    struct Room {
        uint8_t *bytes;

        template <typename T>
        operator T *() const {
            return reinterpret_cast<T *>(bytes);
        }
    };

    Room Out(uint32_t firstWord = 0) {
        Room room{rooms_[used_++ % 4]};
        std::memset(room.bytes, 0, sizeof rooms_[0]);
        std::memcpy(room.bytes, &firstWord, sizeof firstWord);
        return room;
    }

    template <typename R, typename... A, typename... Given>
    R Ask(R (*function)(A...), Given... given) {
        if constexpr (std::is_void_v<R>) {
            function(static_cast<A>(given)...);
            Take("done");
        } else {
            const R result = function(static_cast<A>(given)...);
            Take(kit::detail::Render(result));
            return result;
        }
    }

    void Say(const std::string &text) { text_ += text + "\n"; }
    const std::string &Text() const { return text_; }

  private:
    void Take(const std::string &answer) {
        text_ += answer;
        for (; used_ > 0; --used_) {
            const uint8_t *bytes = rooms_[(used_ - 1) % 4];
            std::size_t end = sizeof rooms_[0];
            while (end > 0 && bytes[end - 1] == 0)
                --end;
            text_ += ' ';
            for (std::size_t i = 0; i < end; ++i) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
                text_ += digits;
            }
        }
        text_ += '\n';
    }

    alignas(16) uint8_t rooms_[4][2048];
    unsigned used_ = 0;
    std::string text_;
};

/* How much of a process a scenario uses up: nothing, or something that a process does once. */
enum class Life { SHARED, ONCE };

struct Scenario {
    const char *name;
    Life life;
    void (*setUp)();
    void (*run)(Transcript &);

    friend void PrintTo(const Scenario &scenario, std::ostream *out) { *out << scenario.name; }
};

std::vector<Scenario> QueryScenarios();
std::vector<Scenario> WorkScenarios();
std::vector<Scenario> EventScenarios();

} // namespace host_scenarios

#endif
