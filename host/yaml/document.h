/* YAML files that people write by hand: read with a schema in the reader's hands, refused with a place and an expectation.
 *
 *     Node device = LoadFile("device.yaml");
 *     Fields fields(device, {"name", "interfaces"});                // any other key is refused
 *     std::string name = fields.Required("name").Text(1, 63);
 *     for (Node interface : fields.Required("interfaces").Items())
 *         ...
 *
 * Every reading function throws WrongDocument, whose text is "FILE:LINE:COLUMN: expected ..., found ...". Lines and
 * columns count from 1. */
#ifndef UVEL_HOST_YAML_DOCUMENT_H
#define UVEL_HOST_YAML_DOCUMENT_H

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <yaml-cpp/yaml.h>

namespace uvel::yaml {

class WrongDocument : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* A value of the document with the place where it stands. Cheap to copy; keeps the document alive. */
class Node {
  public:
    Node(YAML::Node node, std::shared_ptr<const std::string> file) : node_(std::move(node)), file_(std::move(file)) {}

    bool IsMap() const { return node_.IsMap(); }
    bool IsList() const { return node_.IsSequence(); }
    bool IsScalar() const { return node_.IsScalar(); }
    bool IsNothing() const { return !node_.IsDefined() || node_.IsNull(); }

    /* The text of a scalar, of min to max bytes. */
    std::string Text(size_t min = 0, size_t max = SIZE_MAX) const;

    /* A whole number from min to max, decimal or hexadecimal with 0x. */
    int64_t Number(int64_t min, int64_t max) const;

    template <typename T>
    T NumberOf(int64_t min, int64_t max) const {
        return static_cast<T>(Number(min, max));
    }

    /* true or false; yes, no, on and off count as well. */
    bool Flag() const;

    /* A time span as "250ms", "3s", "2min" or "1h", in milliseconds. A number without a unit is refused. */
    int64_t Milliseconds(int64_t min, int64_t max) const;

    /* The value that belongs to the word. */
    template <typename T>
    T OneOf(const std::vector<std::pair<std::string_view, T>> &words) const {
        const std::string word = Text();
        std::string list;
        for (const auto &[name, value] : words) {
            if (name == word)
                return value;
            list += (list.empty() ? "" : ", ") + std::string(name);
        }
        Refuse("one of " + list);
    }

    /* The elements of a list; an absent or empty value is an empty list. */
    std::vector<Node> Items() const;

    /* The keys and values of a map, in the file's order; a key that stands twice is refused. */
    std::vector<std::pair<Node, Node>> Entries() const;

    /* Throws: "FILE:LINE:COLUMN: expected <expected>, found <this value>". */
    [[noreturn]] void Refuse(const std::string &expected) const;

    /* Throws: "FILE:LINE:COLUMN: <complaint>". */
    [[noreturn]] void Complain(const std::string &complaint) const;

    /* "FILE:LINE:COLUMN" */
    std::string Place() const;

    /* The number of the line, from 1. */
    int Line() const { return node_.Mark().line + 1; }

  private:
    YAML::Node node_;
    std::shared_ptr<const std::string> file_;
};

/* A map whose keys are known beforehand. */
class Fields {
  public:
    /* Refuses a value that is no map, keys that are not `known` and keys that stand twice. */
    Fields(const Node &map, std::initializer_list<std::string_view> known);

    /* The value at the key, or a complaint at the map's place that it is missing. */
    Node Required(std::string_view key) const;

    /* The value at the key; nothing where the key is missing or its value is empty. */
    std::optional<Node> Optional(std::string_view key) const;

    bool Has(std::string_view key) const { return Optional(key).has_value(); }

  private:
    Node map_;
    std::vector<std::pair<std::string, Node>> fields_;
};

/* Reads a document. The file holds exactly one; an unreadable file and a text that is no YAML are WrongDocument as well.
 * Files above 16 MiB are refused. */
Node LoadFile(const std::string &path);

/* The same from memory; `name` stands for the file in messages. */
Node LoadText(const std::string &text, const std::string &name);

} // namespace uvel::yaml

#endif
