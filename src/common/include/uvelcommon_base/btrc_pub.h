/* Forwarders to the tracing component: tracing of single users by MAC address, IP address, user id or connection id.
 *
 * The tracing component writes its functions straight into g_stBtrcPubApiHook; the library never writes there. Every
 * forwarder passes eight machine words unchanged and returns its function's result. Without one the answer is "tracing
 * is off": 0 from BTRC_Pub_IsBTRCEnabled and BTRC_Pub_GetInfoLevel, 1 (no such instance) from the others.
 *
 * Threads: a slot is one aligned word, written and read whole. A component that writes it while others call stores with
 * release order; its function then sees what was written before. */
#ifndef UVELCOMMON_BASE_BTRC_PUB_H
#define UVELCOMMON_BASE_BTRC_PUB_H

#include "kivo_hooks.h"

#define BTRC_PUB_HOOK_COUNT 24U /* slots of the table */

/* Slots of the table. Those of one operation stand in the order MAC, IP, ID, CID; 20 to 23 are reserved. */
enum {
    BTRC_PUB_IS_ENABLED = 0,
    BTRC_PUB_CLEAR_USER_DESC = 1,
    BTRC_PUB_INST_FILL_INFO = 2,
    BTRC_PUB_INST_QUIT = 6,
    BTRC_PUB_GET_INST_STATE = 10,
    BTRC_PUB_OUT_INFO = 14,
    BTRC_PUB_NO_INST_OUT_INFO = 18,
    BTRC_PUB_GET_INFO_LEVEL = 19
};

/* The table, for the tracing component to write; all empty at load. */
UVEL_DATA KIVO_HOOK g_stBtrcPubApiHook[BTRC_PUB_HOOK_COUNT];

/* Whether tracing is on at all. */
UVEL_API uint32_t BTRC_Pub_IsBTRCEnabled(KIVO_WORDS);

/* Clears the description of a user. */
UVEL_API void BTRC_Pub_ClearUserDesc(KIVO_WORDS);

/* Adds information to the trace instance of a user. */
UVEL_API uint32_t BTRC_Pub_InstFillInfoByMAC(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstFillInfoByIP(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstFillInfoByID(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstFillInfoByCID(KIVO_WORDS);

/* Ends the trace instance of a user. */
UVEL_API uint32_t BTRC_Pub_InstQuitByMAC(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstQuitByIP(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstQuitByID(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_InstQuitByCID(KIVO_WORDS);

/* State of the trace instance of a user. */
UVEL_API uint32_t BTRC_Pub_GetInstStateByMAC(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_GetInstStateByIP(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_GetInstStateByID(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_GetInstStateByCID(KIVO_WORDS);

/* Puts information out for a user. */
UVEL_API uint32_t BTRC_Pub_OutInfoByMAC(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_OutInfoByIP(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_OutInfoByID(KIVO_WORDS);
UVEL_API uint32_t BTRC_Pub_OutInfoByCID(KIVO_WORDS);

/* Puts information out that belongs to no trace instance. */
UVEL_API uint32_t BTRC_Pub_NoInst_OutInfo(KIVO_WORDS);

/* Level of detail in force. */
UVEL_API uint32_t BTRC_Pub_GetInfoLevel(KIVO_WORDS);

#endif
