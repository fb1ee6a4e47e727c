/* Text of elements, as the typed readers need it. */
#ifndef UVEL_DIAG_YANG_TREE_H
#define UVEL_DIAG_YANG_TREE_H

#include <uvelcommon_base/nac_yang_xml.h>

/* Copies the text at pszPath into ulSize bytes. False, and the buffer untouched, without such an element or text, when
 * the text does not fit, and when memory is short. */
bool YANG_ReadText(struct _xmlNode *pstNode, const char *pszPath, char *pszBuffer, uint32_t ulSize);

#endif
