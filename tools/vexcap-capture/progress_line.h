// The live line a capture shows on a terminal: frames, rate, drops, bytes. Redrawn at most a
// few times a second on standard error, and only when that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>

namespace vexcap::tool {

class ProgressLine {
 public:
  explicit ProgressLine(bool wanted);
  ~ProgressLine();  // clears the line
  // True when the line is shown and due for a redraw: only then are its numbers worth working out.
  bool due() const;
  void show(std::uint64_t frames, std::uint64_t wanted, double fps, std::uint64_t dropped,
            std::uint64_t bytes);

 private:
  bool shown_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point last_draw_{};
};

bool standard_error_is_terminal();

}  // namespace vexcap::tool
