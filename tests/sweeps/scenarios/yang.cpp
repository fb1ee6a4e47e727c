// Reading YANG XML: the memory that fails is libxml2's.

#include "../scenario.h"
#include "allocation_fault.h"

#include <gtest/gtest.h>

#include <optional>
#include <unit/xml_memory.h>
#include <uvelcommon_base/nac_yang_xml.h>

namespace {

/* A value that a reader has not touched. */
constexpr uint8_t UNTOUCHED = 0xEE;

class YangXml : public sweeps::Scenario {
    void SetUp() override {
        memory_.emplace([] {
            kit::AllocationFault *fault = kit::AllocationFault::Current();
            return fault != nullptr && fault->Hit();
        });
    }

    void Operate(bool faultless) override {
        const NAC_YANG_REQUEST_S request{
            "<?xml version='1.0'?><config xmlns='urn:c' xmlns:p='urn:p'><entry k='v'>"
            "<name>portal &amp; more</name><n>200</n><p:on>true</p:on><mac>021a-2b3c-4d5e</mac>"
            "<v4>10.1.2.3</v4><v6>2001:db8::1</v6></entry></config>"};
        for (int round = 0; round < 3; ++round) {
            _xmlNode *root = NAC_YANG_XmlNewRoot(&request, "entry");
            EXPECT_TRUE(root != nullptr || !faultless);
            if (root == nullptr)
                continue;
            ReadAll(root, faultless);
            NAC_YANG_XmlDelRoot(root);
        }
    }

    void TearDown() override { memory_.reset(); }

    /* A reader gives the value, or leaves it alone. */
    template <typename T, typename Reader>
    static void Expect(T expected, Reader reader, _xmlNode *root, const char *path, bool faultless) {
        T value;
        std::memset(&value, UNTOUCHED, sizeof value);
        T untouched = value;
        const uint32_t result = reader(root, path, &value);
        EXPECT_TRUE(result == 0 || (!faultless && result == 1)) << path;
        EXPECT_EQ(0, std::memcmp(result == 0 ? &expected : &untouched, &value, sizeof value)) << path;
    }

    using Mac = std::array<uint8_t, 6>;
    using V6 = std::array<uint8_t, 16>;

    static void ReadAll(_xmlNode *root, bool faultless) {
        Expect<std::array<char, 14>>(
            {"portal & more"},
            [](_xmlNode *node, const char *path, std::array<char, 14> *text) {
                return NAC_YANG_XmlGetStr(node, path, text->data(), sizeof *text);
            },
            root, "name", faultless);
        Expect<uint32_t>(200, NAC_YANG_XmlGetU32, root, "n", faultless);
        Expect<uint16_t>(200, NAC_YANG_XmlGetU16, root, "n", faultless);
        Expect<uint8_t>(200, NAC_YANG_XmlGetU8, root, "n", faultless);
        Expect<uint32_t>(1, NAC_YANG_XmlGetBool, root, "on", faultless);
        Expect<uint32_t>(0x0A010203, NAC_YANG_XmlGetIpv4, root, "v4", faultless);
        Expect<Mac>(
            {0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E},
            [](_xmlNode *node, const char *path, Mac *mac) { return NAC_YANG_XmlGetMac(node, path, mac->data()); },
            root, "mac", faultless);
        Expect<V6>(
            {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
            [](_xmlNode *node, const char *path, V6 *v6) { return NAC_YANG_XmlGetIpv6(node, path, v6->data()); }, root,
            "v6", faultless);
    }

    std::optional<XmlMemory> memory_;
};

const bool g_added = sweeps::Add<YangXml>("yang_xml");

} // namespace
