#include "platform/windows/frame_format.h"

#include <string>

#include "platform/windows/activation.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

// MF_MT_VIDEO_ROTATION
constexpr GUID video_rotation = {0xc380465d, 0x2271, 0x428c, {0x9b, 0x83, 0xec, 0xea, 0x3b, 0x4a, 0x85, 0xc1}};

// A boxed number or string as text, the way the value prints.
std::optional<std::wstring> text_of(const ComPtr<IInspectable>& boxed) {
  auto value = boxed.try_as<abi::IPropertyValue>();
  if (!value) return std::nullopt;
  abi::PropertyType type = abi::PropertyType::Empty;
  check(value->get_Type(&type));
  switch (type) {
    case abi::PropertyType::UInt8:
    case abi::PropertyType::UInt16:
    case abi::PropertyType::UInt32: {
      UINT32 number = 0;
      check(value->GetUInt32(&number));
      return std::to_wstring(number);
    }
    case abi::PropertyType::Int16:
    case abi::PropertyType::Int32: {
      INT32 number = 0;
      check(value->GetInt32(&number));
      return std::to_wstring(number);
    }
    case abi::PropertyType::Int64: {
      INT64 number = 0;
      check(value->GetInt64(&number));
      return std::to_wstring(number);
    }
    case abi::PropertyType::UInt64: {
      UINT64 number = 0;
      check(value->GetUInt64(&number));
      return std::to_wstring(number);
    }
    case abi::PropertyType::String: {
      HString text;
      check(value->GetString(text.put()));
      return text.text();
    }
    default:
      return std::nullopt;
  }
}

ComPtr<abi::IVideoMediaFrameFormat> video_format_of(const ComPtr<abi::IMediaFrameFormat>& format) {
  ComPtr<abi::IVideoMediaFrameFormat> video;
  check(format->get_VideoFormat(video.put()));
  return video;
}

ComPtr<abi::IMediaRatio> frame_rate_of(const ComPtr<abi::IMediaFrameFormat>& format) {
  ComPtr<abi::IMediaRatio> rate;
  check(format->get_FrameRate(rate.put()));
  return rate;
}

}  // namespace

std::wstring WinrtFrameFormat::major_type() const {
  HString text;
  check(format_->get_MajorType(text.put()));
  return text.text();
}

std::wstring WinrtFrameFormat::subtype() const {
  HString text;
  check(format_->get_Subtype(text.put()));
  return text.text();
}

std::uint32_t WinrtFrameFormat::width() const {
  UINT32 value = 0;
  if (auto video = video_format_of(format_)) check(video->get_Width(&value));
  return value;
}

std::uint32_t WinrtFrameFormat::height() const {
  UINT32 value = 0;
  if (auto video = video_format_of(format_)) check(video->get_Height(&value));
  return value;
}

std::uint32_t WinrtFrameFormat::frame_rate_numerator() const {
  UINT32 value = 0;
  if (auto rate = frame_rate_of(format_)) check(rate->get_Numerator(&value));
  return value;
}

std::uint32_t WinrtFrameFormat::frame_rate_denominator() const {
  UINT32 value = 0;
  if (auto rate = frame_rate_of(format_)) check(rate->get_Denominator(&value));
  return value;
}

std::optional<std::wstring> WinrtFrameFormat::rotation_text() const {
  ComPtr<abi::IMapView<GUID, IInspectable>> properties;
  check(format_->get_Properties(properties.put()));
  if (!properties) return std::nullopt;
  boolean present = false;
  check(properties->HasKey(video_rotation, &present));
  if (!present) return std::nullopt;
  ComPtr<IInspectable> value;
  check(properties->Lookup(video_rotation, value.put()));
  return text_of(value);
}

std::shared_ptr<platform::FrameFormat> frame_format_of(ComPtr<abi::IMediaFrameFormat> format) {
  if (!format) return nullptr;
  return std::make_shared<WinrtFrameFormat>(std::move(format));
}

}  // namespace vexcap::windows
