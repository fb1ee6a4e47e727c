/* What the sources of the channel share. */
#ifndef KIVO_CHI_CHANNEL_H
#define KIVO_CHI_CHANNEL_H

#include <uvelcommon_base/kivo_chi.h>

namespace chi {

inline constexpr char SOURCE[] = "src/common/src/smi/kivo_chi";

inline constexpr uint32_t HEADER_HA = 48;
inline constexpr uint32_t HEADER_HSB = 352;
inline constexpr uint32_t HEADER_YSB = 48;

/* First byte of a buffer's header, null for a socket buffer without data and a back type without buffers. */
uint8_t *HeaderOf(uint32_t ulBackType, void *pBuffer);

/* First byte of a buffer's payload, null in the same cases. Unlike CBUF_C2D it tells when there is none. */
uint8_t *PayloadOf(uint32_t ulBackType, void *pBuffer);

/* Reads the header of a back type with buffers. Only YSB writes message id and fragment number. */
void ReadInfo(uint32_t ulBackType, const uint8_t *pucHeader, CHI_MSG_INFO_S *pstInfo);

/* Copies ulLen bytes to where there are ulRoom; asserts and copies nothing when they do not fit. */
bool Copy(uint8_t *pucDest, uint32_t ulRoom, const void *pSource, uint32_t ulLen);

} // namespace chi

#endif
