#include "stream_probe.h"

#include <chrono>
#include <cstdio>

#include "capture_stats.h"
#include "frame_intake.h"
#include "frame_pixels.h"
#include "frame_stream.h"
#include "interrupt.h"
#include "library_session.h"
#include "seconds.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

constexpr std::size_t kQueuedFrames = 16;

// What is wrong with a delivered record, or empty.
std::string problem_of(const vexcap_frame& frame, const vexcap_frame* previous) {
  const std::size_t row = pixel_row_bytes(frame.pixel_format, frame.width);
  if (frame.data == nullptr) return "a frame without pixel data";
  if (row == 0) return "pixel format " + std::to_string(frame.pixel_format) + " is none the library delivers";
  if (frame.width == 0 || frame.height == 0) return "a frame of size 0";
  if (frame.stride < 0 || static_cast<std::size_t>(frame.stride) < row)
    return "stride " + std::to_string(frame.stride) + " shorter than a row";
  if (frame.reserved0 != 0 || frame.reserved1 != 0 || frame.padding[0] != 0 || frame.padding[1] != 0)
    return "reserved fields not 0";
  if (frame.illumination > 1) return "illumination " + std::to_string(frame.illumination);
  if (previous != nullptr && frame.timestamp <= previous->timestamp)
    return "timestamp " + std::to_string(frame.timestamp) + " not after " + std::to_string(previous->timestamp);
  return {};
}

}  // namespace

StreamProbe probe_stream(vexcap_device* device, std::uint32_t selector, double seconds,
                         double first_frame_limit_s) {
  using Clock = std::chrono::steady_clock;
  FrameIntake intake(0, kQueuedFrames);
  StreamProbe probe;
  CaptureStats stats;
  vexcap_frame previous{};
  {
    Streaming streaming(device, &FrameIntake::callback, &intake, selector);
    const Clock::time_point started = Clock::now();
    Clock::time_point until = started + tool::seconds(first_frame_limit_s);
    while (Clock::now() < until && !interrupted()) {
      vexcap_frame* next = intake.next(std::chrono::milliseconds(20));
      if (next == nullptr) continue;
      ReturnedFrame frame(next);
      if (stats.frames() == 0) {
        probe.first = *frame;
        probe.first_frame_ms = std::chrono::duration<double, std::milli>(Clock::now() - started).count();
        until = Clock::now() + tool::seconds(seconds);
      }
      if (probe.first_problem.empty())
        probe.first_problem = problem_of(*frame, stats.frames() == 0 ? nullptr : &previous);
      previous = *frame;
      stats.add(*frame);
    }
    streaming.stop();
  }
  if (stats.frames() == 0 && !interrupted())
    throw ToolError("no frame within " + std::to_string(first_frame_limit_s) + " s of vexcap_start_streaming_ex");
  probe.frames = stats.frames();
  probe.frames_per_second = stats.frames_per_second();
  return probe;
}

std::string probe_text(const StreamProbe& probe) {
  char text[128];
  std::snprintf(text, sizeof text, "%ux%u %s, %.1f fps, %llu frames", probe.first.width, probe.first.height,
                pixel_format_name(probe.first.pixel_format), probe.frames_per_second,
                static_cast<unsigned long long>(probe.frames));
  return text;
}

}  // namespace vexcap::tool
