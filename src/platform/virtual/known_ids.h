// Identifiers and results the virtual camera speaks: the platform's published values.
#pragma once

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::virtual_camera::ids {

using platform::Guid;

// Media Foundation device-source attributes.
inline constexpr Guid kSourceType{0xC60AC5FE, 0x252A, 0x478F, {0xA0, 0xEF, 0xBC, 0x8F, 0xA5, 0xF7, 0xCA, 0xD3}};
inline constexpr Guid kSourceTypeVidcap{0x8AC3587A, 0x4AE7, 0x42D8, {0x99, 0xE0, 0x0A, 0x60, 0x13, 0xEE, 0xF9, 0x0F}};
inline constexpr Guid kVidcapCategory{0x77F0AE69, 0xC3BD, 0x4509, {0x94, 0x1D, 0x46, 0x7E, 0x4D, 0x24, 0x89, 0x9E}};
inline constexpr Guid kVidcapSymbolicLink{0x58F0AAD8, 0x22BF, 0x4F8A, {0xBB, 0x3D, 0xD2, 0xC4, 0x97, 0x8C, 0x6E, 0x2F}};

// Device-interface categories.
inline constexpr Guid kCategorySensorCamera{0x24E552D7, 0x6523, 0x47F7, {0xA6, 0x47, 0xD3, 0x46, 0x5B, 0xF1, 0xF5, 0xCA}};
inline constexpr Guid kCategoryVideoCamera{0xE5323777, 0xF976, 0x4F5B, {0x9B, 0x55, 0xB9, 0x46, 0x99, 0xC4, 0x6E, 0x44}};

// Kernel-streaming topology node types.
inline constexpr Guid kNodeVideoProcessing{0xDFF229E5, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
inline constexpr Guid kNodeCameraTerminal{0xDFF229E6, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
inline constexpr Guid kNodeDevSpecific{0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};

// Kernel-streaming property sets.
inline constexpr Guid kVideoProcAmp{0xC6E13360, 0x30AC, 0x11D0, {0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56}};
inline constexpr Guid kVideoControl{0x6A2E0670, 0x28E4, 0x11D0, {0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56}};
inline constexpr Guid kCameraControl{0xC6E13370, 0x30AC, 0x11D0, {0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56}};
inline constexpr Guid kExtendedCameraControl{0x1CB79112, 0xC0D2, 0x4213, {0x9C, 0xA6, 0xCD, 0x4F, 0xDB, 0x92, 0x79, 0x72}};
// The camera's two vendor extension units.
inline constexpr Guid kPrimaryUnit{
    0x26B8105A, 0x0713, 0x4870, {0x97, 0x9D, 0xDA, 0x79, 0x44, 0x4B, 0xB6, 0x8E}};
inline constexpr Guid kAlternativeUnit{
    0x63610682, 0x5070, 0x49AB, {0xB8, 0xCC, 0xB3, 0x85, 0x5E, 0x8D, 0x22, 0x1D}};

inline constexpr std::uint32_t kPropGet = 0x00000001;
inline constexpr std::uint32_t kPropSet = 0x00000002;
inline constexpr std::uint32_t kPropTopology = 0x10000000;

inline constexpr std::uint32_t kProcAmpGain = 9;
inline constexpr std::uint32_t kVideoControlMode = 3;
inline constexpr std::uint32_t kCameraControlLlc = 19;       // AUTO_EXPOSURE_PRIORITY
inline constexpr std::uint32_t kExtendedFaceAuthMode = 35;
inline constexpr std::uint32_t kUnitInfo = 0;                // KSPROPERTY_EXTENSION_UNIT_INFO
inline constexpr std::uint32_t kPrimaryLedPower = 14;
inline constexpr std::uint32_t kPrimaryRgbStatus = 15;
inline constexpr std::uint32_t kPrimaryControl18 = 18;
inline constexpr std::uint32_t kAlternativeRgbStatus = 20;

// Results the platform gives in the situations the virtual camera models.
inline constexpr hresult kClosed = hr(0x80000013);                 // RO_E_CLOSED
inline constexpr hresult kIllegalMethodCall = hr(0x8000000E);      // E_ILLEGAL_METHOD_CALL
inline constexpr hresult kFileNotFound = hr(0x80070002);           // no such symbolic link
inline constexpr hresult kMoreData = hr(0x800700EA);               // ERROR_MORE_DATA
inline constexpr hresult kInsufficientBuffer = hr(0x8007007A);     // ERROR_INSUFFICIENT_BUFFER
inline constexpr hresult kShutdown = hr(0xC00D3E85);               // MF_E_SHUTDOWN
inline constexpr hresult kUnsupportedService = hr(0xC00D36BA);     // MF_E_UNSUPPORTED_SERVICE
inline constexpr hresult kAttributeNotFound = hr(0xC00D36E6);      // MF_E_ATTRIBUTENOTFOUND
inline constexpr hresult kHardwareInUse = hr(0xC00D3704);          // MF_E_HW_MFT_FAILED_START_STREAMING
inline constexpr hresult kDeviceInvalidated = hr(0xC00D3EA2);      // MF_E_VIDEO_RECORDING_DEVICE_INVALIDATED
inline constexpr hresult kPreempted = hr(0xC00D3EA3);              // MF_E_VIDEO_RECORDING_DEVICE_PREEMPTED

}  // namespace vexcap::virtual_camera::ids
