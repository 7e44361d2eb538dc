/* mf.dll of a Windows double prefix: the capture devices, from the double. */
#include <windows.h>

#include "double_module.h"

typedef HRESULT(WINAPI* EnumFunction)(void*, void***, UINT32*);
typedef HRESULT(WINAPI* CreateFunction)(void*, void**);

__declspec(dllexport) HRESULT WINAPI MFEnumDeviceSources(void* attributes, void*** activates, UINT32* count) {
    EnumFunction function = (EnumFunction)(void (*)(void))double_function("MFEnumDeviceSources");
    return function ? function(attributes, activates, count) : E_NOTIMPL;
}

__declspec(dllexport) HRESULT WINAPI MFCreateDeviceSource(void* attributes, void** source) {
    CreateFunction function = (CreateFunction)(void (*)(void))double_function("MFCreateDeviceSource");
    return function ? function(attributes, source) : E_NOTIMPL;
}
