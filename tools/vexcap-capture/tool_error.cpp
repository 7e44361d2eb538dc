#include "tool_error.h"

#include "result_text.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {
namespace {

std::string message_of(const std::string& call, int code, const std::string& hint) {
  std::string message = call + " failed: " + describe_result(code);
  if (!hint.empty()) message += "\n  " + hint;
  return message;
}

}  // namespace

CallError::CallError(std::string call, int code, std::string hint)
    : ToolError(message_of(call, code, hint)), call_(std::move(call)), code_(code) {}

void check_call(const char* call, int code, const char* hint) {
  if (code != VEXCAP_OK) throw CallError(call, code, hint ? hint : "");
}

}  // namespace vexcap::tool
