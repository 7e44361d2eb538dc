#include "support/log_capture.h"

#include <algorithm>

#include "log/log.h"

namespace vexcap::testing {

LogCapture::LogCapture() {
  log::set_sink_for_testing(&LogCapture::receive, this);
  log::client_constructed();
  log::set_output_from_property(0x501);
}

void LogCapture::resume() {
  log::client_constructed();
  log::set_output_from_property(0x501);
}

LogCapture::~LogCapture() {
  log::client_destroyed();
  log::set_sink_for_testing(nullptr, nullptr);
}

void LogCapture::receive(char level, const char* message, void* context) {
  auto* self = static_cast<LogCapture*>(context);
  std::lock_guard<std::mutex> lock(self->mutex_);
  self->lines_.push_back(std::string(1, level) + ": " + message);
}

std::vector<std::string> LogCapture::lines() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

bool LogCapture::contains(const std::string& line) const { return count(line) > 0; }

int LogCapture::count(const std::string& line) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(std::count(lines_.begin(), lines_.end(), line));
}

void LogCapture::clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.clear();
}

}  // namespace vexcap::testing
