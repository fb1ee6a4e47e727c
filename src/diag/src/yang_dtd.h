/* Document types: what a text declares about itself before its root element. */
#ifndef UVEL_DIAG_YANG_DTD_H
#define UVEL_DIAG_YANG_DTD_H

/* lLength is that of pszXml up to its terminator. False for a text whose declarations make the parser run away:
 * parameter entities with a text of their own, and default values of attributes. A few hundred bytes of the former keep
 * it busy for ever, whatever limits it has; the latter grow with every element. Configuration has neither. Also false
 * for some texts that are not well-formed. */
bool YANG_IsTame(const char *pszXml, int lLength);

#endif
