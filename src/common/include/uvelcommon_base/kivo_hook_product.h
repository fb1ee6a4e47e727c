/* Forwarders to product hooks: character sets, WLAN configuration, command line and single facilities.
 *
 * Every function calls the hook of its name (see kivo_hooks.h) and returns its result; "0 without a hook" and the like
 * is the answer where none is installed. */
#ifndef UVELCOMMON_BASE_KIVO_HOOK_PRODUCT_H
#define UVELCOMMON_BASE_KIVO_HOOK_PRODUCT_H

#include "kivo_hooks.h"

/* What the change notices below carry; its meaning is settled between the product layers. */
typedef struct {
    uint8_t ucField1;   /* argument 1 */
    uint32_t ulField2;  /* argument 2 */
    uint8_t ucField3;   /* argument 3 */
    uint32_t ulField4;  /* argument 4 */
    void *pField5;      /* argument 5 */
    uint32_t ulField6;  /* argument 6 */
    uint8_t ucField7;   /* argument 7 */
    void *pField8;      /* argument 8 */
    uint32_t ulField9;  /* argument 9 */
    void *pField10;     /* argument 10 */
    uint32_t ulField11; /* argument 11 */
    uint32_t ulField12; /* argument 12 */
} KIVO_NOTIFY_S;

/* Hook of KIVO_NotifyWlanAttrChange: the twelve fields in order. */
typedef void (*KIVO_NOTIFY_WLAN_HOOK)(uint8_t, uint32_t, uint8_t, uint32_t, void *, uint32_t, uint8_t, void *, uint32_t,
                                      void *, uint32_t, uint32_t);

/* Hook of the profile and branch notices: fields 2 to 12 in order. */
typedef uint32_t (*KIVO_NOTIFY_CFG_HOOK)(uint32_t, uint8_t, uint32_t, void *, uint32_t, uint8_t, void *, uint32_t,
                                         void *, uint32_t, uint32_t);

/* Tells of a changed WLAN attribute. Nothing happens for a null record and without a hook. */
UVEL_API void KIVO_NotifyWlanAttrChange(const KIVO_NOTIFY_S *pstNotify);

/* Tells of a changed profile. 1 for a null record and without a hook. */
UVEL_API uint32_t KIVO_ProfileChangeNotifyCfg(const KIVO_NOTIFY_S *pstNotify);

/* Tells of a changed branch. 1 for a null record and without a hook. */
UVEL_API uint32_t KIVO_BranchChangeNotifyCfg(const KIVO_NOTIFY_S *pstNotify);

/* Translates configuration attributes to WLAN's form. Nothing happens without a hook. */
UVEL_API void KIVO_TransCfgAttrFromUvelToWlan(KIVO_WORDS);

/* Registers for the saved configuration of access-point bridge domains. 0 without a hook. */
UVEL_API uint32_t KIVO_VAP_BdBuildrunRegister(KIVO_WORDS);

/* Index of a named flexible group. 0xFFFFFFFF without a hook. */
UVEL_API uint32_t KIVO_GetFlexGroupIndexByName(KIVO_WORDS);

/* Registers a character-set conversion. 1 without a hook, otherwise 0 whatever the hook answers. */
UVEL_API uint32_t KIVO_Encode_RegFunc(KIVO_WORDS);

/* Checks a text and inserts it; the seventh argument is cut to 16 bits. 0 without a hook. */
UVEL_API uint32_t KIVO_Encode_CheckStringAndInsert(KIVO_WORDS);

/* Converts a text between character sets. 0 without a hook. */
UVEL_API uint32_t KIVO_Encode_TransCode(KIVO_WORDS);

/* Previews a text and inserts it. 0 without a hook. */
UVEL_API uint32_t KIVO_Encode_PreViewStringAndInsert(KIVO_WORDS);

/* Whether a text needs conversion. 0 without a hook. */
UVEL_API uint32_t KIVO_Encode_IsNeedTrans(KIVO_WORDS);

/* Hands over the result of a conversion. 1 without a hook, otherwise 0 whatever the hook answers. */
UVEL_API uint32_t KIVO_Encode_SetTransResult(KIVO_WORDS);

/* Hands over the result of an asynchronous conversion. 1 without a hook, otherwise 0 whatever the hook answers. */
UVEL_API uint32_t KIVO_Encode_SetAsysnResult(KIVO_WORDS);

/* Hands over the result of a preview. 1 without a hook, otherwise 0 whatever the hook answers. */
UVEL_API uint32_t KIVO_Encode_SetPreResult(KIVO_WORDS);

/* Character set of the language in use. 1 without a hook. */
UVEL_API uint32_t KIVO_Encode_GetLanCharset(KIVO_WORDS);

/* Registers the Chinese command line. 1 without a hook. */
UVEL_API uint32_t KIVO_RegistChineseCLI(KIVO_WORDS);

/* 1 when anything is installed under its hook id, else 0: a pure LAN-switch product says so by the installation alone,
 * the hook is never called. */
UVEL_API uint32_t KIVO_Is_SupportOnlyLsw(void);

/* Whether user detection by the session manager is supported. 1 without a hook. */
UVEL_API uint32_t KIVO_IsSupportUserDetectBySam(void);

/* Whether clients of a VPN may use the domain-name proxy. 0 without a hook. */
UVEL_API uint32_t KIVO_DNSE_IsSupport_ClientVpn(KIVO_WORDS);

/* Name servers learnt by DHCP. 1 without a hook. */
UVEL_API uint32_t KIVO_DNSE_GetDynServerFromDHCP(KIVO_WORDS);

/* Version of the YANG model. 0 without a hook. */
UVEL_API uint32_t KIVO_Yang_GetNaasVersion(KIVO_WORDS);

/* Hands debug output to the information-management agent. 1 without a hook. */
UVEL_API uint32_t KIVO_DebugOutput2IMAgent(KIVO_WORDS);

#endif
