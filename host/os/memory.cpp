#include <uvelhost/memory.h>

#include "os/accounts.h"
#include "os/counters.h"
#include "os/places.h"
#include "os/raw_memory.h"
#include <cstddef>
#include <cstring>
#include <mutex>

using namespace uvel::host;

uint8_t g_ucSysMemPtNo = 0;

namespace {

struct Account {
    const char *name; /* whole, however long */
    std::atomic<uint64_t> quota;
    std::atomic<uint64_t> over_quota;
    std::atomic<uint64_t> failures;
};

Account g_accounts[MAX_ACCOUNTS] = {{"module", {0}, {0}, {0}}};
std::atomic<uint32_t> g_account_count{1};
std::mutex g_open_lock;

/* What an allocation has to know about its account, apart from the rest so that it stays in the cache. */
enum class Watch : uint8_t { Unknown, None, Quota };
std::atomic<Watch> g_watch[MAX_ACCOUNTS] = {Watch::None};

/* Stands in front of every block. The check word ties the tag to its address: a pointer from elsewhere, a block that
 * was released and a header that was written over do not match. It lies in the second half because allocators link
 * released blocks through the first word. */
struct Header {
    uint64_t tag; /* account and size; written and read in one piece, which spares the processor a stall */
    uint64_t check;
};
static_assert(sizeof(Header) == 16 && alignof(std::max_align_t) <= 16);

constexpr uintptr_t LOWEST_BLOCK = 4096; /* the first page is never mapped */

constexpr uint64_t TagOf(uint32_t account, uint32_t size) {
    return uint64_t{account} << 32 | size;
}
constexpr uint32_t AccountOf(uint64_t tag) {
    return static_cast<uint32_t>(tag >> 32);
}
constexpr uint32_t SizeOf(uint64_t tag) {
    return static_cast<uint32_t>(tag);
}

/* Never RELEASED: neither an address nor a tag uses the highest bits. */
uint64_t CheckOf(const Header *header, uint64_t tag) {
    return ~(reinterpret_cast<uintptr_t>(header) ^ tag);
}
constexpr uint64_t RELEASED = 0;

/* The header of a live block of ours, else null. Looking at a block that was released already is the purpose here, so
 * sanitizers are told not to mind. */
__attribute__((no_sanitize("address", "thread"))) Header *HeaderOf(void *block) {
    auto address = reinterpret_cast<uintptr_t>(block);
    if (address % sizeof(Header) != 0 || address < LOWEST_BLOCK) [[unlikely]] /* null among them */
        return nullptr;
    Header *header = static_cast<Header *>(block) - 1;
    return header->check == CheckOf(header, header->tag) ? header : nullptr;
}

void *Seal(Header *header, uint64_t tag) {
    header->tag = tag;
    header->check = CheckOf(header, tag);
    return header + 1;
}

uint32_t AccountCount() {
    return g_account_count.load(std::memory_order_acquire);
}

void NoteOverQuota(uint32_t account) {
    Account &of = g_accounts[account];
    uint64_t quota = of.quota.load(std::memory_order_relaxed);
    if (quota != 0 && SumOf(account).bytes > quota)
        of.over_quota.fetch_add(1, std::memory_order_relaxed);
}

/* What does not happen every time is apart, so that the common case saves no registers for it. */
[[gnu::cold, gnu::noinline]] void *Refused(uint32_t account) {
    g_accounts[account].failures.fetch_add(1, std::memory_order_relaxed);
    return nullptr;
}

[[gnu::cold, gnu::noinline]] void *CountedGranted(void *block, uint64_t tag) {
    Count(AccountOf(tag), true, false, SizeOf(tag));
    return block;
}

[[gnu::cold, gnu::noinline]] bool ReleasedCounted(Header *header, uint64_t tag) {
    Count(AccountOf(tag), false, true, -int64_t{SizeOf(tag)});
    RawRelease(header);
    return true;
}

inline void *AllocateFrom(uint64_t tag) {
    void *raw = RawAllocate(sizeof(Header) + std::size_t{SizeOf(tag)});
    if (raw == nullptr) [[unlikely]]
        return Refused(AccountOf(tag));
    void *block = Seal(static_cast<Header *>(raw), tag);
    return CountGrantedFast(AccountOf(tag), SizeOf(tag)) ? block : CountedGranted(block, tag);
}

/* The account is unknown or has a quota. */
[[gnu::cold, gnu::noinline]] void *AllocateWatched(uint32_t account, uint32_t size) {
    if (account >= AccountCount())
        return nullptr;
    void *block = AllocateFrom(TagOf(account, size));
    if (block != nullptr)
        NoteOverQuota(account);
    return block;
}

/* One line for each place in the callers' source, not for each time. */
PlaceTable<256> g_reported;

void ReportOnce(const char *what, const char *file, uint32_t line) {
    if (file != nullptr && g_reported.Count(file, line).count == 1)
        ReportLine(what, file, line);
}

} // namespace

namespace uvel::host {

bool OpenAccount(const char *name, uint32_t *account) {
    std::lock_guard lock(g_open_lock);
    uint32_t count = g_account_count.load(std::memory_order_relaxed);
    for (uint32_t i = 0; i < count; ++i) {
        if (std::strcmp(g_accounts[i].name, name) == 0) {
            *account = i;
            return true;
        }
    }
    if (count == MAX_ACCOUNTS)
        return false;
    const char *copy = strdup(name);
    if (copy == nullptr)
        return false;
    g_accounts[count].name = copy;
    g_watch[count].store(Watch::None, std::memory_order_relaxed);
    g_account_count.store(count + 1, std::memory_order_release);
    *account = count;
    return true;
}

void *Allocate(uint32_t account, uint32_t size) {
    if (account >= MAX_ACCOUNTS || g_watch[account].load(std::memory_order_relaxed) != Watch::None) [[unlikely]]
        return AllocateWatched(account, size);
    return AllocateFrom(TagOf(account, size));
}

void *Reallocate(void *block, uint32_t size) {
    Header *header = HeaderOf(block);
    if (header == nullptr)
        return nullptr;
    uint64_t tag = header->tag;
    uint32_t account = AccountOf(tag);
    /* the check word must not stay valid in the old place when the block moves */
    header->check = RELEASED;
    void *raw = RawReallocate(header, sizeof(Header) + std::size_t{size});
    if (raw == nullptr) [[unlikely]] {
        Seal(header, tag);
        return Refused(account);
    }
    Count(account, true, true, int64_t{size} - int64_t{SizeOf(tag)});
    if (g_watch[account].load(std::memory_order_relaxed) == Watch::Quota)
        NoteOverQuota(account);
    return Seal(static_cast<Header *>(raw), TagOf(account, size));
}

bool Release(void *block) {
    Header *header = HeaderOf(block);
    if (header == nullptr) [[unlikely]]
        return false;
    uint64_t tag = header->tag;
    header->check = RELEASED;
    if (!CountReleasedFast(AccountOf(tag), SizeOf(tag)))
        return ReleasedCounted(header, tag);
    RawRelease(header);
    return true;
}

} // namespace uvel::host

uint32_t QAL_HandleInitialize(const char *pszName, uint32_t *pulHandle) {
    return pszName != nullptr && pulHandle != nullptr && OpenAccount(pszName, pulHandle) ? UVELHOST_OK : 1;
}

uint32_t QAL_ConverMIDTOHandle(uint32_t) {
    return MODULE_ACCOUNT;
}

void *QAL_MemAlloc(uint32_t ulHandle, uint8_t, uint32_t ulSize) {
    return Allocate(ulHandle, ulSize);
}

void *QAL_MemAlloc_F(uint32_t ulHandle, uint8_t, uint32_t ulSize, const char *pszFile, uint32_t ulLine) {
    void *block = Allocate(ulHandle, ulSize);
    if (block == nullptr)
        ReportOnce("allocation refused", pszFile, ulLine);
    return block;
}

void *QAL_MemReAlloc(uint32_t ulHandle, uint8_t, void *pBlock, uint32_t ulSize) {
    return pBlock == nullptr ? Allocate(ulHandle, ulSize) : Reallocate(pBlock, ulSize);
}

uint32_t QAL_MemFree(uint32_t, void *pBlock) {
    return Release(pBlock) ? UVELHOST_OK : 1;
}

uint32_t QAL_MemFree_F(uint32_t, void *pBlock, const char *pszFile, uint32_t ulLine) {
    if (Release(pBlock))
        return UVELHOST_OK;
    ReportOnce("release of what is no block in use", pszFile, ulLine);
    return 1;
}

uint32_t QAL_MemGetStats(uint32_t ulHandle, QAL_MEM_STATS_S *pstStats) {
    if (pstStats == nullptr || ulHandle >= AccountCount())
        return 1;
    const Account &account = g_accounts[ulHandle];
    Level level = SumOf(ulHandle);
    *pstStats = {};
    std::strncpy(pstStats->szName, account.name, sizeof pstStats->szName - 1);
    pstStats->ulBlocks = level.blocks;
    pstStats->ulBytes = level.bytes;
    pstStats->ulPeakBytes = level.peak_bytes;
    pstStats->ulAllocs = level.granted;
    pstStats->ulFailures = account.failures.load(std::memory_order_relaxed);
    pstStats->ulQuota = account.quota.load(std::memory_order_relaxed);
    pstStats->ulOverQuota = account.over_quota.load(std::memory_order_relaxed);
    return UVELHOST_OK;
}

uint32_t QAL_MemSetQuota(uint32_t ulHandle, uint64_t ulBytes) {
    if (ulHandle >= AccountCount())
        return 1;
    g_accounts[ulHandle].quota.store(ulBytes, std::memory_order_relaxed);
    g_watch[ulHandle].store(ulBytes == 0 ? Watch::None : Watch::Quota, std::memory_order_relaxed);
    return UVELHOST_OK;
}
