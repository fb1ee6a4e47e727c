// The tree: parsing, copying a subtree, walking a path, reading the text of an element.

#include "yang_tree.h"

#include "yang_tame.h"
#include <climits>
#include <cstddef>
#include <cstring>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <pthread.h>
#include <securec.h>

static_assert(sizeof(NAC_YANG_REQUEST_S) == 8);
static_assert(offsetof(NAC_YANG_REQUEST_S, pszXml) == 0);

/* Options of the parser: blank text nodes are dropped, and that is all. What would make libxml2 read other files is
 * off: XML_PARSE_NOENT, XML_PARSE_DTDLOAD, XML_PARSE_DTDATTR, XML_PARSE_DTDVALID, XML_PARSE_XINCLUDE; so is
 * XML_PARSE_HUGE, which would lift the limits against documents that grow without end. */
static constexpr int PARSE_OPTIONS = XML_PARSE_NOBLANKS;
static_assert(PARSE_OPTIONS == 256);

/* While libxml2 works for us its errors come here and not to the program's error functions, of which the default one
 * prints. The structured one is the thread's own and goes before the others, so nothing of the program is disturbed.
 *
 * It also tells of memory shortage, after which libxml2 may hand out half a tree or half a text as if it were whole. */
struct XML_WATCH_S {
    xmlStructuredErrorFunc pfBefore;
    void *pBefore;
    bool bNoMemory;
};

/* Goes before libxml2 parses or may run short of memory; it wants to be set up by one thread before several use it. */
static void BeginWatch(XML_WATCH_S *pstWatch) {
    static pthread_once_t s_stSetUp = PTHREAD_ONCE_INIT;
    (void)pthread_once(&s_stSetUp, xmlInitParser);
    pstWatch->pfBefore = xmlStructuredError;
    pstWatch->pBefore = xmlStructuredErrorContext;
    pstWatch->bNoMemory = false;
    /* The error is constant in newer versions of libxml2 only: the type is left to the compiler. */
    xmlSetStructuredErrorFunc(pstWatch, [](void *pWatch, auto *pstError) {
        if (pstError->code == XML_ERR_NO_MEMORY)
            static_cast<XML_WATCH_S *>(pWatch)->bNoMemory = true;
    });
}

/* True when memory lasted. */
static bool EndWatch(const XML_WATCH_S *pstWatch) {
    xmlSetStructuredErrorFunc(pstWatch->pBefore, pstWatch->pfBefore);
    return !pstWatch->bNoMemory;
}

/* What libxml2 does by default in this thread. The program's choice must not hold here: libxml2 takes it over along
 * with the options of a call, and so opens the files that a text names. */
struct XML_DEFAULTS_S {
    int lSubstitute;
    int lLoadDtd;
    int lValidate;
    int lBufferSize;
};

static XML_DEFAULTS_S SwapDefaults(const XML_DEFAULTS_S &stNew) {
    const XML_DEFAULTS_S stOld = {xmlSubstituteEntitiesDefaultValue, xmlLoadExtDtdDefaultValue,
                                  xmlDoValidityCheckingDefaultValue, xmlDefaultBufferSize};
    xmlSubstituteEntitiesDefaultValue = stNew.lSubstitute;
    xmlLoadExtDtdDefaultValue = stNew.lLoadDtd;
    xmlDoValidityCheckingDefaultValue = stNew.lValidate;
    xmlDefaultBufferSize = stNew.lBufferSize;
    return stOld;
}

/* Room for the whole text from the start. libxml2 2.9 does not survive that the buffer of its input cannot grow. A text
 * of more than 32 MiB is worth that risk: the room would be several times as much. */
static int BufferSize(int lLength) {
    return lLength <= 32 << 20 ? 2 * lLength + 8192 : xmlDefaultBufferSize;
}

/* The document, or null when it is not to be read or not well-formed. */
static xmlDoc *Parse(const char *pszXml, int lLength) {
    const XML_DEFAULTS_S stProgram = SwapDefaults({0, 0, 0, BufferSize(lLength)});
    xmlDoc *pstDoc = nullptr;
    if (YANG_IsTame(pszXml, lLength))
        pstDoc = xmlReadMemory(pszXml, lLength, nullptr, "utf-8", PARSE_OPTIONS);
    (void)SwapDefaults(stProgram);
    return pstDoc;
}

static xmlNode *CopySubtree(const char *pszXml, int lLength, const char *pszPath) {
    xmlDoc *pstDoc = Parse(pszXml, lLength);
    if (pstDoc == nullptr)
        return nullptr;
    xmlNode *pstFound = NAC_YANG_XmlGetChild(xmlDocGetRootElement(pstDoc), pszPath);
    xmlNode *pstCopy = pstFound == nullptr ? nullptr : xmlCopyNode(pstFound, 1);
    xmlFreeDoc(pstDoc);
    return pstCopy;
}

struct _xmlNode *NAC_YANG_XmlNewRoot(const NAC_YANG_REQUEST_S *pstRequest, const char *pszPath) {
    if (pstRequest == nullptr || pstRequest->pszXml == nullptr)
        return nullptr;
    /* The parser takes the length as an int: a longer text must not be read as a shorter one. */
    const std::size_t ulLength = strnlen(pstRequest->pszXml, std::size_t{INT_MAX} + 1);
    if (ulLength > INT_MAX)
        return nullptr;
    XML_WATCH_S stWatch;
    BeginWatch(&stWatch);
    xmlNode *pstCopy = CopySubtree(pstRequest->pszXml, static_cast<int>(ulLength), pszPath);
    if (EndWatch(&stWatch))
        return pstCopy;
    xmlFreeNode(pstCopy);
    return nullptr;
}

void NAC_YANG_XmlDelRoot(struct _xmlNode *pstNode) {
    xmlFreeNode(pstNode);
}

/* First child whose name is the ulLength bytes at pszName. Some kinds of nodes have no name. Most names differ in their
 * first byte, which spares the call. */
static xmlNode *FindChild(const xmlNode *pstNode, const char *pszName, std::size_t ulLength) {
    const char cFirst = ulLength == 0 ? '\0' : *pszName;
    for (xmlNode *pstChild = pstNode->children; pstChild != nullptr; pstChild = pstChild->next) {
        const char *pszChild = reinterpret_cast<const char *>(pstChild->name);
        if (pszChild != nullptr && *pszChild == cFirst && std::strncmp(pszChild, pszName, ulLength) == 0 &&
            pszChild[ulLength] == '\0')
            return pstChild;
    }
    return nullptr;
}

struct _xmlNode *NAC_YANG_XmlGetChild(struct _xmlNode *pstNode, const char *pszPath) {
    if (pszPath == nullptr)
        return pstNode;
    while (pstNode != nullptr && *pszPath != '\0') {
        const char *pszEnd = pszPath;
        while (*pszEnd != '\0' && *pszEnd != '/')
            ++pszEnd;
        pstNode = FindChild(pstNode, pszPath, static_cast<std::size_t>(pszEnd - pszPath));
        pszPath = *pszEnd == '/' ? pszEnd + 1 : pszEnd;
    }
    return pstNode;
}

uint32_t NAC_YANG_XmlChildExist(struct _xmlNode *pstNode, const char *pszPath) {
    return NAC_YANG_XmlGetChild(pstNode, pszPath) != nullptr ? 1 : 0;
}

/* The length is compared before the copy: a bounded copy that fails would empty the buffer. */
static bool CopyText(const char *pszText, char *pszBuffer, uint32_t ulSize) {
    return std::strlen(pszText) < ulSize && strcpy_s(pszBuffer, ulSize, pszText) == EOK;
}

bool YANG_ReadText(struct _xmlNode *pstNode, const char *pszPath, char *pszBuffer, uint32_t ulSize) {
    xmlNode *pstFound = NAC_YANG_XmlGetChild(pstNode, pszPath);
    if (pstFound == nullptr)
        return false;
    XML_WATCH_S stWatch;
    BeginWatch(&stWatch);
    xmlChar *pucContent = xmlNodeGetContent(pstFound);
    const bool bWhole = EndWatch(&stWatch) && pucContent != nullptr;
    const bool bCopied = bWhole && CopyText(reinterpret_cast<const char *>(pucContent), pszBuffer, ulSize);
    if (pucContent != nullptr)
        xmlFree(pucContent);
    return bCopied;
}
