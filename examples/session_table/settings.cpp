#include "settings.h"

#include <fstream>
#include <sstream>
#include <uvelcommon_base/nac_yang_xml.h>

#include "session.h"

namespace session_table {

namespace {

constexpr uint32_t MOST_SESSIONS = 10'000'000;

/* The document's tree while it is read. */
class Document {
  public:
    explicit Document(const std::string &text) {
        const NAC_YANG_REQUEST_S request = {text.c_str()};
        root_ = NAC_YANG_XmlNewRoot(&request, "");
    }
    ~Document() { NAC_YANG_XmlDelRoot(root_); }
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    _xmlNode *Root() const { return root_; }
    bool Has(const char *path) const { return NAC_YANG_XmlGetChild(root_, path) != nullptr; }

  private:
    _xmlNode *root_;
};

/* The library reads any text but "true" as false; people should hear of a slip. */
bool ReadVlanCheck(_xmlNode *root, bool *vlan_check) {
    char text[16];
    if (NAC_YANG_XmlGetStr(root, "vlan-check", text, sizeof text) != KIVO_OK)
        return false;
    *vlan_check = std::string(text) == "true";
    return *vlan_check || std::string(text) == "false";
}

bool ReadClass(_xmlNode *root, uint8_t *name_class) {
    static constexpr const char *NAMES[] = {"name", "text", "word", "noquote"};
    char text[16];
    if (NAC_YANG_XmlGetStr(root, "user-name/class", text, sizeof text) != KIVO_OK)
        return false;
    for (uint8_t i = 0; i < SRV_CHARSET_NUM; ++i) {
        if (std::string(NAMES[i]) == text) {
            *name_class = i;
            return true;
        }
    }
    return false;
}

} // namespace

bool ReadSettings(const std::string &text, Settings *settings, std::string *reason) {
    const Document document(text);
    _xmlNode *root = document.Root();
    Settings read = *settings;
    if (root == nullptr)
        *reason = "the text is no XML document";
    else if (document.Has("max-sessions") && (NAC_YANG_XmlGetU32(root, "max-sessions", &read.max_sessions) != KIVO_OK ||
                                              read.max_sessions == 0 || read.max_sessions > MOST_SESSIONS))
        *reason = "max-sessions is no number from 1 to " + std::to_string(MOST_SESSIONS);
    else if (document.Has("vlan-check") && !ReadVlanCheck(root, &read.vlan_check))
        *reason = "vlan-check is neither true nor false";
    else if (document.Has("user-name/class") && !ReadClass(root, &read.name_class))
        *reason = "user-name/class is none of name, text, word, noquote";
    else if (document.Has("user-name/max-length") &&
             (NAC_YANG_XmlGetU8(root, "user-name/max-length", &read.name_max) != KIVO_OK || read.name_max == 0 ||
              read.name_max >= NAME_SIZE))
        *reason = "user-name/max-length is no number from 1 to " + std::to_string(NAME_SIZE - 1);
    else {
        *settings = read;
        return true;
    }
    return false;
}

bool LoadSettings(const std::string &path, Settings *settings, std::string *reason) {
    std::ifstream file(path);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf())) {
        *reason = path + " cannot be read";
        return false;
    }
    if (ReadSettings(text.str(), settings, reason))
        return true;
    *reason = path + ": " + *reason;
    return false;
}

} // namespace session_table
