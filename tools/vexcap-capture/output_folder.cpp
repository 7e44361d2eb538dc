#include "output_folder.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <regex>
#include <vector>

#include "tool_error.h"

namespace vexcap::tool {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> earlier_output(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (is_capture_output(entry->path())) files.push_back(entry->path());
  if (error) throw ToolError("cannot read the output folder " + folder.string() + ": " + error.message());
  return files;
}

// Creating and removing a file is the one test of writing that holds for every file system.
void check_writable(const fs::path& folder) {
  const fs::path probe = folder / ".vexcap-capture-write-test";
  std::FILE* file = std::fopen(probe.string().c_str(), "wb");
  if (file == nullptr) {
    throw ToolError("cannot write in the output folder " + folder.string() + ": " + std::strerror(errno));
  }
  std::fclose(file);
  std::error_code ignored;
  fs::remove(probe, ignored);
}

}  // namespace

bool is_capture_output(const fs::path& file) {
  static const std::regex names(R"((frame-[0-9]{6}\.png|frames\.csv)(\.part)?)");
  return std::regex_match(file.filename().string(), names);
}

fs::path prepare_output_folder(const std::string& out, bool overwrite) {
  const fs::path folder(out);
  std::error_code error;
  if (fs::exists(folder, error) && !fs::is_directory(folder, error))
    throw ToolError("the output folder " + out + " is a file");
  fs::create_directories(folder, error);
  if (error) throw ToolError("cannot create the output folder " + out + ": " + error.message());
  check_writable(folder);

  const std::vector<fs::path> earlier = earlier_output(folder);
  if (earlier.empty()) return folder;
  if (!overwrite) {
    throw ToolError("the output folder " + out + " holds an earlier capture (" + std::to_string(earlier.size()) +
                    " file" + (earlier.size() == 1 ? "" : "s") + " such as " + earlier.front().filename().string() +
                    ") that the new frames.csv would not list: choose another folder, or give --overwrite "
                    "to remove them");
  }
  for (const fs::path& file : earlier) {
    fs::remove(file, error);
    if (error) throw ToolError("cannot remove " + file.string() + ": " + error.message());
  }
  return folder;
}

}  // namespace vexcap::tool
