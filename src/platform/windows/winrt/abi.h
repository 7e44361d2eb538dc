// Every ABI declaration of the adapter: the Windows Runtime and the kernel-streaming COM
// interfaces the system headers lack.
#pragma once

#include "platform/windows/winrt/capture_abi.h"
#include "platform/windows/winrt/devices_abi.h"
#include "platform/windows/winrt/enumeration_abi.h"
#include "platform/windows/winrt/foundation_abi.h"
#include "platform/windows/winrt/frames_abi.h"
#include "platform/windows/winrt/imaging_abi.h"
#include "platform/windows/winrt/kernel_streaming_abi.h"
#include "platform/windows/winrt/media_properties_abi.h"
