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
  catch_interrupts();
  int code = 0;
  switch (options.command) {
    case Command::List: code = run_list(options); break;
    case Command::Capture: code = run_capture(options); break;
    case Command::Info: code = run_info(options); break;
    case Command::Check: code = run_check(options); break;
  }
  return interrupted() ? interrupt_exit_code() : code;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // lines reach a pipe as they happen
  try {
    const ParsedCommandLine command_line = parse_command_line(argc, argv);
    if (!command_line.options) {
      std::fputs(command_line.text.c_str(), stdout);
      return command_line.exit_code;
    }
    return run(*command_line.options);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "vexcap-capture: %s\nRun `vexcap-capture --help` for the commands and options.\n",
                 error.what());
    return 2;
  } catch (const ToolError& error) {
    std::fflush(stdout);
    std::fprintf(stderr, "vexcap-capture: %s\n", error.what());
    return interrupted() ? interrupt_exit_code() : 1;
  }
}
