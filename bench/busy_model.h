/* A device model with 10,000 interfaces, and a feeder that changes it without pause. */
#ifndef UVEL_BENCH_BUSY_MODEL_H
#define UVEL_BENCH_BUSY_MODEL_H

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <uvelhost/interface.h>
#include <uvelhost/model.h>
#include <vector>

namespace busy_model {

constexpr uint32_t INTERFACES = 10000;

enum class Numbers { DENSE, SPARSE };

inline MDL_IF_S Interface(uint32_t if_index) {
    MDL_IF_S interface;
    MDL_InitIf(&interface, if_index, ("GigabitEthernet0/0/" + std::to_string(if_index)).c_str());
    interface.ulPortType = if_index;
    return interface;
}

/* Interface indices: one behind the other as the kernel gives them, or anywhere. */
inline std::vector<uint32_t> Indices(Numbers numbers) {
    std::vector<uint32_t> indices(INTERFACES);
    std::iota(indices.begin(), indices.end(), 1);
    std::mt19937 random(7);
    if (numbers == Numbers::SPARSE)
        for (uint32_t &index : indices)
            index = static_cast<uint32_t>(random() % 0xFFFFFFFE + 1);
    return indices;
}

inline void Load(const std::vector<uint32_t> &indices) {
    MDL_BATCH *batch = MDL_Begin(1, 0);
    MDL_RemoveAll(batch);
    for (uint32_t index : indices) {
        const MDL_IF_S interface = Interface(index);
        MDL_PutIf(batch, &interface);
    }
    MDL_Commit(batch);
}

/* The same indices in an order that no cache foresees. */
inline std::vector<uint32_t> Shuffled(std::vector<uint32_t> indices) {
    std::shuffle(indices.begin(), indices.end(), std::mt19937(11));
    return indices;
}

/* Changes one interface after the other until it is told to stop. */
class Feeder {
  public:
    explicit Feeder(std::vector<uint32_t> indices) : thread_([this, indices = std::move(indices)] { Run(indices); }) {}
    ~Feeder() {
        stop_ = true;
        thread_.join();
    }
    uint64_t Changes() const { return changes_; }

  private:
    void Run(const std::vector<uint32_t> &indices) {
        for (uint64_t i = 0; !stop_; ++i) {
            MDL_IF_S interface = Interface(indices[i % indices.size()]);
            interface.ulPhyType = static_cast<uint32_t>(i);
            MDL_BATCH *batch = MDL_Begin(1, 0);
            MDL_PutIf(batch, &interface);
            MDL_Commit(batch);
            changes_.fetch_add(1, std::memory_order_relaxed);
        }
    }

    std::atomic<bool> stop_ = false;
    std::atomic<uint64_t> changes_ = 0;
    std::thread thread_;
};

} // namespace busy_model

#endif
