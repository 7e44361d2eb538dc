// The compliance report: one line per check as it finishes (PASS, FAIL or N/S for not
// supported), the totals, and the exit code; with --json one document at the end instead, and
// with --junit FILE a JUnit XML file as well. A check that a signal cut short is not counted.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vexcap::tool {

enum class Outcome { Pass, Fail, NotSupported };

struct Verdict {
  Outcome outcome;
  std::string detail;
};

struct CheckEntry {
  std::string name;
  Verdict verdict;
  double seconds = 0;
};

class CheckReport {
 public:
  explicit CheckReport(bool print_lines = true) : print_lines_(print_lines) {}

  void record(const std::string& name, const Verdict& verdict, double seconds = 0);
  // Runs one check; a ToolError it throws (a failing call, no frames) is its failure. Nothing
  // runs once a signal came, and a check a signal interrupted is left out.
  void run(const std::string& name, const std::function<Verdict()>& check);

  // The totals line, and what was cut short.
  void print_totals() const;
  std::string json() const;
  // "<testsuite ...>" with one test case per check.
  std::string junit_xml() const;
  int exit_code() const { return failed_ == 0 ? 0 : 1; }
  const std::vector<CheckEntry>& entries() const { return entries_; }

 private:
  bool print_lines_;
  std::vector<CheckEntry> entries_;
  std::optional<std::string> cut_short_;
  unsigned passed_ = 0;
  unsigned failed_ = 0;
  unsigned not_supported_ = 0;
};

}  // namespace vexcap::tool
