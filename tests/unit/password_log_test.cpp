// The line of a failed decryption.

#define SRV_CRYPT_GetClearPassword ProbedGetClearPassword
#define SRV_CRYPT_GetClearAndCipherPassword ProbedGetClearAndCipherPassword
#define NAC_Utils_PvtLog ProbedPasswordLog
#include "../../src/common/src/smi/kivo_common/password.cpp"

#include "probed_log.h"

namespace {

Lines LinesFor(uint32_t format, uint32_t decryptResult, uint8_t accept) {
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
    return TakeLines();
}

TEST(PasswordLog, TellsTheResultOfAFailedDecryptionAtLevelOne) {
    const Lines expected = {"1 SRV_CRYPT_GetClearAndCipherPassword failed. ulChkResult = 4294967295"};
    for (uint32_t format : {8u, 9u, 10u, 11u})
        EXPECT_EQ(expected, LinesFor(format, 0xFFFFFFFF, 0)) << format;
}

TEST(PasswordLog, TellsItAlsoWhenTheTextIsThenTakenAsClear) {
    EXPECT_EQ(Lines{"1 SRV_CRYPT_GetClearAndCipherPassword failed. ulChkResult = 5"}, LinesFor(8, 5, 1));
}

TEST(PasswordLog, IsSilentOtherwise) {
    for (uint32_t format : {0u, 1u, 7u, 8u, 11u, 12u})
        EXPECT_TRUE(LinesFor(format, 0, 1).empty()) << format;
}

} // namespace
