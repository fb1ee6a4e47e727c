/* The operations of standby.h and standby_link.h, over the one link of the process. */

#include "standby/link.h"
#include "standby/smbuf.h"

#include <algorithm>
#include <new>
#include <utility>

using namespace uvel::host::standby;

namespace {

std::mutex g_open_lock; /* opening and closing */
std::atomic<Link *> g_link{nullptr};
std::atomic<uint32_t> g_users{0};

/* The link, held open while this lives. Costs two additions: output is called millions of times a second. */
class LinkInUse {
  public:
    LinkInUse() {
        g_users.fetch_add(1);
        link_ = g_link.load();
    }
    ~LinkInUse() {
        if (g_users.fetch_sub(1) == 1 && g_link.load(std::memory_order_relaxed) == nullptr)
            g_users.notify_all();
    }
    LinkInUse(const LinkInUse &) = delete;
    LinkInUse &operator=(const LinkInUse &) = delete;

    explicit operator bool() const { return link_ != nullptr; }
    Link *operator->() const { return link_; }

  private:
    Link *link_;
};

uint32_t Output(uint32_t module, YSB_SMBUF_S *smbuf, uint32_t length, uint8_t cpu) {
    Smbuf owned(smbuf);
    const LinkInUse link;
    if (!link || smbuf == nullptr)
        return 1;
    try {
        return link->Send(module, cpu, std::move(owned), length) == Endpoint::Sending::ACCEPTED ? UVELHOST_OK : 1;
    } catch (const std::bad_alloc &) {
        return 1;
    }
}

void PutError(const std::string &error, char *text, uint32_t size) {
    if (text == nullptr || size == 0)
        return;
    const std::size_t length = std::min<std::size_t>(error.size(), size - 1);
    error.copy(text, length);
    text[length] = '\0';
}

/* ---- opening and closing; the lock is held */

void Close() {
    Link *link = g_link.exchange(nullptr);
    if (link == nullptr)
        return;
    link->Shut();
    for (uint32_t users = g_users.load(); users != 0; users = g_users.load())
        g_users.wait(users);
    delete link;
}

void Open(const YSB_LINK_CONFIG_S &config, std::string &error) {
    std::unique_ptr<Link> made = Link::Open(config, error);
    if (made == nullptr)
        return;
    Link *link = made.release();
    g_link.store(link);
    try {
        link->Start();
    } catch (...) {
        Close(); /* a thread is missing: whoever tries again finds no half of a link */
        throw;
    }
}

} // namespace

/* ---- standby.h */

uint32_t YSB_Adapt_Output_Packet_Smbuf(uint32_t ulModId, YSB_SMBUF_S *pstSmbuf, uint32_t ulLen) {
    return Output(ulModId, pstSmbuf, ulLen, YSB_LINK_ANY_CPU);
}

uint32_t YSB_Adapt_Output_Packet_ToCtrlCpu(uint32_t ulModId, YSB_SMBUF_S *pstSmbuf, uint32_t ulLen, uint8_t ucCpu) {
    return Output(ulModId, pstSmbuf, ulLen, ucCpu);
}

uint32_t YSB_Adapt_IsActiveStatus(uint32_t *pulActive) {
    if (pulActive == nullptr)
        return 1;
    const LinkInUse link;
    *pulActive = link && link->IsActive() ? 1 : 0;
    return UVELHOST_OK;
}

uint32_t YsbAdaptIsRealEnable(void) {
    const LinkInUse link;
    return link && link->IsConnected() ? 1 : 0;
}

uint32_t YsbAdaptGetModId(uint32_t ulMid) {
    /* The id is the module's own number, so that both devices have the same one without asking each other. */
    return ulMid != UVELHOST_NONE && Modules::Instance().Add(ulMid) ? ulMid : UVELHOST_NONE;
}

uint32_t YsbAdaptRegisterVersion(uint32_t ulModId, uint32_t ulVersion, uint8_t ucCompatible) {
    bool tell_now = false;
    if (!Modules::Instance().Register({ulModId, ulVersion, ucCompatible}, &tell_now))
        return 1;
    const LinkInUse link;
    if (tell_now && link)
        link->TellVersions();
    return UVELHOST_OK;
}

uint32_t YsbAdaptGetNegoVersion(uint32_t ulModId, uint32_t *pulVersion) {
    const std::optional<uint32_t> version = Modules::Instance().Negotiated(ulModId);
    if (pulVersion == nullptr || !version)
        return 1;
    *pulVersion = *version;
    return UVELHOST_OK;
}

/* ---- standby_link.h */

uint32_t YSB_Link_Open(const YSB_LINK_CONFIG_S *pstConfig, char *pszError, uint32_t ulErrorSize) {
    std::string error;
    try {
        std::lock_guard lock(g_open_lock);
        if (pstConfig == nullptr)
            error = "no configuration";
        else if (g_link.load() != nullptr)
            error = "the link of this process is open already";
        else
            Open(*pstConfig, error);
    } catch (const std::exception &exception) {
        error = exception.what();
    }
    if (error.empty())
        return UVELHOST_OK;
    PutError(error, pszError, ulErrorSize);
    return 1;
}

void YSB_Link_Close(void) {
    std::lock_guard lock(g_open_lock);
    Close();
}

uint32_t YSB_Link_BatchDone(uint32_t ulBatch) {
    const LinkInUse link;
    return link && link->BatchDone(ulBatch) ? UVELHOST_OK : 1;
}

uint32_t YSB_Link_StartBatch(void) {
    const LinkInUse link;
    return link && link->StartBatch() ? UVELHOST_OK : 1;
}

uint32_t YSB_Link_SetRole(uint32_t ulRole) {
    const LinkInUse link;
    if (!link || ulRole > YSB_LINK_ROLE_STANDBY)
        return 1;
    link->SetRole(ulRole);
    return UVELHOST_OK;
}

uint32_t YSB_Link_GetState(YSB_LINK_STATE_S *pstState) {
    const LinkInUse link;
    if (!link || pstState == nullptr)
        return 1;
    *pstState = link->State();
    return UVELHOST_OK;
}

uint32_t YSB_Link_GetCounters(YSB_LINK_COUNTERS_S *pstCounters) {
    const LinkInUse link;
    if (!link || pstCounters == nullptr)
        return 1;
    *pstCounters = link->CopyCounters();
    return UVELHOST_OK;
}

uint64_t YSB_Link_GetPosition(void) {
    const LinkInUse link;
    return link ? link->Position() : 0;
}

uint32_t YSB_Link_GetFate(uint64_t ulPosition) {
    const LinkInUse link;
    return link ? link->Fate(ulPosition) : YSB_LINK_FATE_UNKNOWN;
}

const char *YSB_Link_RefusalText(uint32_t ulRefusal) {
    static constexpr const char *TEXTS[YSB_LINK_REFUSALS] = {
        "for no known reason",
        "no certificate",
        "certificate is not of the pinned authority, or not valid now",
        "certificate of another device",
        "TLS older than 1.3",
        "other version of the link's protocol",
        "both devices are configured to be the active one",
        "no proper TLS",
        "too slow with its introduction",
    };
    return TEXTS[ulRefusal < YSB_LINK_REFUSALS ? ulRefusal : 0];
}

/* ---- answers for product hooks */

uint32_t YsbAdaptIsBackup(void) {
    const LinkInUse link;
    return link && !link->IsActive() ? 1 : 0;
}

uint32_t YsbAdaptGetCpuNum(void) {
    const LinkInUse link;
    return link ? link->CpuNum() : 1;
}

uint32_t YsbAdaptIsLocalCpuId(uint32_t ulCpu) {
    return ulCpu < YsbAdaptGetCpuNum() ? 1 : 0;
}

uint32_t YsbAdaptCalcRemoteTpb(uint32_t ulCpu) {
    const LinkInUse link;
    return link && ulCpu < link->State().ulPeerCpuNum ? ulCpu : 0xFF;
}
