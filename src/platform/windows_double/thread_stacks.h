// When the double finds the product stuck (an operation waiting on a handler that does not
// return), the text alone does not say where the handler is: every thread's stack is printed
// to stderr beside the violation, through Wine's debugger, so a rare hang leaves its cause in
// the test log.
#pragma once

namespace vexcap::windows_double {

void print_every_thread_stack();

}  // namespace vexcap::windows_double
