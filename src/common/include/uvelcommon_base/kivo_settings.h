/* Settings: what a product tells the library about itself, in small process-wide tables.
 *
 * Numeric specifications (limits of the product), switches, identifiers of tasks and modules, command templates and
 * macro values. Every table has a fixed number of entries, one setter and one getter; what an index stands for is an
 * agreement between the product and those who read it. Beside them stand interface templates, which are lists of
 * interface-type names that a caller keeps for itself.
 *
 * Usage:
 *     UVEL_GlobalVarInit();                       // once, brings the tables to the defaults named below
 *     KIVO_SetKivoCommonSpec(0, 64);
 *     if (KIVO_SetTID(7, ulTid) != KIVO_OK) ...   // index too large
 *     ulLimit = KIVO_GetKivoCommonSpec(0);
 *
 * Until UVEL_GlobalVarInit has run, every table holds zeros. It leaves the common and the service-common specifications
 * and the feature bits as they are, so these may be set earlier.
 *
 * Ownership: the tables live as long as the process. Templates are pointers of the product, stored and handed back.
 * Threads: no locks. The tables are written at start-up and read afterwards; each entry is one aligned word written
 * whole.
 * Errors: the tables do not agree on what a bad index does: see each function. */
#ifndef UVELCOMMON_BASE_KIVO_SETTINGS_H
#define UVELCOMMON_BASE_KIVO_SETTINGS_H

#include "kivo_types.h"

/* Entries of each table. */
#define KIVO_COMMON_SPEC_NUM 7U
#define KIVO_PDT_OXM_CFG_NUM 256U
#define KIVO_CLI_TEMPLET_NUM 1024U
#define KIVO_TID_NUM 62U
#define KIVO_TASK_PRIORITY_NUM 1U
#define KIVO_MODULE_ID_NUM 75U
#define KIVO_PDT_MACRO_NUM 2048U
#define SRVCOMMON_SPEC_NUM 8U

#define KIVO_TASK_PRIORITY_DEFAULT 85U /* priority of a task of which none was set */

/* Capacity of an interface template whose owner names none. */
#define KIVO_IF_TEMPLET_DEFAULT_CAPACITY 64U

/* A command template of the product. */
typedef struct {
    void *pTemplet;        /* the product's own, not looked at */
    uint32_t ulIfTypeFlag; /* interface types for which the command exists */
} KIVO_CLI_TEMPLET_S;

/* One interface type of a template and its name. */
typedef struct {
    uint32_t ulIfType; /* the host's number of the type */
    char *pszName;     /* block of the memory service, owned by the entry */
} KIVO_IF_TEMPLET_ENTRY_S;

/* An interface template: names of interface types. The structure is the caller's, its entries the library's. */
typedef struct {
    KIVO_IF_TEMPLET_ENTRY_S *pstEntries; /* block of the memory service with room for ulCapacity entries */
    uint32_t ulCapacity;                 /* set by the caller before KIVO_InitIfTemplet */
    uint32_t ulCount;                    /* entries in use, from the first */
} KIVO_IF_TEMPLET_S;

/* The tables. Product code may read and walk them; writing goes through the setters. */
UVEL_DATA uint32_t g_aulKivoCommonSpecs[KIVO_COMMON_SPEC_NUM];
UVEL_DATA uint32_t g_stKIVOPdtOxmCfg[KIVO_PDT_OXM_CFG_NUM];
UVEL_DATA KIVO_CLI_TEMPLET_S g_stKIVOCliTemplet[KIVO_CLI_TEMPLET_NUM];
UVEL_DATA uint32_t g_aulKivoTid[KIVO_TID_NUM];
UVEL_DATA uint32_t g_aulKivoTaskPriority[KIVO_TASK_PRIORITY_NUM];
UVEL_DATA uint32_t g_KivoModuleIDs[KIVO_MODULE_ID_NUM];
UVEL_DATA uint32_t g_szKIVOPdtMacroDefineCfg[KIVO_PDT_MACRO_NUM];
UVEL_DATA uint32_t g_aulSRVCOMMON_Specs[SRVCOMMON_SPEC_NUM];
UVEL_DATA uint32_t g_aulSRVCOMMON_Feature[1];

/* Common specification 0 to 6; default 0. A larger index is ignored. */
UVEL_API void KIVO_SetKivoCommonSpec(uint32_t ulIndex, uint32_t ulValue);

/* The specification; 0 for a larger index. */
UVEL_API uint32_t KIVO_GetKivoCommonSpec(uint32_t ulIndex);

/* Product switch 0 to 255; default 0. Only the low 8 bits of the value are kept. A larger index is ignored. */
UVEL_API void KIVO_SetPdtOxmCfgSwitch(uint32_t ulIndex, uint32_t ulValue);

/* The switch, 0 to 255; 0 for a larger index. */
UVEL_API uint32_t KIVO_GetPdtOxmCfgSwitch(uint32_t ulIndex);

/* Template of command 0 to 1023; default null. A larger index is ignored. The command's flag stays as it is. */
UVEL_API void KIVO_SetCliCmdTemplet(uint32_t ulIndex, void *pTemplet);

/* Interface-type flag of command 0 to 1023; default 0. A larger index is ignored. The template stays as it is. Read the
 * flag in the table. */
UVEL_API void KIVO_SetIfTypeFlag(uint32_t ulIndex, uint32_t ulFlag);

/* The template of a command. ulIndex is not checked: that it is at most 1023 is the caller's duty. */
UVEL_API void *UVEL_GetCliCmdTemplet(uint32_t ulIndex);

/* Id of task 0 to 61; default 0xFFFFFFFF. 1 for a larger index, nothing is stored then. */
UVEL_API uint32_t KIVO_SetTID(uint32_t ulIndex, uint32_t ulTid);

/* The task id; 0xFFFFFFFF for a larger index. */
UVEL_API uint32_t UVEL_GetKivoTid(uint32_t ulIndex);

/* Priority of the library's tasks; default 85. 1 for any index but 0, nothing is stored then. */
UVEL_API uint32_t KIVO_SetTaskPriority(uint32_t ulIndex, uint32_t ulPriority);

/* The priority; 0xFFFFFFFF for any index but 0. */
UVEL_API uint32_t UVEL_GetKivoTaskPriority(uint32_t ulIndex);

/* Module id 0 to 74; default 0xFFFFFFFF. A larger index is ignored. */
UVEL_API void KIVO_SetModuleID(uint32_t ulIndex, uint32_t ulMid);

/* The module id; 0xFFFFFFFF for a larger index. */
UVEL_API uint32_t KIVO_GetModuleID(uint32_t ulIndex);

/* Product macro 0 to 2047; default 0. A larger index is ignored. */
UVEL_API void KIVO_SetPdtMacroDefine(uint32_t ulIndex, uint32_t ulValue);

/* The macro's value; 0xFFFFFFFF for a larger index. */
UVEL_API uint32_t UVEL_GetPdtMacroDefineCfg(uint32_t ulIndex);

/* Service-common specification 0 to 7; default 0. A larger index is ignored. */
UVEL_API void SRVCOMMON_SetSpecs(uint32_t ulIndex, uint32_t ulValue);

/* The specification; 0 for a larger index. */
UVEL_API uint32_t SRVCOMMON_GetSpecs(uint32_t ulIndex);

/* Switches feature 0 on (ulOn not 0) or off. No other feature can be set; others are ignored. */
UVEL_API void SRVCOMMON_SetFeature(uint32_t ulFeature, uint32_t ulOn);

/* 1 when feature 0 to 31 is on, otherwise 0; 0 for a larger number. */
UVEL_API uint32_t SRVCOMMON_GetFeature(uint32_t ulFeature);

/* Always 0: this is no debug version. */
UVEL_API uint32_t UVEL_IsDebugVersion(void);

/* Makes the template empty, with room for ulCapacity names (0 becomes 64), charged to module ulMid. What it held before
 * is not released. 1, with an assertion, for a null template and for ulMid 0xFFFFFFFF; 1 when memory is short, the
 * template then takes no names. */
UVEL_API uint32_t KIVO_InitIfTemplet(KIVO_IF_TEMPLET_S *pstTemplet, uint32_t ulMid);

/* Adds a copy of pszName for interface type ulIfType, charged to module ulMid. Types and names (letter case counts) are
 * unique in a template. 1, with an assertion, for a null template, a null or empty name, ulMid 0xFFFFFFFF, a full
 * template, and a type or name that is there already; 1 when memory is short. The template is then as it was. A copy that
 * fails asserts, and the type counts all the same, with an empty name and result 0. */
UVEL_API uint32_t KIVO_SetIfTemplet(KIVO_IF_TEMPLET_S *pstTemplet, uint32_t ulIfType, const char *pszName,
                                    uint32_t ulMid);

#endif
