/* Callbacks for every event id that the library uses, and its neighbours. */
#ifndef UVEL_TESTS_ALL_EVENTS_H
#define UVEL_TESTS_ALL_EVENTS_H

#include "kit.h"

#include <functional>
#include <string>
#include <utility>
#include <uvelcommon_base/uvel_event_callback.h>

inline std::string Hex(const void *bytes, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, i % 4 == 0 && i != 0 ? " %02X" : "%02X",
                      static_cast<const uint8_t *>(bytes)[i]);
        text += digits;
    }
    return text;
}

/* One at a time. */
class AllEvents {
  public:
    using Sink = std::function<uint32_t(uint32_t event, uint32_t subEvent, void *data)>;

    explicit AllEvents(Sink sink) {
        sink_ = std::move(sink);
        Listen<0>(std::make_index_sequence<64>());
        Listen<1095>(std::make_index_sequence<210>());
    }
    ~AllEvents() {
        sink_ = [](uint32_t, uint32_t, void *) { return 0U; };
    }
    AllEvents(const AllEvents &) = delete;
    AllEvents &operator=(const AllEvents &) = delete;

  private:
    template <uint32_t EVENT>
    static uint32_t Callback(uint32_t subEvent, void *data) {
        return sink_(EVENT, subEvent, data);
    }

    template <uint32_t FIRST, std::size_t... OFFSETS>
    static void Listen(std::index_sequence<OFFSETS...>) {
        const UVEL_EVENT_CALLBACK callbacks[] = {&AllEvents::Callback<FIRST + OFFSETS>...};
        for (uint32_t i = 0; i < sizeof...(OFFSETS); ++i)
            EXPECT_EQ(0u, UVEL_EventCallBackReg(1, FIRST + i, UVEL_EVENT_ANY_VALUE, 0, 0, 0, callbacks[i]));
    }

    static inline Sink sink_;
};

#endif
