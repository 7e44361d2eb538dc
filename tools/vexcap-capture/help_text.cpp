#include "help_text.h"

#include <cstdio>

#include "scenario_choice.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {

std::string tool_summary() {
  return "vexcap-capture: capture frames from a camera through VexcapLib, and check a camera.\n"
         "Run `vexcap-capture COMMAND --help` for the options of one command.";
}

std::string tool_footer() {
  std::string text = R"(Start here:
  vexcap-capture list
  vexcap-capture capture --frames 30 --out my-frames
  vexcap-capture capture --reader color --seconds 5 --every 10 --out my-frames
  vexcap-capture info --camera 1
  vexcap-capture check --junit check.xml

A failing library call is reported with its name, result code and meaning.
Exit codes: 0 done, 1 failed, 2 bad command line, 3 a library call hung,
130 interrupted (Ctrl-C), 143 terminated (SIGTERM).)";
  const std::vector<ScenarioInfo> scenarios = built_in_scenarios();
  if (!scenarios.empty()) {
    text += "\n\nThis build runs on the virtual camera. --scenario NAME picks its camera system:";
    for (const ScenarioInfo& scenario : scenarios) {
      char line[256];
      std::snprintf(line, sizeof line, "\n  %-15s %s", scenario.name.c_str(), scenario.description.c_str());
      text += line;
    }
  }
  return text;
}

std::string command_footer(Command command) {
  switch (command) {
    case Command::List:
      return "Lists the cameras the library's device callbacks report, each described by the discovery\n"
             "queries, numbered as --camera N takes them.";
    case Command::Capture:
      return R"(Codes of --format and --format-apply: infrared 640 wide 8,7,6,5,4,3,2 = 1,5,10,15,20,25,30 fps,
320x240@60 = 1; colour at --size 17..11 = 1..30 fps, 1920 wide = 18, 1280x720 = 19,
3840 wide = 20. `vexcap-capture info` lists the codes the camera takes.

The output folder gets frame-000000.png ... (Gray8 and Gray16 as grey, NV12 as RGB) and
frames.csv: index, timestamp, size, stride, format, exposure, ISO, LED power, illumination,
PNG name. A folder holding an earlier capture is refused unless --overwrite is given, which
removes the earlier frame-*.png files and frames.csv first. Files are complete or absent: each
is written as NAME.part and renamed when done; Ctrl-C stops the stream, finishes the file in
progress and the CSV, and exits with 130.

The summary gives the frame rate measured from the frames' timestamps, the frames missing
(timestamp gaps, plus frames the tool had no room for), the interval between frames, and the
callback latency: how long the tool's frame callback held the library's frame thread.)";
    case Command::Info:
      return "Opens the camera and shows its controls (value, and the range the library's clamping\n"
             "reveals), its device properties and the format codes it takes, each with the first\n"
             "frame it delivers.";
    case Command::Check:
      return "Opens each stream mode the camera offers in turn and checks both stream selectors, every\n"
             "format code, the controls, the device properties, the device events and repeated start\n"
             "and stop. One line per check (PASS, FAIL, N/S); exit code 1 if any fails. Interrupted,\n"
             "it prints the checks so far and their totals.";
  }
  return {};
}

std::string version_text() {
  return std::string("vexcap-capture ") + VEXCAP_CAPTURE_VERSION + " (VexcapLib " + VEXCAP_VERSION_STRING + ")";
}

}  // namespace vexcap::tool
