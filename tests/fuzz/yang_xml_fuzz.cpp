// YANG XML: a path, a line end, a document. The subtree against libxml2 called directly, the path walk against a naive
// one, the readers against each other; and whatever the document says, nothing outside it may be asked for.

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlIO.h>
#include <uvelcommon_base/nac_yang_xml.h>

#include "fuzz_input.h"

static std::string g_askedFor; /* the latest thing outside the document that the parser wanted */

static xmlParserInput *OnLoad(const char *url, const char *, xmlParserCtxt *) {
    g_askedFor = url == nullptr ? "(no name)" : url;
    return nullptr;
}

static int OnOpen(const char *name) {
    g_askedFor = name;
    return 0;
}

static bool WatchTheOutside() {
    xmlRegisterDefaultInputCallbacks();
    xmlRegisterInputCallbacks(OnOpen, nullptr, nullptr, nullptr);
    xmlSetExternalEntityLoader(OnLoad);
    return true;
}

static xmlNode *Walk(xmlNode *node, std::string_view path) {
    while (node != nullptr && !path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        node = node->children;
        while (node != nullptr && (node->name == nullptr || name != reinterpret_cast<const char *>(node->name)))
            node = node->next;
    }
    return node;
}

static std::string Dump(xmlNode *node) {
    xmlBuffer *buffer = xmlBufferCreate();
    xmlNodeDump(buffer, nullptr, node, 0, 0);
    std::string text(reinterpret_cast<const char *>(xmlBufferContent(buffer)));
    xmlBufferFree(buffer);
    return text;
}

/* What the library must give for a document without declarations of its own. */
static void CheckAgainstTheParser(const std::string &xml, const std::string &path, xmlNode *root) {
    xmlDoc *document = xmlReadMemory(xml.c_str(), static_cast<int>(xml.size()), nullptr, "utf-8",
                                     XML_PARSE_NOBLANKS | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    xmlNode *expected = document == nullptr ? nullptr : Walk(xmlDocGetRootElement(document), path);
    xmlNode *copy = expected == nullptr ? nullptr : xmlCopyNode(expected, 1);
    REQUIRE((copy == nullptr) == (root == nullptr));
    if (copy != nullptr)
        REQUIRE(Dump(copy) == Dump(root));
    xmlFreeNode(copy);
    xmlFreeDoc(document);
}

/* Every text fits its length and a terminator, and nothing less. */
static void CheckText(xmlNode *node, const char *path) {
    std::vector<char> buffer(1 << 16, '#');
    if (NAC_YANG_XmlGetStr(node, path, buffer.data(), static_cast<uint32_t>(buffer.size())) != 0) {
        REQUIRE(buffer[0] == '#');
        return;
    }
    const std::string text = buffer.data();
    const auto length = static_cast<uint32_t>(text.size());
    std::vector<char> exact(length + 1, '#');
    REQUIRE(NAC_YANG_XmlGetStr(node, path, exact.data(), length) == 1);
    REQUIRE(std::string(exact.begin(), exact.end()) == std::string(length + 1, '#'));
    REQUIRE(NAC_YANG_XmlGetStr(node, path, exact.data(), length + 1) == 0);
    REQUIRE(text == exact.data());
}

static void CheckReaders(xmlNode *node, const char *path) {
    const bool exists = NAC_YANG_XmlGetChild(node, path) != nullptr;
    uint32_t found = 7;
    REQUIRE(NAC_YANG_XmlChildExist(node, path) == (exists ? 1 : 0));
    REQUIRE(NAC_YANG_XmlGetEmpty(node, path, &found) == (exists ? 0 : 1) && found == (exists ? 1 : 0));

    uint32_t u32 = 0xDEADBEEF;
    uint16_t u16 = 0xBEEF;
    uint8_t u8 = 0xEF;
    const uint32_t result = NAC_YANG_XmlGetU32(node, path, &u32);
    REQUIRE(NAC_YANG_XmlGetU16(node, path, &u16) == result && u16 == (u32 & 0xFFFF));
    REQUIRE(NAC_YANG_XmlGetU8(node, path, &u8) == result && u8 == (u32 & 0xFF));

    uint32_t truth = 7;
    REQUIRE(NAC_YANG_XmlGetBool(node, path, &truth) == result && (result == 0 ? truth <= 1 : truth == 7));

    uint32_t ipv4 = 0xDEADBEEF;
    REQUIRE(NAC_YANG_XmlGetIpv4(node, path, &ipv4) == 0 || ipv4 == 0xDEADBEEF);
    uint8_t mac[6];
    std::memset(mac, 0xEE, sizeof mac);
    REQUIRE(NAC_YANG_XmlGetMac(node, path, mac) == 0 || mac[5] == 0xEE);
    uint8_t ipv6[16];
    std::memset(ipv6, 0xEE, sizeof ipv6);
    REQUIRE(NAC_YANG_XmlGetIpv6(node, path, ipv6) == 0 || ipv6[15] == 0xEE);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    [[maybe_unused]] static const bool watched = WatchTheOutside();
    const std::string input = TextOf(data, size);
    const std::size_t line = std::min(input.find('\n'), input.size());
    const std::string path = input.substr(0, line);
    const std::string xml = input.substr(std::min(line + 1, input.size()));
    const ExactText exactPath(path);
    const ExactText exactXml(xml);

    const NAC_YANG_REQUEST_S request = {exactXml};
    xmlNode *root = NAC_YANG_XmlNewRoot(&request, exactPath);
    if (xml.find("<!DOCTYPE") == std::string::npos)
        CheckAgainstTheParser(xml, path, root);
    NAC_YANG_XmlDelRoot(root);

    root = NAC_YANG_XmlNewRoot(&request, "");
    REQUIRE(NAC_YANG_XmlGetChild(root, exactPath) == Walk(root, path));
    for (const char *place : {static_cast<const char *>(exactPath), ""}) {
        CheckText(root, place);
        CheckReaders(root, place);
    }
    NAC_YANG_XmlDelRoot(root);
    REQUIRE(g_askedFor.empty());
    return 0;
}
