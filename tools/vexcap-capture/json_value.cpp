#include "json_value.h"

#include <cmath>
#include <cstdio>

namespace vexcap::tool {
namespace {

void write_string(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
          out += escaped;
        } else {
          out += c;  // UTF-8 passes through
        }
    }
  }
  out += '"';
}

}  // namespace

JsonValue::JsonValue(bool value) : text_(value ? "true" : "false") {}
JsonValue::JsonValue(std::int64_t value) : text_(std::to_string(value)) {}
JsonValue::JsonValue(std::uint64_t value) : text_(std::to_string(value)) {}

JsonValue::JsonValue(double value) {
  if (!std::isfinite(value)) return;
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  text_ = text;
}

JsonValue::JsonValue(std::string_view text) : kind_(Kind::String), text_(text) {}

JsonValue JsonValue::object() {
  JsonValue value;
  value.kind_ = Kind::Object;
  return value;
}

JsonValue JsonValue::array() {
  JsonValue value;
  value.kind_ = Kind::Array;
  return value;
}

JsonValue& JsonValue::set(std::string_view key, JsonValue value) {
  for (auto& [name, member] : members_) {
    if (name == key) {
      member = std::move(value);
      return *this;
    }
  }
  members_.emplace_back(std::string(key), std::move(value));
  return *this;
}

JsonValue& JsonValue::push(JsonValue value) {
  members_.emplace_back(std::string(), std::move(value));
  return *this;
}

std::string JsonValue::dump() const {
  std::string out;
  write(out, 0);
  out += '\n';
  return out;
}

void JsonValue::write(std::string& out, int depth) const {
  switch (kind_) {
    case Kind::Literal: out += text_; return;
    case Kind::String: write_string(out, text_); return;
    case Kind::Array:
    case Kind::Object: break;
  }
  const bool object = kind_ == Kind::Object;
  if (members_.empty()) {
    out += object ? "{}" : "[]";
    return;
  }
  out += object ? '{' : '[';
  const std::string indent(2 * (depth + 1), ' ');
  for (std::size_t i = 0; i < members_.size(); ++i) {
    out += i == 0 ? "\n" : ",\n";
    out += indent;
    if (object) {
      write_string(out, members_[i].first);
      out += ": ";
    }
    members_[i].second.write(out, depth + 1);
  }
  out += '\n';
  out += std::string(2 * depth, ' ');
  out += object ? '}' : ']';
}

}  // namespace vexcap::tool
