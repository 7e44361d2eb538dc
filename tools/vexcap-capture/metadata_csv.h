// The per-frame metadata file: one row per frame the tool received, written through an
// OutputFile so that it is complete (committed) or absent.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "output_file.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {

class MetadataCsv {
 public:
  explicit MetadataCsv(const std::filesystem::path& path);  // writes the header row
  // `png` is the file name written for this frame, empty when none was.
  void add_row(std::uint64_t index, const vexcap_frame& frame, const std::string& png);
  void commit() { file_.commit(); }

 private:
  OutputFile file_;
};

}  // namespace vexcap::tool
