// The JSON documents of --json: a value tree whose objects keep their members in the order
// they were set, written out as one indented document.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vexcap::tool {

class JsonValue {
 public:
  JsonValue() = default;  // null
  JsonValue(std::nullptr_t) {}
  JsonValue(bool value);
  JsonValue(int value) : JsonValue(static_cast<std::int64_t>(value)) {}
  JsonValue(unsigned value) : JsonValue(static_cast<std::uint64_t>(value)) {}
  JsonValue(std::int64_t value);
  JsonValue(std::uint64_t value);
  JsonValue(double value);  // null when not finite
  JsonValue(std::string_view text);
  JsonValue(const char* text) : JsonValue(std::string_view(text)) {}
  JsonValue(const std::string& text) : JsonValue(std::string_view(text)) {}

  static JsonValue object();
  static JsonValue array();

  // Objects: sets a member (replacing one of the same name). Arrays: appends.
  JsonValue& set(std::string_view key, JsonValue value);
  JsonValue& push(JsonValue value);

  std::string dump() const;  // indented by two spaces, ending in a newline

 private:
  enum class Kind { Literal, String, Array, Object };
  void write(std::string& out, int depth) const;

  Kind kind_ = Kind::Literal;
  std::string text_ = "null";  // a literal's text, or a string's characters
  std::vector<std::pair<std::string, JsonValue>> members_;  // array items have empty keys
};

}  // namespace vexcap::tool
