#include "tool_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace vexcap::tool::testing {
namespace {

std::string read_all(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder)
    : out_path_(folder / "tool-stdout.txt"), err_path_(folder / "tool-stderr.txt") {
  std::vector<std::string> all{VEXCAP_CAPTURE_PATH};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : all) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    const int out = open(out_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(out, 1);
    dup2(err, 2);
    execv(argv[0], argv.data());
    _exit(127);
  }
}

ToolProcess::~ToolProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

void ToolProcess::signal(int number) { kill(pid_, number); }

ToolRun ToolProcess::wait(std::chrono::seconds limit) {
  ToolRun run;
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "vexcap-capture still running after " << limit.count() << " s";
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  pid_ = -1;
  run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.out = read_all(out_path_);
  run.err = read_all(err_path_);
  return run;
}

ToolRun run_tool(const std::vector<std::string>& arguments, const std::filesystem::path& folder) {
  return ToolProcess(arguments, folder).wait();
}

}  // namespace vexcap::tool::testing
