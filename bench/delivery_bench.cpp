// The library's own work per delivered frame, on the virtual camera: a capture client with a
// running stream gets frames from a reader that hands out frames the camera made beforehand,
// so the camera's pattern generation stays out of the measurement. Hot: one frame over and
// over, and the host gives every record straight back, so the next record's block is the one
// just written. Cold: frames rotated through more bytes than the last-level cache holds, and
// the host keeps the last records it got, giving back the oldest as a new one comes, so the
// next record's block was last written that many frames before. Next to it: the one copy
// delivery must make, of the same bytes into blocks kept the same way, and the round trip of
// a request through an export.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "buffers.h"
#include "capture/capture_client.h"
#include "capture/frame_delivery.h"
#include "frames/simd/pixel_kernels.h"
#include "platform/virtual/frame.h"
#include "platform/virtual/virtual_camera.h"
#include "vexcap/vexcap.h"

namespace vexcap::bench {
namespace {

namespace vc = virtual_camera;

// Hands out ready-made frames in turn; nothing else of a reader is used.
class ReplayReader : public platform::FrameReader {
 public:
  explicit ReplayReader(std::vector<vc::FrameContents> frames) : frames_(std::move(frames)) {}
  platform::EventToken add_frame_arrived(FrameArrivedHandler) override { return 1; }
  void remove_frame_arrived(platform::EventToken) override {}
  platform::ReaderStartStatus start() override { return platform::ReaderStartStatus::Success; }
  void stop() override {}
  void close() override {}
  void set_acquisition_mode(platform::AcquisitionMode) override {}
  std::shared_ptr<platform::Frame> try_acquire_latest_frame() override {
    vc::FrameContents contents = frames_[at_];
    at_ = (at_ + 1) % frames_.size();
    contents.time = time_ += 333333;
    return std::make_shared<vc::VirtualFrame>(std::move(contents));
  }

 private:
  std::vector<vc::FrameContents> frames_;
  std::size_t at_ = 0;
  std::int64_t time_ = 10'000'000;
};

// Records the cold host keeps: below the library's cap of records out per stream.
constexpr std::size_t kHeldRecords = 48;

std::size_t held_for(Cache cache) { return cache == Cache::Hot ? 0 : kHeldRecords; }

// Blocks a host holds, the oldest given back once more than `keep` are held.
template <class Block, class GiveBack>
class HeldBlocks {
 public:
  HeldBlocks(std::size_t keep, GiveBack give_back) : keep_(keep), give_back_(give_back) {}
  ~HeldBlocks() {
    for (Block* block : held_) give_back_(block);
  }
  void take(Block* block) {
    held_.push_back(block);
    while (held_.size() > keep_) {
      give_back_(held_.front());
      held_.pop_front();
    }
  }

 private:
  std::size_t keep_;
  GiveBack give_back_;
  std::deque<Block*> held_;
};

void return_record(vexcap_frame* frame) { vexcap_return_frame(frame); }
using HeldRecords = HeldBlocks<vexcap_frame, void (*)(vexcap_frame*)>;

bool take_record(vexcap_frame* frame, void* host) {
  static_cast<HeldRecords*>(host)->take(frame);
  return true;
}

struct Stream {
  std::wstring subtype;
  std::uint32_t width, height;
  std::optional<std::int32_t> rotation;
  std::size_t source;  // 0 infrared, 1 colour
};

std::string stream_name(const Stream& s) {
  std::string name(s.subtype.begin(), s.subtype.end());
  name += "_" + std::to_string(s.width) + "x" + std::to_string(s.height);
  name += "_rot" + std::to_string(s.rotation.value_or(0));
  return name;
}

std::size_t frame_bytes(const Stream& s) {
  const std::size_t pixels = std::size_t{s.width} * s.height;
  if (s.subtype == L"RGB24") return pixels * 3;
  if (s.subtype == L"NV12") return pixels * 3 / 2;
  return pixels;
}

vc::FormatModel format_of(const Stream& stream) {
  vc::FormatModel format;
  format.subtype = stream.subtype;
  format.width = stream.width;
  format.height = stream.height;
  format.rotation = stream.rotation;
  return format;
}

// The frames a run hands out: one when hot; when cold, as many as fill the arena's bytes.
std::vector<vc::FrameContents> camera_frames(const vc::FormatModel& format, const Stream& stream,
                                             Cache cache) {
  const std::size_t count =
      cache == Cache::Hot ? 1 : std::max<std::size_t>(2, kArenaBytes / frame_bytes(stream));
  std::vector<vc::FrameContents> frames;
  for (std::size_t n = 0; n < count; ++n)
    frames.push_back(vc::make_frame_contents(format, std::nullopt, n, 0, vc::IlluminationMetadata::AlwaysOn,
                                             vc::FrameLayoutModel{}, false));
  return frames;
}

void deliver(benchmark::State& state, const Stream& stream, Cache cache) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Manual;
  vc::SourceModel& source = scenario.groups.at(0).sources.at(stream.source);
  const vc::FormatModel format = format_of(stream);
  source.formats = {format};
  source.current_format = 0;
  vc::use_scenario(scenario);

  const std::uint32_t kind = stream.source == 0 ? 1 : 0;
  HeldRecords host(held_for(cache), &return_record);
  std::shared_ptr<capture::CaptureClient> client = capture::CaptureClient::create(platform::current(), kind);
  if (client->initialize(*scenario.groups.at(0).id, kind, std::uint16_t(stream.width),
                         std::uint16_t(stream.height)) != HR_OK ||
      client->start_streaming(&take_record, &host) != HR_OK) {
    state.SkipWithError("the virtual camera did not stream");
    return;
  }
  ReplayReader reader(camera_frames(format, stream, cache));

  for (auto _ : state)
    benchmark::DoNotOptimize(capture::deliver_newest_frame(client->frame_stream(), reader));
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  client->clear();
  client.reset();
  vc::reset();
}

// The copy every delivered frame makes: the bytes of the same camera frames, locked as delivery
// locks them, copied with memcpy into blocks from malloc that are held as the host holds
// records. Records come from malloc too, since hosts give them back to be freed with free():
// the blocks sit where the C heap puts them (16 bytes past a 64-byte line, for these sizes).
void free_block(std::uint8_t* block) { std::free(block); }

void mandatory_copy(benchmark::State& state, const Stream& stream, Cache cache) {
  const std::vector<vc::FrameContents> frames = camera_frames(format_of(stream), stream, cache);
  HeldBlocks<std::uint8_t, void (*)(std::uint8_t*)> host(held_for(cache), &free_block);
  std::size_t at = 0;
  for (auto _ : state) {
    const std::unique_ptr<platform::LockedBitmap> locked = frames[at].bitmap->lock_for_read();
    at = (at + 1) % frames.size();
    auto* copy = static_cast<std::uint8_t*>(std::malloc(locked->capacity()));
    std::memcpy(copy, locked->data(), locked->capacity());
    benchmark::DoNotOptimize(copy);
    host.take(copy);
  }
}

// One request through an export to the request thread and back, on an open device.
void request_round_trip(benchmark::State& state) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Manual;
  vc::use_scenario(scenario);
  vexcap_device* device = nullptr;
  const vexcap_open_params params{1, 640, 480};
  if (vexcap_init() != 0 ||
      vexcap_device_open(&device, scenario.groups.at(0).id->c_str(), &params) != 0) {
    state.SkipWithError("the library did not open the virtual camera");
    vexcap_exit();
    return;
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(vexcap_unregister_for_unsupported_format_status_event(device));
  vexcap_device_close(device);
  vexcap_exit();
  vc::reset();
}

}  // namespace

void register_delivery_benchmarks() {
  const Stream streams[] = {{L"L8", 640, 480, std::nullopt, 0},  {L"L8", 640, 480, 90, 0},
                            {L"L8", 640, 480, 180, 0},           {L"NV12", 1920, 1080, std::nullopt, 0},
                            {L"NV12", 1920, 1080, 90, 0},        {L"RGB24", 640, 480, std::nullopt, 1},
                            {L"RGB24", 1920, 1080, std::nullopt, 1}};
  for (const Stream& stream : streams) {
    for (Cache cache : {Cache::Hot, Cache::Cold}) {
      const std::string name = "deliver/" + stream_name(stream) + "/" + cache_name(cache);
      benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        deliver(state, stream, cache);
      })->UseRealTime()->Unit(benchmark::kMicrosecond);
    }
  }
  for (const Stream& stream : {streams[0], streams[3]}) {
    for (Cache cache : {Cache::Hot, Cache::Cold}) {
      const std::string name = "deliver_copy/" + stream_name(stream) + "/" + cache_name(cache);
      benchmark::RegisterBenchmark(name.c_str(),
                                   [=](benchmark::State& state) { mandatory_copy(state, stream, cache); })
          ->UseRealTime()
          ->Unit(benchmark::kMicrosecond);
    }
  }
  benchmark::RegisterBenchmark("request/round_trip", request_round_trip)
      ->UseRealTime()->Unit(benchmark::kMicrosecond);
}

}  // namespace vexcap::bench
