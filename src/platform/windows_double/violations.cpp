#include "platform/windows_double/violations.h"

#include <cstdio>
#include <mutex>

namespace vexcap::windows_double {

namespace {

struct ViolationList {
  std::mutex mutex;
  std::vector<std::string> texts;
};

ViolationList& list() {
  static ViolationList* instance = new ViolationList;  // outlives every object that may report
  return *instance;
}

}  // namespace

void record_violation(const std::string& text) {
  std::fprintf(stderr, "windows double: violation: %s\n", text.c_str());
  std::fflush(stderr);
  std::lock_guard lock(list().mutex);
  list().texts.push_back(text);
}

std::vector<std::string> recorded_violations() {
  std::lock_guard lock(list().mutex);
  return list().texts;
}

void clear_recorded_violations() {
  std::lock_guard lock(list().mutex);
  list().texts.clear();
}

}  // namespace vexcap::windows_double
