#include <uvelcommon_base/kivo_password.h>

#include <cstring>
#include <string>

#include "guarded_text.h"
#include "host/password_texts.h"
#include "kit.h"

using namespace password_texts;

namespace {

const kit::Sources ONE_ASSERT = {"src/common/src/smi/kivo_common"};

/* A record whose buffers are filled, so that what was not written shows. */
struct Record {
    SRV_CRYPT_PASSWORD_S record{};
    std::string input;
    char clear[64];
    char cipher[512];

    explicit Record(const std::string &text) : input(text) {
        std::memset(clear, '#', sizeof clear);
        std::memset(cipher, '#', sizeof cipher);
        record.pszInput = input.c_str();
        record.ulInputLen = static_cast<uint32_t>(input.size());
        record.pszClear = clear;
        record.ulClearSize = sizeof clear;
        record.pszCipher = cipher;
        record.ulCipherSize = sizeof cipher;
        record.ulEncryptParam = 77;
        record.ulMaxClearLen = 16;
        std::memset(record.aucBlock, 0xB1, sizeof record.aucBlock);
    }

    uint32_t Convert() { return SRV_CRYPT_GetClearAndCipherPassword(&record); }

    bool ClearIsUntouched() const { return std::string(clear, sizeof clear) == std::string(sizeof clear, '#'); }
    bool CipherIsUntouched() const { return std::string(cipher, sizeof cipher) == std::string(sizeof cipher, '#'); }
};

/* A host whose texts have the format of the test's choice and decrypt to "opened"; encryption writes "sealed". */
class Password : public testing::Test {
  protected:
    void HostSays(uint32_t format, uint32_t decryptResult = 0) {
        kit::Op<PSSP_CryptIsCipher>().Returns(format);
        kit::Op<PSSP_DecryptSec>().Does(
            [decryptResult](const char *, uint32_t, char *clear, uint32_t, uint32_t, const uint8_t *) {
                if (decryptResult == 0)
                    std::strcpy(clear, "opened");
                return decryptResult;
            });
        kit::Op<PSSP_EncryptSec>().Does(
            [this](const char *clear, uint32_t length, char *cipher, uint32_t, uint32_t, const uint8_t *, uint8_t *) {
                sealedFrom_ = clear;
                sealedLength_ = length;
                std::strcpy(cipher, "sealed");
                return 0U;
            });
    }

    std::string sealedFrom_;
    uint32_t sealedLength_ = 0;
};

TEST_F(Password, ThatIsClearIsCopiedAndEncrypted) {
    HostSays(0);
    Record pwd("secret");
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("secret", pwd.clear);
    EXPECT_STREQ("sealed", pwd.cipher);
    EXPECT_EQ("secret", sealedFrom_);
    EXPECT_EQ(6u, sealedLength_);
    EXPECT_EQ(0u, kit::Op<PSSP_DecryptSec>().Calls());
}

TEST_F(Password, GoesToTheEncryptionWithTheRecordsFields) {
    HostSays(0);
    Record pwd("secret");
    EXPECT_EQ(0u, pwd.Convert());
    const auto [clear, length, cipher, size, param, block, result] = kit::Op<PSSP_EncryptSec>().Last();
    EXPECT_EQ(pwd.clear, clear);
    EXPECT_EQ(6u, length);
    EXPECT_EQ(pwd.cipher, cipher);
    EXPECT_EQ(sizeof pwd.cipher, size);
    EXPECT_EQ(77u, param);
    EXPECT_EQ(pwd.record.aucBlock, block);
    EXPECT_EQ(pwd.record.aucResult, result);
}

TEST_F(Password, MayHaveAsManyClearCharactersAsTheRecordSays) {
    HostSays(0);
    Record longest(std::string(16, 'p'));
    EXPECT_EQ(0u, longest.Convert());
    EXPECT_EQ(longest.input, longest.clear);
    EXPECT_EQ(16u, sealedLength_);

    Record longer(std::string(17, 'p'));
    EXPECT_EQ(1u, longer.Convert());
    EXPECT_TRUE(longer.ClearIsUntouched());
    EXPECT_TRUE(longer.CipherIsUntouched());
    EXPECT_EQ(1u, kit::Op<PSSP_EncryptSec>().Calls());
}

TEST_F(Password, ThatIsClearIsAsLongAsTheRecordSays) {
    HostSays(0);
    Record longer(std::string(20, 'p'));
    longer.record.ulInputLen = 16;
    EXPECT_EQ(0u, longer.Convert());
    EXPECT_EQ(longer.input, longer.clear);
    EXPECT_EQ(16u, sealedLength_);

    Record shorter("abc");
    shorter.record.ulInputLen = 17;
    EXPECT_EQ(1u, shorter.Convert());
    EXPECT_TRUE(shorter.ClearIsUntouched());
    EXPECT_TRUE(shorter.CipherIsUntouched());
}

TEST_F(Password, MayBeEmpty) {
    HostSays(0);
    Record pwd("");
    pwd.record.ulMaxClearLen = 0;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("", pwd.clear);
    EXPECT_STREQ("sealed", pwd.cipher);
    EXPECT_EQ(0u, sealedLength_);
}

TEST_F(Password, ThatDoesNotFitTheClearBufferIsAnAssertionAndIsEncryptedFromAnEmptyText) {
    HostSays(0);
    Record pwd("secret");
    pwd.record.ulClearSize = 6;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_STREQ("", pwd.clear);
    EXPECT_EQ('#', pwd.clear[6]);
    EXPECT_STREQ("sealed", pwd.cipher);
    EXPECT_EQ("", sealedFrom_);
    EXPECT_EQ(6u, sealedLength_);
}

TEST_F(Password, FitsTheClearBufferExactly) {
    HostSays(0);
    Record pwd("secret");
    pwd.record.ulClearSize = 7;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("secret", pwd.clear);
    EXPECT_EQ('#', pwd.clear[7]);
}

TEST_F(Password, LeavesAClearBufferOfSizeZeroUnreadAndUnwritten) {
    HostSays(0);
    Record pwd("secret");
    const GuardedText nothing("", 0);
    pwd.record.pszClear = nothing.Get();
    pwd.record.ulClearSize = 0;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_EQ("", sealedFrom_);
}

TEST_F(Password, IsDoneWhateverTheEncryptionSays) {
    HostSays(0);
    kit::Op<PSSP_EncryptSec>().Returns(1);
    Record pwd("secret");
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("secret", pwd.clear);
    EXPECT_TRUE(pwd.CipherIsUntouched());
}

class PasswordOfFormat : public Password, public testing::WithParamInterface<uint32_t> {};

class PasswordOfOldFormat : public PasswordOfFormat {};

TEST_P(PasswordOfOldFormat, IsDecryptedAndEncryptedAfresh) {
    HostSays(GetParam());
    Record pwd("$old");
    kit::Recorder recorder({"PSSP_"});
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("opened", pwd.clear);
    EXPECT_STREQ("sealed", pwd.cipher);
    EXPECT_EQ("opened", sealedFrom_);
    EXPECT_EQ(6u, sealedLength_);
    const auto calls = recorder.Calls();
    ASSERT_EQ(3u, calls.size());
    EXPECT_EQ("PSSP_CryptIsCipher(\"$old\")", calls[0]);
    EXPECT_EQ(0u, calls[1].find("PSSP_DecryptSec(\"$old\", 4, "));
    EXPECT_EQ(0u, calls[2].find("PSSP_EncryptSec(\"opened\", 6, "));
}

TEST_P(PasswordOfOldFormat, IsEncryptedAsLongAsTheClearBufferIsWhenNothingEndsTheText) {
    HostSays(GetParam());
    kit::Op<PSSP_DecryptSec>().Does([](const char *, uint32_t, char *clear, uint32_t size, uint32_t, const uint8_t *) {
        std::memset(clear, 'x', size);
        return 0U;
    });
    kit::Op<PSSP_EncryptSec>().Returns(0);
    Record pwd("$old");
    const GuardedText clear("12345678", 8);
    pwd.record.pszClear = clear.Get();
    pwd.record.ulClearSize = 8;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(8u, std::get<1>(kit::Op<PSSP_EncryptSec>().Last()));
}

TEST_P(PasswordOfOldFormat, IsEncryptedAsAnEmptyTextWithoutReadingAClearBufferOfSizeZero) {
    HostSays(GetParam());
    kit::Op<PSSP_DecryptSec>().Returns(0);
    Record pwd("$old");
    const GuardedText nothing("", 0);
    pwd.record.pszClear = nothing.Get();
    pwd.record.ulClearSize = 0;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(1u, kit::Op<PSSP_EncryptSec>().Calls());
    EXPECT_EQ("", sealedFrom_);
    EXPECT_EQ(0u, sealedLength_);
}

INSTANTIATE_TEST_SUITE_P(Formats, PasswordOfOldFormat, testing::Values(8u, 9u));

class PasswordOfCurrentFormat : public PasswordOfFormat {};

TEST_P(PasswordOfCurrentFormat, IsDecryptedAndKept) {
    HostSays(GetParam());
    Record pwd("$current");
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("opened", pwd.clear);
    EXPECT_STREQ("$current", pwd.cipher);
    EXPECT_EQ(0u, kit::Op<PSSP_EncryptSec>().Calls());
}

TEST_P(PasswordOfCurrentFormat, MayBeLongerThanAClearOne) {
    HostSays(GetParam());
    Record pwd("$" + std::string(100, 'c'));
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(pwd.input, pwd.cipher);
}

TEST_P(PasswordOfCurrentFormat, ThatDoesNotFitTheCipherBufferIsAnAssertionAndLeavesItEmpty) {
    HostSays(GetParam());
    Record pwd("$current");
    pwd.record.ulCipherSize = 8;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_STREQ("opened", pwd.clear);
    EXPECT_STREQ("", pwd.cipher);
    EXPECT_EQ('#', pwd.cipher[8]);
}

INSTANTIATE_TEST_SUITE_P(Formats, PasswordOfCurrentFormat, testing::Values(10u, 11u));

class PasswordThatIsDecrypted : public PasswordOfFormat {};

TEST_P(PasswordThatIsDecrypted, IsDecryptedWithParameterOneAndTheRecordsFields) {
    HostSays(GetParam());
    Record pwd("$cipher");
    EXPECT_EQ(0u, pwd.Convert());
    const auto [cipher, length, clear, size, param, block] = kit::Op<PSSP_DecryptSec>().Last();
    EXPECT_EQ(pwd.record.pszInput, cipher);
    EXPECT_EQ(7u, length);
    EXPECT_EQ(pwd.clear, clear);
    EXPECT_EQ(sizeof pwd.clear, size);
    EXPECT_EQ(1u, param);
    EXPECT_EQ(pwd.record.aucBlock, block);
}

TEST_P(PasswordThatIsDecrypted, IsRefusedWhenThatFails) {
    HostSays(GetParam(), 5);
    Record pwd("$cipher");
    EXPECT_EQ(1u, pwd.Convert());
    EXPECT_TRUE(pwd.ClearIsUntouched());
    EXPECT_TRUE(pwd.CipherIsUntouched());
    EXPECT_EQ(0u, kit::Op<PSSP_EncryptSec>().Calls());
}

TEST_P(PasswordThatIsDecrypted, IsTakenAsClearWhenThatFailsAndTheRecordAcceptsIt) {
    HostSays(GetParam(), 5);
    Record pwd("$cipher");
    pwd.record.ucAcceptUndecryptable = 1;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("$cipher", pwd.clear);
    EXPECT_STREQ("sealed", pwd.cipher);
    EXPECT_EQ("$cipher", sealedFrom_);
    EXPECT_EQ(7u, sealedLength_);
    EXPECT_EQ(77u, std::get<4>(kit::Op<PSSP_EncryptSec>().Last()));
}

TEST_P(PasswordThatIsDecrypted, IsAcceptedByTheValueOneOnly) {
    HostSays(GetParam(), 5);
    for (int value : {0, 2, 255}) {
        Record pwd("$cipher");
        pwd.record.ucAcceptUndecryptable = static_cast<uint8_t>(value);
        EXPECT_EQ(1u, pwd.Convert()) << value;
    }
}

TEST_P(PasswordThatIsDecrypted, IsMeasuredBeforeItIsTakenAsClear) {
    HostSays(GetParam(), 5);
    Record longest("$" + std::string(15, 'c'));
    longest.record.ucAcceptUndecryptable = 1;
    longest.record.ulInputLen = 3; /* what is encrypted, and not what is compared */
    EXPECT_EQ(0u, longest.Convert());
    EXPECT_EQ(longest.input, longest.clear);
    EXPECT_EQ(3u, sealedLength_);

    Record longer("$" + std::string(16, 'c'));
    longer.record.ucAcceptUndecryptable = 1;
    longer.record.ulInputLen = 3;
    EXPECT_EQ(1u, longer.Convert());
    EXPECT_TRUE(longer.ClearIsUntouched());
    EXPECT_TRUE(longer.CipherIsUntouched());

    Record shorter("$cipher");
    shorter.record.ucAcceptUndecryptable = 1;
    shorter.record.ulInputLen = 100;
    EXPECT_EQ(0u, shorter.Convert());
    EXPECT_STREQ("$cipher", shorter.clear);
    EXPECT_EQ(100u, sealedLength_);
}

TEST_P(PasswordThatIsDecrypted, TakenAsClearWithoutRoomIsAnAssertion) {
    HostSays(GetParam(), 5);
    Record pwd("$cipher");
    pwd.record.ucAcceptUndecryptable = 1;
    pwd.record.ulClearSize = 7;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_STREQ("", pwd.clear);
}

INSTANTIATE_TEST_SUITE_P(Formats, PasswordThatIsDecrypted, testing::Values(8u, 9u, 10u, 11u));

TEST_F(Password, OfTheFirstSevenFormatsNeedsNoWork) {
    for (uint32_t format = 1; format <= 7; ++format) {
        HostSays(format);
        Record pwd("$" + std::string(100, 'c')); /* no limit applies */
        EXPECT_EQ(0u, pwd.Convert()) << format;
        EXPECT_TRUE(pwd.ClearIsUntouched()) << format;
        EXPECT_TRUE(pwd.CipherIsUntouched()) << format;
    }
    EXPECT_EQ(0u, kit::Op<PSSP_DecryptSec>().Calls());
    EXPECT_EQ(0u, kit::Op<PSSP_EncryptSec>().Calls());
}

TEST_F(Password, OfAnUnknownFormatIsRefused) {
    for (uint32_t format : {12u, 13u, 99u, 0xFFFFFFFFu}) {
        HostSays(format);
        Record pwd("$x");
        pwd.record.ucAcceptUndecryptable = 1;
        EXPECT_EQ(1u, pwd.Convert()) << format;
        EXPECT_TRUE(pwd.ClearIsUntouched()) << format;
        EXPECT_TRUE(pwd.CipherIsUntouched()) << format;
    }
    EXPECT_EQ(0u, kit::Op<PSSP_DecryptSec>().Calls());
    EXPECT_EQ(0u, kit::Op<PSSP_EncryptSec>().Calls());
}

TEST_F(Password, NeedsARecordWithAllItsPointers) {
    HostSays(0);
    EXPECT_EQ(1u, SRV_CRYPT_GetClearAndCipherPassword(nullptr));
    Record noInput("a");
    noInput.record.pszInput = nullptr;
    EXPECT_EQ(1u, noInput.Convert());
    Record noClear("a");
    noClear.record.pszClear = nullptr;
    EXPECT_EQ(1u, noClear.Convert());
    Record noCipher("a");
    noCipher.record.pszCipher = nullptr;
    EXPECT_EQ(1u, noCipher.Convert());
    EXPECT_EQ(0u, kit::Op<PSSP_CryptIsCipher>().Calls());
}

TEST_F(Password, RecordHasItsFieldsInOrder) {
    EXPECT_EQ(0u, offsetof(SRV_CRYPT_PASSWORD_S, pszInput));
    EXPECT_EQ(8u, offsetof(SRV_CRYPT_PASSWORD_S, ulInputLen));
    EXPECT_EQ(16u, offsetof(SRV_CRYPT_PASSWORD_S, pszClear));
    EXPECT_EQ(24u, offsetof(SRV_CRYPT_PASSWORD_S, ulClearSize));
    EXPECT_EQ(32u, offsetof(SRV_CRYPT_PASSWORD_S, pszCipher));
    EXPECT_EQ(40u, offsetof(SRV_CRYPT_PASSWORD_S, ulCipherSize));
    EXPECT_EQ(44u, offsetof(SRV_CRYPT_PASSWORD_S, ulEncryptParam));
    EXPECT_EQ(48u, offsetof(SRV_CRYPT_PASSWORD_S, ulMaxClearLen));
    EXPECT_EQ(52u, offsetof(SRV_CRYPT_PASSWORD_S, ucAcceptUndecryptable));
    EXPECT_EQ(53u, offsetof(SRV_CRYPT_PASSWORD_S, aucBlock));
    EXPECT_EQ(85u, offsetof(SRV_CRYPT_PASSWORD_S, aucResult));
}

/* The clear text alone. */

class ClearPassword : public Password {
  protected:
    uint32_t Get(const char *cipher, char *clear, uint32_t size) {
        return SRV_CRYPT_GetClearPassword(cipher, clear, size, 42, block_);
    }
    uint8_t block_[32] = {};
};

TEST_F(ClearPassword, IsDecryptedIntoAClearedBuffer) {
    HostSays(10);
    char clear[16];
    std::memset(clear, '#', sizeof clear);
    kit::Op<PSSP_DecryptSec>().Does([](const char *, uint32_t, char *out, uint32_t size, uint32_t, const uint8_t *) {
        EXPECT_EQ(std::string(12, '\0'), std::string(out, size));
        std::strcpy(out, "opened");
        return 0U;
    });
    EXPECT_EQ(0u, Get("$cipher", clear, 12));
    EXPECT_STREQ("opened", clear);
    EXPECT_EQ("####", std::string(clear + 12, 4));
    const auto [cipher, length, out, size, param, block] = kit::Op<PSSP_DecryptSec>().Last();
    EXPECT_STREQ("$cipher", cipher);
    EXPECT_EQ(7u, length);
    EXPECT_EQ(clear, out);
    EXPECT_EQ(12u, size);
    EXPECT_EQ(42u, param);
    EXPECT_EQ(block_, block);
}

TEST_F(ClearPassword, IsReadFromTextsOfEveryFormat) {
    char clear[16];
    for (uint32_t format : {1u, 7u, 8u, 11u, 12u, 0xFFFFFFFFu}) {
        HostSays(format);
        EXPECT_EQ(0u, Get("$cipher", clear, sizeof clear)) << format;
    }
}

TEST_F(ClearPassword, IsNotReadFromWhatIsNoCipherText) {
    HostSays(0);
    char clear[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(1u, Get("plain", clear, sizeof clear));
    EXPECT_EQ("####", std::string(clear, 4));
    EXPECT_EQ(0u, kit::Op<PSSP_DecryptSec>().Calls());
}

TEST_F(ClearPassword, IsMissingWhenTheDecryptionFailsWithAnyResult) {
    char clear[4];
    for (uint32_t result : {1u, 7u, 0xFFFFFFFFu}) {
        HostSays(10, result);
        std::memset(clear, '#', sizeof clear);
        EXPECT_EQ(1u, Get("$cipher", clear, sizeof clear)) << result;
        EXPECT_EQ(std::string(4, '\0'), std::string(clear, 4));
    }
}

TEST_F(ClearPassword, NeedsAllPointers) {
    HostSays(10);
    char clear[8];
    EXPECT_EQ(1u, Get(nullptr, clear, sizeof clear));
    EXPECT_EQ(1u, Get("$cipher", nullptr, 8));
    EXPECT_EQ(1u, SRV_CRYPT_GetClearPassword("$cipher", clear, sizeof clear, 0, nullptr));
    EXPECT_EQ(0u, kit::Op<PSSP_CryptIsCipher>().Calls());
}

TEST_F(ClearPassword, IsDecryptedAllTheSameWhenTheBufferCannotBeCleared) {
    HostSays(10);
    char clear[8];
    EXPECT_EQ(0u, Get("$cipher", clear, 0x80000000U)); /* beyond what can be cleared at once */
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_STREQ("opened", clear);
}

TEST_F(ClearPassword, IsDecryptedIntoABufferOfSizeZeroToo) {
    HostSays(10);
    kit::Op<PSSP_DecryptSec>().Returns(0);
    const GuardedText nothing("", 0);
    EXPECT_EQ(0u, Get("$cipher", nothing.Get(), 0));
    EXPECT_EQ(kit::Sources{}, kit::TakeAsserts());
    EXPECT_EQ(1u, kit::Op<PSSP_DecryptSec>().Calls());
    EXPECT_EQ(0u, std::get<3>(kit::Op<PSSP_DecryptSec>().Last()));
}

/* With the host's own cipher. */

class PasswordOnThisHost : public testing::Test {
  protected:
    void SetUp() override { block_.fill(0xB1); }

    KeyFolder keys_;
    Block block_;
};

TEST_F(PasswordOnThisHost, IsEncryptedAndKeptFromThenOn) {
    Record typed("secret");
    ASSERT_EQ(0u, typed.Convert());
    EXPECT_STREQ("secret", typed.clear);
    EXPECT_EQ(10u, PSSP_CryptIsCipher(typed.cipher));
    EXPECT_EQ(std::string::npos, std::string(typed.cipher).find("secret"));

    Record stored(typed.cipher);
    ASSERT_EQ(0u, stored.Convert());
    EXPECT_STREQ("secret", stored.clear);
    EXPECT_STREQ(typed.cipher, stored.cipher);

    char clear[16];
    EXPECT_EQ(0u, SRV_CRYPT_GetClearPassword(typed.cipher, clear, sizeof clear, 0, block_.data()));
    EXPECT_STREQ("secret", clear);
}

TEST_F(PasswordOnThisHost, OfTheOtherCurrentFormatIsKeptToo) {
    keys_.Put(Bytes(32, 0x11));
    Record stored(SealedText(11, "secret", Bytes(32, 0x11), block_));
    ASSERT_EQ(0u, stored.Convert());
    EXPECT_STREQ("secret", stored.clear);
    EXPECT_EQ(stored.input, stored.cipher);
}

TEST_F(PasswordOnThisHost, OfTheOldFormatIsEncryptedAfresh) {
    keys_.Put(Bytes(32, 0x11));
    Record old(OldText("secret", Bytes(32, 0x11), block_));
    ASSERT_EQ(8u, PSSP_CryptIsCipher(old.input.c_str()));
    ASSERT_EQ(0u, old.Convert());
    EXPECT_STREQ("secret", old.clear);
    EXPECT_EQ(10u, PSSP_CryptIsCipher(old.cipher));

    Record stored(old.cipher);
    EXPECT_EQ(0u, stored.Convert());
    EXPECT_STREQ("secret", stored.clear);
}

TEST_F(PasswordOnThisHost, UnderAnotherKeyIsRefusedOrTakenAsClear) {
    keys_.Put(Bytes(32, 0x11));
    const std::string foreign = SealedText(10, "secret", Bytes(32, 0x22), block_);
    Record refused(foreign);
    EXPECT_EQ(1u, refused.Convert());
    EXPECT_EQ(std::string(sizeof refused.clear, '\0'), std::string(refused.clear, sizeof refused.clear));
    EXPECT_TRUE(refused.CipherIsUntouched());

    Record tooLong(foreign);
    tooLong.record.ucAcceptUndecryptable = 1;
    EXPECT_EQ(1u, tooLong.Convert());

    Record taken("$uvp10$hi");
    taken.record.ucAcceptUndecryptable = 1;
    EXPECT_EQ(0u, taken.Convert());
    EXPECT_STREQ("$uvp10$hi", taken.clear);
    EXPECT_EQ(10u, PSSP_CryptIsCipher(taken.cipher));
    EXPECT_STRNE("$uvp10$hi", taken.cipher);
}

TEST_F(PasswordOnThisHost, ThatWasCutOrChangedIsRefusedInEveryFormat) {
    const Bytes key(32, 0x11);
    keys_.Put(key);
    for (const std::string &whole : {OldText("secret", key, block_), SealedText(10, "secret", key, block_),
                                     SealedText(11, "secret", key, block_)}) {
        Record stored(whole);
        ASSERT_EQ(0u, stored.Convert()) << whole;
        std::vector<std::string> spoilt;
        for (std::size_t size = 7; size < whole.size(); ++size)
            spoilt.push_back(whole.substr(0, size));
        for (std::size_t at = 7; at < whole.size(); ++at) {
            spoilt.push_back(whole);
            spoilt.back()[at] = whole[at] == 'A' ? 'B' : 'A';
        }
        for (const std::string &text : spoilt) {
            Record refused(text);
            EXPECT_EQ(1u, refused.Convert()) << text;
            EXPECT_STREQ("", refused.clear) << text;
            EXPECT_TRUE(refused.CipherIsUntouched()) << text;
        }
    }
}

TEST_F(PasswordOnThisHost, WithAnotherParameterBlockIsRefused) {
    Record typed("secret");
    ASSERT_EQ(0u, typed.Convert());
    Record stored(typed.cipher);
    stored.record.aucBlock[31] ^= 1;
    EXPECT_EQ(1u, stored.Convert());
}

TEST_F(PasswordOnThisHost, OfAFutureFormatIsRefused) {
    Record future("$uvp12$AAAA");
    future.record.ucAcceptUndecryptable = 1;
    EXPECT_EQ(1u, future.Convert());
    EXPECT_TRUE(future.ClearIsUntouched());
}

TEST_F(PasswordOnThisHost, ThatDoesNotFitTheClearBufferIsNotEncryptedAsAnEmptyOne) {
    Record pwd("secret");
    pwd.record.ulClearSize = 4;
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_EQ(ONE_ASSERT, kit::TakeAsserts());
    EXPECT_STREQ("", pwd.cipher);
}

TEST_F(PasswordOnThisHost, LeavesAnEmptyCipherTextWithoutAKey) {
    keys_.Put(Bytes(31, 0x11));
    Record pwd("secret");
    EXPECT_EQ(0u, pwd.Convert());
    EXPECT_STREQ("secret", pwd.clear);
    EXPECT_STREQ("", pwd.cipher);
}

} // namespace
