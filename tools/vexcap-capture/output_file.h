// An output file that is complete or absent: bytes go to "<name>.part", which commit() renames
// to the final name; a file never committed is removed (by its destructor, or by
// remove_unfinished_files when the process has to end at once, which closes it first: Windows
// removes no file that is open).
#pragma once

#include <cstdio>
#include <filesystem>
#include <string_view>

namespace vexcap::tool {

class OutputFile {
 public:
  explicit OutputFile(std::filesystem::path path);  // throws ToolError when it cannot be created
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Throws ToolError naming the file and the system's reason when the bytes cannot be written.
  void write(const void* bytes, std::size_t size);
  void write(std::string_view text) { write(text.data(), text.size()); }
  const std::filesystem::path& path() const { return path_; }
  // Flushes, closes and renames; throws ToolError when any of that fails (the file is removed).
  void commit();

 private:
  friend void remove_unfinished_files();
  void discard();
  void close_and_remove();  // with the tracker's lock held

  std::filesystem::path path_;
  std::filesystem::path part_path_;
  std::FILE* stream_ = nullptr;
};

// Removes every file of this process that is still being written. Safe from a watchdog thread.
void remove_unfinished_files();

}  // namespace vexcap::tool
