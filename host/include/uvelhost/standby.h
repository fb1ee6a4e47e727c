/* Hot standby: carries messages to the peer device.
 *
 * A message travels in a socket buffer ("smbuf"): one block of bytes, seen through its data pointer. It begins with a
 * header of 48 bytes that the channel above fills, except for the fragment number (u32 at offset 44), which the host
 * sets in each fragment that it cuts from a message.
 *
 * Modules name themselves to their counterparts on the peer by an id of this service. Each tells the version of its
 * messages; when the devices meet, the versions of both are compared and a common one is agreed on.
 *
 * Ownership: a socket buffer belongs to its creator until it is given to an output operation, which takes it over
 * whatever the result. Threads: any; messages of one caller keep their order. */
#ifndef UVELHOST_STANDBY_H
#define UVELHOST_STANDBY_H

#include "types.h"

/* A socket buffer: bytes in one block. */
typedef struct YSB_SMBUF YSB_SMBUF_S;

/* ---- socket buffers ---- */

/* A socket buffer of ulSize bytes, not cleared, charged to the module ulMid; null when memory is short or ulSize is
 * above what the link carries. */
UVELHOST_API YSB_SMBUF_S *YSB_Adapt_Smbuf_Create(uint32_t ulMid, uint32_t ulSize);

/* Releases a socket buffer. Null is ignored. */
UVELHOST_API void YSB_Adapt_Smbuf_Destroy(YSB_SMBUF_S *pstSmbuf);

/* First byte of the buffer's data; null for null and for a buffer without data. It stays where it is as long as the
 * buffer lives. */
UVELHOST_API void *YSB_Adapt_Smbuf_M2D(YSB_SMBUF_S *pstSmbuf);

/* ---- output ---- */

/* Sends the first ulLen bytes of the buffer to the module ulModId on the peer, cut into fragments where the link needs
 * it. Takes the buffer over in every case. Success means that the link accepted the message and will deliver it, or
 * tell the module to send everything again. Fails without a peer, for a length beyond the buffer and when the link's
 * window is full; callers do not look at the result. */
UVELHOST_API uint32_t YSB_Adapt_Output_Packet_Smbuf(uint32_t ulModId, YSB_SMBUF_S *pstSmbuf, uint32_t ulLen);

/* As YSB_Adapt_Output_Packet_Smbuf, to the processor ucCpu of the peer (0 to 254). */
UVELHOST_API uint32_t YSB_Adapt_Output_Packet_ToCtrlCpu(uint32_t ulModId, YSB_SMBUF_S *pstSmbuf, uint32_t ulLen,
                                                        uint8_t ucCpu);

/* ---- state ---- */

/* Writes 1 when this device is the active one of the pair, otherwise 0. Fails for null. */
UVELHOST_API uint32_t YSB_Adapt_IsActiveStatus(uint32_t *pulActive);

/* 1 when hot standby is configured and the peer is connected, otherwise 0. */
UVELHOST_API uint32_t YsbAdaptIsRealEnable(void);

/* ---- modules and versions ---- */

/* Id of the module ulMid in this service, the same on both devices; 0xFFFFFFFF when the table of modules is full. */
UVELHOST_API uint32_t YsbAdaptGetModId(uint32_t ulMid);

/* Tells the version of a module's messages; ucCompatible is 1 when it also understands every lower version, otherwise
 * 0. Told again, the later version holds from the next connection on. Fails for an unknown module. */
UVELHOST_API uint32_t YsbAdaptRegisterVersion(uint32_t ulModId, uint32_t ulVersion, uint8_t ucCompatible);

/* Writes the version that both devices agreed on: the lower of the two when the other side understands it. Fails
 * without a peer, and when there is no common version. */
UVELHOST_API uint32_t YsbAdaptGetNegoVersion(uint32_t ulModId, uint32_t *pulVersion);

#endif
