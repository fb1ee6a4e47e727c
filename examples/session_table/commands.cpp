#include "commands.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <uvelcommon_base/kivo_inet.h>
#include <uvelcommon_base/kivo_ip.h>
#include <uvelcommon_base/kivo_mac.h>
#include <vector>

namespace session_table {

namespace {

constexpr size_t MAX_QUOTED = 48; /* of a word that is not understood */
constexpr size_t IPV4_TEXT_SIZE = 16;
constexpr size_t IPV6_TEXT_SIZE = 46;

using Words = std::vector<std::string>;

Words WordsOf(std::string_view line) {
    Words words;
    size_t begin = 0;
    while ((begin = line.find_first_not_of(" \t\r", begin)) != std::string_view::npos) {
        const size_t end = std::min(line.find_first_of(" \t\r", begin), line.size());
        words.emplace_back(line.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

/* What somebody sent, as it can be shown to anybody. */
std::string Quoted(std::string word) {
    word.resize(std::min(word.size(), MAX_QUOTED));
    std::replace_if(
        word.begin(), word.end(), [](char c) { return c < 0x20 || c == 0x7F; }, '?');
    return "\"" + word + "\"";
}

bool ReadNumber(const std::string &word, uint32_t max, uint32_t *number) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *number);
    return error == std::errc() && end == word.data() + word.size() && *number <= max;
}

/* Reasons are what stands behind "error "; empty is success. The library's reader takes what it can get, so the address
 * counts only when it reads as it would be written. */
std::string ReadMac(const std::string &word, Mac *mac) {
    std::string lower = word;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    char text[SRV_MAC_GROUP_TEXT_ROOM];
    if (SRV_MacStrToAddr(word.c_str(), mac->data()) != KIVO_OK || lower != SRV_MacAddrToStr(mac->data(), text) ||
        SRV_IsMacAddrZero(mac->data()) == 1)
        return Quoted(word) + " is no MAC address as 021a-2b3c-4d5e";
    return {};
}

std::string ReadAddresses(const Words &words, Session *session) {
    if (words.size() > 5 && words[5] != "-" &&
        (SRV_StrToIpAddr(words[5].c_str(), &session->ipv4) != KIVO_OK || SRV_IsValidIpAddr(session->ipv4) != 1))
        return Quoted(words[5]) + " is no IPv4 address of a host";
    if (words.size() > 6 && words[6] != "-" && kivo_inet_pton6(words[6].c_str(), session->ipv6.data()) != 1)
        return Quoted(words[6]) + " is no IPv6 address";
    return {};
}

std::string LogOn(Sessions *sessions, const Words &words, uint32_t now) {
    if (words.size() < 5 || words.size() > 7)
        return "logon takes MAC NAME IFINDEX VLAN [IPV4] [IPV6]";
    Session session;
    session.start = now;
    std::string reason = ReadMac(words[1], &session.mac);
    if (!reason.empty())
        return reason;
    if (words[2].size() >= NAME_SIZE)
        return "the user name is too long";
    std::memcpy(session.name, words[2].data(), words[2].size());
    uint32_t vlan = 0;
    if (!ReadNumber(words[3], UINT32_MAX, &session.ifindex))
        return Quoted(words[3]) + " is no interface index";
    if (!ReadNumber(words[4], 4094, &vlan))
        return Quoted(words[4]) + " is no VLAN";
    session.vlan = static_cast<uint16_t>(vlan);
    reason = ReadAddresses(words, &session);
    return reason.empty() ? sessions->LogOn(session) : reason;
}

std::string LogOff(Sessions *sessions, const Words &words) {
    Mac mac;
    if (words.size() != 2)
        return "logoff takes MAC";
    const std::string reason = ReadMac(words[1], &mac);
    return reason.empty() ? sessions->LogOff(mac) : reason;
}

std::string TextOf(const Session &session) {
    char mac[SRV_MAC_GROUP_TEXT_ROOM];
    char ipv4[IPV4_TEXT_SIZE];
    char ipv6[IPV6_TEXT_SIZE];
    const uint32_t network = htonl(session.ipv4);
    SRV_MacAddrToStr(session.mac.data(), mac);
    kivo_inet_ntop4(reinterpret_cast<const uint8_t *>(&network), ipv4, sizeof ipv4);
    kivo_inet_ntop6(session.ipv6.data(), ipv6, sizeof ipv6);
    return std::string(mac) + " " + session.name + " " + std::to_string(session.ifindex) + " " +
           std::to_string(session.vlan) + " " + ipv4 + " " + ipv6 + " " + std::to_string(session.start);
}

std::string Show(const Sessions &sessions, const Words &words) {
    Mac mac;
    if (words.size() != 2)
        return "error show takes MAC";
    const std::string reason = ReadMac(words[1], &mac);
    if (!reason.empty())
        return "error " + reason;
    const std::optional<Session> session = sessions.Look(mac);
    return session ? "session " + TextOf(*session) : "error there is no session of this MAC address";
}

std::string ShowDigest(const Sessions &sessions) {
    const Digest digest = sessions.GetDigest();
    char text[64];
    std::snprintf(text, sizeof text, "digest %u %016llx", digest.count, static_cast<unsigned long long>(digest.sum));
    return text;
}

std::string Result(const std::string &reason) {
    return reason.empty() ? DONE : "error " + reason;
}

} // namespace

std::string Answer(Sessions *sessions, std::string_view line, uint32_t now) {
    if (line.find('\0') != std::string_view::npos)
        return "error a line is text";
    const Words words = WordsOf(line);
    if (words.empty())
        return "error the line is empty";
    if (words[0] == "logon")
        return Result(LogOn(sessions, words, now));
    if (words[0] == "logoff")
        return Result(LogOff(sessions, words));
    if (words[0] == "show")
        return Show(*sessions, words);
    if (words[0] == "digest")
        return ShowDigest(*sessions);
    return "error logon, logoff, show and digest are known, " + Quoted(words[0]) + " is not";
}

FileResult CarryOut(Sessions *sessions, std::istream *file, uint32_t now) {
    FileResult result;
    std::string line;
    for (uint32_t number = 1; std::getline(*file, line); ++number) {
        if (line.empty() || line[0] == '#')
            continue;
        const std::string answer =
            line.size() > MAX_LINE_BYTES ? "error the line is too long" : Answer(sessions, line, now);
        if (!answer.starts_with("error ")) {
            ++result.done;
        } else if (result.refused++ == 0) {
            result.first_refused = std::to_string(number) + ": " + answer.substr(6);
        }
    }
    return result;
}

} // namespace session_table
