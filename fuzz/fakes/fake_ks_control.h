// A kernel-streaming control that reads the request bytes, answers per (set, id, flags, node)
// and records every request. Thread-safe: the RGB-status notifier polls it.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <tuple>
#include <vector>

#include "platform/port.h"

namespace vexcap::testing {

struct KsRequest {
  platform::Guid set;
  std::uint32_t id = 0;
  std::uint32_t flags = 0;
  std::uint32_t node = 0;  // bytes 24..27: NodeId, or StreamIndex for a plain KSPROPERTY
  std::vector<std::uint8_t> request;
  std::vector<std::uint8_t> data;  // the data buffer as handed in
};

struct KsReply {
  hresult result = 0;
  std::vector<std::uint8_t> data;       // copied to the front of the data buffer
  std::optional<std::uint32_t> returned;  // bytes reported; default: data.size()
};

class FakeKsControl final : public platform::KsControl {
 public:
  // Requests nobody answers fail the way drivers fail unknown properties.
  static constexpr hresult kUnknown = hr(0x80070490);

  void answer(const platform::Guid& set, std::uint32_t id, std::uint32_t flags,
              std::uint32_t node, KsReply reply) {
    std::lock_guard<std::mutex> guard(mutex_);
    replies_[key(set, id, flags, node)] = std::move(reply);
  }

  std::vector<KsRequest> requests() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return requests_;
  }
  void clear() {
    std::lock_guard<std::mutex> guard(mutex_);
    requests_.clear();
  }

  hresult property(const std::uint8_t* request, std::uint32_t request_size, std::uint8_t* data,
                   std::uint32_t data_size, std::uint32_t* bytes_returned) override {
    KsRequest seen;
    seen.request.assign(request, request + request_size);
    seen.data.assign(data, data + data_size);
    std::memcpy(&seen.set.data1, request, 4);  // the tests run on little-endian machines
    std::memcpy(&seen.set.data2, request + 4, 2);
    std::memcpy(&seen.set.data3, request + 6, 2);
    std::memcpy(seen.set.data4, request + 8, 8);
    std::memcpy(&seen.id, request + 16, 4);
    std::memcpy(&seen.flags, request + 20, 4);
    if (request_size >= 28) std::memcpy(&seen.node, request + 24, 4);

    std::lock_guard<std::mutex> guard(mutex_);
    requests_.push_back(seen);
    auto found = replies_.find(key(seen.set, seen.id, seen.flags, seen.node));
    if (found == replies_.end()) {
      *bytes_returned = 0;
      return kUnknown;
    }
    const KsReply& reply = found->second;
    const std::size_t copied = std::min<std::size_t>(reply.data.size(), data_size);
    if (copied > 0) std::memcpy(data, reply.data.data(), copied);
    *bytes_returned = reply.returned.value_or(static_cast<std::uint32_t>(copied));
    return reply.result;
  }

 private:
  using Key = std::tuple<std::vector<std::uint8_t>, std::uint32_t, std::uint32_t, std::uint32_t>;
  static Key key(const platform::Guid& set, std::uint32_t id, std::uint32_t flags,
                 std::uint32_t node) {
    std::vector<std::uint8_t> guid(16);
    std::memcpy(guid.data(), &set.data1, 4);
    std::memcpy(guid.data() + 4, &set.data2, 2);
    std::memcpy(guid.data() + 6, &set.data3, 2);
    std::memcpy(guid.data() + 8, set.data4, 8);
    return {guid, id, flags, node};
  }

  mutable std::mutex mutex_;
  std::map<Key, KsReply> replies_;
  std::vector<KsRequest> requests_;
};

}  // namespace vexcap::testing
