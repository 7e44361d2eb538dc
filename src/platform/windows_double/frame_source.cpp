#include "platform/windows_double/frame_source.h"

#include <string>

#include "platform/windows_double/async_operation.h"
#include "platform/windows_double/collections.h"
#include "platform/windows_double/hstrings.h"
#include "platform/windows_double/property_value.h"
#include "platform/windows_double/source_group.h"
#include "platform/windows_double/typed_controls.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

// MF_MT_VIDEO_ROTATION
constexpr GUID kVideoRotation = {0xc380465d, 0x2271, 0x428c, {0x9b, 0x83, 0xec, 0xea, 0x3b, 0x4a, 0x85, 0xc1}};

class MediaRatio final : public Object<MediaRatio, Threading::Agile, abi::UnmodelledIMediaRatio<MediaRatio>> {
 public:
  MediaRatio(UINT32 numerator, UINT32 denominator)
      : Object("Windows.Media.MediaProperties.MediaRatio"), numerator_(numerator), denominator_(denominator) {}
  HRESULT STDMETHODCALLTYPE get_Numerator(UINT32* value) override {
    DOUBLE_ENTER("get_Numerator");
    return give(value, numerator_);
  }
  HRESULT STDMETHODCALLTYPE get_Denominator(UINT32* value) override {
    DOUBLE_ENTER("get_Denominator");
    return give(value, denominator_);
  }

 private:
  const UINT32 numerator_, denominator_;
};

class VideoFormat final
    : public Object<VideoFormat, Threading::Agile, abi::UnmodelledIVideoMediaFrameFormat<VideoFormat>> {
 public:
  VideoFormat(UINT32 width, UINT32 height)
      : Object("Windows.Media.Capture.Frames.VideoMediaFrameFormat"), width_(width), height_(height) {}
  HRESULT STDMETHODCALLTYPE get_Width(UINT32* value) override {
    DOUBLE_ENTER("get_Width");
    return give(value, width_);
  }
  HRESULT STDMETHODCALLTYPE get_Height(UINT32* value) override {
    DOUBLE_ENTER("get_Height");
    return give(value, height_);
  }

 private:
  const UINT32 width_, height_;
};

class GetPropertyResult final
    : public Object<GetPropertyResult, Threading::Agile, abi::UnmodelledIMediaFrameSourceGetPropertyResult<GetPropertyResult>> {
 public:
  explicit GetPropertyResult(platform::GetPropertyResult result)
      : Object("Windows.Media.Capture.Frames.MediaFrameSourceGetPropertyResult"), result_(std::move(result)) {}
  HRESULT STDMETHODCALLTYPE get_Status(abi::MediaFrameSourceGetPropertyStatus* value) override {
    DOUBLE_ENTER("get_Status");
    return give(value, static_cast<abi::MediaFrameSourceGetPropertyStatus>(result_.status));
  }
  HRESULT STDMETHODCALLTYPE get_Value(IInspectable** value) override {
    DOUBLE_ENTER("get_Value");
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    if (!result_.value) return S_OK;
    if (result_.value->bytes)
      return hand_out(make<BoxedBytes>(*result_.value->bytes), reinterpret_cast<abi::IPropertyValue**>(value));
    return hand_out(make<BoxedInt32>(0), reinterpret_cast<abi::IPropertyValue**>(value));
  }

 private:
  const platform::GetPropertyResult result_;
};

class SourceController final
    : public Object<SourceController, Threading::Agile, abi::UnmodelledIMediaFrameSourceController<SourceController>,
                    abi::UnmodelledIMediaFrameSourceController2<SourceController>> {
 public:
  explicit SourceController(std::shared_ptr<platform::SourceController> controller)
      : Object("Windows.Media.Capture.Frames.MediaFrameSourceController"), controller_(std::move(controller)) {}

  HRESULT STDMETHODCALLTYPE get_VideoDeviceController(abi::IVideoDeviceController** value) override {
    DOUBLE_ENTER("get_VideoDeviceController");
    return hand_out(make<VideoDeviceController>(controller_), value);
  }
  HRESULT STDMETHODCALLTYPE GetPropertyByExtendedIdAsync(
      UINT32 id_length, BYTE* id, abi::IReference<UINT32>* max_size,
      abi::IAsyncOperation<abi::MediaFrameSourceGetPropertyResult>** operation) override {
    DOUBLE_ENTER("GetPropertyByExtendedIdAsync");
    if (operation == nullptr || (id == nullptr && id_length != 0)) return E_POINTER;
    std::optional<std::uint32_t> size;
    if (HRESULT read = read_boxed_uint32(max_size, size); FAILED(read)) return read;
    std::vector<std::uint8_t> key(id, id + id_length);
    *operation = AsyncOperation<abi::MediaFrameSourceGetPropertyResult>::start(
        "MediaFrameSourceController::GetPropertyByExtendedIdAsync", [controller = controller_, key, size] {
          return object_outcome<abi::IMediaFrameSourceGetPropertyResult>(
              make<GetPropertyResult>(controller->get_property_by_extended_id(key, size)));
        });
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetPropertyByExtendedIdAsync(
      UINT32 id_length, BYTE* id, UINT32 value_length, BYTE* value,
      abi::IAsyncOperation<abi::MediaFrameSourceSetPropertyStatus>** operation) override {
    DOUBLE_ENTER("SetPropertyByExtendedIdAsync");
    if (operation == nullptr || (id == nullptr && id_length != 0) || (value == nullptr && value_length != 0))
      return E_POINTER;
    std::vector<std::uint8_t> key(id, id + id_length), bytes(value, value + value_length);
    *operation = AsyncOperation<abi::MediaFrameSourceSetPropertyStatus>::start(
        "MediaFrameSourceController::SetPropertyByExtendedIdAsync", [controller = controller_, key, bytes] {
          return value_outcome(static_cast<abi::MediaFrameSourceSetPropertyStatus>(
              controller->set_property_by_extended_id(key, bytes)));
        });
    return S_OK;
  }

 private:
  void retire() override { controller_.reset(); }
  std::shared_ptr<platform::SourceController> controller_;
};

}  // namespace

HRESULT FrameFormat::get_MajorType(HSTRING* value) {
  DOUBLE_ENTER("get_MajorType");
  return hand_out_string(format_->major_type(), value);
}

HRESULT FrameFormat::get_Subtype(HSTRING* value) {
  DOUBLE_ENTER("get_Subtype");
  return hand_out_string(format_->subtype(), value);
}

HRESULT FrameFormat::get_FrameRate(abi::IMediaRatio** value) {
  DOUBLE_ENTER("get_FrameRate");
  return hand_out(make<MediaRatio>(format_->frame_rate_numerator(), format_->frame_rate_denominator()), value);
}

HRESULT FrameFormat::get_Properties(abi::IMapView<GUID, IInspectable>** value) {
  DOUBLE_ENTER("get_Properties");
  std::vector<MapEntry<GUID, IInspectable>> entries;
  if (auto rotation = format_->rotation_text()) {
    const INT32 degrees = std::stoi(*rotation);
    entries.push_back({[](GUID key) { return key == kVideoRotation; }, value_element(kVideoRotation),
                       [degrees](IInspectable** out) {
                         return hand_out(make<BoxedInt32>(degrees), reinterpret_cast<abi::IPropertyValue**>(out));
                       }});
  }
  return hand_out(make<MapView<GUID, IInspectable>>(std::move(entries)), value);
}

HRESULT FrameFormat::get_VideoFormat(abi::IVideoMediaFrameFormat** value) {
  DOUBLE_ENTER("get_VideoFormat");
  return hand_out(make<VideoFormat>(format_->width(), format_->height()), value);
}

HRESULT FrameSource::get_Info(abi::IMediaFrameSourceInfo** value) {
  DOUBLE_ENTER("get_Info");
  platform::SourceInfo info;
  if (HRESULT result = port_call([&] { info = source_->info(); }); FAILED(result)) return result;
  return hand_out(make<SourceInfo>(std::move(info)), value);
}

HRESULT FrameSource::get_Controller(abi::IMediaFrameSourceController** value) {
  DOUBLE_ENTER("get_Controller");
  std::shared_ptr<platform::SourceController> controller;
  if (HRESULT result = port_call([&] { controller = source_->controller(); }); FAILED(result)) return result;
  return hand_out(make<SourceController>(std::move(controller)), value);
}

HRESULT FrameSource::get_SupportedFormats(abi::IVectorView<abi::MediaFrameFormat>** value) {
  DOUBLE_ENTER("get_SupportedFormats");
  std::vector<std::shared_ptr<platform::FrameFormat>> formats;
  if (HRESULT result = port_call([&] { formats = source_->supported_formats(); }); FAILED(result)) return result;
  std::vector<Element<abi::IMediaFrameFormat*>> elements;
  for (auto& format : formats) elements.push_back(object_element<abi::IMediaFrameFormat>(make<FrameFormat>(format)));
  return hand_out(make<VectorView<abi::MediaFrameFormat>>(std::move(elements)), value);
}

HRESULT FrameSource::get_CurrentFormat(abi::IMediaFrameFormat** value) {
  DOUBLE_ENTER("get_CurrentFormat");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  std::shared_ptr<platform::FrameFormat> format;
  if (HRESULT result = port_call([&] { format = source_->current_format(); }); FAILED(result)) return result;
  if (!format) return S_OK;
  return hand_out(make<FrameFormat>(std::move(format)), value);
}

HRESULT FrameSource::SetFormatAsync(abi::IMediaFrameFormat* format, abi::IAsyncAction** value) {
  DOUBLE_ENTER("SetFormatAsync");
  if (value == nullptr) return E_POINTER;
  auto* own = dynamic_cast<FrameFormat*>(format);
  if (own == nullptr) {
    record_violation("MediaFrameSource::SetFormatAsync with a format that is not one of the source's");
    return E_INVALIDARG;
  }
  *value = AsyncAction::start("MediaFrameSource::SetFormatAsync",
                              [source = source_, port_format = own->port()] { source->set_format(port_format); });
  return S_OK;
}

}  // namespace vexcap::windows_double
