#include "support/crash_report.h"

#ifdef _WIN32
#include <windows.h>

#include <cstdio>

namespace vexcap::testing {
namespace {

void print_frame(int depth, DWORD64 address) {
  HMODULE module = nullptr;
  char name[MAX_PATH] = "?";
  if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(address), &module))
    GetModuleFileNameA(module, name, sizeof name);
  // The module's preferred base plus the offset is what addr2line expects.
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
  const DWORD64 preferred =
      module ? reinterpret_cast<const IMAGE_NT_HEADERS64*>(reinterpret_cast<const char*>(module) + dos->e_lfanew)
                   ->OptionalHeader.ImageBase
             : 0;
  const DWORD64 offset = module ? address - reinterpret_cast<DWORD64>(module) : address;
  std::fprintf(stderr, "  #%-2d 0x%llx  %s\n", depth, static_cast<unsigned long long>(preferred + offset), name);
}

// Walks the faulting thread from the fault's own context with the unwind tables.
void print_stack(EXCEPTION_POINTERS* info) {
  std::fprintf(stderr, "CRASH: exception 0x%08lx at 0x%p, thread %lu\n", info->ExceptionRecord->ExceptionCode,
               info->ExceptionRecord->ExceptionAddress, GetCurrentThreadId());
  CONTEXT context = *info->ContextRecord;
  for (int depth = 0; depth < 64 && context.Rip != 0; ++depth) {
    print_frame(depth, context.Rip);
    DWORD64 image_base = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &image_base, nullptr);
    if (function == nullptr) {  // a leaf: the return address is on top of the stack
      context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
      context.Rsp += 8;
      continue;
    }
    void* handler_data = nullptr;
    DWORD64 establisher = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, image_base, context.Rip, function, &context, &handler_data, &establisher,
                     nullptr);
  }
  std::fflush(stderr);
}

LONG WINAPI report_and_end(EXCEPTION_POINTERS* info) {
  print_stack(info);
  return EXCEPTION_EXECUTE_HANDLER;  // ends the process with the exception's code
}

bool in_this_program(const void* address) {
  HMODULE module = nullptr;
  return GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            static_cast<LPCSTR>(address), &module) &&
         module == GetModuleHandleA(nullptr);
}

// A fault in a window procedure never reaches the unhandled-exception filter: the system
// swallows it at the callback boundary and the program runs on with whatever state the handler
// left. A fault in the program's own code is therefore reported at first chance as well.
LONG WINAPI report_own_fault(EXCEPTION_POINTERS* info) {
  const DWORD code = info->ExceptionRecord->ExceptionCode;
  const bool fault = code == EXCEPTION_ACCESS_VIOLATION || code == EXCEPTION_ILLEGAL_INSTRUCTION ||
                     code == EXCEPTION_STACK_OVERFLOW || code == EXCEPTION_INT_DIVIDE_BY_ZERO ||
                     code == EXCEPTION_PRIV_INSTRUCTION;
  if (!fault || !in_this_program(info->ExceptionRecord->ExceptionAddress)) return EXCEPTION_CONTINUE_SEARCH;
  print_stack(info);
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void print_stack_on_crash() {
  AddVectoredExceptionHandler(1, report_own_fault);
  SetUnhandledExceptionFilter(report_and_end);
}

}  // namespace vexcap::testing

#else

namespace vexcap::testing {

void print_stack_on_crash() {}

}  // namespace vexcap::testing

#endif
