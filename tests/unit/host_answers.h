/* Answers of host operations whose last argument is the out-parameter. */
#ifndef UVEL_TESTS_UNIT_HOST_ANSWERS_H
#define UVEL_TESTS_UNIT_HOST_ANSWERS_H

#include "kit.h"

#include <ostream>

/* Read writes `value` whatever it is asked and gives `result`; with a failure the value must not be believed. */
template <auto Read>
void Writes(uint64_t value, uint32_t result) {
    kit::Op<Read>().Does([=](auto... arguments) {
        auto *out = std::get<sizeof...(arguments) - 1>(std::tuple(arguments...));
        *out = static_cast<std::remove_pointer_t<decltype(out)>>(value);
        return result;
    });
}

template <auto Read>
void Answers(uint64_t value) {
    Writes<Read>(value, 0);
}

template <auto Read>
void FailsWriting(uint64_t value, uint32_t result = 1) {
    Writes<Read>(value, result);
}

/* A function under its name, as the value of a parameterised test. */
template <typename Function>
struct Named {
    const char *name;
    Function *call;

    friend void PrintTo(const Named &named, std::ostream *out) { *out << named.name; }
};

#endif
