/* Notifications on their way: what a batch collects while it changes the model, and what the notifying thread takes
 * from the queue. */
#ifndef UVEL_HOST_MODEL_NOTICES_H
#define UVEL_HOST_MODEL_NOTICES_H

#include <cstdint>
#include <uvelhost/model.h>
#include <uvelhost/model_events.h>
#include <vector>

namespace uvel::host::model {

constexpr uint32_t NO_BYTES = UVELHOST_NONE;

/* One notification; numbers as in MDL_EVENT_S. Key and data lie in the batch's bytes, aligned to 8. */
struct Notice {
    uint32_t topic;
    uint32_t event;
    uint32_t a = 0, b = 0, c = 0;
    uint32_t key = NO_BYTES;
    uint32_t data = NO_BYTES;
    bool open = false; /* made from a change: the next change of the same kind may join it */
};

/* Where what is going stands, by one of its numbers: queries inside the notifications up to `until` still find it. */
class GoingIndex {
  public:
    void Add(uint32_t number, uint32_t until, uint32_t place) { entries_.push_back({number, until, place}); }
    void Sort();

    /* What goes next, at `position` or behind it; NO_PLACE without one. */
    uint32_t Find(uint32_t number, uint32_t position) const;

    static constexpr uint32_t NO_PLACE = UVELHOST_NONE;

  private:
    struct Entry {
        uint32_t number, until, place;
    };
    std::vector<Entry> entries_;
};

class Notices {
  public:
    void Add(const Notice &notice) { notices_.push_back(notice); }

    /* All throw std::bad_alloc. */
    void AddEvent(const MDL_EVENT_S &event);
    uint32_t AddBytes(const void *bytes, std::size_t size);
    template <typename T>
    uint32_t AddBytes(const T &value) {
        return AddBytes(&value, sizeof value);
    }

    /* VLANs created or gone; neighbours share a bitmap. `event_before` comes first with the same bitmap (0: none). */
    void AddVlanToBatch(uint32_t vlan, uint32_t event_before, uint32_t event);

    /* A port joined or left VLANs; neighbours of the same VLANs share a list. */
    void AddPortToList(uint32_t first_vlan, uint32_t last_vlan, uint32_t event, uint32_t port);

    /* Goes with the notification added last. */
    void AddGoing(const MDL_IF_S &interface);
    void AddGoing(const MDL_TRUNK_S &trunk);
    bool HasGoing() const { return !interfaces_.empty() || !trunks_.empty(); }

    /* Orders what is going for the look-ups below. Once, before delivery. */
    void Seal();

    const MDL_IF_S *GoingIf(uint32_t if_index, uint32_t position) const;
    const MDL_IF_S *GoingPort(uint32_t port_index, uint32_t position) const;
    const MDL_TRUNK_S *GoingTrunk(uint32_t trunk_id, uint32_t position) const;
    const MDL_TRUNK_S *GoingTrunkOfIf(uint32_t if_index, uint32_t position) const;

    uint32_t Count() const { return static_cast<uint32_t>(notices_.size()); }
    const Notice &At(uint32_t position) const { return notices_[position]; }
    const void *Bytes(uint32_t offset) const { return offset == NO_BYTES ? nullptr : bytes_.data() + offset / 8; }
    void *Bytes(uint32_t offset) { return offset == NO_BYTES ? nullptr : bytes_.data() + offset / 8; }

    uint32_t user = 0;
    uint64_t first_number = 0; /* of the first notification, counted over all */
    Notices *next = nullptr;
    bool *answer = nullptr; /* of a question: set to false when a callback does not answer 0 */

  private:
    uint32_t Last() const { return Count() - 1; }

    std::vector<Notice> notices_;
    std::vector<uint64_t> bytes_;
    std::vector<MDL_IF_S> interfaces_; /* that are going, and the trunks */
    std::vector<MDL_TRUNK_S> trunks_;
    GoingIndex by_interface_;
    GoingIndex by_port_;
    GoingIndex trunk_by_id_;
    GoingIndex trunk_by_interface_;
};

/* Notifications that the calling thread delivers at the moment, when something goes with them, and which of them; null
 * otherwise. */
extern constinit thread_local const Notices *t_going __attribute__((tls_model("initial-exec")));
extern constinit thread_local uint32_t t_position __attribute__((tls_model("initial-exec")));

/* What is going in the notification that the calling thread delivers at the moment; null without one. Asked before what
 * is published: that may be a successor. */
inline const MDL_IF_S *GoingIf(uint32_t if_index) {
    return t_going == nullptr ? nullptr : t_going->GoingIf(if_index, t_position);
}
inline const MDL_IF_S *GoingPort(uint32_t port_index) {
    return t_going == nullptr ? nullptr : t_going->GoingPort(port_index, t_position);
}
inline const MDL_TRUNK_S *GoingTrunk(uint32_t trunk_id) {
    return t_going == nullptr ? nullptr : t_going->GoingTrunk(trunk_id, t_position);
}
inline const MDL_TRUNK_S *GoingTrunkOfIf(uint32_t if_index) {
    return t_going == nullptr ? nullptr : t_going->GoingTrunkOfIf(if_index, t_position);
}

/* Gives notifications to the notifying thread, in the order of the calls. */
void Enqueue(Notices *notices);

/* User on whose behalf the calling thread works. */
extern constinit thread_local uint32_t t_user __attribute__((tls_model("initial-exec")));

/* Group that a layer-2 event is registered by; 0 for a number of no group. */
uint32_t GroupOfL2Event(uint32_t event);
bool IsKnownL2Group(uint32_t group);
bool IsKnownTrunkEvent(uint32_t trunk_class, uint32_t event);
bool IsKnownEvent(const MDL_EVENT_S &event);

} // namespace uvel::host::model

#endif
