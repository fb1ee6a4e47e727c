#include "model/number_index.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace uvel::host::model {

namespace {

constexpr uint32_t FEWEST_PLACES = 16;

void SetPlace(void *place, const void *link) {
    static_cast<std::atomic<const Link *> *>(place)->store(static_cast<const Link *>(link), std::memory_order_release);
}

/* Nobody needs a mark of a removal that was published before: all readers of a new index see it. */
bool IsOver(const Link &link, uint64_t version) {
    return link.gone && link.since < version;
}

NumberIndex::Places *NewPlaces(Draft &draft, uint32_t count) {
    using Place = std::atomic<const Link *>;
    void *block = draft.Allocate(sizeof(NumberIndex::Places) + (count - 1) * sizeof(Place));
    auto *places = new (block) NumberIndex::Places{32 - static_cast<uint32_t>(std::countr_zero(count)), count, {}};
    for (uint32_t i = 1; i < count; ++i)
        new (places->first + i) Place(nullptr);
    return places;
}

} // namespace

void NumberIndex::Put(Draft &draft, const Link *link) {
    if (places_ == nullptr || 2 * (used_ + 1) > places_->count)
        MakeRoom(draft, link->since);
    std::atomic<const Link *> &place = PlaceOf(link->number);
    const Link *old = place.load(std::memory_order_relaxed);
    if (old == nullptr)
        ++used_;
    else
        draft.Retire(old);
    draft.UndoBy(SetPlace, &place, old);
    place.store(link, std::memory_order_release);
}

std::atomic<const Link *> &NumberIndex::PlaceOf(uint32_t number) {
    uint32_t i = number * 0x9E3779B1U >> places_->shift;
    for (;; ++i) {
        auto &place = places_->first[i & (places_->count - 1)];
        const Link *link = place.load(std::memory_order_relaxed);
        if (link == nullptr || link->number == number)
            return place;
    }
}

/* Readers of the versions before go on with the old places, which nobody sets any more. */
void NumberIndex::MakeRoom(Draft &draft, uint64_t version) {
    Places *old = places_;
    std::vector<const Link *> links;
    for (uint32_t i = 0; old != nullptr && i < old->count; ++i) {
        const Link *link = old->first[i].load(std::memory_order_relaxed);
        if (link == nullptr)
            continue;
        if (IsOver(*link, version))
            draft.Retire(link);
        else
            links.push_back(link);
    }
    const auto needed = static_cast<uint32_t>(links.size() + 1);
    places_ = NewPlaces(draft, std::max(FEWEST_PLACES, std::bit_ceil(3 * needed)));
    used_ = needed - 1;
    for (const Link *link : links)
        PlaceOf(link->number).store(link, std::memory_order_relaxed);
    if (old != nullptr)
        draft.Retire(old);
}

} // namespace uvel::host::model
