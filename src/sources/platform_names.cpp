#include "sources/platform_names.h"

namespace vexcap::sources {

using namespace platform;

// Tables of names, one case a line.
// clang-format off
const wchar_t* name_of(SourceKind kind) {
  switch (kind) {
    case SourceKind::Custom: return L"Custom";
    case SourceKind::Color: return L"Color";
    case SourceKind::Infrared: return L"Infrared";
    case SourceKind::Depth: return L"Depth";
    case SourceKind::Audio: return L"Audio";
    case SourceKind::Image: return L"Image";
    case SourceKind::Metadata: return L"Metadata";
  }
  return L"";
}

const wchar_t* name_of(StreamType type) {
  switch (type) {
    case StreamType::VideoPreview: return L"VideoPreview";
    case StreamType::VideoRecord: return L"VideoRecord";
    case StreamType::Audio: return L"Audio";
    case StreamType::Photo: return L"Photo";
    case StreamType::Metadata: return L"Metadata";
  }
  return L"";
}

const wchar_t* name_of(DeviceInformationKind kind) {
  switch (kind) {
    case DeviceInformationKind::Unknown: return L"Unknown";
    case DeviceInformationKind::DeviceInterface: return L"DeviceInterface";
    case DeviceInformationKind::DeviceContainer: return L"DeviceContainer";
    case DeviceInformationKind::Device: return L"Device";
    case DeviceInformationKind::DeviceInterfaceClass: return L"DeviceInterfaceClass";
    case DeviceInformationKind::AssociationEndpoint: return L"AssociationEndpoint";
    case DeviceInformationKind::AssociationEndpointContainer: return L"AssociationEndpointContainer";
    case DeviceInformationKind::AssociationEndpointService: return L"AssociationEndpointService";
    case DeviceInformationKind::DevicePanel: return L"DevicePanel";
  }
  return L"";
}

const wchar_t* name_of(PixelFormat format) {
  switch (format) {
    case PixelFormat::Unknown: return L"Unknown";
    case PixelFormat::Rgba16: return L"Rgba16";
    case PixelFormat::Rgba8: return L"Rgba8";
    case PixelFormat::Gray16: return L"Gray16";
    case PixelFormat::Gray8: return L"Gray8";
    case PixelFormat::Bgra8: return L"Bgra8";
    case PixelFormat::Nv12: return L"Nv12";
    case PixelFormat::P010: return L"P010";
    case PixelFormat::Yuy2: return L"Yuy2";
  }
  return L"";
}

const wchar_t* name_of(GetPropertyStatus status) {
  switch (status) {
    case GetPropertyStatus::Success: return L"Success";
    case GetPropertyStatus::UnknownFailure: return L"UnknownFailure";
    case GetPropertyStatus::NotSupported: return L"NotSupported";
    case GetPropertyStatus::DeviceNotAvailable: return L"DeviceNotAvailable";
    case GetPropertyStatus::MaxPropertyValueSizeTooSmall: return L"MaxPropertyValueSizeTooSmall";
    case GetPropertyStatus::MaxPropertyValueSizeRequired: return L"MaxPropertyValueSizeRequired";
  }
  return L"";
}

const wchar_t* name_of(SetPropertyStatus status) {
  switch (status) {
    case SetPropertyStatus::Success: return L"Success";
    case SetPropertyStatus::UnknownFailure: return L"UnknownFailure";
    case SetPropertyStatus::NotSupported: return L"NotSupported";
    case SetPropertyStatus::InvalidValue: return L"InvalidValue";
    case SetPropertyStatus::DeviceNotAvailable: return L"DeviceNotAvailable";
    case SetPropertyStatus::NotInControl: return L"NotInControl";
  }
  return L"";
}

const wchar_t* name_of(platform::ReaderStartStatus status) {
  using platform::ReaderStartStatus;
  switch (status) {
    case ReaderStartStatus::Success: return L"Success";
    case ReaderStartStatus::UnknownFailure: return L"UnknownFailure";
    case ReaderStartStatus::DeviceNotAvailable: return L"DeviceNotAvailable";
    case ReaderStartStatus::OutputFormatNotSupported: return L"OutputFormatNotSupported";
    case ReaderStartStatus::ExclusiveControlNotAvailable: return L"ExclusiveControlNotAvailable";
  }
  return L"";
}

SourceKind source_kind_for_reader(std::uint32_t reader_kind) {
  switch (reader_kind) {
    case 0: return SourceKind::Color;
    case 1: return SourceKind::Infrared;
    case 2: return SourceKind::Depth;
    default: return SourceKind::Custom;
  }
}

// clang-format on

}  // namespace vexcap::sources
