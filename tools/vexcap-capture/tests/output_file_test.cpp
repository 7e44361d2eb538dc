// Output files are complete or absent: nothing shows under the final name before commit, and
// a file that is never committed leaves nothing behind. The output folder is made ready before
// a capture starts: created, writable, and free of an earlier capture's frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>

#include "output_file.h"
#include "output_folder.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    folder_ = fs::temp_directory_path() / ("vexcap-output-file-" + std::string(test->name()) + "-" +
                                           std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
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
  file.write("a,b\n");
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
    file.write("half");
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

void touch(const fs::path& path) { std::ofstream(path) << "x"; }

TEST_F(OutputFileTest, AFolderWithAnEarlierCaptureIsRefusedUnlessOverwritten) {
  const fs::path out = folder_ / "out";
  EXPECT_EQ(prepare_output_folder(out.string(), false), out);  // created
  EXPECT_TRUE(fs::is_directory(out));
  EXPECT_TRUE(fs::is_empty(out));  // the write test leaves nothing

  touch(out / "notes.txt");
  touch(out / "frame-12.png");  // not a name the tool writes
  EXPECT_NO_THROW(prepare_output_folder(out.string(), false));

  touch(out / "frame-000007.png");
  touch(out / "frames.csv.part");
  try {
    prepare_output_folder(out.string(), false);
    ADD_FAILURE() << "an earlier capture was accepted";
  } catch (const ToolError& error) {
    EXPECT_NE(std::string(error.what()).find("holds an earlier capture (2 files such as "), std::string::npos)
        << error.what();
    EXPECT_NE(std::string(error.what()).find("give --overwrite"), std::string::npos);
  }
  EXPECT_TRUE(fs::exists(out / "frame-000007.png"));

  prepare_output_folder(out.string(), true);
  std::vector<std::string> left;
  for (const auto& entry : fs::directory_iterator(out)) left.push_back(entry.path().filename().string());
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left, (std::vector<std::string>{"frame-12.png", "notes.txt"}));
}

TEST_F(OutputFileTest, AFolderThatCannotBeMadeNamesTheReason) {
  touch(folder_ / "a-file");
  try {
    prepare_output_folder((folder_ / "a-file").string(), false);
    ADD_FAILURE() << "a file was taken for a folder";
  } catch (const ToolError& error) {
    EXPECT_NE(std::string(error.what()).find("a-file is a file"), std::string::npos) << error.what();
  }
  try {
    prepare_output_folder((folder_ / "a-file" / "below").string(), false);
    ADD_FAILURE() << "a folder below a file was made";
  } catch (const ToolError& error) {
    // The system's own words follow the colon, e.g. "Not a directory".
    const std::string text = error.what();
    EXPECT_EQ(text.rfind("cannot create the output folder ", 0), 0u) << text;
    EXPECT_GT(text.size(), text.rfind(": ") + 2) << text;
  }
}

}  // namespace
}  // namespace vexcap::tool
