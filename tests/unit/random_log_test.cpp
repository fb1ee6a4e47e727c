// The lines that a failed draw without a module name leaves.

#define KIVO_GenerateRand ProbedGenerateRand
#define KIVO_CRYPT_random ProbedCryptRandom
#define NAC_Utils_PvtLog ProbedRandomLog
#include "../../src/common_adp/src/kivo_pdtadapt/random.cpp"

#include "probed_log.h"

namespace {

TEST(RandomLog, NamesTheFipsModeOfANamelessModule) {
    kit::Op<CRYPT_random>().Returns(1);
    uint8_t byte = 0;
    for (const uint32_t flag : {0u, 1u, 0xFFFFFFFFu}) {
        kit::Op<FIPSIsEnable>().Returns(flag);
        EXPECT_EQ(0u, KIVO_GenerateRand(nullptr));
        EXPECT_EQ(Lines{"1 [KIVO_GenerateRand] ModuleName is NUll! ulIsFipsMode=" + std::to_string(flag) + "."},
                  TakeLines());
        EXPECT_EQ(1u, KIVO_CRYPT_random(&byte, 1, nullptr));
        EXPECT_EQ(Lines{"1 [KIVO_CRYPT_random] ModuleName is NUll! ulFipsModeFlag=" + std::to_string(flag) + "."},
                  TakeLines());
    }
}

TEST(RandomLog, IsSilentOtherwise) {
    uint8_t byte = 0;
    kit::Op<CRYPT_random>().Returns(0);
    (void)KIVO_GenerateRand(nullptr);
    (void)KIVO_CRYPT_random(&byte, 1, nullptr);
    kit::Op<CRYPT_random>().Returns(1);
    kit::Op<FIPSIsEnable>().Returns(0);
    (void)KIVO_GenerateRand("PORTAL");
    (void)KIVO_CRYPT_random(&byte, 1, "PORTAL");
    EXPECT_EQ(Lines{}, TakeLines());
}

} // namespace
