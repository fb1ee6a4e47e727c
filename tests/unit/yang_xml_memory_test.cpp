/* Every allocation inside libxml2 fails once, and then from there on: the result is the whole or nothing. */

#include <uvelcommon_base/nac_yang_xml.h>

#include <functional>

#include "kit.h"
#include "xml_memory.h"
#include "yang_xml_texts.h"

using namespace yang_xml_texts;

namespace {

/* Runs `attempt` with the first allocation failing, the second, and so on until none is left to fail. The attempt ends
 * the failing and tells whether it came to it. */
void ForEachAllocation(const std::function<bool()> &attempt) {
    for (bool forever : {false, true}) {
        uint64_t n = 1;
        for (; n < 100'000; ++n) {
            XmlMemory::FailOn(n, forever);
            if (!attempt())
                break;
            if (testing::Test::HasFailure()) {
                ADD_FAILURE() << "allocation " << n << (forever ? " and all behind it" : "");
                return;
            }
        }
        EXPECT_GT(n, 1u) << "nothing was allocated";
        EXPECT_LT(n, 100'000u);
    }
}

void ExpectWholeOrNothing(const std::string &xml, const char *path) {
    const XmlMemory memory;
    const std::string whole = TextOf(Tree(xml, path));
    ASSERT_NE("(none)", whole);
    testing::internal::CaptureStderr();
    ForEachAllocation([&] {
        const Tree tree(xml, path);
        const bool failed = XmlMemory::FailNoMore();
        const std::string text = TextOf(tree);
        EXPECT_TRUE(text == whole || (failed && text == "(none)")) << text;
        return failed;
    });
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(YangNewRootWithoutMemory, GivesTheWholeTreeOrNone) {
    ExpectWholeOrNothing("<r><a><b>1</b><c>2</c></a></r>", "a");
}

TEST(YangNewRootWithoutMemory, GivesLongTextsWholeOrNone) {
    ExpectWholeOrNothing("<r><a>" + std::string(3000, 'x') + "&amp;" + std::string(3000, 'y') + "</a></r>", "a");
}

TEST(YangNewRootWithoutMemory, GivesTextsOfManyChunksWholeOrNone) {
    ExpectWholeOrNothing("<r><a k='" + std::string(100'000, 'k') + "'>" + std::string(300'000, 'x') + "</a></r>", "a");
}

TEST(YangNewRootWithoutMemory, GivesTreesOfEveryKindOfNodeWholeOrNone) {
    ExpectWholeOrNothing("<?xml version='1.0' encoding='UTF-8'?><!--c--><?p i?>\n"
                         "<r xmlns='urn:r' xmlns:p='urn:p'> <a k='&lt;1' p:l='' xml:lang='de'><!-- c --><?p i?>\n"
                         "<p:b xmlns:q='urn:q' q:m='n'>t<![CDATA[<x>]]>&#65;u</p:b><c xmlns=''/></a></r>",
                         "a");
}

TEST(YangNewRootWithoutMemory, GivesTreesWithADocumentTypeWholeOrNone) {
    ExpectWholeOrNothing("<!DOCTYPE r [<!ENTITY e 'x&f;'><!ENTITY f '<y/>'><!ELEMENT r (a)><!ATTLIST a k ID #IMPLIED>"
                         "<!NOTATION n SYSTEM 's'><!-- c -->]><r><a k='1'>1&e;2</a></r>",
                         "a");
}

TEST(YangNewRootWithoutMemory, GivesManyElementsWholeOrNone) {
    std::string xml = "<r><a>";
    for (int i = 0; i < 40; ++i)
        xml += "<n" + std::to_string(i) + " k" + std::to_string(i) + "='v'>text " + std::to_string(i) + "</n" +
               std::to_string(i) + ">";
    ExpectWholeOrNothing(xml + "</a></r>", "a");
}

TEST(YangNewRootWithoutMemory, GivesNothingForABrokenTextAsEver) {
    const XmlMemory memory;
    for (const char *xml :
         {"<r><a>1</b></r>", "<r><a>&e;</a></r>", "<r>\xFF</r>", "<!DOCTYPE r [<!ENTITY % p ''>]><r/>"})
        ForEachAllocation([&] {
            EXPECT_EQ(nullptr, static_cast<xmlNode *>(Tree(xml))) << xml;
            return XmlMemory::FailNoMore();
        });
}

TEST(YangReadersWithoutMemory, ReadTheWholeTextOrLeaveTheBufferAlone) {
    const XmlMemory memory;
    const std::string first(3000, 'x');
    const std::string second(3000, 'y');
    const std::string text = first + "<b>" + second + "</b>z";
    const std::string whole = first + second + "z";
    {
        const Tree tree("<r><a>" + text + "</a></r>");
        std::string buffer;
        testing::internal::CaptureStderr();
        ForEachAllocation([&] {
            buffer.assign(8000, '#');
            if (NAC_YANG_XmlGetStr(tree, "a", buffer.data(), 8000) == 0)
                EXPECT_EQ(whole, buffer.c_str());
            else
                EXPECT_EQ(std::string(8000, '#'), buffer);
            return XmlMemory::FailNoMore();
        });
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
    }
    EXPECT_EQ(0u, memory.Live());
}

TEST(YangReadersWithoutMemory, LeaveTheirValuesAlone) {
    const XmlMemory memory;
    {
        const Tree tree("<r><n>5</n><t>true</t><m>021a-2b3c-4d5e</m><v4>10.1.2.3</v4><v6>::1</v6></r>");
        XmlMemory::FailOn(1, true);
        uint32_t u32 = 1;
        uint16_t u16 = 2;
        uint8_t u8 = 3;
        uint32_t truth = 4;
        uint32_t ipv4 = 5;
        uint8_t mac[6] = {6};
        uint8_t ipv6[16] = {7};
        EXPECT_EQ(1u, NAC_YANG_XmlGetU32(tree, "n", &u32));
        EXPECT_EQ(1u, NAC_YANG_XmlGetU16(tree, "n", &u16));
        EXPECT_EQ(1u, NAC_YANG_XmlGetU8(tree, "n", &u8));
        EXPECT_EQ(1u, NAC_YANG_XmlGetBool(tree, "t", &truth));
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv4(tree, "v4", &ipv4));
        EXPECT_EQ(1u, NAC_YANG_XmlGetMac(tree, "m", mac));
        EXPECT_EQ(1u, NAC_YANG_XmlGetIpv6(tree, "v6", ipv6));
        EXPECT_EQ(1u, u32);
        EXPECT_EQ(2u, u16);
        EXPECT_EQ(3u, u8);
        EXPECT_EQ(4u, truth);
        EXPECT_EQ(5u, ipv4);
        EXPECT_EQ(6, mac[0]);
        EXPECT_EQ(7, ipv6[0]);
        XmlMemory::FailNoMore();
        EXPECT_EQ(0u, NAC_YANG_XmlGetU32(tree, "n", &u32));
        EXPECT_EQ(5u, u32);
    }
    EXPECT_EQ(0u, memory.Live());
}

TEST(YangPathWithoutMemory, IsWalkedAsEver) {
    const XmlMemory memory;
    {
        const Tree tree("<r><a><b/></a></r>");
        XmlMemory::FailOn(1, true);
        uint32_t exists = 0;
        EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree, "a/b"));
        EXPECT_EQ(0u, NAC_YANG_XmlGetEmpty(tree, "a/b", &exists));
        EXPECT_EQ(1u, exists);
        XmlMemory::FailNoMore();
    }
    EXPECT_EQ(0u, memory.Live());
}

} // namespace
