#include "support/json.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vexcap::testing {

class JsonParser {
 public:
  explicit JsonParser(std::string_view text) : text_(text) {}

  Json document() {
    Json value = parse_value();
    skip_space();
    if (at_ != text_.size()) fail("trailing characters");
    return value;
  }

 private:
  [[noreturn]] void fail(const char* what) const {
    throw std::runtime_error("JSON: " + std::string(what) + " at offset " + std::to_string(at_));
  }
  void skip_space() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\n' || text_[at_] == '\r' || text_[at_] == '\t')) ++at_;
  }
  char peek() {
    skip_space();
    if (at_ >= text_.size()) fail("unexpected end");
    return text_[at_];
  }
  void expect(char c) {
    if (peek() != c) fail("unexpected character");
    ++at_;
  }
  bool take_word(std::string_view word) {
    if (text_.substr(at_, word.size()) != word) return false;
    at_ += word.size();
    return true;
  }

  Json parse_value() {
    Json value;
    const char c = peek();
    if (c == '{') {
      value.kind_ = Json::Kind::Object;
      ++at_;
      if (peek() == '}') return ++at_, value;
      for (;;) {
        std::string key = parse_string();
        expect(':');
        value.members_[key] = parse_value();
        if (peek() == ',') {
          ++at_;
          continue;
        }
        expect('}');
        return value;
      }
    }
    if (c == '[') {
      value.kind_ = Json::Kind::Array;
      ++at_;
      if (peek() == ']') return ++at_, value;
      for (;;) {
        value.items_.push_back(parse_value());
        if (peek() == ',') {
          ++at_;
          continue;
        }
        expect(']');
        return value;
      }
    }
    if (c == '"') {
      value.kind_ = Json::Kind::String;
      value.string_ = parse_string();
      return value;
    }
    if (take_word("true") || take_word("false")) {
      value.kind_ = Json::Kind::Boolean;
      value.boolean_ = text_[at_ - 1] == 'e' && text_[at_ - 4] == 't';
      return value;
    }
    if (take_word("null")) return value;
    const std::string rest(text_.substr(at_, 64));
    char* end = nullptr;
    value.number_ = std::strtod(rest.c_str(), &end);
    if (end == rest.c_str()) fail("unexpected character");
    value.kind_ = Json::Kind::Number;
    at_ += std::size_t(end - rest.c_str());
    return value;
  }

  std::string parse_string() {
    expect('"');
    std::string out;
    while (at_ < text_.size() && text_[at_] != '"') {
      char c = text_[at_++];
      if (c != '\\') {
        out += c;
        continue;
      }
      if (at_ >= text_.size()) fail("unterminated escape");
      c = text_[at_++];
      switch (c) {
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case 'r': out += '\r'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'u': {
          const unsigned code = unsigned(std::stoul(std::string(text_.substr(at_, 4)), nullptr, 16));
          at_ += 4;
          if (code < 0x80) {
            out += char(code);
          } else if (code < 0x800) {
            out += char(0xC0 | (code >> 6)), out += char(0x80 | (code & 0x3F));
          } else {
            out += char(0xE0 | (code >> 12)), out += char(0x80 | ((code >> 6) & 0x3F)),
                out += char(0x80 | (code & 0x3F));
          }
          break;
        }
        default: out += c;
      }
    }
    expect('"');
    return out;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

Json Json::parse(std::string_view text) { return JsonParser(text).document(); }

Json Json::parse_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::ostringstream contents;
  contents << in.rdbuf();
  return parse(contents.str());
}

const Json& Json::operator[](const std::string& key) const {
  static const Json null_value;
  auto found = members_.find(key);
  return found == members_.end() ? null_value : found->second;
}

}  // namespace vexcap::testing
