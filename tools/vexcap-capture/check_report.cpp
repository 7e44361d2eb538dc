#include "check_report.h"

#include <cstdio>

#include "tool_error.h"

namespace vexcap::tool {

void CheckReport::record(const std::string& name, const Verdict& verdict) {
  const char* label = "PASS";
  switch (verdict.outcome) {
    case Outcome::Pass: ++passed_; break;
    case Outcome::Fail: ++failed_; label = "FAIL"; break;
    case Outcome::NotSupported: ++not_supported_; label = "N/S "; break;
  }
  std::printf("%s  %-54s %s\n", label, name.c_str(), verdict.detail.c_str());
  std::fflush(stdout);
}

void CheckReport::run(const std::string& name, const std::function<Verdict()>& check) {
  Verdict verdict{Outcome::Fail, ""};
  try {
    verdict = check();
  } catch (const ToolError& error) {
    verdict = {Outcome::Fail, error.what()};
  }
  record(name, verdict);
}

void CheckReport::print_totals() const {
  std::printf("check: %u passed, %u failed, %u not supported\n", passed_, failed_, not_supported_);
}

}  // namespace vexcap::tool
