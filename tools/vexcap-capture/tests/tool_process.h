// Runs vexcap-capture as a child process, as a person or a script would.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace vexcap::tool::testing {

struct ToolRun {
  int exit_code = -1;  // 128 + signal when a signal ended it
  std::string out;
  std::string err;
};

class ToolProcess {
 public:
  // Starts the tool with these arguments; its output goes to files in `folder`.
  ToolProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder);
  ~ToolProcess();  // kills a child still running
  void signal(int number);
  // Waits at most `limit`; a child still running then is killed and the test fails.
  ToolRun wait(std::chrono::seconds limit = std::chrono::seconds(30));

 private:
  pid_t pid_ = -1;
  std::filesystem::path out_path_;
  std::filesystem::path err_path_;
};

ToolRun run_tool(const std::vector<std::string>& arguments, const std::filesystem::path& folder);

}  // namespace vexcap::tool::testing
