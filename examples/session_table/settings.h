/* What the module is configured with: a YANG XML document, named by the setting "document".
 *
 *     <session-table xmlns="urn:uvel:session-table">
 *       <max-sessions>200000</max-sessions>
 *       <vlan-check>true</vlan-check>
 *       <user-name><class>word</class><max-length>32</max-length></user-name>
 *     </session-table>
 */
#pragma once

#include <cstdint>
#include <string>

#include <uvelcommon_base/kivo_charset.h>

namespace session_table {

struct Settings {
    uint32_t max_sessions = 200'000;
    bool vlan_check = false;               /* log-ons only in VLANs that the port is in */
    uint8_t name_class = SRV_CHARSET_WORD; /* characters of user names; in the document: name, text, word, noquote */
    uint8_t name_max = 32;                 /* bytes of a user name, 1 to 63 */
};

/* Reads a document from memory. False, with a reason, for a text that is not such a document; what it does not name
 * keeps its value. */
bool ReadSettings(const std::string &document, Settings *settings, std::string *reason);

/* The same from a file. */
bool LoadSettings(const std::string &path, Settings *settings, std::string *reason);

} // namespace session_table
