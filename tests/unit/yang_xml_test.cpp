#include <uvelcommon_base/nac_yang_xml.h>

#include <cstring>

#include "guarded_text.h"
#include "kit.h"
#include "yang_xml_texts.h"

using namespace yang_xml_texts;

namespace {

/* Cutting out a subtree. */

TEST(YangNewRoot, CopiesTheElementBelowTheRoot) {
    const Tree tree("<config><acl><id>5</id><name>web</name></acl></config>", "acl");
    EXPECT_EQ("<acl><id>5</id><name>web</name></acl>", TextOf(tree));
}

TEST(YangNewRoot, DoesNotTakeTheNameOfTheRootItself) {
    EXPECT_EQ("(none)", TextOf(Tree("<config><acl/></config>", "config")));
    EXPECT_EQ("(none)", TextOf(Tree("<config><acl/></config>", "config/acl")));
    EXPECT_EQ("<config>1</config>", TextOf(Tree("<config><config>1</config></config>", "config")));
}

TEST(YangNewRoot, CopiesTheRootForAnEmptyOrNullPath) {
    EXPECT_EQ("<config><acl/></config>", TextOf(Tree("<config><acl/></config>", "")));
    EXPECT_EQ("<config><acl/></config>", TextOf(Tree("<config><acl/></config>", nullptr)));
}

TEST(YangNewRoot, CopiesWithAttributesNamespacesAndEverythingInside) {
    const std::string xml =
        "<c xmlns=\"urn:x\" xmlns:p=\"urn:y\"><p:a p:k=\"1\" l=\"&lt;2\"><!--n--><?pi d?><![CDATA[<]]>t&amp;</p:a></c>";
    EXPECT_EQ("<p:a xmlns:p=\"urn:y\" p:k=\"1\" l=\"&lt;2\"><!--n--><?pi d?><![CDATA[<]]>t&amp;</p:a>",
              TextOf(Tree(xml, "a")));
}

TEST(YangNewRoot, GivesATreeOfItsOwn) {
    const NAC_YANG_REQUEST_S request = {"<c><a><b>1</b></a></c>"};
    xmlNode *first = NAC_YANG_XmlNewRoot(&request, "a");
    xmlNode *second = NAC_YANG_XmlNewRoot(&request, "a");
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_NE(first, second);
    EXPECT_EQ(nullptr, first->parent);
    EXPECT_EQ(nullptr, first->doc);
    EXPECT_EQ(nullptr, first->next);
    NAC_YANG_XmlDelRoot(first);
    EXPECT_EQ("<a><b>1</b></a>", TextOf(second));
    NAC_YANG_XmlDelRoot(second);
}

TEST(YangNewRoot, CopiesTheElementWithoutItsSiblings) {
    EXPECT_EQ("<b>1</b>", TextOf(Tree("<c><a/><b>1</b><d/></c>", "b")));
}

TEST(YangNewRoot, DropsBlanksBetweenElementsAndKeepsThemInTexts) {
    EXPECT_EQ("<a><b> x </b><d/></a>", TextOf(Tree("<c>\n  <a>\n    <b> x </b>\r\n\t<d/>\n  </a>\n</c>\n", "a")));
}

TEST(YangNewRoot, ReadsNoXmlButWellFormed) {
    for (const char *xml : {"",
                            " ",
                            "x",
                            "<",
                            "<a",
                            "<a>",
                            "<a></b>",
                            "<a><b></a></b>",
                            "<a/><b/>",
                            "<a>&nbsp;</a>",
                            "<a>&#0;</a>",
                            "<a b=c/>",
                            "<a b='1' b='2'/>",
                            "<a>\x01</a>",
                            "<a>\xC3</a>",
                            "<a>\xFF\xFE</a>",
                            "<a><![CDATA[</a>",
                            "<a><!-- -- --></a>",
                            "<?xml version='1.0'?>",
                            " <?xml version='1.0'?><a/>",
                            "<a/>x",
                            "<1a/>",
                            "<a/>\xEF\xBB\xBF",
                            "text<a/>"})
        EXPECT_EQ("(none)", TextOf(Tree(xml))) << xml;
}

TEST(YangNewRoot, ReadsUtf8WhateverTheDeclarationSays) {
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("\xC3\xA9", StrAt(Tree("\xEF\xBB\xBF<a>\xC3\xA9</a>"), ""));
    EXPECT_EQ("(none)", StrAt(Tree("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>"), ""));
    /* No other encoding can hide markup: this is no "<b/>". */
    EXPECT_EQ("+ADw-b/+AD4-", StrAt(Tree("<?xml version=\"1.0\" encoding=\"UTF-7\"?><a>+ADw-b/+AD4-</a>"), ""));
}

TEST(YangNewRoot, NeedsARequestWithAText) {
    EXPECT_EQ(nullptr, NAC_YANG_XmlNewRoot(nullptr, "a"));
    const NAC_YANG_REQUEST_S empty = {nullptr};
    EXPECT_EQ(nullptr, NAC_YANG_XmlNewRoot(&empty, "a"));
}

TEST(YangNewRoot, ReadsTheTextPointerOfTheRequestOnly) {
    const GuardedText record("\0\0\0\0\0\0\0", sizeof(char *));
    const char *xml = "<c><a/></c>";
    std::memcpy(record.Get(), &xml, sizeof xml);
    xmlNode *root = NAC_YANG_XmlNewRoot(reinterpret_cast<const NAC_YANG_REQUEST_S *>(record.Get()), "a");
    EXPECT_EQ("<a/>", TextOf(root));
    NAC_YANG_XmlDelRoot(root);
}

TEST(YangNewRoot, ReadsNothingBehindTheTerminator) {
    for (const char *xml : {"<c><a/></c>", "<c><a/></c", "<c><!--", "<c>&", "<c>\xC3", "<", ""}) {
        const GuardedText text(xml);
        const NAC_YANG_REQUEST_S request = {text};
        xmlNode *root = NAC_YANG_XmlNewRoot(&request, "a");
        EXPECT_EQ(std::strcmp(xml, "<c><a/></c>") == 0, root != nullptr) << xml;
        NAC_YANG_XmlDelRoot(root);
    }
}

TEST(YangDelRoot, IgnoresNull) {
    NAC_YANG_XmlDelRoot(nullptr);
}

/* Walking a path. */

class YangPath : public testing::Test {
  protected:
    /* The "n" attribute of the node at the path. */
    std::string At(const char *path) const { return NameOf(NAC_YANG_XmlGetChild(tree_, path)); }

    static std::string NameOf(xmlNode *node) {
        if (node == nullptr)
            return "(none)";
        xmlChar *name = xmlGetProp(node, reinterpret_cast<const xmlChar *>("n"));
        const std::string result = name == nullptr ? "" : reinterpret_cast<char *>(name);
        xmlFree(name);
        return result;
    }

    const Tree tree_{
        "<r n='root'><a n='1'><b n='2'><c n='3'/></b><b n='4'><d n='5'/></b><ab n='6'/></a><a n='7'><x n='8'/>"
        "</a></r>"};
};

TEST_F(YangPath, LeadsFromChildToChild) {
    EXPECT_EQ("1", At("a"));
    EXPECT_EQ("2", At("a/b"));
    EXPECT_EQ("3", At("a/b/c"));
    EXPECT_EQ("6", At("a/ab"));
}

TEST_F(YangPath, MayEndWithASlash) {
    EXPECT_EQ("1", At("a/"));
    EXPECT_EQ("2", At("a/b/"));
    EXPECT_EQ("3", At("a/b/c/"));
}

TEST_F(YangPath, OfNothingIsTheNodeItself) {
    EXPECT_EQ(tree_, NAC_YANG_XmlGetChild(tree_, ""));
    EXPECT_EQ(tree_, NAC_YANG_XmlGetChild(tree_, nullptr));
}

TEST_F(YangPath, ReachesTheFirstOfSeveralChildrenOnly) {
    EXPECT_EQ("2", At("a/b"));
    EXPECT_EQ("(none)", At("a/b/d"));
    EXPECT_EQ("(none)", At("a/x"));
}

TEST_F(YangPath, ComparesWholeNames) {
    for (const char *path : {"A", "aa", "a/a", "a/bb", "a/b/cc", "r", "b", "c", " a", "a ", "a\\b", "a/b/c/d"})
        EXPECT_EQ("(none)", At(path)) << path;
}

TEST_F(YangPath, DoesNotSkipEmptyNames) {
    for (const char *path : {"/", "//", "/a", "//a", "a//", "a//b", "a/b//", "a/b/c//"})
        EXPECT_EQ("(none)", At(path)) << path;
}

TEST_F(YangPath, FromNoNodeLeadsNowhere) {
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, "a"));
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, ""));
    EXPECT_EQ(nullptr, NAC_YANG_XmlGetChild(nullptr, nullptr));
}

TEST_F(YangPath, IsReadToItsTerminatorOnly) {
    for (const char *path : {"a", "a/", "a/b", "", "zzz", "a/zzz"}) {
        const GuardedText guarded(path);
        EXPECT_EQ(NAC_YANG_XmlGetChild(tree_, path), NAC_YANG_XmlGetChild(tree_, guarded)) << path;
    }
}

TEST_F(YangPath, ExistsOrNot) {
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, "a/b/c"));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, "a/b/"));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, ""));
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree_, nullptr));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(tree_, "a/b/d"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(nullptr, "a"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(nullptr, nullptr));
}

TEST(YangNames, AreComparedWithoutTheirPrefix) {
    const Tree tree("<r xmlns='urn:1' xmlns:p='urn:2'><p:a>1</p:a><a>2</a><b xmlns='urn:3'>3</b></r>");
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("3", StrAt(tree, "b"));
    EXPECT_EQ("(none)", StrAt(tree, "p:a"));
}

TEST(YangNames, KeepAPrefixThatStandsForNoNamespace) {
    const Tree tree("<r><p:a>1</p:a></r>");
    EXPECT_EQ("1", StrAt(tree, "p:a"));
    EXPECT_EQ("(none)", StrAt(tree, "a"));
}

TEST(YangNames, OfOtherKindsOfNodesCountToo) {
    const Tree tree("<r><!--first--><?target data?>words<a>1</a></r>");
    EXPECT_EQ("words", StrAt(tree, "text"));
    EXPECT_EQ("first", StrAt(tree, "comment"));
    EXPECT_EQ("data", StrAt(tree, "target"));
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("(none)", StrAt(tree, "text/text"));
}

TEST(YangNames, MayBeMissing) {
    /* A CDATA section has no name: it is stepped over, and no empty name finds it. */
    const Tree tree("<r><![CDATA[x]]><a>1</a></r>");
    EXPECT_EQ("1", StrAt(tree, "a"));
    EXPECT_EQ("(none)", StrAt(tree, "/"));
}

TEST(YangNames, MayBeLongAndInAnyScript) {
    const std::string name(5000, 'n');
    const Tree tree("<r><" + name + ">1</" + name + "><\xE5\x90\x8D>2</\xE5\x90\x8D></r>");
    EXPECT_EQ("1", StrAt(tree, name.c_str()));
    EXPECT_EQ("(none)", StrAt(tree, name.substr(1).c_str()));
    EXPECT_EQ("(none)", StrAt(tree, (name + "n").c_str()));
    EXPECT_EQ("2", StrAt(tree, "\xE5\x90\x8D"));
    EXPECT_EQ("(none)", StrAt(tree, "\xE5\x90"));
}

TEST(YangNames, AreFoundBetweenCommentsAndInstructions) {
    const Tree tree("<r>\n<!-- a --><?x?>\n<a><!-- b --><?y z?> <b>1</b><!-- c --></a>\n<?w?></r>");
    EXPECT_EQ("1", StrAt(tree, "a/b"));
}

TEST(YangPathDepth, HasNoLimitOfItsOwn) {
    std::string open, close, path;
    for (int level = 0; level < 250; ++level) {
        open += "<e>";
        close += "</e>";
        path += "e/";
    }
    const Tree tree("<r>" + open + "deep" + close + "</r>");
    EXPECT_EQ("deep", StrAt(tree, path.c_str()));
    EXPECT_EQ("(none)", StrAt(tree, (path + "e").c_str()));
}

} // namespace
