// Runs vexcap-capture as a child process, as a person or a script would. One implementation
// per platform: tool_process_posix.cpp, tool_process_win32.cpp.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vexcap::tool::testing {

struct ToolRun {
  int exit_code = -1;  // 128 + signal when a signal ended it
  std::string out;
  std::string err;
};

// The child's limits, where the platform sets them (POSIX).
struct ToolLimits {
  std::optional<std::uint64_t> file_size_bytes;  // a larger write fails with EFBIG
};

class ToolProcess {
 public:
  // Starts the tool with these arguments; its output goes to files in `folder`.
  ToolProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
              const ToolLimits& limits = {});
  ~ToolProcess();  // kills a child still running
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;

  // SIGINT or SIGTERM, where the platform sends signals to other processes.
  void signal(int number);
  // Waits at most `limit`; a child still running then is killed and the test fails.
  ToolRun wait(std::chrono::seconds limit = std::chrono::seconds(60));

 private:
  std::intptr_t child_ = -1;  // the process id, or the process handle
  std::filesystem::path out_path_;
  std::filesystem::path err_path_;
};

// Whether ToolProcess::signal and ToolLimits work here.
bool platform_sends_signals();

ToolRun run_tool(const std::vector<std::string>& arguments, const std::filesystem::path& folder);

}  // namespace vexcap::tool::testing
