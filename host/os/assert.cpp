#include <uvelhost/assert.h>

#include "os/places.h"
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

using namespace uvel::host;

static PlaceTable<1024> g_places;
static std::atomic<QAL_ASSERT_HOOK> g_assertHook{nullptr};
static std::atomic<QAL_FATAL_HOOK> g_fatalHook{nullptr};

static const char *TextOf(const char *source) {
    return source == nullptr ? "(null)" : source;
}

void qal_assert(const char *pszSource, uint32_t ulLine) {
    const char *source = TextOf(pszSource);
    auto [count, known] = g_places.Count(source, ulLine);
    if (QAL_ASSERT_HOOK hook = g_assertHook.load())
        hook(pszSource, ulLine, count);
    else if (count == 1)
        ReportLine(known ? "assertion failed" : "assertion failed (further places are only counted)", source, ulLine);
}

void QALFatalError_X(const char *pszSource, uint32_t ulLine) {
    if (QAL_FATAL_HOOK hook = g_fatalHook.load()) {
        hook(pszSource, ulLine);
        return;
    }
    ReportLine("fatal error", TextOf(pszSource), ulLine);
    std::abort();
}

uint64_t QAL_AssertGetCount(const char *pszSource, uint32_t ulLine) {
    return pszSource == nullptr ? g_places.Total() : g_places.CountAt(pszSource, ulLine);
}

void QAL_AssertSetHook(QAL_ASSERT_HOOK pfHook) {
    g_assertHook.store(pfHook);
}

void QAL_FatalSetHook(QAL_FATAL_HOOK pfHook) {
    g_fatalHook.store(pfHook);
}

void uvel::host::ReportLine(const char *what, const char *source, uint32_t line) {
    char text[512] = "uvelhost: ";
    std::size_t used = std::strlen(text);
    auto append = [&](const char *part, std::size_t room) {
        for (; *part != '\0' && used < room; ++part)
            text[used++] = *part;
    };
    append(what, sizeof text / 4);
    append(": ", sizeof text / 4 + 2);
    append(source, sizeof text - 16);
    append(":", sizeof text);

    char digits[11];
    char *first = digits + sizeof digits - 1;
    *first = '\0';
    do
        *--first = static_cast<char>('0' + line % 10);
    while ((line /= 10) != 0);
    append(first, sizeof text);
    append("\n", sizeof text);

    int saved = errno;
    [[maybe_unused]] ssize_t ignored = write(STDERR_FILENO, text, used);
    errno = saved;
}
