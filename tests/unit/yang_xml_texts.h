/* Trees for the tests of the YANG XML readers. */
#ifndef UVEL_TESTS_UNIT_YANG_XML_TEXTS_H
#define UVEL_TESTS_UNIT_YANG_XML_TEXTS_H

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <string>
#include <uvelcommon_base/nac_yang_xml.h>

namespace yang_xml_texts {

/* The tree at a path of a text. */
class Tree {
  public:
    Tree(const std::string &xml, const char *path) {
        const NAC_YANG_REQUEST_S request = {xml.c_str()};
        root_ = NAC_YANG_XmlNewRoot(&request, path);
    }
    /* The whole of a text, below and with its root element. */
    explicit Tree(const std::string &xml) : Tree(xml, "") {}
    ~Tree() { NAC_YANG_XmlDelRoot(root_); }
    Tree(const Tree &) = delete;
    Tree &operator=(const Tree &) = delete;

    operator xmlNode *() const { return root_; }

  private:
    xmlNode *root_;
};

/* A node as XML text; "(none)" for null. */
inline std::string TextOf(xmlNode *node) {
    if (node == nullptr)
        return "(none)";
    xmlBuffer *buffer = xmlBufferCreate();
    xmlNodeDump(buffer, nullptr, node, 0, 0);
    const std::string text = reinterpret_cast<const char *>(xmlBufferContent(buffer));
    xmlBufferFree(buffer);
    return text;
}

/* The text of the element at a path; "(none)" when it cannot be read. */
inline std::string StrAt(xmlNode *node, const char *path) {
    static char buffer[1 << 20];
    buffer[0] = '#';
    return NAC_YANG_XmlGetStr(node, path, buffer, sizeof buffer) == 0 ? buffer : "(none)";
}

} // namespace yang_xml_texts

#endif
