#include "options.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "help_text.h"
#include "scenario_choice.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {
namespace {

// ---- Values ------------------------------------------------------------------------------------

template <typename Integer>
Integer parse_integer(std::string_view option, std::string_view text) {
  Integer value{};
  int base = 10;
  std::string_view digits = text;
  if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
    digits.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (error != std::errc() || end != digits.data() + digits.size() || digits.empty())
    throw UsageError(std::string(option) + ": not a whole number in range: " + std::string(text));
  return value;
}

template <typename Integer>
Integer parse_positive(std::string_view option, std::string_view text) {
  const Integer value = parse_integer<Integer>(option, text);
  if (value == 0) throw UsageError(std::string(option) + ": must be at least 1, not " + std::string(text));
  return value;
}

// A number of seconds above 0.
double parse_seconds(std::string_view option, const std::string& text) {
  std::size_t used = 0;
  double value = -1;
  try {
    value = std::stod(text, &used);
  } catch (const std::exception&) {
  }
  if (used != text.size() || !std::isfinite(value) || value < 0)
    throw UsageError(std::string(option) + ": not a number of seconds: " + text);
  if (value == 0) throw UsageError(std::string(option) + ": must be more than 0 seconds");
  return value;
}

std::uint32_t parse_choice(std::string_view option, const std::string& text,
                           const std::map<std::string, std::uint32_t>& choices) {
  const auto found = choices.find(text);
  if (found != choices.end()) return found->second;
  std::string names;
  for (const auto& [name, value] : choices) names += (names.empty() ? "" : ", ") + name;
  throw UsageError(std::string(option) + ": expected one of " + names + ", not " + text);
}

void parse_size(const std::string& text, Options& options) {
  const std::size_t x = text.find('x');
  if (x == std::string::npos) throw UsageError("--size: expected WIDTHxHEIGHT, not " + text);
  options.width = parse_positive<std::uint16_t>("--size", std::string_view(text).substr(0, x));
  options.height = parse_positive<std::uint16_t>("--size", std::string_view(text).substr(x + 1));
}

CameraChoice parse_camera(const std::string& text) {
  if (text.empty()) throw UsageError("--camera: give a camera id or its number in `list`");
  if (text.find_first_not_of("0123456789") != std::string::npos) return {text, std::nullopt};
  return {std::nullopt, parse_positive<std::size_t>("--camera", text)};
}

// ---- The command line's shape --------------------------------------------------------------

struct CommandSpec {
  Command command;
  const char* name;
  const char* summary;
};

constexpr CommandSpec kCommands[] = {
    {Command::List, "list", "the cameras present: id, name, source kinds, group type, locations"},
    {Command::Capture, "capture", "stream frames: PNG files, a metadata CSV (frames.csv) and a summary"},
    {Command::Info, "info", "one camera's controls with their ranges, device properties and formats"},
    {Command::Check, "check", "compliance run: stream modes, format codes, controls, properties, events"},
};

// Builds the parser and, after a parse, reads what the chosen command was given.
class CommandLine {
 public:
  CommandLine() : app_(tool_summary(), "vexcap-capture") {
    app_.set_version_flag("--version", version_text(), "print the tool's and the library's version");
    app_.require_subcommand(1);
    app_.footer(tool_footer());
    for (const CommandSpec& spec : kCommands) {
      CLI::App* command = app_.add_subcommand(spec.name, spec.summary);
      command->allow_extras();  // reported below, naming the command
      commands_.emplace_back(command, spec.command);
      add_common(command, spec.command);
    }
    add_list(find(Command::List));
    add_capture(find(Command::Capture));
    add_info(find(Command::Info));
    add_check(find(Command::Check));
    for (const auto& [command, kind] : commands_) command->footer(command_footer(kind));
  }

  ParsedCommandLine parse(int argc, char** argv) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
      return {std::nullopt, app_.help(), 0};
    } catch (const CLI::CallForVersion& version) {
      return {std::nullopt, std::string(version.what()) + "\n", 0};
    } catch (const CLI::RequiredError&) {
      if (!app_.get_subcommands().empty()) throw;
      for (int i = 1; i < argc; ++i)
        if (argv[i][0] != '-') throw UsageError(std::string("unknown command: ") + argv[i] + " (commands: list, capture, info, check)");
      throw UsageError("no command given: list, capture, info or check");
    } catch (const CLI::ParseError& error) {
      throw UsageError(command_prefix() + error.what());
    }
    CLI::App* command = app_.get_subcommands().front();
    reject_extras(command);
    Options options;
    options.command = kind_of(command);
    read(command, options);
    return {options, "", 0};
  }

 private:
  Command kind_of(const CLI::App* command) const {
    for (const auto& [candidate, kind] : commands_)
      if (candidate == command) return kind;
    throw UsageError("unknown command");
  }

  CLI::App* find(Command kind) {
    for (const auto& [command, candidate] : commands_)
      if (candidate == kind) return command;
    return nullptr;
  }

  std::string command_prefix() const {
    return app_.get_subcommands().empty() ? "" : app_.get_subcommands().front()->get_name() + ": ";
  }

  void value(CLI::App* command, const std::string& name, const char* type, const char* help) {
    const std::string description = help;
    command->add_option(name, description)->type_name(type);
  }
  void flag(CLI::App* command, const std::string& name, const char* help) {
    const std::string description = help;
    command->add_flag(name, description);
  }

  void add_common(CLI::App* command, Command kind) {
    if (kind != Command::List) {
      value(command, "--camera", "ID|N", "the camera: its id, or its number in `list` (default: the first)");
    }
    flag(command, "--log",
         "switch the library's diagnostic log on; its lines go to standard output (the library "
         "logs only while a camera is open: the tool opens one first)");
    value(command, "--call-timeout", "S",
          "give up when a library call does not return within S seconds (default 30)");
    if (!built_in_scenarios().empty()) {
      value(command, "--scenario", "NAME", "the virtual camera system to run on (`vexcap-capture --help` lists them)");
    }
    if (kind != Command::Capture) flag(command, "--json", "print one JSON document on standard output instead");
  }

  void add_list(CLI::App* command) {
    value(command, "--vid", "TEXT", "with --pid: tell whether a camera has a source whose id holds both texts");
    value(command, "--pid", "TEXT", "with --vid, e.g. --vid VID_F00D --pid PID_CAFE");
    value(command, "--watch", "S", "then report cameras arriving and leaving for S seconds");
  }

  void add_reader_and_size(CLI::App* command) {
    value(command, "--reader", "KIND", "infrared, color (colour) or depth: the sensor to read (default infrared)");
    value(command, "--size", "WxH", "colour size the format codes 11 to 17 refer to (default 640x480)");
  }

  void add_capture(CLI::App* command) {
    add_reader_and_size(command);
    value(command, "--stream", "shared|exclusive", "which of the library's two clients streams (default shared)");
    value(command, "--format", "CODE", "choose the format by its code (device property 9; `info` lists them)");
    value(command, "--format-apply", "CODE", "choose it with device property 16 (also sets the frame-rate limit)");
    value(command, "--exposure", "N", "exposure in 100 ns units");
    value(command, "--auto-exposure", "on|off", "automatic exposure");
    value(command, "--iso", "N", "ISO speed");
    value(command, "--led-power", "N", "LED (infrared illuminator) power");
    value(command, "--face-auth", "MODE", "disabled, alternative-illumination or background-subtraction");
    value(command, "--llc", "on|off", "low-light compensation");
    value(command, "--frames", "N", "stop after N frames (default 30)");
    value(command, "--seconds", "T", "or stop after T seconds");
    value(command, "--every", "N", "write every Nth frame as PNG (default 1 = all, 0 = none)");
    value(command, "--out", "DIR", "output folder (default vexcap-capture-out), created when missing");
    flag(command, "--overwrite", "replace the frames and frames.csv of an earlier capture in the folder");
    value(command, "--frame-timeout", "S", "fail when no frame comes for S seconds (default 5)");
    flag(command, "--no-progress", "no live progress line (it shows only on a terminal anyway)");
  }

  void add_info(CLI::App* command) {
    add_reader_and_size(command);
    value(command, "--frame-timeout", "S", "how long to wait for a format's first frame (default 5)");
  }

  void add_check(CLI::App* command) {
    value(command, "--size", "WxH", "colour size the format codes 11 to 17 refer to (default 640x480)");
    value(command, "--seconds-per-format", "T", "how long each format streams (default 2)");
    value(command, "--cycles", "N", "start and stop cycles (default 5)");
    value(command, "--frame-timeout", "S", "how long to wait for a stream's first frame (default 5)");
    value(command, "--junit", "FILE", "also write the checks as a JUnit XML report");
  }

  // Options the command does not take, and stray words.
  void reject_extras(CLI::App* command) const {
    const std::vector<std::string> extras = command->remaining();
    if (extras.empty()) return;
    const std::string& first = extras.front();
    const std::string name = command->get_name();
    if (first.rfind("-", 0) != 0) throw UsageError(name + ": unexpected argument: " + first);
    const std::string option = first.substr(0, first.find('='));
    std::vector<std::string> owners;
    for (const auto& [other, kind] : commands_)
      if (other != command && other->get_option_no_throw(option) != nullptr) owners.push_back(other->get_name());
    std::string message = name + " has no option " + option;
    if (!owners.empty()) {
      message += " (";
      for (std::size_t i = 0; i < owners.size(); ++i) message += (i == 0 ? "an option of " : ", ") + owners[i];
      message += ")";
    }
    throw UsageError(message + "; `vexcap-capture " + name + " --help` lists its options");
  }

  static const std::string* given(CLI::App* command, const std::string& name) {
    const CLI::Option* option = command->get_option_no_throw(name);
    if (option == nullptr || option->count() == 0) return nullptr;
    return &option->results().back();
  }
  static bool flagged(CLI::App* command, const std::string& name) { return given(command, name) != nullptr; }

  void read(CLI::App* c, Options& o) const {
    o.diagnostic_log = flagged(c, "--log");
    o.json = flagged(c, "--json");
    if (o.diagnostic_log && o.json)
      throw UsageError("--log and --json: the library's log lines go to standard output too; give one of them");
    if (const auto* v = given(c, "--scenario")) o.scenario = *v;
    if (const auto* v = given(c, "--call-timeout")) {
      o.call_timeout_s = parse_seconds("--call-timeout", *v);
      if (o.call_timeout_s < 1) throw UsageError("--call-timeout: at least 1 second");
    }
    if (const auto* v = given(c, "--camera")) o.camera = parse_camera(*v);

    if (const auto* v = given(c, "--vid")) o.vid = *v;
    if (const auto* v = given(c, "--pid")) o.pid = *v;
    if (o.vid.has_value() != o.pid.has_value())
      throw UsageError(o.vid ? "--vid needs --pid: the question is whether both texts name one camera"
                             : "--pid needs --vid: the question is whether both texts name one camera");
    if (const auto* v = given(c, "--watch")) o.watch_s = parse_seconds("--watch", *v);

    if (const auto* v = given(c, "--reader"))
      o.reader = parse_choice("--reader", *v, {{"color", 0}, {"colour", 0}, {"infrared", 1}, {"ir", 1}, {"depth", 2}});
    if (const auto* v = given(c, "--size")) parse_size(*v, o);
    if (const auto* v = given(c, "--stream"))
      o.selector = parse_choice("--stream", *v, {{"shared", 0}, {"exclusive", VEXCAP_STREAM_SELECT_EXCLUSIVE}});
    const auto* format = given(c, "--format");
    const auto* format_apply = given(c, "--format-apply");
    if (format && format_apply) throw UsageError("--format and --format-apply: give one of them");
    if (format) {
      o.format = parse_integer<std::uint32_t>("--format", *format);
      o.format_property = VEXCAP_PROP_STREAM_TYPE;
    } else if (format_apply) {
      o.format = parse_integer<std::uint32_t>("--format-apply", *format_apply);
      o.format_property = VEXCAP_PROP_STREAM_TYPE_APPLY;
    }
    if (const auto* v = given(c, "--exposure")) o.exposure = parse_integer<std::int64_t>("--exposure", *v);
    if (const auto* v = given(c, "--auto-exposure"))
      o.auto_exposure = parse_choice("--auto-exposure", *v, {{"on", VEXCAP_AUTO_EXPOSURE_ON}, {"off", VEXCAP_AUTO_EXPOSURE_OFF}});
    if (const auto* v = given(c, "--iso")) o.iso_speed = parse_integer<std::uint32_t>("--iso", *v);
    if (const auto* v = given(c, "--led-power")) o.led_power = parse_integer<std::uint32_t>("--led-power", *v);
    if (const auto* v = given(c, "--face-auth"))
      o.face_auth = parse_choice("--face-auth", *v,
                                 {{"disabled", VEXCAP_FACE_AUTH_DISABLED},
                                  {"alternative-illumination", VEXCAP_FACE_AUTH_ALTERNATIVE_ILLUMINATION},
                                  {"background-subtraction", VEXCAP_FACE_AUTH_BACKGROUND_SUBTRACTION}});
    if (const auto* v = given(c, "--llc")) o.llc = parse_choice("--llc", *v, {{"on", VEXCAP_LLC_ON}, {"off", VEXCAP_LLC_OFF}});

    const auto* frames = given(c, "--frames");
    const auto* seconds = given(c, "--seconds");
    if (frames && seconds) throw UsageError("--frames and --seconds: give one of them");
    if (frames) o.frames = parse_positive<std::uint64_t>("--frames", *frames);
    if (seconds) o.seconds = parse_seconds("--seconds", *seconds);
    if (o.command == Command::Capture && !o.frames && !o.seconds) o.frames = 30;
    if (const auto* v = given(c, "--every")) o.png_every = parse_integer<std::uint64_t>("--every", *v);
    if (const auto* v = given(c, "--out")) {
      if (v->empty()) throw UsageError("--out: give a folder");
      o.out = *v;
    }
    o.overwrite = flagged(c, "--overwrite");
    o.progress = !flagged(c, "--no-progress");
    if (const auto* v = given(c, "--frame-timeout")) o.frame_timeout_s = parse_seconds("--frame-timeout", *v);

    if (const auto* v = given(c, "--seconds-per-format"))
      o.seconds_per_format = parse_seconds("--seconds-per-format", *v);
    if (const auto* v = given(c, "--cycles")) o.start_stop_cycles = parse_positive<unsigned>("--cycles", *v);
    if (const auto* v = given(c, "--junit")) {
      if (v->empty()) throw UsageError("--junit: give a file name");
      o.junit = *v;
    }
  }

  CLI::App app_;
  std::vector<std::pair<CLI::App*, Command>> commands_;  // in the order of kCommands
};

}  // namespace

ParsedCommandLine parse_command_line(int argc, char** argv) {
  CommandLine command_line;
  try {
    return command_line.parse(argc, argv);
  } catch (const CLI::Error& error) {
    throw UsageError(error.what());
  }
}

Options parse_options(int argc, char** argv) {
  ParsedCommandLine parsed = parse_command_line(argc, argv);
  if (!parsed.options) throw UsageError("the command line asks for text, not a run");
  return *parsed.options;
}

}  // namespace vexcap::tool
