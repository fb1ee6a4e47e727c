#include "host_failures.h"

#include "kit.h"

namespace kit {

namespace {

template <auto Fn>
using ResultOf = typename Operation<Fn>::Result;

/* Answers of the failures of an operation, in the order of the table. */
template <auto Fn>
std::vector<ResultOf<Fn>> &AnswersOf() {
    static std::vector<ResultOf<Fn>> answers;
    return answers;
}

template <auto Fn>
ResultOf<Fn> AnswerOf(int failure) {
    return AnswersOf<Fn>().at(static_cast<std::size_t>(failure));
}

template <auto Fn>
void FailWithoutWork(int failure, uint64_t n, bool andAllThatFollow) {
    if (andAllThatFollow)
        Op<Fn>().FailsFrom(n, AnswerOf<Fn>(failure));
    else
        Op<Fn>().FailsOn(n, AnswerOf<Fn>(failure));
}

template <auto Fn, typename R, typename... A>
void WrapReal(R (*)(A...), R answer, uint64_t first, uint64_t last) {
    Op<Fn>().Does([=](A... arguments) {
        const R real = Op<Fn>().Real(arguments...);
        const uint64_t call = Op<Fn>().Calls(); /* this one counts */
        return call >= first && call <= last ? answer : real;
    });
}

template <auto Fn>
void FailAfterWork(int failure, uint64_t n, bool andAllThatFollow) {
    const uint64_t first = Op<Fn>().Calls() + n;
    WrapReal<Fn>(Fn, AnswerOf<Fn>(failure), first, andAllThatFollow ? UINT64_MAX : first);
}

template <auto Fn>
void StopFailing() {
    Op<Fn>().FailsOn(UINT64_MAX / 2);
}

template <auto Fn>
void StopWrapping() {
    Op<Fn>().Does(nullptr);
}

template <auto Fn>
uint64_t CallsOf() {
    return Op<Fn>().Calls();
}

template <auto Fn>
int Know(std::initializer_list<ResultOf<Fn>> answers) {
    AnswersOf<Fn>() = answers;
    return static_cast<int>(answers.size());
}

template <auto Fn, typename... Answers>
FailingOperation Fails(const char *name, Answers... answers) {
    return {name, Know<Fn>({static_cast<ResultOf<Fn>>(answers)...}), FailWithoutWork<Fn>, StopFailing<Fn>, CallsOf<Fn>};
}

template <auto Fn, typename... Answers>
FailingOperation Refuses(const char *name, Answers... answers) {
    return {name, Know<Fn>({static_cast<ResultOf<Fn>>(answers)...}), FailAfterWork<Fn>, StopWrapping<Fn>, CallsOf<Fn>};
}

template <auto Fn>
FailingOperation NeverFails(const char *name) {
    return {name, 0, nullptr, nullptr, CallsOf<Fn>};
}

} // namespace

const std::vector<FailingOperation> &FailingOperations() {
    static const std::vector<FailingOperation> operations{
#define FAILS(operation, ...) Fails<operation>(#operation, __VA_ARGS__),
#define REFUSES(operation, ...) Refuses<operation>(#operation, __VA_ARGS__),
#define NEVER_FAILS(operation) NeverFails<operation>(#operation),
#include "host_failures.inc"
#undef FAILS
#undef REFUSES
#undef NEVER_FAILS
    };
    return operations;
}

} // namespace kit
