/* YANG XML: cuts a subtree out of a configuration text and reads typed values from it by paths of element names.
 *
 * Usage:
 *     struct _xmlNode *pstAcl = NAC_YANG_XmlNewRoot(&stRequest, "nacm/acl");     // below the root element
 *     if (pstAcl == NULL) ...
 *     if (NAC_YANG_XmlGetU32(pstAcl, "rule/id", &ulId) != KIVO_OK) ...
 *     NAC_YANG_XmlDelRoot(pstAcl);
 *
 * A path is element names with '/' between them; one '/' may stand at its end. A null or empty path names the node
 * itself. Names are compared without their namespace prefix. Of several children of one name only the first is reached.
 * The nodes are libxml2's (struct _xmlNode is its xmlNode); who passes them on need not include its headers.
 *
 * Texts from outside are safe to read: nothing outside the text is ever loaded, no file and no network. Entities that a
 * document declares for itself read as nothing. What lets a short text keep the parser busy, and no configuration has,
 * is refused: parameter entities with a text, default values of attributes, more than 64 attributes of type ID or 1000
 * attributes of one element, and a document type where it or the root element's start tag does not end within 16 KiB.
 * Namespaces that nested elements declare still take time with the square of the text's length: who reads texts of
 * strangers bounds their length.
 *
 * Ownership: NAC_YANG_XmlNewRoot gives a tree that the caller releases; all other nodes belong to the tree they are in.
 * Threads: any; a tree belongs to one caller at a time. Nothing is printed: errors of libxml2 are kept from the error
 * functions of the program; xmlGetLastError tells the latest one of the thread.
 * Errors: a reader gives 0, or 1 when there is no such element, its text does not fit or memory is short; what it was
 * to write is then untouched. */
#ifndef UVELCOMMON_BASE_NAC_YANG_XML_H
#define UVELCOMMON_BASE_NAC_YANG_XML_H

#include <uvelcommon_base/kivo_types.h>

struct _xmlNode;

/* Beginning of a request; what follows is the caller's and is not read. */
typedef struct NAC_YANG_REQUEST_S {
    const char *pszXml; /* a whole XML document in UTF-8, terminated */
} NAC_YANG_REQUEST_S;

/* A copy of the element at pszPath below the root element of the request's document, with all that is in it; the caller
 * releases it with NAC_YANG_XmlDelRoot. Null for a null request or text, a text that is not a well-formed document, is
 * refused as above or longer than 2 GiB - 1, a path that leads nowhere, and when memory is short. */
UVEL_API struct _xmlNode *NAC_YANG_XmlNewRoot(const NAC_YANG_REQUEST_S *pstRequest, const char *pszPath);

/* Releases a node of NAC_YANG_XmlNewRoot; null is ignored. */
UVEL_API void NAC_YANG_XmlDelRoot(struct _xmlNode *pstNode);

/* The node at pszPath below pstNode, or null. Kinds of nodes are not told apart: "text" may lead to a text. */
UVEL_API struct _xmlNode *NAC_YANG_XmlGetChild(struct _xmlNode *pstNode, const char *pszPath);

/* 1 when there is a node at pszPath, else 0. */
UVEL_API uint32_t NAC_YANG_XmlChildExist(struct _xmlNode *pstNode, const char *pszPath);

/* Copies the text in the element at pszPath, all texts in it strung together, into ulSize bytes at pszBuffer. */
UVEL_API uint32_t NAC_YANG_XmlGetStr(struct _xmlNode *pstNode, const char *pszPath, char *pszBuffer, uint32_t ulSize);

/* Number of at most 15 characters, read as QAL_strtoul reads base 10: 0 for a text without a number. */
UVEL_API uint32_t NAC_YANG_XmlGetU32(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulValue);

/* As NAC_YANG_XmlGetU32; keeps the low 16 bits of any number: 70000 is read as 4464. */
UVEL_API uint32_t NAC_YANG_XmlGetU16(struct _xmlNode *pstNode, const char *pszPath, uint16_t *pusValue);

/* As NAC_YANG_XmlGetU32; keeps the low 8 bits of any number: 300 is read as 44. */
UVEL_API uint32_t NAC_YANG_XmlGetU8(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucValue);

/* 1 for exactly "true", 0 for any other text of at most 15 characters. */
UVEL_API uint32_t NAC_YANG_XmlGetBool(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulValue);

/* MAC address of 6 bytes from a text of at most 31 characters, by the lenient rules of SRV_MacStrToAddr. */
UVEL_API uint32_t NAC_YANG_XmlGetMac(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucMac);

/* IPv4 address in host order from a text of at most 31 characters; SRV_StrToIpAddr's result. */
UVEL_API uint32_t NAC_YANG_XmlGetIpv4(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulAddr);

/* IPv6 address of 16 bytes in network order from a text of at most 63 characters; SRV_StrtoIpv6Addr's result. */
UVEL_API uint32_t NAC_YANG_XmlGetIpv6(struct _xmlNode *pstNode, const char *pszPath, uint8_t *pucAddr);

/* Empty leaf: 0 and *pulExist 1 when there is a node at pszPath, 1 and *pulExist 0 when not. pulExist may be null. */
UVEL_API uint32_t NAC_YANG_XmlGetEmpty(struct _xmlNode *pstNode, const char *pszPath, uint32_t *pulExist);

#endif
