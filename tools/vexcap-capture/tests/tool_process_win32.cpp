#include <gtest/gtest.h>
#include <windows.h>

#include "tool_process.h"
#include "tool_run.h"

namespace vexcap::tool::testing {
namespace {

// The tool sits beside this test program.
std::wstring tool_path() {
  wchar_t own[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, own, MAX_PATH);
  return (std::filesystem::path(std::wstring(own, length)).parent_path() / VEXCAP_CAPTURE_PATH).wstring();
}

// One argument as the C runtime's command-line parser reads it back.
std::wstring quoted(const std::wstring& argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) return argument;
  std::wstring out = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'\\') {
      ++backslashes;
      continue;
    }
    out.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
    backslashes = 0;
    out += c;
  }
  out.append(backslashes * 2, L'\\');
  return out + L"\"";
}

HANDLE inheritable_file(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  return CreateFileW(path.wstring().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                     CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
                         const ToolLimits&)
    : out_path_(folder / "tool-stdout.txt"), err_path_(folder / "tool-stderr.txt") {
  const std::wstring program = tool_path();
  std::wstring command_line = quoted(program);
  for (const std::string& argument : arguments)
    command_line += L" " + quoted(std::filesystem::path(argument).wstring());
  const HANDLE out = inheritable_file(out_path_);
  const HANDLE err = inheritable_file(err_path_);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = out;
  startup.hStdError = err;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                     &process)) {
    CloseHandle(process.hThread);
    child_ = reinterpret_cast<std::intptr_t>(process.hProcess);
  } else {
    ADD_FAILURE() << "CreateProcessW failed: " << GetLastError();
  }
  CloseHandle(out);
  CloseHandle(err);
}

ToolProcess::~ToolProcess() {
  if (child_ == -1) return;
  const auto process = reinterpret_cast<HANDLE>(child_);
  TerminateProcess(process, 1);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
}

void ToolProcess::signal(int) { ADD_FAILURE() << "no signals to other processes on Windows"; }

ToolRun ToolProcess::wait(std::chrono::seconds limit) {
  ToolRun run;
  if (child_ == -1) return run;
  const auto process = reinterpret_cast<HANDLE>(child_);
  if (WaitForSingleObject(process, static_cast<DWORD>(limit.count() * 1000)) != WAIT_OBJECT_0) {
    ADD_FAILURE() << "vexcap-capture still running after " << limit.count() << " s";
    TerminateProcess(process, 1);
    WaitForSingleObject(process, INFINITE);
  }
  DWORD code = 0;
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  child_ = -1;
  run.exit_code = static_cast<int>(code);
  run.out = read_text(out_path_);
  run.err = read_text(err_path_);
  return run;
}

bool platform_sends_signals() { return false; }

}  // namespace vexcap::tool::testing
