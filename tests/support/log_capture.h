// Captures the library's diagnostic lines for a test: sets the log up as a capture client
// would, switches output on and collects "L: message" lines in memory.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace vexcap::testing {

class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // Every capture client's construction switches output off (and its destruction silences
  // the log); a test that creates clients resumes the capture afterwards.
  void resume();

  std::vector<std::string> lines() const;
  bool contains(const std::string& line) const;
  int count(const std::string& line) const;
  void clear();

 private:
  static void receive(char level, const char* message, void* context);
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace vexcap::testing
