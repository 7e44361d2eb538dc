#include "platform/windows_double/thread_stacks.h"

#include <windows.h>

#include <cstdio>
#include <string>

namespace vexcap::windows_double {

namespace {

constexpr DWORD kDebuggerLimitMs = 60'000;

// Owns a process's two handles.
struct ProcessHandles {
  PROCESS_INFORMATION info{};
  ~ProcessHandles() {
    if (info.hThread != nullptr) CloseHandle(info.hThread);
    if (info.hProcess != nullptr) CloseHandle(info.hProcess);
  }
};

}  // namespace

// winedbg attaches, prints each thread's backtrace and detaches; the threads run on afterwards.
// Where there is no winedbg (not under Wine) nothing is printed but a line saying so.
void print_every_thread_stack() {
  std::wstring command = L"winedbg --command \"bt all\" " + std::to_wstring(GetCurrentProcessId());
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = GetStdHandle(STD_ERROR_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  std::fflush(stderr);
  ProcessHandles debugger;
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                      &debugger.info)) {
    std::fprintf(stderr, "windows double: no thread stacks (winedbg did not start: %lu)\n", GetLastError());
    return;
  }
  if (WaitForSingleObject(debugger.info.hProcess, kDebuggerLimitMs) != WAIT_OBJECT_0)
    std::fprintf(stderr, "windows double: winedbg did not finish printing the thread stacks\n");
}

}  // namespace vexcap::windows_double
