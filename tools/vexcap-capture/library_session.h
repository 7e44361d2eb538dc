// The library's handles as owned objects: started library, open camera, running stream. Each
// constructor throws CallError naming the call that failed; each destructor undoes its call.
#pragma once

#include <cstdint>
#include <string>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

class Library {
 public:
  Library();   // vexcap_init
  ~Library();  // vexcap_exit
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

class OpenCamera {
 public:
  OpenCamera(const std::wstring& camera_id, const vexcap_open_params& params);
  ~OpenCamera();  // vexcap_device_close
  OpenCamera(const OpenCamera&) = delete;
  OpenCamera& operator=(const OpenCamera&) = delete;

  vexcap_device* handle() const { return device_; }
  int close();  // vexcap_device_close now, for a caller that reports its result

 private:
  vexcap_device* device_ = nullptr;
  bool open_ = true;
};

class Streaming {
 public:
  Streaming(vexcap_device* device, vexcap_frame_callback callback, void* context,
            std::uint32_t selector);
  ~Streaming();  // stops a stream still running, ignoring the result
  Streaming(const Streaming&) = delete;
  Streaming& operator=(const Streaming&) = delete;

  void stop();  // vexcap_stop_streaming_ex; throws CallError

 private:
  vexcap_device* device_;
  std::uint32_t selector_;
  bool running_ = true;
};

}  // namespace vexcap::tool
