/* Base64 as JSON carries bytes: the usual alphabet, padded. */
#ifndef UVEL_HOST_CONFDB_BASE64_H
#define UVEL_HOST_CONFDB_BASE64_H

#include <optional>
#include <string>
#include <string_view>

namespace uvel::host::confdb {

std::string ToBase64(std::string_view bytes);

/* Nothing for a text that is not base64. */
std::optional<std::string> FromBase64(std::string_view text);

} // namespace uvel::host::confdb

#endif
