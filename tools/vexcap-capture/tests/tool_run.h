// What the end-to-end tests share: a fresh folder per test, the tool's runs, and readers of
// the files it leaves.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tool_process.h"

namespace vexcap::tool::testing {

// A text file's contents, with Windows' line ends read as "\n".
std::string read_text(const std::filesystem::path& path);

// The cells of each line of a CSV file without quoting.
std::vector<std::vector<std::string>> csv_rows(const std::filesystem::path& path);

// The names of the files in `folder` that end in `extension`, sorted.
std::vector<std::string> files_in(const std::filesystem::path& folder, const std::string& extension);

class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  ToolRun run(const std::vector<std::string>& arguments) { return run_tool(arguments, folder_); }
  std::filesystem::path out() const { return folder_ / "out"; }
  std::filesystem::path folder_;
};

}  // namespace vexcap::tool::testing
