/* Show registries: display functions that modules register under their ids, one list for features, one for modules.
 *
 * The library keeps the lists and never calls the functions. A product's command handling walks a list and calls what
 * it finds, in the order of registration. Both lists behave alike and share nothing.
 *
 * Usage:
 *     UVEL_FuncRegShowModuleID(ulMid, ShowSessions);
 *     ...
 *     UVEL_RegShowModuleTbl_Init();   // a head that was never used is all zero, this makes it an empty list
 *     for (p = g_stDllShowModuleTbl.pstNext; p != (DLL_NODE_S *)&g_stDllShowModuleTbl; p = p->pstNext)
 *         ((UVEL_SHOW_NODE_S *)p)->pfShow();
 *
 * Ownership: the nodes are the registry's; a walker must not keep one over an unregistration.
 * Threads: no lock. Modules register at start-up.
 * Errors: 1 for a null function and when memory is short; the list is then as it was. */
#ifndef UVELCOMMON_BASE_KIVO_SHOW_H
#define UVELCOMMON_BASE_KIVO_SHOW_H

#include "kivo_types.h"

#include <uvelhost/list.h>

/* Prints what a module has to show; 0 when it could. */
typedef uint32_t (*UVEL_SHOW_FUNC)(void);

/* A registered function. */
typedef struct {
    DLL_NODE_S stNode;     /* first: a pointer to it is one to the record */
    uint32_t ulMid;        /* module that it is registered under */
    UVEL_SHOW_FUNC pfShow; /* never null */
} UVEL_SHOW_NODE_S;

/* The lists, of UVEL_SHOW_NODE_S. */
UVEL_DATA DLL_S g_stDllShowFeatureTbl;
UVEL_DATA DLL_S g_stDllShowModuleTbl;

/* Make the list empty the first time and do nothing later. Registering does this by itself. */
UVEL_API void UVEL_RegShowFeatureTbl_Init(void);
UVEL_API void UVEL_RegShowModuleTbl_Init(void);

/* Append the function under module ulMid, which its memory is charged to. A pair of id and function that is there
 * already stays where it is, with result 0. */
UVEL_API uint32_t UVEL_FuncRegShowFeature(uint32_t ulMid, UVEL_SHOW_FUNC pfShow);
UVEL_API uint32_t UVEL_FuncRegShowModuleID(uint32_t ulMid, UVEL_SHOW_FUNC pfShow);

/* Remove the pair of id and function; the result is that of releasing its memory, 0 in the ordinary case. Where there
 * is no such pair the result is ulMid, so it does not tell success from failure. */
UVEL_API uint32_t UVEL_FuncUnRegShowFeature(uint32_t ulMid, UVEL_SHOW_FUNC pfShow);
UVEL_API uint32_t UVEL_FuncUnRegShowModule(uint32_t ulMid, UVEL_SHOW_FUNC pfShow);

#endif
