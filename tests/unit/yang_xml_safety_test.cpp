/* What the world may send: documents that reach outside, that explode, that are huge, that are broken. */

#include <uvelcommon_base/nac_yang_xml.h>

#include <arpa/inet.h>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <libxml/xmlIO.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "host/sanitizers.h"
#include "kit.h"
#include "xml_memory.h"
#include "yang_xml_texts.h"

using namespace yang_xml_texts;

namespace {

/* Everything that libxml2 tries to open while this lives. */
class OutsideWatch {
  public:
    OutsideWatch() : before_(xmlGetExternalEntityLoader()) {
        Seen().clear();
        xmlRegisterDefaultInputCallbacks();
        xmlRegisterInputCallbacks(
            [](const char *name) {
                Seen().emplace_back(name);
                return 0;
            },
            nullptr, nullptr, nullptr);
        xmlSetExternalEntityLoader([](const char *url, const char *, xmlParserCtxt *) -> xmlParserInput * {
            Seen().emplace_back(url == nullptr ? "(no name)" : url);
            return nullptr;
        });
    }
    ~OutsideWatch() {
        xmlSetExternalEntityLoader(before_);
        xmlCleanupInputCallbacks();
        xmlRegisterDefaultInputCallbacks();
    }
    OutsideWatch(const OutsideWatch &) = delete;
    OutsideWatch &operator=(const OutsideWatch &) = delete;

    static std::vector<std::string> &Seen() {
        static std::vector<std::string> seen;
        return seen;
    }

  private:
    xmlExternalEntityLoader before_;
};

/* A file with a secret, and a server that notices who connects. */
class Outside : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/uvel-secret.XXXXXX";
        const int file = mkstemp(name);
        ASSERT_GE(file, 0);
        close(file);
        file_ = name;
        std::ofstream(file_) << "<!ENTITY leak 'SECRET'>";

        server_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ASSERT_EQ(0, bind(server_, reinterpret_cast<sockaddr *>(&address), size));
        ASSERT_EQ(0, listen(server_, 4));
        ASSERT_EQ(0, getsockname(server_, reinterpret_cast<sockaddr *>(&address), &size));
        port_ = ntohs(address.sin_port);
    }
    void TearDown() override {
        close(server_);
        std::filesystem::remove(file_);
    }

    bool SomebodyConnected() const {
        pollfd waiting = {server_, POLLIN, 0};
        return poll(&waiting, 1, 0) != 0;
    }

    /* Documents that name something outside by `url`. */
    static std::vector<std::string> Documents(const std::string &url) {
        const auto doctype = [](const std::string &inside) { return "<!DOCTYPE r [" + inside + "]>"; };
        return {
            doctype("<!ENTITY x SYSTEM '" + url + "'>") + "<r><a>1&x;2</a></r>",
            doctype("<!ENTITY x PUBLIC 'p' '" + url + "'>") + "<r><a>1&x;2</a></r>",
            doctype("<!ENTITY x SYSTEM '" + url + "'>") + "<r><a b='&x;'>12</a></r>",
            doctype("<!ENTITY x SYSTEM '" + url + "'><!ENTITY y '&x;'>") + "<r><a>1&y;2</a></r>",
            doctype("<!ENTITY % p SYSTEM '" + url + "'> %p;") + "<r><a>12</a></r>",
            doctype("<!ENTITY % p SYSTEM '" + url + "'> %p;") + "<r><a>1&leak;2</a></r>",
            doctype("<!ENTITY % q \"<!ENTITY &#37; p SYSTEM '" + url + "'>\"> %q; %p;") + "<r><a>1&leak;2</a></r>",
            doctype("<!NOTATION n SYSTEM '" + url + "'><!ENTITY x SYSTEM '" + url + "' NDATA n>") + "<r><a>12</a></r>",
            "<!DOCTYPE r SYSTEM '" + url + "'><r><a>12</a></r>",
            "<!DOCTYPE r SYSTEM '" + url + "'><r><a>1&leak;2</a></r>",
            "<!DOCTYPE r PUBLIC '-//W3C//DTD XHTML 1.0 Strict//EN' '" + url + "'><r><a>1&nbsp;2</a></r>",
            "<!DOCTYPE r SYSTEM '" + url + "' [<!ENTITY y 'z'>]><r><a>12</a></r>",
            "<r xmlns:xi='http://www.w3.org/2001/XInclude'><a>12<xi:include href='" + url + "' parse='text'/></a></r>",
            "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:schemaLocation='urn:x " + url +
                "' xml:base='" + url + "'><a>12</a></r>",
            "<?xml-stylesheet href='" + url + "'?><?xml-model href='" + url + "'?><r><a>12</a></r>",
        };
    }

    void ExpectNothingIsRead() {
        for (const std::string &url : {file_, "file://" + file_, "http://127.0.0.1:" + std::to_string(port_) + "/x.dtd",
                                       "ftp://127.0.0.1:" + std::to_string(port_) + "/x.dtd"})
            for (const std::string &xml : Documents(url)) {
                const OutsideWatch watch;
                const Tree tree(xml);
                EXPECT_TRUE(OutsideWatch::Seen().empty()) << OutsideWatch::Seen()[0] << " in " << xml;
                EXPECT_EQ(std::string::npos, TextOf(tree).find("SECRET")) << xml;
                if (tree != nullptr) {
                    EXPECT_EQ("12", StrAt(tree, "a")) << xml;
                }
            }
        EXPECT_FALSE(SomebodyConnected());
    }

    std::string file_;
    int server_ = -1;
    uint16_t port_ = 0;
};

TEST_F(Outside, NothingIsRead) {
    ExpectNothingIsRead();
}

TEST_F(Outside, IsSeenByTheWatchOfTheseTests) {
    /* That the documents would reach outside if the parser were told to. */
    const OutsideWatch watch;
    const std::string xml = Documents(file_)[0];
    xmlFreeDoc(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                             XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    EXPECT_EQ(std::vector<std::string>{file_}, OutsideWatch::Seen());
}

TEST_F(Outside, NothingIsReadWhateverTheProgramsDefaultsAre) {
    const int entities = xmlSubstituteEntitiesDefault(1);
    const int blanks = xmlKeepBlanksDefault(1);
    const int dtd = xmlLoadExtDtdDefaultValue;
    const int validity = xmlDoValidityCheckingDefaultValue;
    xmlLoadExtDtdDefaultValue = XML_DETECT_IDS | XML_COMPLETE_ATTRS;
    xmlDoValidityCheckingDefaultValue = 1;
    ExpectNothingIsRead();
    EXPECT_EQ("<r><a/></r>", TextOf(Tree("<r> <a/> </r>"))) << "blanks are dropped";
    xmlDoValidityCheckingDefaultValue = validity;
    xmlLoadExtDtdDefaultValue = dtd;
    xmlKeepBlanksDefault(blanks);
    xmlSubstituteEntitiesDefault(entities);
}

TEST(YangDefaults, OfTheProgramAreItsOwnAgainAfterwards) {
    const int before[] = {xmlSubstituteEntitiesDefaultValue, xmlLoadExtDtdDefaultValue,
                          xmlDoValidityCheckingDefaultValue, xmlDefaultBufferSize};
    xmlSubstituteEntitiesDefaultValue = 1;
    xmlLoadExtDtdDefaultValue = 6;
    xmlDoValidityCheckingDefaultValue = 1;
    xmlDefaultBufferSize = 4711;
    for (const char *xml : {"<r><a>12</a></r>", "<r><a>not closed</r>", "<!DOCTYPE r [<!ENTITY x SYSTEM 'y'>]><r/>"}) {
        { const Tree tree(xml); }
        EXPECT_EQ(1, xmlSubstituteEntitiesDefaultValue) << xml;
        EXPECT_EQ(6, xmlLoadExtDtdDefaultValue) << xml;
        EXPECT_EQ(1, xmlDoValidityCheckingDefaultValue) << xml;
        EXPECT_EQ(4711, xmlDefaultBufferSize) << xml;
    }
    xmlSubstituteEntitiesDefaultValue = before[0];
    xmlLoadExtDtdDefaultValue = before[1];
    xmlDoValidityCheckingDefaultValue = before[2];
    xmlDefaultBufferSize = before[3];
}

TEST(YangEntities, OfTheDocumentReadAsNothing) {
    const Tree tree("<!DOCTYPE r [<!ENTITY e 'x<b>y</b>'>]><r><a>1&e;2</a><c k='3&e2;'/></r>");
    EXPECT_EQ("(none)", TextOf(tree)) << "an attribute names an unknown one";
    const Tree known("<!DOCTYPE r [<!ENTITY e 'x<b>y</b>'>]><r><a>1&e;2</a><e/></r>");
    EXPECT_EQ("12", StrAt(known, "a"));
    EXPECT_EQ("(none)", StrAt(known, "a/b"));
}

TEST(YangEntities, AreNoElements) {
    /* The reference is found by its name like any node; there is nothing in it. */
    const Tree tree("<!DOCTYPE r [<!ENTITY e '<b>y</b>'>]><r><a>&e;</a></r>");
    EXPECT_EQ(1u, NAC_YANG_XmlChildExist(tree, "a/e"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(tree, "a/e/e"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(tree, "a/e/b"));
    EXPECT_EQ(0u, NAC_YANG_XmlChildExist(tree, "a/e/e/b"));
}

TEST(YangEntities, AndWhatTheyHoldCanBePathsIntoTheDocument) {
    /* During the walk from the root the declarations are still there: a path into one yields a copy or nothing. */
    const std::string xml = "<!DOCTYPE r [<!ENTITY e '<b>y</b>'><!ENTITY f 'z'><!ELEMENT r ANY>]><r>&e;&f;</r>";
    for (const char *path : {"e", "e/e", "e/f", "e/r", "e/e/b", "e/e/b/text", "e/e/e", "f", "f/f", "f/f/text", "f/r"}) {
        const Tree tree(xml, path);
        const std::string text = TextOf(tree);
        EXPECT_TRUE(text == "(none)" || text == "<b>y</b>" || text == "y" || text == "z" || text == "&e;" ||
                    text == "&f;")
            << path << ": " << text;
    }
}

std::string Bomb(const char *use) {
    std::string dtd = "<!DOCTYPE r [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int level = 1; level < 12; ++level) {
        dtd += "<!ENTITY e" + std::to_string(level) + " '";
        for (int i = 0; i < 10; ++i)
            dtd += "&e" + std::to_string(level - 1) + ";";
        dtd += "'>";
    }
    return dtd + "]>" + use;
}

std::string LongEntity(int references) {
    std::string xml = "<!DOCTYPE r [<!ENTITY e '" + std::string(50'000, 'x') + "'>]><r><a>";
    for (int i = 0; i < references; ++i)
        xml += "&e;";
    return xml + "</a></r>";
}

std::string ParameterBomb(int levels, const char *first = "<!--x-->") {
    std::string dtd = std::string("<!DOCTYPE r [<!ENTITY % p0 '") + first + "'>";
    for (int level = 1; level < levels; ++level) {
        dtd += "<!ENTITY % p" + std::to_string(level) + " '";
        for (int i = 0; i < 10; ++i)
            dtd += "&#37;p" + std::to_string(level - 1) + ";";
        dtd += "'>";
    }
    return dtd + "%p" + std::to_string(levels - 1) + ";]><r><a/></r>";
}

/* Default values of attributes: so many in each element. */
std::string DefaultValues(int attributes, int elements) {
    std::string xml = "<!DOCTYPE r [<!ATTLIST a ";
    for (int i = 0; i < attributes; ++i)
        xml += "k" + std::to_string(i) + " CDATA 'v' ";
    xml += ">]><r>";
    for (int i = 0; i < elements; ++i)
        xml += "<a/>";
    return xml + "</r>";
}

/* That the text is read, or refused, without taking memory that it does not deserve. */
void ExpectNoExplosion(const std::string &xml) {
    const XmlMemory memory;
    {
        const Tree tree(xml);
        if (tree != nullptr) {
            EXPECT_EQ("", StrAt(tree, "a")) << xml.substr(0, 200);
        }
    }
    EXPECT_LT(memory.Peak(), 64u << 20) << xml.substr(0, 200);
    EXPECT_EQ(0u, memory.Live()) << xml.substr(0, 200);
}

TEST(YangBombs, OfEntitiesExplodeNowhere) {
    ExpectNoExplosion(Bomb("<r><a>&e11;</a></r>"));
    ExpectNoExplosion(Bomb("<r><a k='&e11;'/></r>"));
    ExpectNoExplosion(Bomb("<r>&e11;<a/>&e11;</r>"));
    ExpectNoExplosion(LongEntity(20'000));
    ExpectNoExplosion("<!DOCTYPE r [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><r><a>&a;</a></r>");
    ExpectNoExplosion("<!DOCTYPE r [<!ENTITY a '&a;'>]><r><a k='&a;'/></r>");
}

TEST(YangBombs, OfParameterEntitiesAreRefused) {
    for (int levels : {1, 2, 4, 5, 8, 12}) {
        ExpectNoExplosion(ParameterBomb(levels));
        EXPECT_EQ("(none)", TextOf(Tree(ParameterBomb(levels)))) << levels;
    }
    EXPECT_EQ("(none)", TextOf(Tree(ParameterBomb(12, "<!ELEMENT r ANY>"))));
    EXPECT_EQ("(none)", TextOf(Tree("<!DOCTYPE r [<!ENTITY % p '&#37;p;'> %p;]><r><a/></r>")));
    EXPECT_EQ("(none)", TextOf(Tree("\xEF\xBB\xBF<?xml version='1.0'?>\n<!--x--><?y?>" + ParameterBomb(12))));
    EXPECT_EQ("(none)", TextOf(Tree("<!DOCTYPE r [<!ENTITY % p ''>]><r/>"))) << "that they are used does not matter";
}

TEST(YangBombs, OfDefaultValuesAreRefused) {
    ExpectNoExplosion(DefaultValues(5000, 3000));
    EXPECT_EQ("(none)", TextOf(Tree(DefaultValues(1, 1))));
    EXPECT_EQ("(none)", TextOf(Tree("<!DOCTYPE r [<!ATTLIST r k CDATA #FIXED 'v'>]><r/>")));
    EXPECT_EQ("(none)", TextOf(Tree("<!DOCTYPE r [<!ATTLIST r k (v|w) 'v'>]><r/>")));
}

/* "r" with "a" of so many attributes. */
std::string Attributes(int count, const std::string &prefix, const std::string &value) {
    std::string xml = "<r><a";
    for (int i = 0; i < count; ++i)
        xml += " " + prefix + std::to_string(i) + value;
    return xml + ">9</a></r>";
}

TEST(YangBombs, OfAttributesAreRefused) {
    for (const char *prefix : {"k", "xmlns:k"})
        for (const char *value : {"='v'", " = \"v\"", "='\"'", "=\"'\"", "='>'", "=\"/>\"", "='='"}) {
            EXPECT_EQ("9", StrAt(Tree(Attributes(1000, prefix, value)), "a")) << prefix << value;
            EXPECT_EQ("(none)", TextOf(Tree(Attributes(1001, prefix, value)))) << prefix << value;
        }
    EXPECT_EQ("(none)", TextOf(Tree("<r>it's<!--\"--><![CDATA[']]>" + Attributes(1001, "k", "='v'") + "</r>")));
    EXPECT_EQ("(none)", TextOf(Tree("<!DOCTYPE r><?p '?>" + Attributes(1001, "k", "='v'"))));
    EXPECT_EQ("(none)", TextOf(Tree(Attributes(500, "k", "='v'").substr(0, 3000))));
}

TEST(YangBombs, AreNoManyAttributesOfManyElements) {
    std::string xml = "<r>";
    for (int element = 0; element < 20; ++element)
        xml += Attributes(100, "k", "='v'");
    EXPECT_EQ("9", StrAt(Tree(xml + "</r>"), "r/a"));
}

TEST(YangBombs, AreNotEqualSignsElsewhere) {
    std::string equals;
    for (int i = 0; i < 2000; ++i)
        equals += "a=b ";
    EXPECT_EQ(equals, StrAt(Tree("<r><t>" + equals + "</t></r>"), "t"));
    EXPECT_EQ(equals, StrAt(Tree("<r><t k='v'>" + equals + "</t></r>"), "t"));
    EXPECT_EQ(equals, StrAt(Tree("<r><t><![CDATA[" + equals + "]]></t></r>"), "t"));
    EXPECT_EQ("1", StrAt(Tree("<r><!--" + equals + "--><?p " + equals + "?><t k='" + equals + "'>1</t></r>"), "t"));
    EXPECT_EQ("1", StrAt(Tree("<r>" + equals + "<t k=\"" + equals + "\">1</t>" + equals + "</r>"), "t"));
}

TEST(YangBombs, OfIdsAreRefused) {
    const auto ids = [](int count, const char *type) {
        std::string dtd = "<!DOCTYPE r [<!ATTLIST r";
        for (int i = 0; i < count; ++i)
            dtd += std::string(i % 10 == 9 ? "><!ATTLIST r" : "") + " k" + std::to_string(i) + " " + type + " #IMPLIED";
        return dtd + ">]><r>1</r>";
    };
    EXPECT_EQ("<r>1</r>", TextOf(Tree(ids(64, "ID"))));
    EXPECT_EQ("(none)", TextOf(Tree(ids(65, "ID"))));
    EXPECT_EQ("<r>1</r>", TextOf(Tree(ids(500, "CDATA"))));
}

TEST(YangBombs, OfLongDocumentTypesAreRefused) {
    const auto text = [](std::size_t size, const std::string &root, const std::string &behind) {
        const std::string type = "<!DOCTYPE r [<!ELEMENT r ANY><!--";
        return type + std::string(size - type.size() - 5 - root.size(), 'c') + "-->]>" + root + behind;
    };
    const std::string longer(20'000, 'x');
    EXPECT_EQ(longer, StrAt(Tree(text(16 * 1024, "<r>", longer + "</r>")), ""));
    EXPECT_EQ(nullptr, static_cast<xmlNode *>(Tree(text(16 * 1024 + 3, "<r>", longer + "</r>"))));
    EXPECT_EQ(nullptr, static_cast<xmlNode *>(Tree(text(16 * 1024 + 4, "<r k='v'>", "</r>")))) << "half the tag";
    std::string values = "<!DOCTYPE r [<!ATTLIST r k (v";
    for (int i = 0; i < 8000; ++i)
        values += "|v" + std::to_string(i);
    EXPECT_EQ("(none)", TextOf(Tree(values + ") #IMPLIED>]><r/>")));
    EXPECT_EQ(longer, StrAt(Tree("<r>" + longer + "</r>"), "")) << "nothing but the document type is meant";
}

TEST(YangBombs, AreRefusedInTextsThatAreNotWellFormedToo) {
    /* The parser goes on behind such errors, to find more of them. */
    for (const char *before : {"<?xml version='1.0' x>", "<?xml x?>", "<!-- -- -->", "<?xml version='1.0'?><?xml?>"}) {
        ExpectNoExplosion(before + DefaultValues(5000, 3000));
        ExpectNoExplosion(before + ParameterBomb(12));
        ExpectNoExplosion(before + DefaultValues(5000, 3000) + "?>-->" + "<r/>");
    }
    ExpectNoExplosion("<!DOCTYPE r [<!BAD><!ATTLIST" + DefaultValues(5000, 3000).substr(22));
}

TEST(YangDocumentTypes, AreReadWhenTheyAreHarmless) {
    for (const char *type : {"<!DOCTYPE r>", "<!DOCTYPE r []>", "<!DOCTYPE r [<!ELEMENT r ANY>]>",
                             "<!DOCTYPE r [<!ATTLIST r k CDATA #IMPLIED l (x|y) #REQUIRED>]>",
                             "<!DOCTYPE r [<!ENTITY e 'text'>]>", "<!DOCTYPE r SYSTEM 'none.dtd'>",
                             "<!DOCTYPE r [<!ENTITY % p SYSTEM 'none.ent'>%p;]>", "<!DOCTYPE r [<!-- % --><?pi %?>]>"})
        EXPECT_EQ("<r>1</r>", TextOf(Tree(std::string(type) + "<r>1</r>"))) << type;
}

TEST(YangDocumentTypes, AreNotWhatStandsInTextsAndComments) {
    const std::string bomb = DefaultValues(2, 1);
    EXPECT_EQ("<r><!--" + bomb + "-->1</r>", TextOf(Tree("<r><!--" + bomb + "-->1</r>")));
    EXPECT_EQ("<r><![CDATA[" + bomb + "]]></r>", TextOf(Tree("<r><![CDATA[" + bomb + "]]></r>")));
    EXPECT_EQ("<r k=\"!DOCTYPE\">!!!DOCTYPE!</r>", TextOf(Tree("<r k='!DOCTYPE'>!!!DOCTYPE!</r>")));
    EXPECT_EQ("<r/>", TextOf(Tree("<!--" + bomb + "--><?pi " + bomb + "?><r/>")));
}

TEST(YangSizes, OfAHundredKibibytesAreRead) {
    std::string xml = "<r>";
    for (int i = 0; xml.size() < 100 * 1024; ++i)
        xml += "<rule><id>" + std::to_string(i) + "</id><!-- c --><?pi?><name>rule &amp; number</name></rule>";
    xml += "<last><id>7</id></last></r>";
    const Tree tree(xml);
    EXPECT_EQ("0", StrAt(tree, "rule/id"));
    EXPECT_EQ("7", StrAt(tree, "last/id"));

    const Tree text("<r><t>" + std::string(100 * 1024, 'x') + "</t></r>", "t");
    EXPECT_EQ(std::string(100 * 1024, 'x'), StrAt(text, ""));
    std::vector<char> buffer(100 * 1024, '#');
    EXPECT_EQ(1u, NAC_YANG_XmlGetStr(text, "", buffer.data(), 100 * 1024));
    EXPECT_EQ('#', buffer[0]);
}

TEST(YangSizes, BeyondTheParsersLimitsAreRefused) {
    std::string open, close;
    for (int level = 0; level < 300; ++level) {
        open += "<e>";
        close += "</e>";
    }
    EXPECT_EQ("(none)", TextOf(Tree("<r>" + open + close + "</r>")));
    EXPECT_EQ("(none)", TextOf(Tree("<r>" + std::string(11'000'000, 'x') + "</r>")));
    EXPECT_EQ("(none)", TextOf(Tree("<r k='" + std::string(11'000'000, 'x') + "'/>")));
    EXPECT_EQ("(none)", TextOf(Tree("<" + std::string(60'000, 'n') + "/>")));
}

/* A text of `size` bytes that takes one block of memory: "<a><b/></a>" and blanks. */
class HugeText {
  public:
    explicit HugeText(std::size_t size) {
        constexpr char DOCUMENT[] = "<a><b/></a>";
        mapped_ = (size + 1 + BLOCK - 1) / BLOCK * BLOCK;
        void *area = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        const int file = memfd_create("blanks", MFD_CLOEXEC);
        const std::string blanks(BLOCK, ' ');
        if (area == MAP_FAILED || write(file, blanks.data(), BLOCK) != static_cast<ssize_t>(BLOCK))
            throw std::runtime_error("no huge text");
        text_ = static_cast<char *>(area);
        for (std::size_t at = 0; at < mapped_; at += BLOCK)
            if (mmap(text_ + at, BLOCK, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, file, 0) == MAP_FAILED)
                throw std::runtime_error("no huge text");
        close(file);
        std::memcpy(text_, DOCUMENT, sizeof DOCUMENT - 1);
        text_[size] = '\0';
    }
    ~HugeText() { munmap(text_, mapped_); }
    HugeText(const HugeText &) = delete;
    HugeText &operator=(const HugeText &) = delete;

    operator const char *() const { return text_; }

  private:
    static constexpr std::size_t BLOCK = 2 << 20;
    std::size_t mapped_;
    char *text_;
};

TEST(YangSizes, BeyondAnIntAreRefusedAndNotCut) {
    if (UNDER_SANITIZER)
        GTEST_SKIP() << "the records of so many bytes take gigabytes";
    for (const std::size_t size : {std::size_t{INT_MAX} + 1, (std::size_t{1} << 32) + 11}) {
        const HugeText text(size);
        const NAC_YANG_REQUEST_S request = {text};
        EXPECT_EQ(nullptr, NAC_YANG_XmlNewRoot(&request, "b")) << size;
    }
}

/* The program around the library. */

class ErrorFunctions {
  public:
    ErrorFunctions() {
        Calls() = 0;
        xmlSetGenericErrorFunc(nullptr, Generic);
        xmlSetStructuredErrorFunc(this, Structured);
    }
    ~ErrorFunctions() {
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        xmlSetGenericErrorFunc(nullptr, nullptr);
    }
    ErrorFunctions(const ErrorFunctions &) = delete;
    ErrorFunctions &operator=(const ErrorFunctions &) = delete;

    bool AreInPlace() const { return xmlStructuredError == Structured && xmlStructuredErrorContext == this; }
    static int &Calls() {
        static int calls;
        return calls;
    }

  private:
    static void Generic(void *, const char *, ...) { ++Calls(); }
    static constexpr xmlStructuredErrorFunc Structured = [](void *, auto *) { ++Calls(); };
};

void ReadSomeBrokenDocuments() {
    for (const char *xml : {"<a>", "<a>&x;</a>", "<p:a/>", "<a xmlns='relative'/>", "", "<a>\xFF</a>", "<!DOCTYPE"}) {
        const Tree tree(xml);
        (void)StrAt(tree, "");
    }
}

TEST(YangErrors, ArePrintedNowhere) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    ReadSomeBrokenDocuments();
    std::thread(ReadSomeBrokenDocuments).join();
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(YangErrors, LeaveTheProgramsErrorFunctionsAlone) {
    const ErrorFunctions functions;
    ReadSomeBrokenDocuments();
    const Tree good("<a>1</a>");
    (void)StrAt(good, "");
    EXPECT_EQ(0, ErrorFunctions::Calls());
    EXPECT_TRUE(functions.AreInPlace());
    xmlFreeDoc(xmlReadMemory("<a>", 3, nullptr, nullptr, 0));
    EXPECT_LT(0, ErrorFunctions::Calls()) << "and they work";
}

TEST(YangErrors, AreKeptAsTheLatestOfTheThread) {
    xmlResetLastError();
    const Tree tree("<a>");
    ASSERT_NE(nullptr, xmlGetLastError());
    EXPECT_EQ(XML_ERR_TAG_NOT_FINISHED, xmlGetLastError()->code);
    xmlResetLastError();
}

TEST(YangThreads, ReadTextsOfTheirOwn) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([number] {
            for (int round = 0; round < 200; ++round) {
                const std::string value = std::to_string(number * 1000 + round);
                const Tree tree("<r><a><b>" + value + "</b></a></r>", "a");
                uint32_t read = 0;
                EXPECT_EQ(0u, NAC_YANG_XmlGetU32(tree, "b", &read));
                EXPECT_EQ(value, std::to_string(read));
                const Tree broken("<r><a>" + value);
                EXPECT_EQ(nullptr, static_cast<xmlNode *>(broken));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
