/* The private log drops the lines of the library's own level, so the line of a failed decryption is seen nowhere. Here
 * the source is compiled once more, under other names, with a log that keeps its line. */
#define SRV_CRYPT_GetClearPassword ProbedGetClearPassword
#define SRV_CRYPT_GetClearAndCipherPassword ProbedGetClearAndCipherPassword
#define NAC_Utils_PvtLog ProbedPvtLog
#include "../../src/common/src/smi/kivo_common/password.cpp"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "kit.h"

static std::vector<std::string> g_lines;

void ProbedPvtLog(uint32_t level, const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    g_lines.push_back(std::to_string(level) + " " + text);
}

namespace {

std::vector<std::string> LinesFor(uint32_t format, uint32_t decryptResult, uint8_t accept) {
    g_lines.clear();
    kit::Op<PSSP_CryptIsCipher>().Returns(format);
    kit::Op<PSSP_DecryptSec>().Does([=](const char *, uint32_t, char *clear, uint32_t, uint32_t, const uint8_t *) {
        *clear = '\0';
        return decryptResult;
    });
    kit::Op<PSSP_EncryptSec>().Returns(0);
    char clear[16] = "";
    char cipher[16] = "";
    SRV_CRYPT_PASSWORD_S record = {};
    record.pszInput = "$cipher";
    record.ulInputLen = 7;
    record.pszClear = clear;
    record.ulClearSize = sizeof clear;
    record.pszCipher = cipher;
    record.ulCipherSize = sizeof cipher;
    record.ulMaxClearLen = 16;
    record.ucAcceptUndecryptable = accept;
    (void)ProbedGetClearAndCipherPassword(&record);
    return g_lines;
}

TEST(PasswordLog, TellsTheResultOfAFailedDecryptionAtLevelOne) {
    const std::vector<std::string> expected = {
        "1 SRV_CRYPT_GetClearAndCipherPassword failed. ulChkResult = 4294967295"};
    for (uint32_t format : {8u, 9u, 10u, 11u})
        EXPECT_EQ(expected, LinesFor(format, 0xFFFFFFFF, 0)) << format;
}

TEST(PasswordLog, TellsItAlsoWhenTheTextIsThenTakenAsClear) {
    EXPECT_EQ(std::vector<std::string>{"1 SRV_CRYPT_GetClearAndCipherPassword failed. ulChkResult = 5"},
              LinesFor(8, 5, 1));
}

TEST(PasswordLog, IsSilentOtherwise) {
    for (uint32_t format : {0u, 1u, 7u, 8u, 11u, 12u})
        EXPECT_TRUE(LinesFor(format, 0, 1).empty()) << format;
}

} // namespace
