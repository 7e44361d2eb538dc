// Misuse of the platform that the double caught: each is printed to stderr at once as
// "windows double: violation: ..." and kept in a process-wide list that tests read and clear
// through the double's control API.
#pragma once

#include <string>
#include <vector>

namespace vexcap::windows_double {

void record_violation(const std::string& text);
std::vector<std::string> recorded_violations();
void clear_recorded_violations();

}  // namespace vexcap::windows_double
