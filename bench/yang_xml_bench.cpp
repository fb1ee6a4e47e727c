// YANG XML beside libxml2 used directly: finding an element three levels down beside XPath, cutting a subtree out of a
// text beside the calls of libxml2 that this takes. Every loop walks through more than 50,000 different inputs.

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <uvelcommon_base/nac_yang_xml.h>

namespace {

constexpr uint32_t SEED = 1970;

std::string Name(std::mt19937 &random) {
    std::string name(4 + random() % 9, '\0');
    for (char &c : name)
        c = static_cast<char>('a' + random() % 26);
    return name;
}

/* 100 trees of 8 x 8 x 8 leaves with names of their own, and the way to each leaf: 51,200 in random order. */
struct Ways {
    struct Way {
        xmlNode *root;
        std::string path;
        xmlXPathCompExpr *expression;
    };
    std::vector<xmlDoc *> documents;
    std::vector<Way> ways;

    Ways() {
        std::mt19937 random(SEED);
        for (int tree = 0; tree < 100; ++tree)
            AddTree(random);
        std::shuffle(ways.begin(), ways.end(), random);
    }

    void AddTree(std::mt19937 &random) {
        std::string xml = "<config>";
        std::vector<std::string> paths;
        for (int i = 0; i < 8; ++i) {
            const std::string first = Name(random);
            xml += "<" + first + ">";
            for (int j = 0; j < 8; ++j) {
                const std::string second = Name(random);
                xml += "<" + second + ">";
                for (int k = 0; k < 8; ++k) {
                    const std::string third = Name(random);
                    xml += "<" + third + ">1</" + third + ">";
                    paths.push_back(first + "/" + second + "/" + third);
                }
                xml += "</" + second + ">";
            }
            xml += "</" + first + ">";
        }
        xml += "</config>";
        documents.push_back(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, "utf-8", 256));
        for (const std::string &path : paths)
            ways.push_back({xmlDocGetRootElement(documents.back()), path,
                            xmlXPathCompile(reinterpret_cast<const xmlChar *>(path.c_str()))});
    }

    static const Ways &Get() {
        static const Ways ways;
        return ways;
    }
};

const Ways::Way &Next(uint32_t &i) {
    const std::vector<Ways::Way> &ways = Ways::Get().ways;
    const Ways::Way &way = ways[i];
    i = i + 1 == ways.size() ? 0 : i + 1;
    return way;
}

/* Configuration texts of about 400 bytes, all different; the subtree is three quarters of them. */
const std::vector<std::string> &Texts() {
    static const std::vector<std::string> texts = [] {
        std::mt19937 random(SEED);
        std::vector<std::string> made(51'200);
        for (std::string &xml : made) {
            xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<config xmlns=\"urn:example:nac\">\n  <domain>" +
                  Name(random) + "</domain>\n  <profile>\n";
            for (int rule = 0; rule < 4; ++rule)
                xml += "    <rule>\n      <id>" + std::to_string(random() % 100'000) + "</id>\n      <name>" +
                       Name(random) + "</name>\n    </rule>\n";
            xml += "  </profile>\n</config>\n";
        }
        return made;
    }();
    return texts;
}

constexpr char SUBTREE[] = "profile";

} // namespace

static void GetChild(benchmark::State &state) {
    uint32_t i = 0;
    Next(i);
    for (auto _ : state) {
        const Ways::Way &way = Next(i);
        benchmark::DoNotOptimize(NAC_YANG_XmlGetChild(way.root, way.path.c_str()));
    }
}
BENCHMARK(GetChild);

/* The text of the path is compiled with each use, as for paths that a program puts together. */
static void GetChildXPath(benchmark::State &state) {
    uint32_t i = 0;
    Next(i);
    for (auto _ : state) {
        const Ways::Way &way = Next(i);
        xmlXPathContext *context = xmlXPathNewContext(way.root->doc);
        context->node = way.root;
        xmlXPathObject *found = xmlXPathEvalExpression(reinterpret_cast<const xmlChar *>(way.path.c_str()), context);
        benchmark::DoNotOptimize(found->nodesetval->nodeTab[0]);
        xmlXPathFreeObject(found);
        xmlXPathFreeContext(context);
    }
}
BENCHMARK(GetChildXPath);

/* The best that XPath can do: compiled beforehand, one context for each document. */
static void GetChildXPathCompiled(benchmark::State &state) {
    uint32_t i = 0;
    Next(i);
    xmlXPathContext *context = xmlXPathNewContext(nullptr);
    for (auto _ : state) {
        const Ways::Way &way = Next(i);
        context->doc = way.root->doc;
        context->node = way.root;
        xmlXPathObject *found = xmlXPathCompiledEval(way.expression, context);
        benchmark::DoNotOptimize(found->nodesetval->nodeTab[0]);
        xmlXPathFreeObject(found);
    }
    xmlXPathFreeContext(context);
}
BENCHMARK(GetChildXPathCompiled);

static void NewRoot(benchmark::State &state) {
    const std::vector<std::string> &texts = Texts();
    uint32_t i = 0;
    for (auto _ : state) {
        const NAC_YANG_REQUEST_S request = {texts[i].c_str()};
        i = i + 1 == texts.size() ? 0 : i + 1;
        xmlNode *root = NAC_YANG_XmlNewRoot(&request, SUBTREE);
        benchmark::DoNotOptimize(root);
        NAC_YANG_XmlDelRoot(root);
    }
}
BENCHMARK(NewRoot);

/* Parse, find, copy, free: nothing less gives the same tree. */
static void NewRootLibxml2(benchmark::State &state) {
    const std::vector<std::string> &texts = Texts();
    uint32_t i = 0;
    for (auto _ : state) {
        const std::string &xml = texts[i];
        i = i + 1 == texts.size() ? 0 : i + 1;
        xmlDoc *document = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, "utf-8", 256);
        xmlNode *node = xmlDocGetRootElement(document)->children;
        while (!xmlStrEqual(node->name, reinterpret_cast<const xmlChar *>(SUBTREE)))
            node = node->next;
        xmlNode *root = xmlCopyNode(node, 1);
        xmlFreeDoc(document);
        benchmark::DoNotOptimize(root);
        xmlFreeNode(root);
    }
}
BENCHMARK(NewRootLibxml2);
