// The callback registry and the event queue.

#include "../scenario.h"
#include "event_queue.h"

#include <map>
#include <optional>

namespace {

constexpr uint32_t COUNT = 300;

std::vector<uint32_t> g_called;

/* Every callback changes its priority. One for which there is no memory is gone: it was taken out before. */
class CallbackRegistry : public sweeps::Scenario {
    void SetUp() override {
        kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
        for (uint32_t i = 0; i < COUNT; ++i)
            EXPECT_EQ(0u, Register(i, 1));
    }

    void Operate(bool faultless) override {
        const uint8_t priority = faultless ? 3 : 2;
        std::vector<uint32_t> registered;
        for (uint32_t i = 0; i < COUNT; ++i) {
            const uint32_t result = Register(i, priority);
            EXPECT_TRUE(result == 0 || (!faultless && result == 1));
            if (result == 0)
                registered.push_back(i);
        }
        g_called.clear();
        EXPECT_EQ(0u, UVEL_EventCallBackNotify(EVENT, 0, nullptr));
        EXPECT_EQ(registered, g_called);
    }

    /* The module id is also the order of registration, and the callback finds out its own by the list of the event. */
    static uint32_t Register(uint32_t i, uint8_t priority) {
        return UVEL_EventCallBackReg(i, EVENT, UVEL_EVENT_ANY_VALUE, priority, 0, 0, Callbacks::Of(i));
    }

    static constexpr uint32_t EVENT = 1999;

    struct Callbacks {
        template <uint32_t I>
        static uint32_t Call(uint32_t, void *) {
            g_called.push_back(I);
            return 0;
        }
        template <std::size_t... I>
        static UVEL_EVENT_CALLBACK Select(uint32_t i, std::index_sequence<I...>) {
            static const UVEL_EVENT_CALLBACK all[] = {&Call<I>...};
            return all[i];
        }
        static UVEL_EVENT_CALLBACK Of(uint32_t i) { return Select(i, std::make_index_sequence<COUNT>()); }
    };
};

/* The first registration of a process makes the registry, too. */
class FirstRegistration : public sweeps::Scenario {
    void Operate(bool faultless) override {
        const uint32_t result = UVEL_EventCallBackReg(1, 5, 0, 0, 0, 0, [](uint32_t, void *) { return 77U; });
        EXPECT_TRUE(result == 0 || (!faultless && result == 1));
        kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
        EXPECT_EQ(result == 0 ? 77u : 0u, UVEL_EventCallBackNotify(5, 0, nullptr));
    }
};

class Sending : public sweeps::Scenario {
    void SetUp() override {
        queue_.emplace();
        EventQueue::ListenTo(700);
    }

    void Operate(bool faultless) override {
        for (uint32_t i = 0; i < COUNT; ++i) {
            const std::string data(i, 'x');
            const uint32_t result = UVEL_EVENT_Api_SendEventMsg(700, i, i == 0 ? nullptr : data.data(), i);
            EXPECT_TRUE(result == 0 || (!faultless && result == 1));
            EXPECT_EQ(result == 0 ? 1u : 0u, EventQueue::Take());
        }
    }

    void TearDown() override { queue_.reset(); }

    std::optional<EventQueue> queue_;
};

const bool g_added[] = {
    sweeps::Add<CallbackRegistry>("callback_registry"),
    sweeps::Add<FirstRegistration>("first_registration", sweeps::Process::OWN),
    sweeps::Add<Sending>("sending_events"),
};

} // namespace
