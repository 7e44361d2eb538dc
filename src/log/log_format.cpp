#include "log/log_format.h"

#include <cstring>

namespace vexcap::log {

namespace {

constexpr bool kLongIs64Bit = sizeof(long) == 8;

bool is_flag_or_width(char c) {
  return std::strchr("-+ #0123456789.*", c) != nullptr && c != '\0';
}

bool is_integer_conversion(char c) { return c && std::strchr("udixXo", c) != nullptr; }

class Writer {
 public:
  Writer(char* out, std::size_t capacity) : out_(out), capacity_(capacity) {}
  bool put(char c) {
    if (used_ + 1 >= capacity_) return false;
    out_[used_++] = c;
    return true;
  }
  bool put(const char* text, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i)
      if (!put(text[i])) return false;
    return true;
  }
  void terminate() { out_[used_ < capacity_ ? used_ : capacity_ - 1] = '\0'; }

 private:
  char* out_;
  std::size_t capacity_;
  std::size_t used_ = 0;
};

}  // namespace

bool translate_format(const char* format, char* out, std::size_t capacity) {
  if (capacity == 0) return false;
  Writer writer(out, capacity);
  const char* p = format;
  while (*p) {
    if (*p != '%') {
      if (!writer.put(*p++)) return false;
      continue;
    }
    // Copy '%' with its flags, width and precision.
    const char* start = p++;
    while (is_flag_or_width(*p)) ++p;
    if (!writer.put(start, static_cast<std::size_t>(p - start))) return false;

    if (p[0] == 'w' && p[1] == 's') {
      if (!writer.put("ls", 2)) return false;
      p += 2;
    } else if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
      if (!writer.put("ll", 2)) return false;
      p += 3;
    } else if (kLongIs64Bit && p[0] == 'l' && is_integer_conversion(p[1])) {
      ++p;  // a 32-bit argument: drop the l
    } else if (p[0] == 'l' && p[1] == 'l') {
      if (!writer.put("ll", 2)) return false;
      p += 2;
    }
    if (*p) {
      if (!writer.put(*p++)) return false;
    }
  }
  writer.terminate();
  return true;
}

}  // namespace vexcap::log
