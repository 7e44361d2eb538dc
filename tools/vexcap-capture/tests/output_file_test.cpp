// Output files are complete or absent: nothing shows under the final name before commit, and
// a file that is never committed leaves nothing behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "output_file.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() / ("vexcap-output-file-" + std::to_string(getpid()));
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder_)) all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
  }
  fs::path folder_;
};

TEST_F(OutputFileTest, CommitMovesTheWrittenBytesToTheFinalName) {
  OutputFile file(folder_ / "frames.csv");
  std::fputs("a,b\n", file.stream());
  EXPECT_EQ(names(), std::vector<std::string>{"frames.csv.part"});
  file.commit();
  EXPECT_EQ(names(), std::vector<std::string>{"frames.csv"});
  std::ifstream written(folder_ / "frames.csv");
  std::stringstream text;
  text << written.rdbuf();
  EXPECT_EQ(text.str(), "a,b\n");
}

TEST_F(OutputFileTest, AFileNeverCommittedIsRemoved) {
  {
    OutputFile file(folder_ / "frame.png");
    std::fputs("half", file.stream());
  }
  EXPECT_TRUE(names().empty());

  OutputFile kept(folder_ / "kept.png");
  kept.commit();
  OutputFile pending(folder_ / "pending.png");
  remove_unfinished_files();  // what the watchdog does before ending the process
  EXPECT_EQ(names(), std::vector<std::string>{"kept.png"});
}

TEST_F(OutputFileTest, AFileThatCannotBeCreatedIsReported) {
  EXPECT_THROW({ OutputFile file(folder_ / "missing-folder" / "frame.png"); }, ToolError);
}

}  // namespace
}  // namespace vexcap::tool
