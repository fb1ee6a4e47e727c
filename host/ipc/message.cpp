#include "ipc/message.h"

#include "os/accounts.h"
#include <pthread.h>
#include <unistd.h>
#include <uvelhost/ipc.h>

using namespace uvel::host;

namespace {

/* The process id: no two processes of a device share it while they live, and the kernel vouches for it to a peer. A
 * forked child is a node of its own. */
uint32_t g_self_node = [] {
    pthread_atfork(nullptr, nullptr, [] { g_self_node = static_cast<uint32_t>(getpid()); });
    return static_cast<uint32_t>(getpid());
}();

} // namespace

namespace uvel::host {

uint32_t SelfNode() {
    return g_self_node;
}

void *AllocateMessage(uint32_t mid, uint32_t length) {
    uint64_t size = sizeof(Message) + uint64_t{length};
    if (size > UINT32_MAX)
        return nullptr;
    auto *message = static_cast<Message *>(Allocate(MODULE_ACCOUNT, static_cast<uint32_t>(size)));
    if (message == nullptr)
        return nullptr;
    *message = {length, mid, 0, 0, 0, 0, 0, 0};
    return message->Body();
}

bool ReleaseMessage(void *body) {
    return body != nullptr && Release(MessageOf(body));
}

} // namespace uvel::host

void *IPC_AllocMsg_X(uint32_t ulMid, uint32_t ulLen) {
    return AllocateMessage(ulMid, ulLen);
}

uint32_t IPC_FreeMsg(void *pMsg) {
    return ReleaseMessage(pMsg) ? UVELHOST_OK : 1;
}

uint32_t IPC_GetMsgLen(const void *pMsg) {
    return pMsg == nullptr ? 0 : MessageOf(pMsg)->length;
}

void IPC_SetSrcAndDstChannelId(void *pMsg, uint32_t ulSrcChannel, uint32_t ulDstChannel) {
    if (pMsg == nullptr)
        return;
    MessageOf(pMsg)->src_channel = ulSrcChannel;
    MessageOf(pMsg)->dst_channel = ulDstChannel;
}

void IPC_SetSrcAndDstNodeId(void *pMsg, uint32_t ulSrcNode, uint32_t ulDstNode) {
    if (pMsg == nullptr)
        return;
    MessageOf(pMsg)->src_node = ulSrcNode;
    MessageOf(pMsg)->dst_node = ulDstNode;
}

uint32_t IPC_GetSelfNodeId(void) {
    return SelfNode();
}

/* A message of the configuration database begins with a header that says what it is and how long. */
uint32_t DBI_CheckMsg(const void *pMsg) {
    if (pMsg == nullptr)
        return DBI_NO_MESSAGE;
    if (MessageOf(pMsg)->length < sizeof(DBI_MSG_HEAD_S))
        return DBI_TOO_SHORT;
    const auto *head = static_cast<const DBI_MSG_HEAD_S *>(pMsg);
    if (head->ulMagic != DBI_MAGIC)
        return DBI_NOT_ITS_MAGIC;
    if (head->ulVersion != DBI_VERSION)
        return DBI_OTHER_VERSION;
    return head->ulLength == MessageOf(pMsg)->length ? UVELHOST_OK : DBI_OTHER_LENGTH;
}
