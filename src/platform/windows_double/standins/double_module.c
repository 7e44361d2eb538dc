#include "double_module.h"

#include <stdio.h>

static const wchar_t kRegistration[] =
    L"Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\Windows.Media.Capture.MediaCapture";

FARPROC double_function(const char* name) {
    static HMODULE module = NULL;
    FARPROC function;
    if (module == NULL) {
        wchar_t path[MAX_PATH];
        DWORD size = sizeof path;
        LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kRegistration, L"DllPath", RRF_RT_REG_SZ,
                                      NULL, path, &size);
        if (status != ERROR_SUCCESS) {
            fprintf(stderr, "media foundation stand-in: the double is not registered (%ld)\n", (long)status);
            return NULL;
        }
        /* The same file combase loads: the same module, the same camera. (RRF_RT_REG_SZ also
         * reads an expandable string, expanded.) */
        module = LoadLibraryW(path);
        if (module == NULL) {
            fprintf(stderr, "media foundation stand-in: cannot load the double (%lu)\n", GetLastError());
            return NULL;
        }
    }
    function = GetProcAddress(module, name);
    if (function == NULL) fprintf(stderr, "media foundation stand-in: the double lacks %s\n", name);
    return function;
}
