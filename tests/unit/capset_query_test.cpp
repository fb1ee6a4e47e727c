#include "host_answers.h"

#include <cstring>
#include <uvelcommon_base/kivo_capset.h>

namespace {

/* The item holds `value`; the query gives `result`. */
void Item(uint32_t value, uint32_t result = 0) {
    kit::Op<capset_query_with_itemname>().Does([=](const char *, void *out, uint32_t *size) {
        EXPECT_EQ(4u, *size);
        uint32_t before = 1;
        std::memcpy(&before, out, sizeof before);
        EXPECT_EQ(0u, before) << "the preset";
        std::memcpy(out, &value, sizeof value);
        return result;
    });
}

TEST(CapabilitySet, OpensAndCloses) {
    kit::Op<capset_init>().Returns(0);
    kit::Op<capset_destroy>().Returns(0);
    EXPECT_EQ(0u, UVEL_CapSetInit());
    EXPECT_EQ(0u, UVEL_CapSetDestroy());
    EXPECT_EQ(1u, kit::Op<capset_init>().Calls());
    EXPECT_EQ(1u, kit::Op<capset_destroy>().Calls());
}

TEST(CapabilitySet, FailsWithOneWhateverTheHostsFailure) {
    for (const uint32_t result : {1u, 2u, 0xFFFFFFFFu}) {
        kit::Op<capset_init>().Returns(result);
        kit::Op<capset_destroy>().Returns(result);
        EXPECT_EQ(1u, UVEL_CapSetInit());
        EXPECT_EQ(1u, UVEL_CapSetDestroy());
    }
}

TEST(Specification, IsTheItemsValue) {
    for (const uint32_t held : {0u, 1u, 0xFFFFFFFFu}) {
        Item(held);
        uint32_t value = 77;
        EXPECT_EQ(0u, UVEL_GetSpecsByDescr("SRV_SPEC", &value));
        EXPECT_EQ(held, value);
        EXPECT_STREQ("SRV_SPEC", std::get<0>(kit::Op<capset_query_with_itemname>().Last()));
    }
}

TEST(Specification, IsZeroAfterAFailureWhichIsTheHosts) {
    for (const uint32_t result : {1u, 2u, 0xFFFFFFFFu}) {
        Item(5, result);
        uint32_t value = 77;
        EXPECT_EQ(result, UVEL_GetSpecsByDescr("SRV_SPEC", &value));
        EXPECT_EQ(0u, value);
    }
}

TEST(Specification, IsTheHostsAnswerAlsoWithoutAName) {
    Item(5);
    uint32_t value = 77;
    EXPECT_EQ(0u, UVEL_GetSpecsByDescr(nullptr, &value));
    EXPECT_EQ(5u, value);
}

TEST(Specification, OfANullArgumentIsAskedForAllTheSame) {
    Item(5, 9);
    uint32_t value = 77;
    EXPECT_EQ(1u, UVEL_GetSpecsByDescr(nullptr, &value));
    EXPECT_EQ(nullptr, std::get<0>(kit::Op<capset_query_with_itemname>().Last()));
    EXPECT_EQ(77u, value);
    EXPECT_EQ(1u, UVEL_GetSpecsByDescr("SRV_SPEC", nullptr));
    EXPECT_EQ(1u, UVEL_GetSpecsByDescr(nullptr, nullptr));
    EXPECT_EQ(3u, kit::Op<capset_query_with_itemname>().Calls());
}

TEST(Specification, WithoutAPlaceForTheValueLosesIt) {
    Item(5);
    EXPECT_EQ(0u, UVEL_GetSpecsByDescr("SRV_SPEC", nullptr));
}

struct Feature {
    uint32_t (*query)();
    const char *item;

    friend void PrintTo(const Feature &feature, std::ostream *out) { *out << feature.item; }
};

class FeatureTest : public testing::TestWithParam<Feature> {};

TEST_P(FeatureTest, AnswersZeroForTheValueOneOnly) {
    for (const uint32_t value : {0u, 1u, 2u, 0x80000001u, 0xFFFFFFFFu}) {
        Item(value);
        EXPECT_EQ(value == 1 ? 0u : 1u, GetParam().query());
        EXPECT_STREQ(GetParam().item, std::get<0>(kit::Op<capset_query_with_itemname>().Last()));
    }
}

TEST_P(FeatureTest, AnswersOneForAMissingItem) {
    kit::Op<capset_query_with_itemname>().Returns(1);
    EXPECT_EQ(1u, GetParam().query());
}

TEST_P(FeatureTest, LooksAtTheValueWhateverTheStatus) {
    Item(1, 1);
    EXPECT_EQ(0u, GetParam().query());
}

INSTANTIATE_TEST_SUITE_P(Features, FeatureTest,
                         testing::Values(Feature{UVEL_IsSupportWlan, "EAPOL_FEATUREID_WLAN"},
                                         Feature{UVEL_IsSupportPortal, "SRV_FEATURE_SUPP_PORTAL"}));

} // namespace
