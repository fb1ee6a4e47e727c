#include "yang_tame.h"

#include <cstdint>
#include <cstring>
#include <libxml/SAX2.h>
#include <libxml/parser.h>

static constexpr uint32_t MAX_ATTRIBUTES = 1000;
static constexpr uint32_t MAX_IDS = 64;
static constexpr int MAX_PROLOG = 16 * 1024;

/* True when more than MAX_ATTRIBUTES bytes are '=': without them no element is crowded. */
static bool MayBeCrowded(const char *pszXml, const char *pszEnd) {
    uint32_t ulCount = 0;
    while (ulCount <= MAX_ATTRIBUTES) {
        pszXml = static_cast<const char *>(std::memchr(pszXml, '=', static_cast<std::size_t>(pszEnd - pszXml)));
        if (pszXml == nullptr)
            return false;
        ++pszXml;
        ++ulCount;
    }
    return true;
}

/* True for more than MAX_ATTRIBUTES in one element. Each has a '=' outside of its value, and no value has a '<', so that
 * every tag is read from its beginning, whatever came before. What looks like a tag in a comment is taken for one. */
static bool HasCrowdedElement(const char *pszXml, const char *pszEnd) {
    char cEnd = '<'; /* of the text or value that is passed over; 0 between attributes */
    uint32_t ulAttributes = 0;
    for (const char *psz = pszXml; psz != pszEnd; ++psz) {
        if (*psz == '<') {
            cEnd = psz[1] == '!' || psz[1] == '?' ? '<' : '\0';
            ulAttributes = 0;
        } else if (cEnd != '\0') {
            cEnd = *psz == cEnd ? '\0' : cEnd;
        } else if (*psz == '"' || *psz == '\'') {
            cEnd = *psz;
        } else if (*psz == '>') {
            cEnd = '<';
        } else if (*psz == '=' && ++ulAttributes > MAX_ATTRIBUTES) {
            return true;
        }
    }
    return false;
}

/* Without these bytes there is no document type. With them there may be none: they may stand in a comment or a text. */
static bool NamesDocumentType(const char *pszXml, const char *pszEnd) {
    static constexpr char REST[] = "DOCTYPE";
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
    uint32_t ulIds;
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

static void OnAttribute(void *pParser, const xmlChar *, const xmlChar *, int lType, int, const xmlChar *pucDefault,
                        xmlEnumeration *pstValues) {
    PROLOG_S *pstProlog = PrologOf(pParser);
    xmlFreeEnumeration(pstValues);
    if (lType == XML_ATTRIBUTE_ID)
        ++pstProlog->ulIds;
    if (pucDefault == nullptr && pstProlog->ulIds <= MAX_IDS)
        return;
    pstProlog->bWild = true;
    Stop(pParser);
}

static void OnElement(void *pParser, const xmlChar *, const xmlChar *, const xmlChar *, int, const xmlChar **, int, int,
                      const xmlChar **) {
    PrologOf(pParser)->bRoot = static_cast<xmlParserCtxt *>(pParser)->wellFormed != 0;
    Stop(pParser);
}

/* The parser itself reads the declarations in lLength bytes, up to the first wild one: whoever reads them otherwise is
 * fooled some day. It has to recover from errors, for without that it goes on reading after one but says no more what it
 * reads. */
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
    const char *pszEnd = pszXml + lLength;
    if (MayBeCrowded(pszXml, pszEnd) && HasCrowdedElement(pszXml, pszEnd))
        return false;
    return !NamesDocumentType(pszXml, pszEnd) || IsPrologTame(pszXml, lLength < MAX_PROLOG ? lLength : MAX_PROLOG);
}
