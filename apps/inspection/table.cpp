// The life of a value, once instead of in every file that fills a table.

#include "table.h"

namespace uvel::inspection {

Value::Value() = default;
Value::Value(bool truth) : held_(truth) {}
Value::Value(uint64_t number) : held_(number) {}
Value::Value(int64_t number) : held_(number) {}
Value::Value(double number) : held_(number) {}
Value::Value(const char *text) : held_(std::string(text)) {}
Value::Value(std::string text) : held_(std::move(text)) {}
Value::Value(List list) : held_(std::move(list)) {}

Value::Value(const Value &other) = default;
Value::Value(Value &&other) noexcept = default;
Value &Value::operator=(const Value &other) = default;
Value &Value::operator=(Value &&other) noexcept = default;
Value::~Value() = default;

} // namespace uvel::inspection
