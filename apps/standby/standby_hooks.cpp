#include "standby_hooks.h"

#include <uvelcommon_base/kivo_hooks.h>

namespace uvel::apps {

template <typename Function>
static void Install(uint32_t id, Function *function) {
    const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
    KIVOShell_SetHookFunc(id, &hook);
}

void InstallStandbyHooks() {
    Install(KIVO_HOOK_YSB_IS_BACKUP, YsbAdaptIsBackup);
    Install(KIVO_HOOK_YSB_REG_RECV_BATCH_FINISH_CALLBACK, YsbAdaptRegRecvBatchFinish);
    Install(KIVO_HOOK_GET_YSB_CPU_NUM, YsbAdaptGetCpuNum);
    Install(KIVO_HOOK_YSB_MSG_CALC_REMOTE_TPB, YsbAdaptCalcRemoteTpb);
    Install(KIVO_HOOK_YSB_IS_LOCAL_CPU_ID, YsbAdaptIsLocalCpuId);
}

uint32_t MessageAssembler::Take(YSB_SMBUF_S *packet, uint32_t length, void **message) {
    *message = nullptr;
    const bool continues = context_.pBuffer != nullptr;
    const uint32_t header = CHI_GetMsgHeadLen(CHI_BACK_YSB); /* the link delivers nothing that is shorter */
    const uint32_t result =
        CHI_RecvMsgForFrag(CHI_BACK_YSB, &context_, packet, CBUF_C2D(CHI_BACK_YSB, packet), length - header, message);
    /* Memory is taken for the first packet of a message alone. A later one that does not fit will never do. */
    return continues ? KIVO_OK : result;
}

void MessageAssembler::Reset() {
    if (context_.pBuffer != nullptr)
        CBUF_Free(CHI_BACK_YSB, context_.pBuffer);
    context_ = CHI_RECV_CTX_S{};
}

} // namespace uvel::apps
