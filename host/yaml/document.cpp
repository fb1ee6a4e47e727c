#include "document.h"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unordered_map>
#include <yaml-cpp/eventhandler.h>

namespace uvel::yaml {

namespace {

constexpr std::streamoff MAX_FILE_BYTES = 16 << 20;

std::string PlaceIn(const std::string &file, const YAML::Mark &mark) {
    if (mark.is_null())
        return file + ":1:1";
    return file + ":" + std::to_string(mark.line + 1) + ":" + std::to_string(mark.column + 1);
}

/* What a message says of a value: its text where it has one, shortened. */
std::string Describe(const YAML::Node &node) {
    constexpr size_t SHOWN = 60;
    if (!node.IsDefined() || node.IsNull())
        return "nothing";
    if (node.IsMap())
        return "a map";
    if (node.IsSequence())
        return "a list";
    const std::string &text = node.Scalar();
    return "\"" + (text.size() > SHOWN ? text.substr(0, SHOWN) + "..." : text) + "\"";
}

/* All of `text` as a number with an optional sign and 0x. */
std::optional<int64_t> ParseNumber(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative)
        text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size() || magnitude > INT64_MAX)
        return std::nullopt;
    return negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
}

} // namespace

std::string Node::Place() const {
    return PlaceIn(*file_, node_.IsDefined() ? node_.Mark() : YAML::Mark::null_mark());
}

void Node::Complain(const std::string &complaint) const {
    throw WrongDocument(Place() + ": " + complaint);
}

void Node::Refuse(const std::string &expected) const {
    Complain("expected " + expected + ", found " + Describe(node_));
}

std::string Node::Text(size_t min, size_t max) const {
    if (!IsScalar())
        Refuse("a text");
    const std::string &text = node_.Scalar();
    if (text.size() < min || text.size() > max)
        Refuse("a text of " + std::to_string(min) + " to " + std::to_string(max) + " bytes");
    return text;
}

int64_t Node::Number(int64_t min, int64_t max) const {
    const auto number = IsScalar() ? ParseNumber(node_.Scalar()) : std::nullopt;
    if (!number.has_value() || *number < min || *number > max)
        Refuse("a number from " + std::to_string(min) + " to " + std::to_string(max));
    return *number;
}

bool Node::Flag() const {
    bool value = false;
    if (!IsScalar() || !YAML::convert<bool>::decode(node_, value))
        Refuse("true or false");
    return value;
}

int64_t Node::Milliseconds(int64_t min, int64_t max) const {
    static constexpr std::pair<std::string_view, int64_t> UNITS[] = {
        {"ms", 1}, {"min", 60'000}, {"s", 1000}, {"h", 3'600'000}};
    const std::string text = IsScalar() ? node_.Scalar() : "";
    for (const auto &[unit, milliseconds] : UNITS) {
        if (!text.ends_with(unit))
            continue;
        const auto number = ParseNumber(std::string_view(text).substr(0, text.size() - unit.size()));
        int64_t value = 0;
        if (number.has_value() && !__builtin_mul_overflow(*number, milliseconds, &value) && value >= min &&
            value <= max)
            return value;
        break;
    }
    Refuse("a time from " + std::to_string(min) + "ms to " + std::to_string(max) +
           "ms with its unit (ms, s, min or h)");
}

std::vector<Node> Node::Items() const {
    if (IsNothing())
        return {};
    if (!IsList())
        Refuse("a list");
    std::vector<Node> items;
    items.reserve(node_.size());
    for (const YAML::Node &item : node_)
        items.emplace_back(item, file_);
    return items;
}

std::vector<std::pair<Node, Node>> Node::Entries() const {
    if (!IsMap())
        Refuse("a map");
    std::vector<std::pair<Node, Node>> entries;
    entries.reserve(node_.size());
    std::unordered_map<std::string, std::string> places;
    for (const auto &entry : node_) {
        const Node key(entry.first, file_);
        const auto [earlier, is_new] = places.emplace(key.Text(), key.Place());
        if (!is_new)
            key.Complain("the key \"" + key.Text() + "\" stands here twice, first at " + earlier->second);
        entries.emplace_back(key, Node(entry.second, file_));
    }
    return entries;
}

Fields::Fields(const Node &map, std::initializer_list<std::string_view> known) : map_(map) {
    for (const auto &[key, value] : map.Entries()) {
        const std::string name = key.Text();
        std::string list;
        bool is_known = false;
        for (const std::string_view word : known) {
            is_known = is_known || word == name;
            list += (list.empty() ? "" : ", ") + std::string(word);
        }
        if (!is_known)
            key.Refuse("one of the keys " + list);
        fields_.emplace_back(name, value);
    }
}

std::optional<Node> Fields::Optional(std::string_view key) const {
    for (const auto &[name, value] : fields_) {
        if (name == key && !value.IsNothing())
            return value;
    }
    return std::nullopt;
}

Node Fields::Required(std::string_view key) const {
    const auto value = Optional(key);
    if (!value.has_value())
        map_.Complain("the key \"" + std::string(key) + "\" is missing here");
    return *value;
}

namespace {

/* The places where documents begin. */
class Beginnings : public YAML::EventHandler {
  public:
    std::vector<YAML::Mark> places;

    void OnDocumentStart(const YAML::Mark &) override { at_beginning_ = true; }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark &mark, YAML::anchor_t) override { Note(mark); }
    void OnAlias(const YAML::Mark &mark, YAML::anchor_t) override { Note(mark); }
    void OnScalar(const YAML::Mark &mark, const std::string &, YAML::anchor_t, const std::string &) override {
        Note(mark);
    }
    void OnSequenceStart(const YAML::Mark &mark, const std::string &, YAML::anchor_t,
                         YAML::EmitterStyle::value) override {
        Note(mark);
    }
    void OnSequenceEnd() override {}
    void OnMapStart(const YAML::Mark &mark, const std::string &, YAML::anchor_t, YAML::EmitterStyle::value) override {
        Note(mark);
    }
    void OnMapEnd() override {}

  private:
    void Note(const YAML::Mark &mark) {
        if (at_beginning_)
            places.push_back(mark);
        at_beginning_ = false;
    }

    bool at_beginning_ = false;
};

/* Of the first two documents, so that texts of several can be told. YAML::LoadAll must not be asked: behind a stray comma
 * it finds documents without end. */
std::vector<YAML::Mark> FirstTwo(const std::string &text) {
    std::istringstream stream(text);
    YAML::Parser parser(stream);
    Beginnings beginnings;
    while (beginnings.places.size() < 2 && parser.HandleNextDocument(beginnings)) {
    }
    return beginnings.places;
}

} // namespace

Node LoadText(const std::string &text, const std::string &name) {
    auto file = std::make_shared<const std::string>(name);
    try {
        const std::vector<YAML::Mark> documents = FirstTwo(text);
        if (documents.empty())
            return Node(YAML::Node(), std::move(file));
        if (documents.size() > 1)
            throw WrongDocument(PlaceIn(name, documents[1]) + ": expected one document, found another");
        return Node(YAML::Load(text), std::move(file));
    } catch (const YAML::Exception &error) {
        throw WrongDocument(PlaceIn(name, error.mark) + ": " + error.msg);
    }
}

Node LoadFile(const std::string &path) {
    /* Of a directory and a pipe the length is no length, and a pipe's opening waits for a writer. */
    std::error_code unknown;
    if (std::filesystem::exists(path, unknown) && !std::filesystem::is_regular_file(path, unknown))
        throw WrongDocument(path + ": expected a regular file");
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file)
        throw WrongDocument(path + ": " + std::strerror(errno));
    const std::streamoff size = file.tellg();
    if (size > MAX_FILE_BYTES)
        throw WrongDocument(path + ": expected at most 16 MiB, found " + std::to_string(size) + " bytes");
    file.seekg(0);
    std::string text(static_cast<size_t>(size), '\0');
    if (!file.read(text.data(), size))
        throw WrongDocument(path + ": " + std::strerror(errno));
    return LoadText(text, path);
}

} // namespace uvel::yaml
