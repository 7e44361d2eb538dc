#include "tool_run.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>

namespace vexcap::tool::testing {

namespace fs = std::filesystem;

std::string read_text(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  std::string contents = text.str();
  contents.erase(std::remove(contents.begin(), contents.end(), '\r'), contents.end());
  return contents;
}

std::vector<std::vector<std::string>> csv_rows(const fs::path& path) {
  std::vector<std::vector<std::string>> rows;
  std::stringstream lines(read_text(path));
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> cells;
    std::stringstream cells_text(line);
    for (std::string cell; std::getline(cells_text, cell, ',');) cells.push_back(cell);
    if (!line.empty() && line.back() == ',') cells.emplace_back();
    rows.push_back(cells);
  }
  return rows;
}

std::vector<std::string> files_in(const fs::path& folder, const std::string& extension) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == extension) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

ToolRun run_tool(const std::vector<std::string>& arguments, const fs::path& folder) {
  return ToolProcess(arguments, folder).wait();
}

void ToolTest::SetUp() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  folder_ = fs::temp_directory_path() /
            ("vexcap-capture-test-" + std::string(test->test_suite_name()) + "-" + test->name() + "-" +
             std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
  fs::remove_all(folder_);
  fs::create_directories(folder_);
}

void ToolTest::TearDown() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

}  // namespace vexcap::tool::testing
