// A small JSON reader for tests that check code against reference facts kept as JSON.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vexcap::testing {

class Json {
 public:
  enum class Kind { Null, Boolean, Number, String, Array, Object };

  // Throws std::runtime_error on malformed input.
  static Json parse(std::string_view text);
  static Json parse_file(const std::string& path);

  Kind kind() const { return kind_; }
  bool is_null() const { return kind_ == Kind::Null; }
  bool boolean() const { return boolean_; }
  double number() const { return number_; }
  const std::string& string() const { return string_; }
  const std::vector<Json>& items() const { return items_; }
  const std::map<std::string, Json>& members() const { return members_; }
  // Member lookup; a null value when absent.
  const Json& operator[](const std::string& key) const;
  bool has(const std::string& key) const { return members_.count(key) != 0; }

 private:
  friend class JsonParser;
  Kind kind_ = Kind::Null;
  bool boolean_ = false;
  double number_ = 0;
  std::string string_;
  std::vector<Json> items_;
  std::map<std::string, Json> members_;
};

}  // namespace vexcap::testing
