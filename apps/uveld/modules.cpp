#include "modules.h"

#include <cstring>
#include <dlfcn.h>
#include <stdexcept>
#include <uvelcommon_base/kivo_show.h>

namespace uveld {

namespace {

const UVELD_MODULE_S *RecordOf(const std::string &file) {
    void *object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (object == nullptr)
        throw std::runtime_error("the module cannot be loaded: " + std::string(dlerror()));
    const auto entry = reinterpret_cast<const UVELD_MODULE_S *(*)()>(dlsym(object, "UveldModule"));
    if (entry == nullptr)
        throw std::runtime_error("the module " + file + " has no entry UveldModule");
    const UVELD_MODULE_S *record = entry();
    if (record == nullptr)
        throw std::runtime_error("the module " + file + " gives no record");
    if (record->ulVersion != UVELD_MODULE_VERSION)
        throw std::runtime_error("the module " + file + " was built for version " + std::to_string(record->ulVersion) +
                                 " of the module interface, this is version " + std::to_string(UVELD_MODULE_VERSION));
    if (record->pszName == nullptr || *record->pszName == '\0' || record->pfStart == nullptr)
        throw std::runtime_error("the module " + file + " has no name or no pfStart");
    return record;
}

} // namespace

Module::Module(const ModuleConfiguration &configuration, const std::string &run_directory)
    : file_(configuration.file), run_directory_(run_directory), settings_(configuration.settings),
      record_(RecordOf(file_)), name_(record_->pszName), log_(name_) {
    for (const auto &[name, value] : settings_)
        setting_records_.push_back({name.c_str(), value.c_str()});
    context_.pszRunDirectory = run_directory_.c_str();
    context_.pstSettings = setting_records_.data();
    context_.ulSettings = static_cast<uint32_t>(setting_records_.size());
    context_.pfSetting = Setting;
    context_.pfLog = Log;
    context_.pfStandby = TakePart;
    context_.pfPrint = Print;
    context_.pModule = this;
}

void Module::Start(bool with_link) {
    has_link_ = with_link;
    is_starting_ = true;
    const uint32_t result = record_->pfStart(&context_);
    is_starting_ = false;
    if (result != 0)
        throw std::runtime_error("the module " + name_ + " does not start: result " + std::to_string(result));
}

void Module::Run() const {
    if (record_->pfRun != nullptr)
        record_->pfRun();
}

void Module::Stop() const {
    if (record_->pfStop != nullptr)
        record_->pfStop();
}

const char *Module::Setting(const void *module, const char *name) {
    if (name == nullptr)
        return nullptr;
    for (const UVELD_SETTING_S &setting : static_cast<const Module *>(module)->setting_records_) {
        if (std::strcmp(setting.pszName, name) == 0)
            return setting.pszValue;
    }
    return nullptr;
}

void Module::Log(const void *module, uint32_t level, const char *text) {
    static constexpr LogLevel LEVELS[] = {LogLevel::ERROR, LogLevel::WARNING, LogLevel::INFO, LogLevel::DEBUG};
    if (text != nullptr)
        static_cast<const Module *>(module)->log_.Write(LEVELS[level < 4 ? level : 3], text);
}

std::vector<std::string> Module::Show() {
    std::vector<std::string> lines;
    shown_ = &lines;
    UVEL_RegShowFeatureTbl_Init();
    UVEL_RegShowModuleTbl_Init();
    for (DLL_S *list : {&g_stDllShowFeatureTbl, &g_stDllShowModuleTbl}) {
        const auto *head = reinterpret_cast<const DLL_NODE_S *>(list);
        for (const DLL_NODE_S *node = head->pstNext; node != head; node = node->pstNext) {
            const auto *entry = reinterpret_cast<const UVEL_SHOW_NODE_S *>(node);
            if (entry->ulMid == Mid() && entry->pfShow() != KIVO_OK)
                lines.emplace_back("(the module could not show all)");
        }
    }
    shown_ = nullptr;
    return lines;
}

void Module::Print(const void *module, const char *line) {
    auto *lines = static_cast<const Module *>(module)->shown_;
    if (lines != nullptr && line != nullptr)
        lines->emplace_back(line);
}

/* The context hands its module out as const so that modules cannot change it; it is this object all the same. */
uint32_t Module::TakePart(const void *module, const UVELD_STANDBY_S *standby) {
    auto *self = const_cast<Module *>(static_cast<const Module *>(module));
    if (standby == nullptr || !self->has_link_ || !self->is_starting_ || self->has_standby_)
        return 1;
    self->standby_ = *standby;
    self->has_standby_ = true;
    return 0;
}

Modules LoadModules(const Configuration &configuration) {
    Modules modules;
    for (const ModuleConfiguration &module : configuration.modules) {
        auto loaded = std::make_unique<Module>(module, configuration.run_directory);
        for (const auto &earlier : modules) {
            if (earlier->Name() == loaded->Name() || earlier->Mid() == loaded->Mid())
                throw std::runtime_error("the modules " + earlier->File() + " and " + loaded->File() +
                                         " have the same name or module id");
        }
        modules.push_back(std::move(loaded));
    }
    return modules;
}

} // namespace uveld
