#include "sources/format_table.h"

#include <initializer_list>

#include "log/log.h"

namespace vexcap::sources {

namespace {

// Frame-rate numerators in the order of their codes: 1, 5, 10, 15, 20, 25, 30 fps.
constexpr std::uint32_t kRates[] = {1, 5, 10, 15, 20, 25, 30};

std::optional<std::uint32_t> code_by_rate(std::uint32_t numerator, std::uint32_t code_at_1fps) {
  for (std::uint32_t i = 0; i < 7; ++i)
    if (kRates[i] == numerator) return code_at_1fps - i;
  return std::nullopt;
}

std::optional<std::uint32_t> colour_code(std::uint32_t width, std::uint32_t height, std::uint32_t numerator,
                                         std::uint16_t arg1, std::uint16_t arg2) {
  if (width == arg1 && height == arg2) return code_by_rate(numerator, 17);
  if (numerator != 30) return std::nullopt;
  if (width == 1920) return 18;
  if (width == 1280 && height == 720) return 19;
  if (width == 3840) return 20;
  return std::nullopt;
}

std::optional<std::uint32_t> infrared_code(std::uint32_t width, std::uint32_t numerator) {
  if (width == 640) return code_by_rate(numerator, 8);
  if (width == 320 && numerator == 60) return 1;
  if (width < 640 && numerator == 30) return 0;
  if (width < 640 && numerator == 60) return 9;
  return std::nullopt;
}

void log_format(int counter, const platform::FrameFormat& format) {
  VXLOG('D', "counter= %d", counter);
  VXLOG('D', "major type= %ws", format.major_type().c_str());
  VXLOG('D', "sub type= %ws", format.subtype().c_str());
  VXLOG('D', "height= %u", format.height());
  VXLOG('D', "width= %u", format.width());
  VXLOG('D', "**************************************\n");
}

FormatTable run_pass(const std::vector<std::shared_ptr<platform::FrameFormat>>& formats,
                     std::initializer_list<const wchar_t*> subtypes, bool log_each, bool colour,
                     std::uint16_t arg1, std::uint16_t arg2) {
  FormatTable table;
  int counter = 0;
  for (std::uint32_t position = 0; position < formats.size(); ++position) {
    const platform::FrameFormat& format = *formats[position];
    if (log_each) log_format(counter, format);
    ++counter;
    const std::wstring subtype = format.subtype();
    bool wanted = false;
    for (const wchar_t* name : subtypes) wanted = wanted || subtype == name;
    if (!wanted) continue;
    const auto code =
        format_code(colour, format.width(), format.height(), format.frame_rate_numerator(), arg1, arg2);
    if (code) table.emplace(*code, FormatEntry{subtype, position});
  }
  return table;
}

}  // namespace

std::optional<std::uint32_t> format_code(bool colour, std::uint32_t width, std::uint32_t height,
                                         std::uint32_t frame_rate_numerator, std::uint16_t preferred_width,
                                         std::uint16_t preferred_height) {
  return colour ? colour_code(width, height, frame_rate_numerator, preferred_width, preferred_height)
                : infrared_code(width, frame_rate_numerator);
}

FormatTable collect_format_table(const std::vector<std::shared_ptr<platform::FrameFormat>>& formats,
                                 bool colour, std::uint16_t arg1, std::uint16_t arg2) {
  FormatTable table = run_pass(formats, {L"NV12", L"GRAY8", L"L8"}, true, colour, arg1, arg2);
  for (const wchar_t* subtype : {L"NV12", L"YUY2", L"RGB24"}) {
    FormatTable pass = run_pass(formats, {subtype}, false, colour, arg1, arg2);
    // An empty pass keeps what the earlier ones found (see the header for why).
    if (!pass.empty()) table = std::move(pass);
  }
  return table;
}

bool table_has_subtype(const FormatTable& table, const std::wstring& subtype) {
  for (const auto& [code, entry] : table)
    if (entry.subtype == subtype) return true;
  return false;
}

}  // namespace vexcap::sources
