/* What the queries share. */
#ifndef UVEL_HOST_MODEL_QUERY_H
#define UVEL_HOST_MODEL_QUERY_H

#include "model/notices.h"
#include "model/reading.h"
#include <cstring>

namespace uvel::host::model {

/* The interface, also while the notification that it goes is delivered by this thread. */
inline const MDL_IF_S *FindIf(const Reading &model, uint32_t if_index) {
    const MDL_IF_S *going = GoingIf(if_index);
    return going != nullptr ? going : model->interfaces.Get(if_index);
}

/* The same at the moment of the question, for questions about nothing else. */
class AskedInterface {
  public:
    explicit AskedInterface(uint32_t if_index) : published_(if_index), found_(GoingIf(if_index)) {
        if (found_ == nullptr) [[likely]]
            found_ = published_.Get();
    }

    const MDL_IF_S *Get() const { return found_; }

  private:
    OneInterface published_;
    const MDL_IF_S *found_;
};

/* Writes what `pick` makes of the object, 1 for no object and a null out-pointer. */
template <typename T, typename Out, typename Pick>
uint32_t Write(const T *object, Out *out, Pick &&pick) {
    if (object == nullptr || out == nullptr)
        return 1;
    *out = static_cast<Out>(pick(*object));
    return UVELHOST_OK;
}

/* Writes a field of an interface; 1 also when its value is `none`. */
template <typename Out, typename Field>
uint32_t WriteField(uint32_t if_index, Out *out, Field MDL_IF_S::*field, uint32_t none) {
    const AskedInterface asked(if_index);
    const MDL_IF_S *interface = asked.Get();
    if (interface == nullptr || out == nullptr || interface->*field == none)
        return 1;
    *out = interface->*field;
    return UVELHOST_OK;
}

/* Writes a text with its terminator; 1 when it does not fit. */
inline uint32_t WriteText(const char *text, char *out, uint32_t size) {
    const std::size_t length = std::strlen(text);
    if (out == nullptr || length >= size)
        return 1;
    std::memcpy(out, text, length + 1);
    return UVELHOST_OK;
}

/* Writes the numbers that walk(add) adds, and their number, into an array with room for *count of them; 1, with both
 * untouched, when they do not fit. It walks twice: first it counts. */
template <typename Walk>
uint32_t WriteNumbers(uint32_t *numbers, uint32_t *count, Walk &&walk) {
    if (numbers == nullptr || count == nullptr)
        return 1;
    uint32_t needed = 0;
    walk([&](uint32_t) { ++needed; });
    if (needed > *count)
        return 1;
    uint32_t written = 0;
    walk([&](uint32_t number) { numbers[written++] = number; });
    *count = written;
    return UVELHOST_OK;
}

} // namespace uvel::host::model

#endif
