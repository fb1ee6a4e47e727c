/* What uveld shows of itself: a table that uvelctl can print, and that a machine can read, without knowing the view. */
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace uvel::inspection {

/* A text, a number, a truth value, a list of these, or none. */
class Value {
  public:
    using List = std::vector<Value>;
    using Held = std::variant<std::monostate, bool, uint64_t, int64_t, double, std::string, List>;

    Value();
    Value(bool truth);
    Value(uint64_t number);
    Value(int64_t number);
    Value(double number);
    Value(const char *text);
    Value(std::string text);
    Value(List list);
    Value(std::unsigned_integral auto number) : Value(uint64_t{number}) {}
    Value(std::signed_integral auto number) : Value(int64_t{number}) {}

    Value(const Value &other);
    Value(Value &&other) noexcept;
    Value &operator=(const Value &other);
    Value &operator=(Value &&other) noexcept;
    ~Value();

    const Held &Get() const { return held_; }
    bool IsNone() const { return std::holds_alternative<std::monostate>(held_); }
    bool IsNumber() const {
        return std::holds_alternative<uint64_t>(held_) || std::holds_alternative<int64_t>(held_) ||
               std::holds_alternative<double>(held_);
    }

  private:
    Held held_;
};

struct Column {
    std::string name;  /* key of the machine's form */
    std::string title; /* head of the column for people */
};

struct Table {
    using Row = Value::List; /* one value for each column */

    std::vector<Column> columns;
    std::vector<Row> rows;

    explicit Table(std::vector<Column> head) : columns(std::move(head)) {}
    void Add(Row row) { rows.push_back(std::move(row)); }
};

} // namespace uvel::inspection
