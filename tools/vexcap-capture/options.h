// The command line: a command and its options, checked before anything touches a camera.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool_error.h"

namespace vexcap::tool {

// A command line the tool cannot run; main() prints it with a pointer to --help, exit code 2.
class UsageError : public ToolError {
 public:
  using ToolError::ToolError;
};

enum class Command { Help, List, Capture, Info, Check };

struct Options {
  Command command = Command::Help;

  // Every command.
  std::optional<std::string> camera;     // --camera ID
  bool diagnostic_log = false;           // --log
  std::optional<std::string> scenario;   // --scenario NAME (virtual-camera builds)
  double call_timeout_s = 30;            // --call-timeout S

  // list
  std::optional<std::string> vid;        // --vid TEXT
  std::optional<std::string> pid;        // --pid TEXT
  double watch_s = 0;                    // --watch S

  // capture, info
  std::uint32_t reader = 1;              // --reader: the open parameters' stream mode
  std::uint32_t selector = 0;            // --stream shared|exclusive
  std::uint16_t width = 640;             // --size WxH
  std::uint16_t height = 480;
  std::optional<std::uint32_t> format;   // --format CODE
  std::uint32_t format_property = 9;     // 16 with --format-apply CODE
  std::optional<std::int64_t> exposure;  // --exposure
  std::optional<std::uint32_t> auto_exposure;
  std::optional<std::uint32_t> iso_speed;
  std::optional<std::uint32_t> led_power;
  std::optional<std::uint32_t> face_auth;
  std::optional<std::uint32_t> llc;
  std::optional<std::uint64_t> frames;   // --frames N
  std::optional<double> seconds;         // --seconds T
  std::uint64_t png_every = 1;           // --every N (0: no PNG)
  std::string out = "vexcap-capture-out";
  bool progress = true;                  // --no-progress
  double frame_timeout_s = 5;            // --frame-timeout S

  // check
  double seconds_per_format = 2;         // --seconds-per-format T
  unsigned start_stop_cycles = 5;        // --cycles N
};

// Throws UsageError.
Options parse_options(int argc, char** argv);

void print_help();

}  // namespace vexcap::tool
