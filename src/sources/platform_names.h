// How the platform renders its enumeration values as text, for the log.
#pragma once

#include "platform/port.h"

namespace vexcap::sources {

const wchar_t* name_of(platform::SourceKind kind);
const wchar_t* name_of(platform::StreamType type);
const wchar_t* name_of(platform::DeviceInformationKind kind);
const wchar_t* name_of(platform::PixelFormat format);
const wchar_t* name_of(platform::GetPropertyStatus status);
const wchar_t* name_of(platform::SetPropertyStatus status);
const wchar_t* name_of(platform::ReaderStartStatus status);
inline const wchar_t* name_of(bool value) { return value ? L"true" : L"false"; }

// The frame-source kind a reader kind asks for: 0 Color, 1 Infrared, 2 Depth, else Custom.
platform::SourceKind source_kind_for_reader(std::uint32_t reader_kind);

}  // namespace vexcap::sources
