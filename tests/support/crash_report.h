// Makes a crash of a long-running test program print the faulting thread's stack and end the
// process, instead of waiting for a debugger nobody attends (Wine starts one on an unhandled
// fault). Sanitizer builds print their own reports; elsewhere this does nothing.
#pragma once

namespace vexcap::testing {

void print_stack_on_crash();

}  // namespace vexcap::testing
