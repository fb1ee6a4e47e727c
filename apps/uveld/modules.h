/* Product modules: loading, the order of their lives, and what they are given. */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "configuration.h"
#include "service_log.h"
#include "uveld/module.h"

namespace uveld {

/* A loaded module. Modules are never unloaded: their callbacks stay registered for the life of the process. */
class Module {
  public:
    /* Loads the shared object and asks for its record. Throws std::runtime_error that names file and reason. */
    Module(const ModuleConfiguration &configuration, const std::string &run_directory);
    Module(const Module &) = delete;
    Module &operator=(const Module &) = delete;

    const std::string &Name() const { return name_; }
    uint32_t Mid() const { return record_->ulMid; }
    const std::string &File() const { return file_; }

    /* What the module said about standby in pfStart; null when nothing. */
    const UVELD_STANDBY_S *Standby() const { return has_standby_ ? &standby_ : nullptr; }

    /* Throws std::runtime_error when the module does not want to start. `with_link` tells whether there is a standby
     * link to take part in. */
    void Start(bool with_link);
    void Run() const;
    void Stop() const;

    /* Lines that the module's registered show functions print. */
    std::vector<std::string> Show();

  private:
    static const char *Setting(const void *module, const char *name);
    static void Log(const void *module, uint32_t level, const char *text);
    static void Print(const void *module, const char *line);
    static uint32_t TakePart(const void *module, const UVELD_STANDBY_S *standby);

    std::string file_;
    std::string run_directory_;
    std::vector<std::pair<std::string, std::string>> settings_;
    std::vector<UVELD_SETTING_S> setting_records_;
    const UVELD_MODULE_S *record_ = nullptr;
    std::string name_;
    ModuleLog log_;
    UVELD_CONTEXT_S context_{};
    UVELD_STANDBY_S standby_{};
    std::vector<std::string> *shown_ = nullptr; /* while show functions run */
    bool has_link_ = false;
    bool is_starting_ = false;
    bool has_standby_ = false;
};

using Modules = std::vector<std::unique_ptr<Module>>;

/* Loads all modules. Throws std::runtime_error; two modules of one name or module id are refused. */
Modules LoadModules(const Configuration &configuration);

} // namespace uveld
