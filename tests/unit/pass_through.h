/* Exported functions that hand their arguments to one host operation, and its result back. */
#ifndef UVEL_TESTS_UNIT_PASS_THROUGH_H
#define UVEL_TESTS_UNIT_PASS_THROUGH_H

#include "kit.h"

#include <array>

namespace pass_through {

inline std::array<unsigned char, 64> g_blocks[8];

/* The i-th of different values of a type, with bits in all its bytes; the i-th of different addresses. */
template <typename T>
T Sample(std::size_t i) {
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(g_blocks[i].data());
    else
        return static_cast<T>(0x81A2C3E4U + i * 0x01020304U);
}

/* 0 and failures of every look, and values that have nothing to do with success. */
template <typename R>
std::vector<R> Results() {
    if constexpr (std::is_pointer_v<R>)
        return {nullptr, Sample<R>(0)};
    else
        return {R{0}, R{1}, R{2}, static_cast<R>(0x80000001U), static_cast<R>(0xFFFFFFFFU)};
}

template <auto Operation, typename R, typename... A, std::size_t... I>
void Expect(R (*exported)(A...), std::index_sequence<I...>) {
    static_assert(std::is_same_v<decltype(Operation), R (*)(A...)>, "other arguments or result than the host's");
    const std::tuple<A...> given(Sample<A>(I)...);
    const uint64_t before = kit::Op<Operation>().Calls();
    if constexpr (std::is_void_v<R>) {
        kit::Op<Operation>().Does([](A...) {});
        std::apply(exported, given);
        EXPECT_EQ(before + 1, kit::Op<Operation>().Calls());
        EXPECT_EQ(given, kit::Op<Operation>().Last());
    } else {
        uint64_t calls = before;
        for (const R result : Results<R>()) {
            kit::Op<Operation>().Returns(result);
            EXPECT_EQ(result, std::apply(exported, given));
            EXPECT_EQ(++calls, kit::Op<Operation>().Calls());
            EXPECT_EQ(given, kit::Op<Operation>().Last());
        }
    }
}

/* `exported` has the type of the host's Operation, calls it once with its own arguments in order, and returns what that
 * returns. */
template <auto Operation, typename R, typename... A>
void Expect(R (*exported)(A...)) {
    Expect<Operation>(exported, std::index_sequence_for<A...>{});
}

} // namespace pass_through

#define EXPECT_PASSES_THROUGH(exported, operation)                                                                     \
    do {                                                                                                               \
        SCOPED_TRACE(#exported);                                                                                       \
        pass_through::Expect<operation>(exported);                                                                     \
    } while (0)

#endif
