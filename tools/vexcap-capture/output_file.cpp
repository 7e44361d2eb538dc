#include "output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

#include "tool_error.h"

namespace vexcap::tool {
namespace {

// The files being written right now, for a process that must end without unwinding.
struct Unfinished {
  std::mutex mutex;
  std::vector<std::string> paths;
};

Unfinished& unfinished() {
  static Unfinished files;
  return files;
}

void track(const std::filesystem::path& part) {
  std::lock_guard<std::mutex> lock(unfinished().mutex);
  unfinished().paths.push_back(part.string());
}

void untrack(const std::filesystem::path& part) {
  std::lock_guard<std::mutex> lock(unfinished().mutex);
  auto& paths = unfinished().paths;
  paths.erase(std::remove(paths.begin(), paths.end(), part.string()), paths.end());
}

std::string system_text(int error) { return std::strerror(error); }

}  // namespace

OutputFile::OutputFile(std::filesystem::path path)
    : path_(std::move(path)), part_path_(path_.string() + ".part") {
  track(part_path_);
  stream_ = std::fopen(part_path_.string().c_str(), "wb");
  if (stream_ == nullptr) {
    const int error = errno;
    untrack(part_path_);
    throw ToolError("cannot create " + part_path_.string() + ": " + system_text(error));
  }
}

OutputFile::~OutputFile() {
  if (stream_ != nullptr || !part_path_.empty()) discard();
}

void OutputFile::write(const void* bytes, std::size_t size) {
  if (size == 0 || std::fwrite(bytes, 1, size, stream_) == size) return;
  const int error = errno;
  discard();
  throw ToolError("cannot write " + path_.string() + ": " + system_text(error));
}

void OutputFile::commit() {
  errno = 0;
  const bool flushed = std::fflush(stream_) == 0 && !std::ferror(stream_);
  int write_error = errno;
  const bool closed = std::fclose(stream_) == 0;
  if (write_error == 0) write_error = errno;
  stream_ = nullptr;
  if (!flushed || !closed) {
    discard();
    throw ToolError("cannot write " + path_.string() + ": " + system_text(write_error));
  }
  std::error_code error;
  std::filesystem::rename(part_path_, path_, error);
  if (error) {
    discard();
    throw ToolError("cannot rename " + part_path_.string() + " to " + path_.string() + ": " +
                    error.message());
  }
  untrack(part_path_);
  part_path_.clear();
}

void OutputFile::discard() {
  if (stream_ != nullptr) std::fclose(stream_);
  stream_ = nullptr;
  if (part_path_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove(part_path_, ignored);
  untrack(part_path_);
  part_path_.clear();
}

void remove_unfinished_files() {
  // try_lock: the thread that holds the lock may be the one that is stuck.
  std::unique_lock<std::mutex> lock(unfinished().mutex, std::try_to_lock);
  if (!lock.owns_lock()) return;
  for (const std::string& path : unfinished().paths) std::remove(path.c_str());
}

}  // namespace vexcap::tool
