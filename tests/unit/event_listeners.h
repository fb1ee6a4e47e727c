/* Callbacks for tests of the event registry: each writes down that it was called and does what the test says. */
#ifndef UVEL_TESTS_UNIT_EVENT_LISTENERS_H
#define UVEL_TESTS_UNIT_EVENT_LISTENERS_H

#include "kit.h"

#include <array>
#include <functional>
#include <string>
#include <uvelcommon_base/uvel_event_callback.h>

/* Ten functions, A to J; the registry knows callbacks by their address, so each needs a function of its own. */
class Listeners {
  public:
    static constexpr std::size_t COUNT = 10;
    using Action = std::function<uint32_t(uint32_t value, void *data)>;

    Listeners() { The() = {}; }
    ~Listeners() { The() = {}; }

    /* The callback with a letter. */
    static UVEL_EVENT_CALLBACK Of(char letter) { return Table(std::make_index_sequence<COUNT>())[Index(letter)]; }

    /* What the callback does besides being noted. */
    static void On(char letter, Action action) { The().actions[Index(letter)] = std::move(action); }
    static void Returns(char letter, uint32_t result) {
        On(letter, [result](uint32_t, void *) { return result; });
    }

    /* Letters of the callbacks in the order of their calls since the last look. */
    static std::string Called() { return std::exchange(The().called, {}); }

  private:
    struct State {
        std::array<Action, COUNT> actions;
        std::string called;
    };

    static std::size_t Index(char letter) { return static_cast<std::size_t>(letter - 'A'); }

    static State &The() {
        static State state;
        return state;
    }

    template <std::size_t N>
    static uint32_t Listener(uint32_t value, void *data) {
        The().called += static_cast<char>('A' + N);
        const Action action = The().actions[N];
        return action ? action(value, data) : 0;
    }

    template <std::size_t... N>
    static std::array<UVEL_EVENT_CALLBACK, COUNT> Table(std::index_sequence<N...>) {
        return {&Listener<N>...};
    }
};

constexpr uint32_t ANY = UVEL_EVENT_ANY_VALUE;

/* How a test registers: module id 7, every value, the master board only, failures end the walk. */
struct Registration {
    uint32_t event = 20;
    uint32_t mid = 7;
    uint32_t subKey = ANY;
    uint8_t continueOnFailure = 0;
    uint8_t alsoOnStandby = 0;
};

inline uint32_t Register(char letter, uint8_t priority, Registration how = {}) {
    return UVEL_EventCallBackReg(how.mid, how.event, how.subKey, priority, how.continueOnFailure, how.alsoOnStandby,
                                 Listeners::Of(letter));
}

inline uint32_t Unregister(char letter, Registration how = {}) {
    return UVEL_EventCallBackUnReg(how.mid, how.event, how.subKey, Listeners::Of(letter));
}

inline uint32_t Notify(uint32_t value = 1, void *data = nullptr, uint32_t event = 20) {
    return UVEL_EventCallBackNotify(event, value, data);
}

/* The registration of a callback as the registry's list has it, null when it is not there. */
inline const UVEL_EVENT_NODE_S *NodeOf(char letter, uint32_t event = 20) {
    const DLL_S *list = g_szDllKIVOEvtCBRegTbl + event;
    for (const DLL_NODE_S *links = list->pstNext; links != reinterpret_cast<const DLL_NODE_S *>(list);
         links = links->pstNext) {
        const auto *node = reinterpret_cast<const UVEL_EVENT_NODE_S *>(links);
        if (node->pfCallback == Listeners::Of(letter))
            return node;
    }
    return nullptr;
}

#endif
