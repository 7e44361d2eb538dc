#include "options.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <string_view>

#include "vexcap/vexcap.h"

namespace vexcap::tool {
namespace {

template <typename Integer>
Integer parse_integer(std::string_view option, std::string_view text) {
  Integer value{};
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size() || text.empty())
    throw UsageError(std::string(option) + ": not a whole number in range: " + std::string(text));
  return value;
}

double parse_seconds(std::string_view option, const std::string& text) {
  std::size_t used = 0;
  double value = -1;
  try {
    value = std::stod(text, &used);
  } catch (const std::exception&) {
  }
  if (used != text.size() || !(value >= 0) || !std::isfinite(value))
    throw UsageError(std::string(option) + ": not a number of seconds: " + text);
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
  options.width = parse_integer<std::uint16_t>("--size", std::string_view(text).substr(0, x));
  options.height = parse_integer<std::uint16_t>("--size", std::string_view(text).substr(x + 1));
}

Command parse_command(const std::string& word) {
  static const std::map<std::string, Command> commands{
      {"list", Command::List}, {"capture", Command::Capture}, {"info", Command::Info},
      {"check", Command::Check}, {"help", Command::Help}};
  const auto found = commands.find(word);
  if (found == commands.end()) throw UsageError("unknown command: " + word);
  return found->second;
}

}  // namespace

Options parse_options(int argc, char** argv) {
  Options o;
  bool have_command = false;
  using Setter = std::function<void(const std::string&)>;
  const std::map<std::string, Setter> with_value{
      {"--camera", [&](const std::string& v) { o.camera = v; }},
      {"--scenario", [&](const std::string& v) { o.scenario = v; }},
      {"--call-timeout", [&](const std::string& v) { o.call_timeout_s = parse_seconds("--call-timeout", v); }},
      {"--vid", [&](const std::string& v) { o.vid = v; }},
      {"--pid", [&](const std::string& v) { o.pid = v; }},
      {"--watch", [&](const std::string& v) { o.watch_s = parse_seconds("--watch", v); }},
      {"--reader", [&](const std::string& v) {
         o.reader = parse_choice("--reader", v, {{"color", 0}, {"colour", 0}, {"infrared", 1}, {"ir", 1}, {"depth", 2}});
       }},
      {"--stream", [&](const std::string& v) {
         o.selector = parse_choice("--stream", v, {{"shared", 0}, {"exclusive", VEXCAP_STREAM_SELECT_EXCLUSIVE}});
       }},
      {"--size", [&](const std::string& v) { parse_size(v, o); }},
      {"--format", [&](const std::string& v) {
         o.format = parse_integer<std::uint32_t>("--format", v);
         o.format_property = VEXCAP_PROP_STREAM_TYPE;
       }},
      {"--format-apply", [&](const std::string& v) {
         o.format = parse_integer<std::uint32_t>("--format-apply", v);
         o.format_property = VEXCAP_PROP_STREAM_TYPE_APPLY;
       }},
      {"--exposure", [&](const std::string& v) { o.exposure = parse_integer<std::int64_t>("--exposure", v); }},
      {"--auto-exposure", [&](const std::string& v) {
         o.auto_exposure = parse_choice("--auto-exposure", v, {{"on", VEXCAP_AUTO_EXPOSURE_ON}, {"off", VEXCAP_AUTO_EXPOSURE_OFF}});
       }},
      {"--iso", [&](const std::string& v) { o.iso_speed = parse_integer<std::uint32_t>("--iso", v); }},
      {"--led-power", [&](const std::string& v) { o.led_power = parse_integer<std::uint32_t>("--led-power", v); }},
      {"--face-auth", [&](const std::string& v) {
         o.face_auth = parse_choice("--face-auth", v,
                                    {{"disabled", VEXCAP_FACE_AUTH_DISABLED},
                                     {"alternative-illumination", VEXCAP_FACE_AUTH_ALTERNATIVE_ILLUMINATION},
                                     {"background-subtraction", VEXCAP_FACE_AUTH_BACKGROUND_SUBTRACTION}});
       }},
      {"--llc", [&](const std::string& v) { o.llc = parse_choice("--llc", v, {{"on", VEXCAP_LLC_ON}, {"off", VEXCAP_LLC_OFF}}); }},
      {"--frames", [&](const std::string& v) { o.frames = parse_integer<std::uint64_t>("--frames", v); }},
      {"--seconds", [&](const std::string& v) { o.seconds = parse_seconds("--seconds", v); }},
      {"--every", [&](const std::string& v) { o.png_every = parse_integer<std::uint64_t>("--every", v); }},
      {"--out", [&](const std::string& v) { o.out = v; }},
      {"--frame-timeout", [&](const std::string& v) { o.frame_timeout_s = parse_seconds("--frame-timeout", v); }},
      {"--seconds-per-format", [&](const std::string& v) { o.seconds_per_format = parse_seconds("--seconds-per-format", v); }},
      {"--cycles", [&](const std::string& v) { o.start_stop_cycles = parse_integer<unsigned>("--cycles", v); }},
  };
  const std::map<std::string, std::function<void()>> flags{
      {"--log", [&] { o.diagnostic_log = true; }},
      {"--no-progress", [&] { o.progress = false; }},
  };

  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i];
    if (argument == "-h" || argument == "--help") return Options{};
    std::optional<std::string> inline_value;
    if (const std::size_t equals = argument.find('='); argument.rfind("--", 0) == 0 && equals != std::string::npos) {
      inline_value = argument.substr(equals + 1);
      argument.resize(equals);
    }
    if (const auto flag = flags.find(argument); flag != flags.end() && !inline_value) {
      flag->second();
    } else if (const auto option = with_value.find(argument); option != with_value.end()) {
      if (!inline_value && i + 1 >= argc) throw UsageError(argument + " needs a value");
      option->second(inline_value ? *inline_value : std::string(argv[++i]));
    } else if (argument.rfind("-", 0) == 0) {
      throw UsageError("unknown option: " + argument);
    } else if (!have_command) {
      o.command = parse_command(argument);
      have_command = true;
    } else {
      throw UsageError("unexpected argument: " + argument);
    }
  }
  if (!have_command) throw UsageError("no command given");
  if (o.frames && o.seconds) throw UsageError("--frames and --seconds: give one of them");
  if (o.frames && *o.frames == 0) throw UsageError("--frames: at least 1");
  if (o.call_timeout_s < 1) throw UsageError("--call-timeout: at least 1 second");
  if (!o.frames && !o.seconds) o.frames = 30;
  return o;
}

}  // namespace vexcap::tool
