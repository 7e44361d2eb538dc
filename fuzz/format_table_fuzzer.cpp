// The format table from any list of supported formats: subtypes known and unknown, any sizes
// and frame rates, either source kind and any open parameters. The table is checked against
// its rules, not recomputed: the deciding pass is the last one that found its subtypes, every
// entry of it is there under its code, and within the pass the first format keeps a code.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fuzz_log.h"
#include "sources/format_table.h"

using namespace vexcap;

namespace {

class Format final : public platform::FrameFormat {
 public:
  std::wstring subtype_text;
  std::uint32_t w = 0, h = 0, numerator = 0, denominator = 0;
  std::wstring major_type() const override { return L"Video"; }
  std::wstring subtype() const override { return subtype_text; }
  std::uint32_t width() const override { return w; }
  std::uint32_t height() const override { return h; }
  std::uint32_t frame_rate_numerator() const override { return numerator; }
  std::uint32_t frame_rate_denominator() const override { return denominator; }
  std::optional<std::wstring> rotation_text() const override { return std::nullopt; }
};

void require(bool condition) {
  if (!condition) std::abort();
}

// The pass each subtype belongs to, last pass winning; -1 for none.
int last_pass_of(const std::wstring& subtype) {
  if (subtype == L"RGB24") return 3;
  if (subtype == L"YUY2") return 2;
  if (subtype == L"NV12") return 1;
  if (subtype == L"GRAY8" || subtype == L"L8") return 0;
  return -1;
}

bool in_pass(int pass, const std::wstring& subtype) {
  return pass == 0 ? last_pass_of(subtype) == 0 || subtype == L"NV12" : last_pass_of(subtype) == pass;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::log_into_nothing();  // the first pass logs every format it sees

  FuzzedDataProvider input(data, size);
  const bool colour = input.ConsumeBool();
  const std::uint16_t arg1 = input.ConsumeIntegral<std::uint16_t>();
  const std::uint16_t arg2 = input.ConsumeIntegral<std::uint16_t>();
  static const wchar_t* const kSubtypes[] = {L"NV12", L"GRAY8", L"L8", L"YUY2", L"RGB24",
                                             L"MJPG", L"nv12", L"RGB32", L"%s%n%ws"};
  static const std::uint32_t kWidths[] = {320, 640, 1280, 1920, 3840, 0, 639, 641};
  static const std::uint32_t kRates[] = {1, 5, 10, 15, 20, 25, 30, 60, 0, 29};

  std::vector<std::shared_ptr<platform::FrameFormat>> formats;
  while (input.remaining_bytes() > 0 && formats.size() < 64) {
    auto format = std::make_shared<Format>();
    const int kind = input.ConsumeIntegralInRange<int>(0, 9);
    if (kind < 9) {
      format->subtype_text = kSubtypes[kind];
    } else {
      const std::string raw = input.ConsumeRandomLengthString(12);
      format->subtype_text.assign(raw.begin(), raw.end());
    }
    const bool from_list = input.ConsumeBool();
    format->w = from_list ? input.PickValueInArray(kWidths) : input.ConsumeIntegral<std::uint32_t>();
    format->h = input.ConsumeBool() ? (format->w == 1280 ? 720u : format->w * 3 / 4)
                                    : input.ConsumeIntegral<std::uint32_t>();
    if (input.ConsumeBool()) {  // the open parameters' size
      format->w = arg1;
      format->h = arg2;
    }
    format->numerator = input.ConsumeBool() ? input.PickValueInArray(kRates)
                                            : input.ConsumeIntegral<std::uint32_t>();
    format->denominator = input.ConsumeIntegral<std::uint32_t>();
    formats.push_back(std::move(format));
  }

  const sources::FormatTable table = sources::collect_format_table(formats, colour, arg1, arg2);

  auto code_of = [&](std::size_t i) {
    const platform::FrameFormat& f = *formats[i];
    return sources::format_code(colour, f.width(), f.height(), f.frame_rate_numerator(), arg1, arg2);
  };
  // The deciding pass: the last one that accepted a format.
  int deciding = -1;
  for (int pass = 0; pass < 4; ++pass)
    for (std::size_t i = 0; i < formats.size(); ++i)
      if (in_pass(pass, formats[i]->subtype()) && code_of(i)) deciding = pass;
  require((deciding < 0) == table.empty());

  std::set<std::uint32_t> codes_seen;
  for (std::size_t i = 0; i < formats.size(); ++i) {
    const auto code = code_of(i);
    if (code) require(colour ? (*code >= 11 && *code <= 20) : *code <= 9);
    if (deciding < 0 || !code || !in_pass(deciding, formats[i]->subtype())) continue;
    const auto entry = table.find(*code);
    require(entry != table.end());
    if (codes_seen.insert(*code).second) {  // the first format of the pass with this code
      require(entry->second.position == i);
      require(entry->second.subtype == formats[i]->subtype());
    }
  }
  require(codes_seen.size() == table.size());
  return 0;
}
