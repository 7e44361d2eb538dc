#include <cstdio>

#include "options.h"
#include "scenario_choice.h"

namespace vexcap::tool {

void print_help() {
  std::printf(R"(vexcap-capture: capture frames from a camera through VexcapLib, and check a camera.

Usage: vexcap-capture COMMAND [OPTIONS]

Commands:
  list      the cameras present: id, name, source kinds, group type, locations
  capture   stream frames: PNG files, a metadata CSV (frames.csv) and a summary line
  info      the controls and device properties of one camera
  check     compliance run: both stream modes, every format code, controls, properties,
            events, repeated start and stop; one line per check, exit code 1 if any fails
  help      this text

Start here:
  vexcap-capture list
  vexcap-capture capture --frames 30 --out my-frames
  vexcap-capture capture --reader color --seconds 5 --every 10 --out my-frames

Options for every command:
  --camera ID         the camera to use, as `list` prints it (default: the first one)
  --log               switch the library's diagnostic log on (device property 5); its
                      lines go to standard output
  --call-timeout S    give up when a library call does not return within S seconds
                      (default 30; the library retries a camera that fails to start)

list:
  --vid TEXT --pid TEXT   also tell whether a camera has a source whose id holds both
                          texts, e.g. --vid VID_F00D --pid PID_CAFE
  --watch S               then report cameras arriving and leaving for S seconds

capture and info:
  --reader infrared|color|depth   which sensor to read (default infrared)
  --stream shared|exclusive       which of the library's two clients streams (default shared)
  --size WxH          colour size that the format codes 11 to 17 refer to (default 640x480)
  --format CODE       choose the format by its code (device property 9)
  --format-apply CODE choose it with device property 16 (also sets the frame-rate limit)
                      Codes: infrared 640 wide 8,7,6,5,4,3,2 = 1,5,10,15,20,25,30 fps,
                      320x240@60 = 1; colour at --size 17..11 = 1..30 fps, 1920 wide = 18,
                      1280x720 = 19, 3840 wide = 20. `check` tries them all.
  --exposure N        exposure in 100 ns units          --auto-exposure on|off
  --iso N             ISO speed                         --led-power N
  --face-auth disabled|alternative-illumination|background-subtraction
  --llc on|off        low-light compensation

capture only:
  --frames N          stop after N frames (default 30)
  --seconds T         or stop after T seconds
  --every N           write every Nth frame as PNG (default 1 = all, 0 = none)
  --out DIR           output folder (default vexcap-capture-out), created when missing:
                      frame-000000.png ... (Gray8 and Gray16 as grey, NV12 as RGB) and
                      frames.csv: index, timestamp, size, stride, format, exposure, ISO,
                      LED power, illumination, PNG name
  --frame-timeout S   fail when no frame comes for S seconds (default 5)
  --no-progress       no live progress line (it shows only on a terminal anyway)

  The summary gives the frame rate measured from the frames' timestamps, the frames
  missing (timestamp gaps, plus frames the tool had no room for), the interval between
  frames, and the callback latency: how long the tool's frame callback held the library's
  frame thread.

check only:
  --seconds-per-format T   how long each format streams (default 2)
  --cycles N               start and stop cycles (default 5)

Files are complete or absent: each is written as NAME.part and renamed when done, and
Ctrl-C stops the stream, finishes the file in progress and the CSV, and exits with 130.
A failing library call is reported with its name, result code and meaning; exit code 1.
Exit codes: 0 done, 1 failed, 2 bad command line, 3 a library call hung, 130 interrupted.
)");
  const std::vector<ScenarioInfo> scenarios = built_in_scenarios();
  if (scenarios.empty()) return;
  std::printf("\nThis build runs on the virtual camera. --scenario NAME picks its camera system:\n");
  for (const ScenarioInfo& scenario : scenarios)
    std::printf("  %-15s %s\n", scenario.name.c_str(), scenario.description.c_str());
}

}  // namespace vexcap::tool
