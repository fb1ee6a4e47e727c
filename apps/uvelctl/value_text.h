/* Values of the configuration database, which are bytes, as people write and read them. */
#pragma once

#include <optional>
#include <string>

namespace uvelctl {

/* Whether a value reads as it is: UTF-8 without control characters, and not like hexadecimal (see Readable). */
bool IsText(const std::string &value);

/* "021a2b3c4d5e" */
std::string ToHex(const std::string &value);

/* Bytes of pairs of hexadecimal digits; ':', '-' and blanks between them mean nothing. */
std::optional<std::string> FromHex(const std::string &text);

/* The text, or "hex:" and the digits. */
std::string Readable(const std::string &value);

} // namespace uvelctl
