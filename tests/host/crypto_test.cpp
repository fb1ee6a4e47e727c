#include "crypto_fixtures.h"

#include <algorithm>
#include <cstring>
#include <openssl/err.h>
#include <set>

using namespace crypto_fixtures;

namespace {

TEST(CryptRandom, FillsTheWholeBufferAndNothingElse) {
    std::array<uint8_t, 66> seen{};
    for (int draw = 0; draw < 64; ++draw) {
        std::array<uint8_t, 66> buffer{};
        EXPECT_EQ(0u, CRYPT_random(&buffer[1], 64));
        EXPECT_EQ(0, buffer[0]);
        EXPECT_EQ(0, buffer[65]);
        for (std::size_t i = 0; i < buffer.size(); ++i)
            seen[i] = static_cast<uint8_t>(seen[i] | buffer[i]);
    }
    for (std::size_t i = 1; i <= 64; ++i)
        EXPECT_EQ(0xFF, seen[i]) << "bits that were never set in byte " << i;
}

TEST(CryptRandom, NeverGivesTheSameTwice) {
    std::set<Bytes> drawn;
    for (int draw = 0; draw < 1000; ++draw) {
        Bytes bytes(16, 0);
        EXPECT_EQ(0u, CRYPT_random(bytes.data(), 16));
        EXPECT_TRUE(drawn.insert(bytes).second);
    }
}

TEST(CryptRandom, DrawsNothingForLengthZero) {
    uint8_t byte = 0xA5;
    EXPECT_EQ(0u, CRYPT_random(&byte, 0));
    EXPECT_EQ(0xA5, byte);
}

TEST(CryptRandom, NeedsABuffer) {
    EXPECT_NE(0u, CRYPT_random(nullptr, 4));
    EXPECT_NE(0u, CRYPT_random(nullptr, 0));
}

TEST(CryptRandom, FailsWhenTheGeneratorDoes) {
    NoRandomNumbers none;
    uint8_t bytes[4];
    EXPECT_NE(0u, CRYPT_random(bytes, sizeof bytes));
}

TEST(FipsMode, IsThatOfTheCryptoLibrary) {
    InChild([] {
        ASSERT_EQ(1, EVP_default_properties_enable_fips(nullptr, 0));
        EXPECT_EQ(0u, FIPSIsEnable());
        ASSERT_EQ(1, EVP_default_properties_enable_fips(nullptr, 1));
        EXPECT_EQ(1u, FIPSIsEnable());
    });
}

TEST(FipsMode, LogsTheReportOfAModule) {
    testing::internal::CaptureStderr();
    FIPS_SecTestContinuousRandomNumberError("RADIUS");
    FIPS_SecTestContinuousRandomNumberError("PORTAL");
    EXPECT_EQ("uvelhost: continuous test of the random numbers failed for RADIUS\n"
              "uvelhost: continuous test of the random numbers failed for PORTAL\n",
              testing::internal::GetCapturedStderr());
}

/* Passwords. */

TEST_F(PasswordCipher, OpensWhatItSealed) {
    for (std::size_t length : {0u, 1u, 2u, 14u, 15u, 16u, 17u, 31u, 32u, 63u, 64u, 100u, 255u, 1024u, 4095u, 4096u}) {
        std::string clear(length, '\0');
        for (std::size_t i = 0; i < length; ++i)
            clear[i] = static_cast<char>(i % 255 + 1);
        const std::string cipher = Encrypt(clear);
        EXPECT_EQ(0u, Decrypt(cipher)) << length;
        EXPECT_EQ(clear, Opened()) << length;
    }
}

TEST_F(PasswordCipher, WritesPrintableTextThatShowsNothingOfThePassword) {
    const std::string cipher = Encrypt("correct horse battery staple");
    EXPECT_EQ(std::string::npos, cipher.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                                          "0123456789-_$"));
    EXPECT_EQ("$uvp10$", cipher.substr(0, 7));
    for (const char *word : {"correct", "horse", "battery", "staple"})
        EXPECT_EQ(std::string::npos, cipher.find(word));
}

TEST_F(PasswordCipher, NeverWritesTheSameTextTwice) {
    std::set<std::string> texts;
    for (int round = 0; round < 100; ++round)
        EXPECT_TRUE(texts.insert(Encrypt("secret")).second);
}

TEST_F(PasswordCipher, TellsTheLengthInStepsOfSixteenOnly) {
    const std::size_t shortest = Encrypt("").size();
    EXPECT_EQ(shortest, Encrypt(std::string(15, 'x')).size());
    EXPECT_LT(shortest, Encrypt(std::string(16, 'x')).size());
    EXPECT_EQ(Encrypt(std::string(16, 'x')).size(), Encrypt(std::string(31, 'x')).size());
}

TEST_F(PasswordCipher, NeedsExactlyTheRoomThatIsDocumented) {
    for (uint32_t length = 0; length <= 64; ++length) {
        const std::string clear(length, 'x');
        std::vector<char> cipher(PSSP_CIPHER_SIZE(length) + 1, '#');
        EXPECT_NE(0u, PSSP_EncryptSec(clear.data(), length, cipher.data(), PSSP_CIPHER_SIZE(length) - 1, 0,
                                      block_.data(), nullptr));
        EXPECT_EQ('\0', cipher[0]);
        EXPECT_EQ(std::string(cipher.size() - 1, '#'), std::string(&cipher[1], cipher.size() - 1));
        EXPECT_EQ(0u, PSSP_EncryptSec(clear.data(), length, cipher.data(), PSSP_CIPHER_SIZE(length), 0, block_.data(),
                                      nullptr));
        EXPECT_EQ(PSSP_CIPHER_SIZE(length) - 1, std::strlen(cipher.data()));
        EXPECT_EQ('#', cipher.back());
    }
}

TEST_F(PasswordCipher, WritesTheClearTextIntoABufferThatJustHoldsIt) {
    const std::string cipher = Encrypt("secret");
    const auto length = static_cast<uint32_t>(cipher.size());
    char clear[8] = "#######";
    EXPECT_EQ(0u, PSSP_DecryptSec(cipher.c_str(), length, clear, 7, 1, block_.data()));
    EXPECT_STREQ("secret", clear);

    std::memset(clear, '#', sizeof clear);
    EXPECT_NE(0u, PSSP_DecryptSec(cipher.c_str(), length, clear, 6, 1, block_.data()));
    EXPECT_EQ(std::string(6, '\0') + "##", std::string(clear, 8));
    EXPECT_NE(0u, PSSP_DecryptSec(cipher.c_str(), length, clear, 0, 1, block_.data()));
    EXPECT_EQ(std::string(6, '\0') + "##", std::string(clear, 8));
}

TEST_F(PasswordCipher, RefusesATextThatWasCut) {
    const std::string cipher = Encrypt("a password that takes more than one unit of sixteen");
    for (std::size_t length = 0; length < cipher.size(); ++length)
        EXPECT_TRUE(IsRefused(cipher.substr(0, length))) << length;
}

TEST_F(PasswordCipher, RefusesALengthThatIsNotTheTexts) {
    const std::string cipher = Encrypt("secret");
    const auto length = static_cast<uint32_t>(cipher.size());
    char clear[32];
    for (uint32_t wrong : {0u, 1u, 7u, length - 1, length + 1, 5000u, 0xFFFFFFFFu})
        EXPECT_NE(0u, PSSP_DecryptSec(cipher.c_str(), wrong, clear, sizeof clear, 1, block_.data())) << wrong;
}

TEST_F(PasswordCipher, RefusesATextWithACharacterChanged) {
    const std::string cipher = Encrypt("secret");
    for (std::size_t place = 0; place < cipher.size(); ++place)
        for (char c : std::string("A9-_$ =+/\x01\xFF")) {
            std::string changed = cipher;
            changed[place] = c;
            EXPECT_TRUE(changed == cipher || IsRefused(changed)) << changed;
        }
}

TEST_F(PasswordCipher, RefusesATextWithCharactersAdded) {
    const std::string cipher = Encrypt("secret");
    for (const char *more : {"A", "AA", "AAA", "AAAA", "=", " ", "\n"})
        EXPECT_TRUE(IsRefused(cipher + more)) << more;
}

TEST_F(PasswordCipher, RefusesATextOfAnotherFormatsName) {
    const std::string rest = Encrypt("secret").substr(7);
    for (const char *prefix : {"$uvp08$", "$uvp09$", "$uvp11$", "$uvp12$", "$uvp99$"})
        EXPECT_TRUE(IsRefused(prefix + rest)) << prefix;
}

TEST_F(PasswordCipher, RefusesATextOfAnotherKey) {
    const std::string cipher = Encrypt("secret");
    keys_.Use("other.key");
    EXPECT_EQ(0u, Decrypt(Encrypt("x")));
    EXPECT_TRUE(IsRefused(cipher));
    keys_.Use("password.key");
    EXPECT_EQ(0u, Decrypt(cipher));
}

TEST_F(PasswordCipher, RefusesATextOfAnotherBlock) {
    const std::string cipher = Encrypt("secret");
    for (uint8_t &byte : block_) {
        byte ^= 0x80;
        EXPECT_TRUE(IsRefused(cipher));
        byte ^= 0x80;
    }
    EXPECT_EQ(0u, Decrypt(cipher));
}

TEST_F(PasswordCipher, KeepsItsLayout) {
    const Bytes key(32, 0x11);
    keys_.Put(key);
    for (int format : {10, 11})
        for (const std::string &clear : {std::string(), std::string("secret"), std::string(40, 'x')}) {
            EXPECT_EQ(0u, Decrypt(SealedText(format, clear, key, block_))) << format;
            EXPECT_EQ(clear, Opened());
        }
}

TEST_F(PasswordCipher, RefusesASealedTextWithoutTerminator) {
    const Bytes key(32, 0x11);
    keys_.Put(key);
    EXPECT_TRUE(IsRefused(SealedText(10, Bytes(16, 'x'), key, block_)));
    EXPECT_TRUE(IsRefused(SealedText(10, Bytes(), key, block_)));
    EXPECT_TRUE(IsRefused(SealedText(10, Bytes(15, 0), key, block_)));
}

TEST_F(PasswordCipher, OpensTheOldFormat) {
    const Bytes key(32, 0x11);
    keys_.Put(key);
    for (std::size_t length : {0u, 1u, 15u, 16u, 17u, 4096u}) {
        const std::string clear(length, 'x');
        EXPECT_EQ(0u, Decrypt(OldText(clear, key, block_))) << length;
        EXPECT_EQ(clear, Opened());
    }
}

TEST_F(PasswordCipher, RefusesAnOldTextThatWasCutOrChangedOrIsOfAnotherKeyOrBlock) {
    const Bytes key(32, 0x11);
    keys_.Put(key);
    const std::string old = OldText("secret", key, block_);
    for (std::size_t place = 0; place < old.size(); ++place) {
        EXPECT_TRUE(IsRefused(old.substr(0, place))) << place;
        std::string changed = old;
        changed[place] = changed[place] == '0' ? '1' : '0';
        EXPECT_TRUE(IsRefused(changed)) << changed;
    }
    EXPECT_TRUE(IsRefused(old + "00"));
    EXPECT_TRUE(IsRefused(old.substr(0, 7) + std::string(32, '0') + old.substr(7)));
    EXPECT_TRUE(IsRefused(OldText("secret", Bytes(32, 0x12), block_)));
    block_[0] ^= 1;
    EXPECT_TRUE(IsRefused(old));
}

TEST_F(PasswordCipher, WritesTheFormatThatTheEnvironmentNames) {
    setenv("UVELHOST_PASSWORD_CIPHER", "chacha20-poly1305", 1);
    const std::string chacha = Encrypt("secret");
    EXPECT_EQ(11u, PSSP_CryptIsCipher(chacha.c_str()));
    setenv("UVELHOST_PASSWORD_CIPHER", "aes-256-gcm", 1);
    EXPECT_EQ(10u, PSSP_CryptIsCipher(Encrypt("secret").c_str()));
    EXPECT_EQ(0u, Decrypt(chacha));
    EXPECT_EQ("secret", Opened());

    setenv("UVELHOST_PASSWORD_CIPHER", "rot13", 1);
    char cipher[100] = "#";
    testing::internal::CaptureStderr();
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, cipher, sizeof cipher, 0, block_.data(), nullptr));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("rot13"));
    EXPECT_STREQ("", cipher);
    unsetenv("UVELHOST_PASSWORD_CIPHER");
}

TEST_F(PasswordCipher, GivesTheParameterNoMeaningAndWritesNoResult) {
    char cipher[100];
    uint8_t result[PSSP_RESULT_SIZE];
    std::memset(result, 0xA5, sizeof result);
    EXPECT_EQ(0u, PSSP_EncryptSec("secret", 6, cipher, sizeof cipher, 7, block_.data(), result));
    EXPECT_TRUE(std::all_of(std::begin(result), std::end(result), [](uint8_t byte) { return byte == 0xA5; }));
    EXPECT_EQ(0u, Decrypt(cipher));
}

TEST_F(PasswordCipher, WorksWithinOneBuffer) {
    char buffer[100] = "secret";
    EXPECT_EQ(0u, PSSP_EncryptSec(buffer, 6, buffer, sizeof buffer, 0, block_.data(), nullptr));
    EXPECT_EQ(10u, PSSP_CryptIsCipher(buffer));
    EXPECT_EQ(0u, PSSP_DecryptSec(buffer, static_cast<uint32_t>(std::strlen(buffer)), buffer, sizeof buffer, 1,
                                  block_.data()));
    EXPECT_STREQ("secret", buffer);
}

TEST_F(PasswordCipher, TakesNoClearTextThatEndsEarlyOrIsTooLong) {
    std::vector<char> cipher(10000, '#');
    const auto encrypt = [&](const std::string &clear, uint32_t length) {
        cipher[0] = '#';
        return PSSP_EncryptSec(clear.c_str(), length, cipher.data(), 10000, 0, block_.data(), nullptr);
    };
    EXPECT_NE(0u, encrypt("secret", 7));
    EXPECT_EQ('\0', cipher[0]);
    EXPECT_NE(0u, encrypt("", 0xFFFFFFFF));
    EXPECT_EQ('\0', cipher[0]);
    EXPECT_NE(0u, encrypt(std::string(4097, 'x'), 4097));
    EXPECT_EQ('\0', cipher[0]);
    EXPECT_EQ(0u, encrypt("secret", 3)); /* the beginning alone is fine */
    EXPECT_EQ(0u, Decrypt(cipher.data()));
    EXPECT_EQ("sec", Opened());
}

TEST_F(PasswordCipher, NeedsItsArguments) {
    const std::string text = Encrypt("secret");
    const auto length = static_cast<uint32_t>(text.size());
    char buffer[100] = "#";
    EXPECT_NE(0u, PSSP_EncryptSec(nullptr, 6, buffer, sizeof buffer, 0, block_.data(), nullptr));
    EXPECT_EQ('\0', buffer[0]);
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, nullptr, 100, 0, block_.data(), nullptr));
    buffer[0] = '#';
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, buffer, 0, 0, block_.data(), nullptr));
    EXPECT_EQ('#', buffer[0]);
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, buffer, sizeof buffer, 0, nullptr, nullptr));
    EXPECT_NE(0u, PSSP_DecryptSec(nullptr, length, buffer, sizeof buffer, 1, block_.data()));
    EXPECT_NE(0u, PSSP_DecryptSec(text.c_str(), length, nullptr, 100, 1, block_.data()));
    EXPECT_NE(0u, PSSP_DecryptSec(text.c_str(), length, buffer, sizeof buffer, 1, nullptr));
}

TEST_F(PasswordCipher, FailsWithoutRandomNumbersAndLeavesNoText) {
    Encrypt("x");
    NoRandomNumbers none;
    char cipher[100] = "#";
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, cipher, sizeof cipher, 0, block_.data(), nullptr));
    EXPECT_EQ(std::string(100, '\0'), std::string(cipher, 100));
}

TEST_F(PasswordCipher, LeavesTheErrorsOfOthersAlone) {
    const std::string cipher = Encrypt("secret");
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 77);
    EXPECT_TRUE(IsRefused(cipher.substr(0, cipher.size() - 1) + "_"));
    EXPECT_TRUE(IsRefused("$uvp08$" + std::string(256, '0')));
    EXPECT_EQ(77, ERR_GET_REASON(ERR_get_error()));
    EXPECT_EQ(0u, ERR_get_error());
}

TEST(PasswordFormat, IsReadFromThePrefix) {
    const std::pair<const char *, uint32_t> rows[] = {
        {"", 0},          {"secret", 0},   {"$", 0},        {"$uvp", 0},      {"$uvp1", 0},     {"$uvp10", 0},
        {"$uvp10$", 10},  {"$uvp08$", 8},  {"$uvp09$x", 9}, {"$uvp11$x", 11}, {"$uvp12$x", 12}, {"$uvp99$x", 99},
        {"$uvp07$x", 0},  {"$uvp00$x", 0}, {"$uvp1a$x", 0}, {"$uvp/0$x", 0},  {"$uvp:0$x", 0},  {"$uvp1:$x", 0},
        {" $uvp10$x", 0}, {"$UVP10$x", 0}, {"$uvp8$x", 0},  {"$uvp010$x", 0}, {"$uvp10x", 0},   {"uvp10$x", 0},
    };
    for (const auto &[text, format] : rows)
        EXPECT_EQ(format, PSSP_CryptIsCipher(text)) << text;
    EXPECT_EQ(0u, PSSP_CryptIsCipher(nullptr));
}

} // namespace
