// vexcap-capture: the host tool that runs the library's main job on any camera, virtual or
// real. It uses only the public header, as every host does.
#include <chrono>
#include <cstdio>

#include "call_watchdog.h"
#include "commands.h"
#include "interrupt.h"
#include "options.h"
#include "scenario_choice.h"

using namespace vexcap::tool;

namespace {

int run(const Options& options) {
  set_call_time_limit(std::chrono::milliseconds(static_cast<long long>(options.call_timeout_s * 1000)));
  choose_scenario(options.scenario);
  // The commands that run until told to stop end in order on Ctrl-C; the others just end.
  if (options.command == Command::Capture || options.command == Command::List) catch_interrupts();
  switch (options.command) {
    case Command::List: return run_list(options);
    case Command::Capture: return run_capture(options);
    case Command::Info: return run_info(options);
    case Command::Check: return run_check(options);
    case Command::Help: break;
  }
  print_help();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // lines reach a pipe as they happen
  try {
    return run(parse_options(argc, argv));
  } catch (const UsageError& error) {
    std::fprintf(stderr, "vexcap-capture: %s\nRun `vexcap-capture --help` for the commands and options.\n",
                 error.what());
    return 2;
  } catch (const ToolError& error) {
    std::fflush(stdout);
    std::fprintf(stderr, "vexcap-capture: %s\n", error.what());
    return 1;
  }
}
