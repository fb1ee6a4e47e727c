/* Argument lists of the forwarders, each as three macros: what the forwarder takes, what its hook takes, and what is
 * passed.
 *
 * A forwarder takes narrow arguments as whole registers, cuts them itself and passes them as whole registers again, so
 * that a hook sees the cut value whatever width it declares: compilers differ in whether the caller or the callee of a
 * narrow parameter does the cutting. */
#ifndef KIVO_ADAPTFUNC_HOOK_ARGUMENTS_H
#define KIVO_ADAPTFUNC_HOOK_ARGUMENTS_H

#include <cstdint>

#define W uintptr_t
#define WORD_PARAMETERS W a1, W a2, W a3, W a4, W a5, W a6, W a7, W a8

#define NOTHING_TAKES void
#define NOTHING_HOOK void
#define NOTHING_PASSES

#define WORDS_TAKES WORD_PARAMETERS
#define WORDS_HOOK W, W, W, W, W, W, W, W
#define WORDS_PASSES a1, a2, a3, a4, a5, a6, a7, a8

#define WORDS_1ST_2ND_U16_TAKES WORD_PARAMETERS
#define WORDS_1ST_2ND_U16_HOOK WORDS_HOOK
#define WORDS_1ST_2ND_U16_PASSES (uint16_t) a1, (uint16_t)a2, a3, a4, a5, a6, a7, a8

#define WORDS_2ND_U16_TAKES WORD_PARAMETERS
#define WORDS_2ND_U16_HOOK WORDS_HOOK
#define WORDS_2ND_U16_PASSES a1, (uint16_t)a2, a3, a4, a5, a6, a7, a8

#define WORDS_2ND_U32_TAKES WORD_PARAMETERS
#define WORDS_2ND_U32_HOOK WORDS_HOOK
#define WORDS_2ND_U32_PASSES a1, (uint32_t)a2, a3, a4, a5, a6, a7, a8

#define WORDS_3RD_U8_TAKES WORD_PARAMETERS
#define WORDS_3RD_U8_HOOK WORDS_HOOK
#define WORDS_3RD_U8_PASSES a1, a2, (uint8_t)a3, a4, a5, a6, a7, a8

#define WORDS_7TH_U16_TAKES WORD_PARAMETERS
#define WORDS_7TH_U16_HOOK WORDS_HOOK
#define WORDS_7TH_U16_PASSES a1, a2, a3, a4, a5, a6, (uint16_t)a7, a8

#define IFINDEX_TAKES uint32_t a1
#define IFINDEX_HOOK uint32_t
#define IFINDEX_PASSES a1

#define IFINDEX_OUT_TAKES uint32_t a1, uint32_t *a2
#define IFINDEX_OUT_HOOK uint32_t, uint32_t *
#define IFINDEX_OUT_PASSES a1, a2

#define VLAN_TAKES uint32_t a1
#define VLAN_HOOK uint32_t
#define VLAN_PASSES (uint16_t) a1

#define VLAN_BITMAP_TAKES uint32_t a1, const uint32_t *a2
#define VLAN_BITMAP_HOOK uint32_t, const uint32_t *
#define VLAN_BITMAP_PASSES (uint16_t) a1, a2

#define VLAN_IFINDEX_TAKES uint32_t a1, uint32_t a2
#define VLAN_IFINDEX_HOOK uint32_t, uint32_t
#define VLAN_IFINDEX_PASSES (uint16_t) a1, a2

#define BUFFER_TAKES char *a1, uint32_t a2
#define BUFFER_HOOK char *, uint32_t
#define BUFFER_PASSES a1, a2

#define NODE_BUFFER_TAKES uint32_t a1, uint32_t a2, char *a3, uint32_t a4
#define NODE_BUFFER_HOOK uint32_t, uint32_t, char *, uint32_t
#define NODE_BUFFER_PASSES a1, a2, a3, a4

#define TEXT_TAKES const char *a1
#define TEXT_HOOK const char *
#define TEXT_PASSES a1

#define OUT_TAKES uint32_t *a1
#define OUT_HOOK uint32_t *
#define OUT_PASSES a1

#define MID_SIZE_TAKES uint32_t a1, uint32_t a2
#define MID_SIZE_HOOK uint32_t, uint32_t
#define MID_SIZE_PASSES a1, a2

#define POINTER_TAKES void *a1
#define POINTER_HOOK void *
#define POINTER_PASSES a1

#define OUTPUT_TAKES W a1, W a2, uint32_t a3
#define OUTPUT_HOOK W, W, uint32_t
#define OUTPUT_PASSES a1, a2, a3

#define OUTPUT_CHANNEL_TAKES W a1, W a2, uint32_t a3, uint32_t a4
#define OUTPUT_CHANNEL_HOOK W, W, uint32_t, uint32_t
#define OUTPUT_CHANNEL_PASSES a1, a2, a3, (uint8_t)a4

#endif
