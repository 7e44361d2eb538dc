// The virtual camera's control functions are exported from the Windows double's DLL, so that a
// Windows test program steers the very camera the double's runtime classes stand on. Elsewhere
// the macro is empty.
#pragma once

#if defined(VEXCAP_BUILDING_WINDOWS_DOUBLE)
#define VEXCAP_VIRTUAL_CAMERA_API __declspec(dllexport)
#elif defined(VEXCAP_USING_WINDOWS_DOUBLE)
#define VEXCAP_VIRTUAL_CAMERA_API __declspec(dllimport)
#else
#define VEXCAP_VIRTUAL_CAMERA_API
#endif
