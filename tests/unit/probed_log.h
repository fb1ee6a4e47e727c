/* The private log drops the lines of the library's own levels, so they are seen nowhere. A test file that wants to see
 * them compiles the source once more, with a log that keeps its lines:
 *
 *     #define KIVO_GenerateRand ProbedGenerateRand            // every function that the source exports
 *     #define NAC_Utils_PvtLog ProbedRandomLog                // a name of the test file's own
 *     #include "../../src/.../random.cpp"
 *     #include "probed_log.h"
 */
#ifndef UVEL_TESTS_UNIT_PROBED_LOG_H
#define UVEL_TESTS_UNIT_PROBED_LOG_H

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "kit.h"

/* "LEVEL TEXT", oldest first. */
static std::vector<std::string> g_lines;

void NAC_Utils_PvtLog(uint32_t level, const char *format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    g_lines.push_back(std::to_string(level) + " " + text);
}

/* The lines since the last call. */
static inline std::vector<std::string> TakeLines() {
    return std::exchange(g_lines, {});
}

using Lines = std::vector<std::string>;

#endif
