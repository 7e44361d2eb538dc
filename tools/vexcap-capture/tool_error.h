// Failures that end a command: a library call that did not answer VEXCAP_OK, or anything else
// (files, options, a camera without the wanted source). main() prints them and exits non-zero.
#pragma once

#include <stdexcept>
#include <string>

namespace vexcap::tool {

class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class CallError : public ToolError {
 public:
  CallError(std::string call, int code, std::string hint = {});
  const std::string& call() const { return call_; }
  int code() const { return code_; }

 private:
  std::string call_;
  int code_;
};

// Throws CallError unless the call answered VEXCAP_OK.
void check_call(const char* call, int code, const char* hint = nullptr);

}  // namespace vexcap::tool
