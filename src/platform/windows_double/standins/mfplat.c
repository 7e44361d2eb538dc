/* mfplat.dll of a Windows double prefix: start-up and attribute stores, from the double. */
#include <windows.h>

#include "double_module.h"

typedef HRESULT(WINAPI* StartupFunction)(ULONG, DWORD);
typedef HRESULT(WINAPI* ShutdownFunction)(void);
typedef HRESULT(WINAPI* CreateAttributesFunction)(void**, UINT32);

__declspec(dllexport) HRESULT WINAPI MFStartup(ULONG version, DWORD flags) {
    StartupFunction function = (StartupFunction)(void (*)(void))double_function("MFStartup");
    return function ? function(version, flags) : E_NOTIMPL;
}

__declspec(dllexport) HRESULT WINAPI MFShutdown(void) {
    ShutdownFunction function = (ShutdownFunction)(void (*)(void))double_function("MFShutdown");
    return function ? function() : E_NOTIMPL;
}

__declspec(dllexport) HRESULT WINAPI MFCreateAttributes(void** attributes, UINT32 size) {
    CreateAttributesFunction function = (CreateAttributesFunction)(void (*)(void))double_function("MFCreateAttributes");
    return function ? function(attributes, size) : E_NOTIMPL;
}
