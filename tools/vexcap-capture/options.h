// The command line: a command and the options that command takes, checked before anything
// touches a camera. An option of another command, a value out of range or a pair given half is
// a usage error that names the command.
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

enum class Command { List, Capture, Info, Check };

// --camera: the id `list` prints, or the camera's number in that list.
struct CameraChoice {
  std::optional<std::string> id;
  std::optional<std::size_t> number;  // 1 = the first camera `list` shows
};

struct Options {
  Command command = Command::List;

  // Every command.
  bool diagnostic_log = false;           // --log
  std::optional<std::string> scenario;   // --scenario NAME (virtual-camera builds)
  double call_timeout_s = 30;            // --call-timeout S
  bool json = false;                     // --json (list, info, check)

  // capture, info, check
  CameraChoice camera;                   // --camera ID|N

  // list
  std::optional<std::string> vid;        // --vid TEXT, with --pid
  std::optional<std::string> pid;        // --pid TEXT, with --vid
  double watch_s = 0;                    // --watch S

  // capture, info
  std::uint32_t reader = 1;              // --reader: the open parameters' stream mode
  std::uint16_t width = 640;             // --size WxH (check too)
  std::uint16_t height = 480;

  // capture
  std::uint32_t selector = 0;            // --stream shared|exclusive
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
  bool overwrite = false;                // --overwrite
  bool progress = true;                  // --no-progress
  double frame_timeout_s = 5;            // --frame-timeout S (check too)

  // check
  double seconds_per_format = 2;         // --seconds-per-format T
  unsigned start_stop_cycles = 5;        // --cycles N
  std::optional<std::string> junit;      // --junit FILE
};

// What a command line asks for: options to run, or text to print and an exit code (--help,
// --version).
struct ParsedCommandLine {
  std::optional<Options> options;
  std::string text;
  int exit_code = 0;
};

// Throws UsageError.
ParsedCommandLine parse_command_line(int argc, char** argv);

// Options of a command line that must run; throws UsageError otherwise (tests).
Options parse_options(int argc, char** argv);

}  // namespace vexcap::tool
