#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "tool_process.h"
#include "tool_run.h"

namespace vexcap::tool::testing {

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
                         const ToolLimits& limits)
    : out_path_(folder / "tool-stdout.txt"), err_path_(folder / "tool-stderr.txt") {
  std::vector<std::string> all{VEXCAP_CAPTURE_PATH};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : all) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    const int out = open(out_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(out, 1);
    dup2(err, 2);
    if (limits.file_size_bytes) {
      const rlimit limit{*limits.file_size_bytes, *limits.file_size_bytes};
      setrlimit(RLIMIT_FSIZE, &limit);
      ::signal(SIGXFSZ, SIG_IGN);  // a write past the limit fails with EFBIG instead
    }
    execv(argv[0], argv.data());
    _exit(127);
  }
  child_ = pid;
}

ToolProcess::~ToolProcess() {
  if (child_ > 0) {
    kill(static_cast<pid_t>(child_), SIGKILL);
    waitpid(static_cast<pid_t>(child_), nullptr, 0);
  }
}

void ToolProcess::signal(int number) { kill(static_cast<pid_t>(child_), number); }

ToolRun ToolProcess::wait(std::chrono::seconds limit) {
  ToolRun run;
  const auto pid = static_cast<pid_t>(child_);
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "vexcap-capture still running after " << limit.count() << " s";
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  child_ = -1;
  run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.out = read_text(out_path_);
  run.err = read_text(err_path_);
  return run;
}

bool platform_sends_signals() { return true; }

}  // namespace vexcap::tool::testing
