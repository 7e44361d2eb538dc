// `capture`: stream frames from one camera into PNG files and a metadata CSV, with a live
// progress line and a summary.
#include <cstdio>
#include <filesystem>
#include <optional>

#include "camera_setup.h"
#include "capture_stats.h"
#include "commands.h"
#include "frame_intake.h"
#include "frame_stream.h"
#include "interrupt.h"
#include "metadata_csv.h"
#include "output_folder.h"
#include "png_file.h"
#include "progress_line.h"
#include "seconds.h"
#include "unsupported_format_watch.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

// Frames waiting for the writer; beyond this the writer has fallen behind and frames drop.
constexpr std::size_t kQueuedFrames = 64;
constexpr auto kPollPeriod = std::chrono::milliseconds(50);

std::string png_name(std::uint64_t index) {
  char name[32];
  std::snprintf(name, sizeof name, "frame-%06llu.png", static_cast<unsigned long long>(index));
  return name;
}

}  // namespace

int run_capture(const Options& options) {
  using Clock = std::chrono::steady_clock;
  // Declared first: the library may still be inside the callback until it has shut down.
  FrameIntake intake(options.frames.value_or(0), kQueuedFrames);
  // The folder first: a capture that could not keep its frames should not start the camera.
  const std::filesystem::path folder = prepare_output_folder(options.out, options.overwrite);
  Library library;
  const Camera camera = choose_camera(options.camera);
  const std::unique_ptr<OpenCamera> device = open_camera(camera, options.reader, options.width, options.height);
  if (options.diagnostic_log && switch_diagnostic_log_on(device->handle())) announce_log_start();
  apply_format_and_controls(device->handle(), options);
  const UnsupportedFormatWatch unsupported_format(device->handle());

  MetadataCsv csv(folder / "frames.csv");
  std::printf("capturing from %s (%s reader, %s stream) into %s\n",
              narrow(camera.name.empty() ? camera.id : camera.name).c_str(), reader_name(options.reader),
              options.selector == VEXCAP_STREAM_SELECT_EXCLUSIVE ? "exclusive" : "shared", options.out.c_str());
  std::fflush(stdout);

  CaptureStats stats;
  std::uint64_t pngs = 0;
  const Clock::duration frame_timeout = seconds(options.frame_timeout_s);
  const std::optional<Clock::time_point> deadline =
      options.seconds ? std::optional(Clock::now() + seconds(*options.seconds)) : std::nullopt;
  {
    ProgressLine progress(options.progress);
    Streaming streaming(device->handle(), &FrameIntake::callback, &intake, options.selector);
    Clock::time_point last_frame = Clock::now();
    while (!interrupted() && !(options.frames && stats.frames() >= *options.frames) &&
           !(deadline && Clock::now() >= *deadline)) {
      vexcap_frame* next = intake.next(kPollPeriod);
      if (next == nullptr) {
        if (unsupported_format.reported()) {
          throw ToolError("no frames: the library reported the camera's frames as a format it cannot "
                          "decode (unsupported-format event); choose another with --format");
        }
        if (Clock::now() - last_frame > frame_timeout) {
          throw ToolError("no frame arrived for " + std::to_string(options.frame_timeout_s) +
                          " s after vexcap_start_streaming_ex (see --frame-timeout)");
        }
        continue;
      }
      last_frame = Clock::now();
      ReturnedFrame frame(next);
      const std::uint64_t index = stats.frames();
      stats.add(*frame);
      std::string png;
      if (options.png_every != 0 && index % options.png_every == 0) {
        png = png_name(index);
        write_frame_png(folder / png, *frame);
        ++pngs;
      }
      csv.add_row(index, *frame, png);
      if (progress.due()) {
        progress.show(stats.frames(), options.frames.value_or(0), stats.frames_per_second(),
                      stats.missing_frames() + intake.dropped(), stats.bytes());
      }
    }
    streaming.stop();
  }
  csv.commit();

  std::printf("%s\n", summary_text(stats, intake.dropped(), intake.callback_microseconds()).c_str());
  std::printf("wrote %llu PNG file%s and frames.csv (%llu rows) to %s\n", static_cast<unsigned long long>(pngs),
              pngs == 1 ? "" : "s", static_cast<unsigned long long>(stats.frames()), options.out.c_str());
  if (interrupted()) {
    std::printf("interrupted: the files above are complete\n");
    return interrupt_exit_code();
  }
  return 0;
}

}  // namespace vexcap::tool
