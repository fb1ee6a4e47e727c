/* Argument lists of the plain forwarders, each as two macros: what a forwarder and its hook take, and what is passed.
 *
 * A forwarder takes narrow arguments as whole registers, cuts them itself and passes them as whole registers again, so
 * that a hook sees the cut value whatever width it declares: compilers differ in whether the caller or the callee of a
 * narrow parameter does the cutting. */
#ifndef KIVO_ADAPTFUNC_HOOK_ARGUMENTS_H
#define KIVO_ADAPTFUNC_HOOK_ARGUMENTS_H

#include <uvelcommon_base/kivo_hooks.h>

#define NOTHING_TAKES void
#define NOTHING_PASSES

#define WORDS_TAKES KIVO_WORDS
#define WORDS_PASSES ulArg1, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8

#define WORDS_1ST_2ND_U16_TAKES KIVO_WORDS
#define WORDS_1ST_2ND_U16_PASSES (uint16_t) ulArg1, (uint16_t)ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8

#define WORDS_2ND_U16_TAKES KIVO_WORDS
#define WORDS_2ND_U16_PASSES ulArg1, (uint16_t)ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8

#define WORDS_2ND_U32_TAKES KIVO_WORDS
#define WORDS_2ND_U32_PASSES ulArg1, (uint32_t)ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8

#define WORDS_3RD_U8_TAKES KIVO_WORDS
#define WORDS_3RD_U8_PASSES ulArg1, ulArg2, (uint8_t)ulArg3, ulArg4, ulArg5, ulArg6, ulArg7, ulArg8

#define WORDS_7TH_U16_TAKES KIVO_WORDS
#define WORDS_7TH_U16_PASSES ulArg1, ulArg2, ulArg3, ulArg4, ulArg5, ulArg6, (uint16_t)ulArg7, ulArg8

#define IFINDEX_TAKES uint32_t ulIfIndex
#define IFINDEX_PASSES ulIfIndex

#define IFINDEX_OUT_TAKES uint32_t ulIfIndex, uint32_t *pulOut
#define IFINDEX_OUT_PASSES ulIfIndex, pulOut

#define VLAN_TAKES uint32_t ulVlanId
#define VLAN_PASSES (uint16_t) ulVlanId

#define VLAN_BITMAP_TAKES uint32_t ulVlanId, const uint32_t *paulBitmap
#define VLAN_BITMAP_PASSES (uint16_t) ulVlanId, paulBitmap

#define VLAN_IFINDEX_TAKES uint32_t ulVlanId, uint32_t ulIfIndex
#define VLAN_IFINDEX_PASSES (uint16_t) ulVlanId, ulIfIndex

#define BUFFER_TAKES char *pszBuffer, uint32_t ulSize
#define BUFFER_PASSES pszBuffer, ulSize

#define NODE_BUFFER_TAKES uint32_t ulArg1, uint32_t ulArg2, char *pszBuffer, uint32_t ulSize
#define NODE_BUFFER_PASSES ulArg1, ulArg2, pszBuffer, ulSize

#define TEXT_TAKES const char *pszText
#define TEXT_PASSES pszText

#define OUT_TAKES uint32_t *pulOut
#define OUT_PASSES pulOut

#define MID_SIZE_TAKES uint32_t ulMid, uint32_t ulSize
#define MID_SIZE_PASSES ulMid, ulSize

#define POINTER_TAKES void *pArg
#define POINTER_PASSES pArg

#define OUTPUT_TAKES uintptr_t ulArg1, uintptr_t ulArg2, uint32_t ulArg3
#define OUTPUT_PASSES ulArg1, ulArg2, ulArg3

#define OUTPUT_CHANNEL_TAKES uintptr_t ulArg1, uintptr_t ulArg2, uint32_t ulArg3, uint32_t ulArg4
#define OUTPUT_CHANNEL_PASSES ulArg1, ulArg2, ulArg3, (uint8_t)ulArg4

#endif
