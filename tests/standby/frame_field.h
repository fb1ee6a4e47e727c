/* A number in a frame, and what it is changed to in tests of frames that no honest peer sends. */
#ifndef UVEL_TESTS_STANDBY_FRAME_FIELD_H
#define UVEL_TESTS_STANDBY_FRAME_FIELD_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct Field {
    std::size_t offset;
    std::size_t width;
};

/* A field of a true frame put to one of its ends, left alone, or put beside its true value. */
struct Change {
    Field field;
    enum class To { NOUGHT, ONE, LARGEST, NEXT_TO_LARGEST, TRUTH, ABOVE, BELOW } to;
    static constexpr To ALL[] = {To::NOUGHT, To::ONE,   To::LARGEST, To::NEXT_TO_LARGEST,
                                 To::TRUTH,  To::ABOVE, To::BELOW};

    void Make(std::vector<uint8_t> &frame) const {
        uint64_t value = 0;
        for (std::size_t i = 0; i < field.width; ++i)
            value |= uint64_t{frame[field.offset + i]} << (8 * i);
        value = Value(value);
        for (std::size_t i = 0; i < field.width; ++i)
            frame[field.offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
    std::string Text() const {
        static constexpr const char *TEXTS[] = {"0", "1", "largest", "largest - 1", "true", "true + 1", "true - 1"};
        return "offset " + std::to_string(field.offset) + ": " + TEXTS[static_cast<std::size_t>(to)];
    }

  private:
    uint64_t Value(uint64_t truth) const {
        const uint64_t values[] = {0, 1, UINT64_MAX, UINT64_MAX - 1, truth, truth + 1, truth - 1};
        return values[static_cast<std::size_t>(to)];
    }
};

/* Calls `attempt(change)` with every change of every field. */
template <typename Try>
void ForEveryChange(std::span<const Field> fields, Try attempt) {
    for (const Field &field : fields) {
        for (const Change::To to : Change::ALL)
            attempt(Change{field, to});
    }
}

/* Calls `attempt(first, second)` with every change of every two fields; one of them left alone is among these. */
template <typename Try>
void ForEveryTwoChanges(std::span<const Field> fields, Try attempt) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        ForEveryChange(fields.subspan(i, 1), [&](const Change &first) {
            ForEveryChange(fields.subspan(i + 1), [&](const Change &second) { attempt(first, second); });
        });
    }
}

#endif
