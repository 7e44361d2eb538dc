#include "platform/windows/capture_metadata.h"

#include <mfidl.h>
#include <mfobjects.h>

#include "platform/windows/com_ptr.h"

namespace vexcap::windows {

namespace {

// Not in the MinGW headers.
constexpr GUID kWrappedSampleService = {0x31f52bf2, 0xd03e, 0x4048, {0x80, 0xd0, 0x9c, 0x10, 0x46, 0xd8, 0x7c, 0x61}};
constexpr GUID kSampleCaptureMetadata = {0x2ebe23a8, 0xfaf5, 0x444a, {0xa6, 0xa2, 0xeb, 0x81, 0x08, 0x80, 0xab, 0x5d}};
constexpr GUID kFrameIllumination = {0x6d688ffc, 0x63d3, 0x46fe, {0xba, 0xda, 0x5b, 0x94, 0x7d, 0xb0, 0xd0, 0x80}};

// A call that succeeded without producing its object reads as E_POINTER.
template <class T>
HRESULT produced(HRESULT result, const ComPtr<T>& object) {
  return SUCCEEDED(result) && !object ? E_POINTER : result;
}

}  // namespace

platform::IlluminationRead read_illumination_from_sample(IUnknown* frame_reference) {
  platform::IlluminationRead read;
  const auto reference = ComPtr<IUnknown>::copy_from(frame_reference);

  ComPtr<IMFGetService> service;
  read.get_service = produced(reference.query(service), service);
  if (FAILED(read.get_service)) return read;

  ComPtr<IMFSample> sample;
  read.get_sample = produced(
      service->GetService(kWrappedSampleService, __uuidof(IMFSample), sample.put_void()), sample);
  if (FAILED(read.get_sample)) return read;

  ComPtr<IMFAttributes> metadata;
  read.get_capture_metadata = produced(
      sample->GetUnknown(kSampleCaptureMetadata, __uuidof(IMFAttributes), metadata.put_void()),
      metadata);
  if (FAILED(read.get_capture_metadata)) return read;

  UINT64 illumination = 0;
  read.get_illumination = metadata->GetUINT64(kFrameIllumination, &illumination);
  if (SUCCEEDED(read.get_illumination)) read.illumination = illumination;
  return read;
}

}  // namespace vexcap::windows
