#include "crypto/report.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <uvelhost/report.h>

static std::atomic<QAL_REPORT_HOOK> g_hook{nullptr};

void QAL_ReportSetHook(QAL_REPORT_HOOK pfHook) {
    g_hook.store(pfHook);
}

namespace uvel::host {

static void WriteLine(const char *format, va_list args) {
    int saved = errno;
    char line[1024] = "uvelhost: ";
    std::size_t used = std::strlen(line);
    char *text = line + used;
    int length = std::vsnprintf(text, sizeof line - used - 1, format, args);
    used += std::clamp<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), 0, sizeof line - used - 2);
    if (QAL_REPORT_HOOK hook = g_hook.load()) {
        hook(text);
    } else {
        line[used++] = '\n';
        [[maybe_unused]] ssize_t ignored = write(STDERR_FILENO, line, used);
    }
    errno = saved;
}

static std::atomic<Trouble> g_latest{Trouble::NONE};

void ReportTrouble(Trouble trouble, const char *format, ...) {
    if (g_latest.exchange(trouble, std::memory_order_relaxed) == trouble)
        return;
    va_list args;
    va_start(args, format);
    WriteLine(format, args);
    va_end(args);
}

void TroubleIsOver() {
    g_latest.store(Trouble::NONE, std::memory_order_relaxed);
}

void ReportText(const char *format, ...) {
    va_list args;
    va_start(args, format);
    WriteLine(format, args);
    va_end(args);
}

} // namespace uvel::host
