#include <uvelhost/capset.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "crypto/report.h"
#include "yaml/document.h"

namespace uvel::host {

namespace {

constexpr char DEFAULT_FILE[] = "/etc/uvelhost/capset.yaml";
constexpr std::size_t LONGEST_NAME = 127;

using Capabilities = std::map<std::string, uint32_t, std::less<>>;

/* What this process sees. A query or a walk keeps what it began with, whoever closes the view meanwhile. */
std::mutex g_mutex;
std::shared_ptr<const Capabilities> g_view;

std::shared_ptr<const Capabilities> View() {
    const std::lock_guard lock(g_mutex);
    return g_view;
}

const char *FileName() {
    const char *name = secure_getenv("UVELHOST_CAPSET_FILE");
    return name == nullptr || *name == '\0' ? DEFAULT_FILE : name;
}

bool IsName(const std::string &text) {
    return !text.empty() && text.size() <= LONGEST_NAME &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

std::shared_ptr<const Capabilities> Read() {
    auto items = std::make_shared<Capabilities>();
    const yaml::Node file = yaml::LoadFile(FileName());
    for (const auto &[name, value] : yaml::Fields(file, {"items"}).Required("items").Entries()) {
        if (!IsName(name.Text()))
            name.Refuse("a name of 1 to 127 printable characters without blanks");
        items->emplace(name.Text(), value.NumberOf<uint32_t>(0, UINT32_MAX));
    }
    return items;
}

} // namespace

} // namespace uvel::host

using namespace uvel::host;

static constexpr uint32_t FAILED = 1;

uint32_t capset_init(void) {
    const std::lock_guard lock(g_mutex);
    try {
        if (g_view == nullptr)
            g_view = Read();
        return UVELHOST_OK;
    } catch (const std::exception &problem) {
        ReportText("capability set %s", problem.what());
        return FAILED;
    }
}

uint32_t capset_destroy(void) {
    std::shared_ptr<const Capabilities> closed;
    const std::lock_guard lock(g_mutex);
    closed.swap(g_view);
    return closed != nullptr ? UVELHOST_OK : FAILED;
}

uint32_t capset_query_with_itemname(const char *pszItem, void *pValue, uint32_t *pulSize) {
    if (pszItem == nullptr || pValue == nullptr || pulSize == nullptr || *pulSize < sizeof(uint32_t))
        return FAILED;
    const std::shared_ptr<const Capabilities> view = View();
    if (view == nullptr)
        return FAILED;
    const auto item = view->find(std::string_view(pszItem));
    if (item == view->end())
        return FAILED;
    std::memcpy(pValue, &item->second, sizeof(uint32_t));
    *pulSize = sizeof(uint32_t);
    return UVELHOST_OK;
}

uint32_t capset_walk(CAPSET_WALK_CB pfItem, void *pContext) {
    const std::shared_ptr<const Capabilities> view = View();
    if (pfItem == nullptr || view == nullptr)
        return FAILED;
    for (const auto &[name, value] : *view)
        pfItem(name.c_str(), value, pContext);
    return UVELHOST_OK;
}
