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
  std::vector<OutputFile*> files;
};

Unfinished& unfinished() {
  static Unfinished files;
  return files;
}

std::string system_text(int error) { return std::strerror(error); }

}  // namespace

OutputFile::OutputFile(std::filesystem::path path)
    : path_(std::move(path)), part_path_(path_.string() + ".part") {
  stream_ = std::fopen(part_path_.string().c_str(), "wb");
  if (stream_ == nullptr) {
    throw ToolError("cannot create " + part_path_.string() + ": " + system_text(errno));
  }
  std::lock_guard<std::mutex> lock(unfinished().mutex);
  unfinished().files.push_back(this);
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::write(const void* bytes, std::size_t size) {
  if (size == 0 || (stream_ != nullptr && std::fwrite(bytes, 1, size, stream_) == size)) return;
  const int error = stream_ != nullptr ? errno : EBADF;
  discard();
  throw ToolError("cannot write " + path_.string() + ": " + system_text(error));
}

void OutputFile::commit() {
  std::unique_lock<std::mutex> lock(unfinished().mutex);
  if (stream_ == nullptr) throw ToolError("cannot write " + path_.string() + ": the file was closed");
  errno = 0;
  const bool flushed = std::fflush(stream_) == 0 && !std::ferror(stream_);
  int write_error = errno;
  const bool closed = std::fclose(stream_) == 0;
  if (write_error == 0) write_error = errno;
  stream_ = nullptr;
  std::error_code error;
  if (flushed && closed) std::filesystem::rename(part_path_, path_, error);
  if (!flushed || !closed || error) {
    close_and_remove();
    lock.unlock();
    throw ToolError(error ? "cannot rename " + part_path_.string() + " to " + path_.string() + ": " + error.message()
                          : "cannot write " + path_.string() + ": " + system_text(write_error));
  }
  part_path_.clear();
  auto& files = unfinished().files;
  files.erase(std::remove(files.begin(), files.end(), this), files.end());
}

void OutputFile::discard() {
  std::lock_guard<std::mutex> lock(unfinished().mutex);
  close_and_remove();
}

void OutputFile::close_and_remove() {
  if (stream_ != nullptr) std::fclose(stream_);
  stream_ = nullptr;
  if (!part_path_.empty()) {
    std::error_code ignored;
    std::filesystem::remove(part_path_, ignored);
    part_path_.clear();
  }
  auto& files = unfinished().files;
  files.erase(std::remove(files.begin(), files.end(), this), files.end());
}

void remove_unfinished_files() {
  // try_lock: the thread that holds the lock may be the one that is stuck.
  std::unique_lock<std::mutex> lock(unfinished().mutex, std::try_to_lock);
  if (!lock.owns_lock()) return;
  const std::vector<OutputFile*> files = unfinished().files;
  for (OutputFile* file : files) file->close_and_remove();
}

}  // namespace vexcap::tool
