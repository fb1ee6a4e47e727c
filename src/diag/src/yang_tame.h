/* Texts that make the parser run away. */
#ifndef UVEL_DIAG_YANG_TAME_H
#define UVEL_DIAG_YANG_TAME_H

/* lLength is that of pszXml up to its terminator. False for a text with something that no configuration has and that
 * keeps the parser busy longer than its length tells:
 *
 * - parameter entities with a text of their own: a few hundred bytes of them take for ever, whatever limits the parser
 *   has; default values of attributes, which grow with every element;
 * - what the parser compares each with each: more than 1000 attributes of one element, namespaces among them, more than
 *   64 attributes of type ID, and, for the values of an enumeration, a document type after which the root element's
 *   start tag does not end within 16 KiB.
 *
 * Also false for some texts that are not well-formed. Not covered are namespaces that nested elements declare: each is
 * looked for among all around it. */
bool YANG_IsTame(const char *pszXml, int lLength);

#endif
