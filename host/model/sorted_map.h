/* Map in key order of which every published state stays as it is: a change copies what it touches and shares the rest.
 *
 * The entries lie in chunks of at most 64, a directory holds the chunks and their first keys. A change copies one chunk
 * and, once in a draft, the directory: with 10,000 entries some 4 KB. A lookup searches the directory and one chunk;
 * in a chunk without gaps the key says the place.
 *
 * A copied map is the same state again and costs a pointer. Keys and values are plain; the map owns neither. */
#ifndef UVEL_HOST_MODEL_SORTED_MAP_H
#define UVEL_HOST_MODEL_SORTED_MAP_H

#include "model/draft.h"
#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace uvel::host::model {

template <typename Key, typename Value>
class SortedMap {
    static_assert(std::is_trivially_copyable_v<Key> && std::is_trivially_copyable_v<Value>);

  public:
    uint32_t Size() const { return size_; }

    /* The entry's value, or null. Valid as long as this state. */
    const Value *Find(const Key &key) const {
        if (directory_ == nullptr || key < directory_->First()[0])
            return nullptr;
        const Chunk &chunk = *directory_->Chunks()[LastNotAbove(directory_->First(), directory_->count, key)];
        const uint32_t place = PlaceIn(chunk, key);
        return chunk.keys[place] == key ? &chunk.values[place] : nullptr;
    }

    /* Calls visit(key, value) for the entries from `from` on, in order, until it answers false. */
    template <typename Visit>
    void VisitFrom(const Key &from, Visit &&visit) const {
        if (directory_ == nullptr)
            return;
        uint32_t c = key_below_first(from) ? 0 : LastNotAbove(directory_->First(), directory_->count, from);
        for (; c < directory_->count; ++c) {
            const Chunk &chunk = *directory_->Chunks()[c];
            for (uint32_t i = 0; i < chunk.count; ++i)
                if (!(chunk.keys[i] < from) && !visit(chunk.keys[i], chunk.values[i]))
                    return;
        }
    }

    /* Adds an entry or replaces its value. */
    void Set(Draft &draft, const Key &key, const Value &value) {
        if (directory_ == nullptr) {
            AddFirst(draft, key, value);
            return;
        }
        uint32_t c = key_below_first(key) ? 0 : LastNotAbove(directory_->First(), directory_->count, key);
        Chunk *chunk = OwnChunk(draft, c);
        uint32_t place = LowerBound(*chunk, key);
        if (place < chunk->count && chunk->keys[place] == key) {
            chunk->values[place] = value;
            return;
        }
        if (chunk->count == CHUNK) {
            chunk = Split(draft, c, place);
            c += chunk != directory_->Chunks()[c];
            place = LowerBound(*chunk, key);
        }
        std::copy_backward(chunk->keys + place, chunk->keys + chunk->count, chunk->keys + chunk->count + 1);
        std::copy_backward(chunk->values + place, chunk->values + chunk->count, chunk->values + chunk->count + 1);
        chunk->keys[place] = key;
        chunk->values[place] = value;
        ++chunk->count;
        ++size_;
        MutableDirectory()->First()[c] = chunk->keys[0];
    }

    /* Takes an entry out; nothing happens without one. */
    void Erase(Draft &draft, const Key &key) {
        if (Find(key) == nullptr)
            return;
        const uint32_t c = LastNotAbove(directory_->First(), directory_->count, key);
        Chunk *chunk = OwnChunk(draft, c);
        const uint32_t place = LowerBound(*chunk, key);
        std::copy(chunk->keys + place + 1, chunk->keys + chunk->count, chunk->keys + place);
        std::copy(chunk->values + place + 1, chunk->values + chunk->count, chunk->values + place);
        --chunk->count;
        --size_;
        if (chunk->count == 0)
            DropChunk(draft, c);
        else
            Shrink(draft, c);
    }

  private:
    static constexpr uint32_t CHUNK = 64;

    struct Chunk {
        uint64_t owner; /* draft that made it: nobody else sees it until then */
        uint32_t count;
        Key keys[CHUNK];
        Value values[CHUNK];
    };

    /* Followed by `room` chunks and `room` first keys. */
    struct alignas(alignof(Key) > alignof(Chunk *) ? alignof(Key) : alignof(Chunk *)) Directory {
        uint64_t owner;
        uint32_t count;
        uint32_t room;

        static std::size_t Bytes(uint32_t room) { return sizeof(Directory) + room * (sizeof(Chunk *) + sizeof(Key)); }
        Chunk **Chunks() { return reinterpret_cast<Chunk **>(this + 1); }
        Chunk *const *Chunks() const { return reinterpret_cast<Chunk *const *>(this + 1); }
        Key *First() { return reinterpret_cast<Key *>(Chunks() + room); }
        const Key *First() const { return reinterpret_cast<const Key *>(Chunks() + room); }
    };
    static_assert(alignof(Key) <= alignof(Chunk *));

    bool key_below_first(const Key &key) const { return key < directory_->First()[0]; }

    /* Last of `count` ascending keys that is not above `key`; the first one when all are. No branch depends on a key. */
    static uint32_t LastNotAbove(const Key *keys, uint32_t count, const Key &key) {
        const Key *base = keys;
        while (count > 1) {
            const uint32_t half = count / 2;
            base = key < base[half] ? base : base + half;
            count -= half;
        }
        return static_cast<uint32_t>(base - keys);
    }

    static uint32_t PlaceIn(const Chunk &chunk, const Key &key) {
        if constexpr (std::unsigned_integral<Key>) {
            const Key guess = key - chunk.keys[0];
            if (guess < chunk.count && chunk.keys[guess] == key)
                return static_cast<uint32_t>(guess);
        }
        return LastNotAbove(chunk.keys, chunk.count, key);
    }

    static uint32_t LowerBound(const Chunk &chunk, const Key &key) {
        return static_cast<uint32_t>(std::lower_bound(chunk.keys, chunk.keys + chunk.count, key) - chunk.keys);
    }

    Directory *MutableDirectory() { return const_cast<Directory *>(directory_); }

    static Chunk *NewChunk(Draft &draft) {
        auto *chunk = static_cast<Chunk *>(draft.Allocate(sizeof(Chunk)));
        chunk->owner = draft.Id();
        chunk->count = 0;
        return chunk;
    }

    void AddFirst(Draft &draft, const Key &key, const Value &value) {
        Directory *directory = OwnDirectory(draft, 1);
        Chunk *chunk = NewChunk(draft);
        chunk->keys[0] = key;
        chunk->values[0] = value;
        chunk->count = 1;
        directory->Chunks()[0] = chunk;
        directory->First()[0] = key;
        directory->count = 1;
        size_ = 1;
    }

    /* The directory as the draft's own, with room for `room` chunks. */
    Directory *OwnDirectory(Draft &draft, uint32_t room) {
        const uint32_t count = directory_ == nullptr ? 0 : directory_->count;
        if (directory_ != nullptr && directory_->owner == draft.Id() && directory_->room >= room)
            return MutableDirectory();
        const uint32_t new_room = room > count ? room + room / 2 + 4 : count;
        auto *directory = static_cast<Directory *>(draft.Allocate(Directory::Bytes(new_room)));
        directory->owner = draft.Id();
        directory->count = count;
        directory->room = new_room;
        if (directory_ != nullptr) {
            std::copy_n(directory_->Chunks(), count, directory->Chunks());
            std::copy_n(directory_->First(), count, directory->First());
            draft.Retire(directory_);
        }
        directory_ = directory;
        return directory;
    }

    Chunk *OwnChunk(Draft &draft, uint32_t c) {
        Directory *directory = OwnDirectory(draft, directory_->count);
        Chunk *chunk = directory->Chunks()[c];
        if (chunk->owner == draft.Id())
            return chunk;
        Chunk *own = NewChunk(draft);
        own->count = chunk->count;
        std::copy_n(chunk->keys, chunk->count, own->keys);
        std::copy_n(chunk->values, chunk->count, own->values);
        directory->Chunks()[c] = own;
        draft.Retire(chunk);
        return own;
    }

    /* Makes room in the full chunk c and answers the one that an entry for `place` belongs to. Behind the last entry of
     * all a new chunk begins, so that ascending loads fill their chunks. */
    Chunk *Split(Draft &draft, uint32_t c, uint32_t place) {
        Directory *directory = OwnDirectory(draft, directory_->count + 1);
        Chunk *left = directory->Chunks()[c];
        Chunk *right = NewChunk(draft);
        const uint32_t keep = place == CHUNK && c + 1 == directory->count ? CHUNK : CHUNK / 2;
        right->count = CHUNK - keep;
        left->count = keep;
        std::copy_n(left->keys + keep, right->count, right->keys);
        std::copy_n(left->values + keep, right->count, right->values);
        std::copy_backward(directory->Chunks() + c + 1, directory->Chunks() + directory->count,
                           directory->Chunks() + directory->count + 1);
        std::copy_backward(directory->First() + c + 1, directory->First() + directory->count,
                           directory->First() + directory->count + 1);
        directory->Chunks()[c + 1] = right;
        if (right->count != 0)
            directory->First()[c + 1] = right->keys[0];
        ++directory->count;
        return place >= keep ? right : left;
    }

    /* The draft owns the directory: it has just owned one of its chunks. */
    void DropChunk(Draft &draft, uint32_t c) {
        Directory *directory = MutableDirectory();
        draft.Retire(directory->Chunks()[c]);
        std::copy(directory->Chunks() + c + 1, directory->Chunks() + directory->count, directory->Chunks() + c);
        std::copy(directory->First() + c + 1, directory->First() + directory->count, directory->First() + c);
        if (--directory->count == 0) {
            draft.Retire(directory);
            directory_ = nullptr;
        }
    }

    /* After an entry left chunk c: joins it with the next one when both fill less than half a chunk. */
    void Shrink(Draft &draft, uint32_t c) {
        Directory *directory = MutableDirectory();
        Chunk *chunk = directory->Chunks()[c];
        directory->First()[c] = chunk->keys[0];
        if (c + 1 == directory->count)
            return;
        const Chunk *next = directory->Chunks()[c + 1];
        if (chunk->count + next->count >= CHUNK / 2)
            return;
        std::copy_n(next->keys, next->count, chunk->keys + chunk->count);
        std::copy_n(next->values, next->count, chunk->values + chunk->count);
        chunk->count += next->count;
        DropChunk(draft, c + 1);
    }

    const Directory *directory_ = nullptr;
    uint32_t size_ = 0;
};

} // namespace uvel::host::model

#endif
