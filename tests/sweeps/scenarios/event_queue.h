/* The event queue, with this process as its event task: what is sent stands in it until Take works it off. */
#ifndef UVEL_TESTS_SWEEPS_EVENT_QUEUE_H
#define UVEL_TESTS_SWEEPS_EVENT_QUEUE_H

#include "kit.h"

#include <uvelcommon_base/uvel_event.h>
#include <uvelcommon_base/uvel_event_callback.h>
#include <uvelhost/queue.h>

class EventQueue {
  public:
    EventQueue() {
        kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
        EXPECT_EQ(0u, QAL_QueueCreate("EVNT", 64, sizeof(UVEL_EVENT_ELEMENT_S), &g_eventQueID));
        g_eventRpcQueID = 0; /* there is no such queue */
        Taken() = 0;
    }
    ~EventQueue() {
        Take();
        EXPECT_EQ(0u, QAL_QueueDelete(g_eventQueID));
    }
    EventQueue(const EventQueue &) = delete;
    EventQueue &operator=(const EventQueue &) = delete;

    /* Counts the events of this id that Take finds from now on. */
    static void ListenTo(uint32_t event) {
        EXPECT_EQ(0u, UVEL_EventCallBackReg(1, event, UVEL_EVENT_ANY_VALUE, 0, 0, 0, [](uint32_t, void *) {
                      ++Taken();
                      return 0U;
                  }));
    }

    /* Works off what was sent; the number of events that were listened to. */
    static uint32_t Take() {
        EXPECT_EQ(0xFFFFFFFFu, UVEL_EVENT_QueReadWithEvent());
        return std::exchange(Taken(), 0);
    }

  private:
    static uint32_t &Taken() {
        static uint32_t taken = 0;
        return taken;
    }
};

#endif
