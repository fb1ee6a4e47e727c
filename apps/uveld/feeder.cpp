#include "feeder.h"

#include <stdexcept>
#include <thread>
#include <uvelhost/netlink.h>
#include <uvelhost/scenario.h>

#include "service_log.h"

namespace uveld {

namespace {

constexpr size_t ERROR_SIZE = 512;

/* The kernel's interfaces, those of this process's network namespace. */
class Kernel : public Feeder {
  public:
    explicit Kernel(uint32_t slot) {
        NLF_CONFIG_S configuration;
        NLF_InitConfig(&configuration);
        configuration.ulSlot = slot;
        feeder_ = NLF_Start(&configuration);
        if (feeder_ == nullptr)
            throw std::runtime_error("the kernel's interfaces cannot be read");
    }
    ~Kernel() override { NLF_Stop(feeder_); }

    std::string Description() const override { return "the kernel"; }
    void Stop() override {
        NLF_Stop(feeder_);
        feeder_ = nullptr;
    }

  private:
    NLF_FEEDER *feeder_;
};

/* A scenario: the device is there when this is made, the steps follow at their times. */
class Scenario : public Feeder {
  public:
    Scenario(const std::string &file, uint32_t speed) : file_(file) {
        char error[ERROR_SIZE] = "";
        scenario_ = SCN_Load(file.c_str(), error, sizeof error);
        if (scenario_ == nullptr)
            throw std::runtime_error(error);
        if (SCN_ApplyDevice(scenario_, error, sizeof error) != UVELHOST_OK) {
            SCN_Free(scenario_);
            throw std::runtime_error(error);
        }
        thread_ = std::thread([this, speed] { Run(speed * 100); });
    }
    ~Scenario() override {
        Stop();
        SCN_Free(scenario_);
    }

    std::string Description() const override { return file_; }
    void Stop() override {
        SCN_Stop(scenario_);
        if (thread_.joinable())
            thread_.join();
    }

  private:
    void Run(uint32_t percent) {
        char error[ERROR_SIZE] = "";
        const uint32_t result = SCN_Run(scenario_, percent, error, sizeof error);
        if (result == UVELHOST_OK)
            LogInfo("the scenario {} has come to its end", file_);
        else if (result != SCN_STOPPED)
            LogError("the scenario ends: {}", error);
    }

    std::string file_;
    SCN_SCENARIO *scenario_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<Feeder> StartFeeder(const FeederConfiguration &configuration) {
    if (configuration.scenario.empty())
        return std::make_unique<Kernel>(configuration.slot);
    return std::make_unique<Scenario>(configuration.scenario, configuration.speed);
}

} // namespace uveld
