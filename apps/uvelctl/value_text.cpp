#include "value_text.h"

#include <algorithm>
#include <inspection/json_text.h>

namespace uvelctl {

static constexpr char HEX_MARK[] = "hex:";

bool IsText(const std::string &value) {
    const auto is_control = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    return std::none_of(value.begin(), value.end(), is_control) && !value.starts_with(HEX_MARK) &&
           uvel::inspection::IsJsonText(value);
}

std::string ToHex(const std::string &value) {
    std::string text;
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

static int DigitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::optional<std::string> FromHex(const std::string &text) {
    std::string value;
    for (std::size_t i = 0; i < text.size();) {
        if (std::string_view(":- ").find(text[i]) != std::string_view::npos) {
            ++i;
            continue;
        }
        const int high = DigitOf(text[i]);
        const int low = i + 1 < text.size() ? DigitOf(text[i + 1]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        value += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return value;
}

std::string Readable(const std::string &value) {
    return IsText(value) ? value : HEX_MARK + ToHex(value);
}

} // namespace uvelctl
