/* Catches the events that the library raises: callbacks of all ids that it uses and their neighbours, and what is written
 * to the event queue. */
#ifndef UVEL_TESTS_EVENT_TRAP_H
#define UVEL_TESTS_EVENT_TRAP_H

#include "all_events.h"

#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <uvelcommon_base/uvel_event.h>
#include <vector>

constexpr char NOW = 'n';
constexpr char QUEUE = 'q';

struct RaisedEvent {
    char way;
    uint32_t event;
    uint32_t subEvent;
    std::string data; /* as hexadecimal digits, words of four bytes apart */

    bool operator==(const RaisedEvent &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const RaisedEvent &raised) {
    return out << (raised.way == NOW ? "now " : "queue ") << raised.event << "/" << raised.subEvent << " "
               << raised.data;
}

/* One at a time. Messages to the event queue are kept here; the host's queue, and its messages, are not used. */
class EventTrap {
  public:
    EventTrap() {
        kit::Op<HA_GetBoardType>().Returns(HA_BOARD_MASTER);
        kit::Op<IPC_GetSelfNodeId>().Returns(1);
        kit::Op<IPC_SetSrcAndDstChannelId>().Does([](void *, uint32_t, uint32_t) {});
        kit::Op<IPC_SetSrcAndDstNodeId>().Does([](void *, uint32_t, uint32_t) {});
        kit::Op<IPC_AllocMsg_X>().Does([](uint32_t, uint32_t size) { return std::malloc(size); });
        kit::Op<IPC_FreeMsg>().Does([](void *message) {
            std::free(message);
            return 0U;
        });
        kit::Op<QAL_QueueAsyWrite>().Does([this](uint32_t, const void *element, uint32_t size) {
            TakeQueued(element, size);
            return 0U;
        });
    }
    EventTrap(const EventTrap &) = delete;
    EventTrap &operator=(const EventTrap &) = delete;

    /* What was raised since the last call. */
    std::vector<RaisedEvent> Take() { return std::exchange(raised_, {}); }

    std::size_t dataSize = 0;             /* of the record that an event raised at once is expected to have */
    const void *data = nullptr;           /* where the data of the latest of these stood */
    uint32_t result = 0;                  /* what callbacks answer from now on */
    std::function<uint32_t(void *)> also; /* called by every callback, its result counts when it is not 0 */

  private:
    void TakeQueued(const void *element, uint32_t size) {
        struct {
            uint64_t type;
            uint8_t *message;
            uint64_t length;
            uint64_t reserved;
        } fields;
        ASSERT_EQ(sizeof fields, size);
        std::memcpy(&fields, element, size);
        ASSERT_EQ(0xABCD1001u, fields.type);
        ASSERT_GE(fields.length, 12u);
        uint32_t head[3];
        std::memcpy(head, fields.message, sizeof head);
        raised_.push_back({QUEUE, head[0], head[1], Hex(fields.message + 12, fields.length - 12)});
        std::free(fields.message);
    }

    uint32_t TakeRaised(uint32_t event, uint32_t subEvent, void *where) {
        data = where;
        raised_.push_back({NOW, event, subEvent, Hex(where, where == nullptr ? 0 : dataSize)});
        const uint32_t answer = also ? also(where) : 0;
        return answer != 0 ? answer : result;
    }

    std::vector<RaisedEvent> raised_;
    AllEvents events_{
        [this](uint32_t event, uint32_t subEvent, void *where) { return TakeRaised(event, subEvent, where); }};
};

#endif
