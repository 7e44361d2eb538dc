// The compliance report: one line per check as it finishes (PASS, FAIL or N/S for not
// supported), the totals, and the exit code.
#pragma once

#include <functional>
#include <string>

namespace vexcap::tool {

enum class Outcome { Pass, Fail, NotSupported };

struct Verdict {
  Outcome outcome;
  std::string detail;
};

class CheckReport {
 public:
  void record(const std::string& name, const Verdict& verdict);
  // Runs one check; a ToolError it throws (a failing call, no frames) is its failure.
  void run(const std::string& name, const std::function<Verdict()>& check);
  void print_totals() const;
  int exit_code() const { return failed_ == 0 ? 0 : 1; }

 private:
  unsigned passed_ = 0;
  unsigned failed_ = 0;
  unsigned not_supported_ = 0;
};

}  // namespace vexcap::tool
