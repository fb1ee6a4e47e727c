#include <uvelhost/queue.h>

#include "os/ring.h"
#include <algorithm>
#include <mutex>
#include <new>

using namespace uvel::host;

namespace {

constexpr uint32_t MAX_QUEUES = QAL_MAX_QUEUES;
constexpr uint32_t MAX_DEPTH = 16777216;
constexpr uint32_t MAX_ELEMENT_SIZE = 4096;

struct Queue {
    Ring ring;
    char name[sizeof(QAL_QUEUE_STATS_S::szName)] = {};
};

std::atomic<Queue *> g_queues[MAX_QUEUES]; /* queue n is entry n - 1 */
std::mutex g_lock;                         /* creation and deletion */

Queue *QueueOf(uint32_t number) {
    return number - 1 < MAX_QUEUES ? g_queues[number - 1].load(std::memory_order_acquire) : nullptr;
}

} // namespace

uint32_t QAL_QueueCreate(const char *pszName, uint32_t ulDepth, uint32_t ulElementSize, uint32_t *pulQueue) {
    if (pszName == nullptr || pulQueue == nullptr || ulDepth == 0 || ulDepth > MAX_DEPTH || ulElementSize == 0 ||
        ulElementSize > MAX_ELEMENT_SIZE)
        return 1;
    std::lock_guard lock(g_lock);
    auto *entry = std::find_if(std::begin(g_queues), std::end(g_queues), [](auto &e) { return e.load() == nullptr; });
    if (entry == std::end(g_queues))
        return 1;
    auto *queue = new (std::nothrow) Queue;
    if (queue == nullptr || !queue->ring.Open(ulDepth, ulElementSize)) {
        delete queue;
        return 1;
    }
    for (std::size_t i = 0; i + 1 < sizeof queue->name && pszName[i] != '\0'; ++i)
        queue->name[i] = pszName[i];
    entry->store(queue, std::memory_order_release);
    *pulQueue = static_cast<uint32_t>(entry - g_queues) + 1;
    return UVELHOST_OK;
}

uint32_t QAL_QueueDelete(uint32_t ulQueue) {
    std::lock_guard lock(g_lock);
    Queue *queue = QueueOf(ulQueue);
    if (queue == nullptr)
        return 1;
    g_queues[ulQueue - 1].store(nullptr, std::memory_order_release);
    delete queue;
    return UVELHOST_OK;
}

uint32_t QAL_QueueAsyWrite(uint32_t ulQueue, const void *pElement, uint32_t ulSize) {
    Queue *queue = QueueOf(ulQueue);
    if (queue == nullptr || pElement == nullptr || ulSize != queue->ring.ElementSize())
        return 1;
    return queue->ring.Write(pElement) ? UVELHOST_OK : 1;
}

uint32_t QAL_QueueRead(uint32_t ulQueue, void *pElement, uint32_t ulSize, uint32_t ulTimeoutMs) {
    Queue *queue = QueueOf(ulQueue);
    if (queue == nullptr || pElement == nullptr || ulSize != queue->ring.ElementSize())
        return 1;
    return queue->ring.Read(pElement, ulTimeoutMs) ? UVELHOST_OK : 1;
}

uint32_t QAL_QueueGetStats(uint32_t ulQueue, QAL_QUEUE_STATS_S *pstStats) {
    Queue *queue = QueueOf(ulQueue);
    if (queue == nullptr || pstStats == nullptr)
        return 1;
    const Ring &ring = queue->ring;
    *pstStats = {};
    std::copy(std::begin(queue->name), std::end(queue->name), pstStats->szName);
    pstStats->ulDepth = ring.Depth();
    pstStats->ulElementSize = ring.ElementSize();
    /* what was taken first: elements that pass between the two looks then count as written, never as less than none */
    pstStats->ulRead = ring.Taken();
    pstStats->ulWritten = ring.Written();
    pstStats->ulUsed = static_cast<uint32_t>(std::min<uint64_t>(pstStats->ulWritten - pstStats->ulRead, ring.Depth()));
    pstStats->ulPeak = static_cast<uint32_t>(ring.Peak());
    pstStats->ulRefused = ring.Refused();
    return UVELHOST_OK;
}
