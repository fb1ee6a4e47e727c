#include "yang_dtd.h"

#include <cstring>
#include <libxml/SAX2.h>
#include <libxml/parser.h>

/* Without these bytes there is no document type. With them there may be none: they may stand in a comment or a text. */
static bool NamesDocumentType(const char *pszXml, int lLength) {
    static constexpr char REST[] = "DOCTYPE";
    const char *pszEnd = pszXml + lLength;
    for (const char *psz = pszXml; psz != pszEnd; ++psz) {
        psz = static_cast<const char *>(std::memchr(psz, '!', static_cast<std::size_t>(pszEnd - psz)));
        if (psz == nullptr)
            return false;
        if (std::strncmp(psz + 1, REST, sizeof(REST) - 1) == 0)
            return true;
    }
    return false;
}

/* What the parser met before the root element; kept in the parser's own field for the caller's data. */
struct PROLOG_S {
    bool bRoot; /* it got there, and everything before is well-formed */
    bool bWild;
};

static void Stop(void *pParser) {
    xmlStopParser(static_cast<xmlParserCtxt *>(pParser));
}

static PROLOG_S *PrologOf(void *pParser) {
    return static_cast<PROLOG_S *>(static_cast<xmlParserCtxt *>(pParser)->_private);
}

static void OnEntity(void *pParser, const xmlChar *pucName, int lType, const xmlChar *pucPublic,
                     const xmlChar *pucSystem, xmlChar *pucContent) {
    if (lType == XML_INTERNAL_PARAMETER_ENTITY) {
        PrologOf(pParser)->bWild = true;
        Stop(pParser);
        return;
    }
    xmlSAX2EntityDecl(pParser, pucName, lType, pucPublic, pucSystem, pucContent);
}

static void OnAttribute(void *pParser, const xmlChar *, const xmlChar *, int, int, const xmlChar *pucDefault,
                        xmlEnumeration *pstValues) {
    xmlFreeEnumeration(pstValues);
    if (pucDefault == nullptr)
        return;
    PrologOf(pParser)->bWild = true;
    Stop(pParser);
}

static void OnElement(void *pParser, const xmlChar *, const xmlChar *, const xmlChar *, int, const xmlChar **, int, int,
                      const xmlChar **) {
    PrologOf(pParser)->bRoot = static_cast<xmlParserCtxt *>(pParser)->wellFormed != 0;
    Stop(pParser);
}

/* The parser itself reads the declarations, up to the first wild one: whoever reads them otherwise is fooled some day.
 * It has to recover from errors, for without that it goes on reading after one but says no more what it reads. */
static bool IsPrologTame(const char *pszXml, int lLength) {
    xmlParserCtxt *pstParser = xmlNewParserCtxt();
    if (pstParser == nullptr)
        return false;
    PROLOG_S stProlog = {};
    pstParser->_private = &stProlog;
    pstParser->sax->entityDecl = OnEntity;
    pstParser->sax->attributeDecl = OnAttribute;
    pstParser->sax->startElementNs = OnElement;
    xmlFreeDoc(xmlCtxtReadMemory(pstParser, pszXml, lLength, nullptr, "utf-8", XML_PARSE_NOBLANKS | XML_PARSE_RECOVER));
    xmlFreeParserCtxt(pstParser);
    return stProlog.bRoot && !stProlog.bWild;
}

bool YANG_IsTame(const char *pszXml, int lLength) {
    return !NamesDocumentType(pszXml, lLength) || IsPrologTame(pszXml, lLength);
}
