#include "kit.h"

#include <cstring>
#include <set>
#include <uvelcommon_base/kivo_random.h>

namespace {

void Draws(std::initializer_list<uint8_t> bytes, uint32_t result = 0) {
    const std::vector<uint8_t> drawn(bytes);
    kit::Op<CRYPT_random>().Does([=](uint8_t *buffer, uint32_t length) {
        std::memcpy(buffer, drawn.data(), std::min<std::size_t>(length, drawn.size()));
        return result;
    });
}

TEST(RandomWord, IsFourBytesOfTheHost) {
    Draws({1, 2, 3, 4});
    const uint32_t word = KIVO_GenerateRand("PORTAL");
    const uint8_t expected[4] = {1, 2, 3, 4};
    EXPECT_EQ(0, std::memcmp(expected, &word, 4));
    EXPECT_EQ(4u, std::get<1>(kit::Op<CRYPT_random>().Last()));
    EXPECT_EQ(1u, kit::Op<CRYPT_random>().Calls());
    EXPECT_EQ(0u, kit::Op<FIPSIsEnable>().Calls());
}

TEST(RandomWord, NeedsNoName) {
    Draws({1, 2, 3, 4});
    EXPECT_NE(0u, KIVO_GenerateRand(nullptr));
}

TEST(RandomWord, StartsFromZero) {
    kit::Op<CRYPT_random>().Returns(0);
    EXPECT_EQ(0u, KIVO_GenerateRand("PORTAL"));
}

TEST(RandomWord, OfTheRealHostDiffers) {
    std::set<uint32_t> words;
    for (int i = 0; i < 64; ++i)
        words.insert(KIVO_GenerateRand("PORTAL"));
    EXPECT_LT(60u, words.size());
}

/* Both operations report alike. `draw` fails in the host. */
void ExpectReports(const std::function<void(const char *)> &draw) {
    kit::Op<FIPS_SecTestContinuousRandomNumberError>().Does([](const char *) {});
    kit::Op<FIPSIsEnable>().Returns(1);
    draw("PORTAL");
    EXPECT_EQ(1u, kit::Op<FIPS_SecTestContinuousRandomNumberError>().Calls());
    EXPECT_STREQ("PORTAL", std::get<0>(kit::Op<FIPS_SecTestContinuousRandomNumberError>().Last()));
    for (const uint32_t flag : {0u, 2u, 0xFFFFFFFFu}) {
        kit::Op<FIPSIsEnable>().Returns(flag);
        draw("PORTAL");
    }
    EXPECT_EQ(4u, kit::Op<FIPSIsEnable>().Calls());
    EXPECT_EQ(1u, kit::Op<FIPS_SecTestContinuousRandomNumberError>().Calls()) << "in FIPS mode only";
    kit::Op<FIPSIsEnable>().Returns(1);
    draw(nullptr);
    EXPECT_EQ(5u, kit::Op<FIPSIsEnable>().Calls());
    EXPECT_EQ(1u, kit::Op<FIPS_SecTestContinuousRandomNumberError>().Calls()) << "nobody to name";
}

TEST(RandomWord, IsZeroAfterAFailureThatFipsModeReports) {
    for (const uint32_t result : {1u, 0xFFFFFFFFu}) {
        Draws({1, 2, 3, 4}, result);
        kit::Op<FIPSIsEnable>().Returns(0);
        EXPECT_EQ(0u, KIVO_GenerateRand("PORTAL")) << "whatever the host left in the buffer";
    }
    kit::Op<FIPSIsEnable>().Reset();
    ExpectReports([](const char *module) { EXPECT_EQ(0u, KIVO_GenerateRand(module)); });
}

TEST(RandomBytes, AreTheHosts) {
    Draws({9, 8, 7});
    uint8_t bytes[3] = {};
    EXPECT_EQ(0u, KIVO_CRYPT_random(bytes, sizeof bytes, "PORTAL"));
    EXPECT_EQ(7u, bytes[2]);
    EXPECT_EQ(std::make_tuple(&bytes[0], 3u), kit::Op<CRYPT_random>().Last());
    EXPECT_EQ(0u, KIVO_CRYPT_random(bytes, sizeof bytes, nullptr));
    EXPECT_EQ(0u, kit::Op<FIPSIsEnable>().Calls());
}

TEST(RandomBytes, GiveTheHostsFailureThatFipsModeReports) {
    kit::Op<CRYPT_random>().Returns(0x80000003);
    uint8_t bytes[3] = {};
    ExpectReports([&](const char *module) { EXPECT_EQ(0x80000003u, KIVO_CRYPT_random(bytes, sizeof bytes, module)); });
}

TEST(RandomBytes, AsTheHostJudgesThemForNull) {
    EXPECT_EQ(1u, KIVO_CRYPT_random(nullptr, 4, "PORTAL"));
}

} // namespace
