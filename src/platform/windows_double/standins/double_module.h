/* The stand-ins for mfplat.dll and mf.dll in a Windows double prefix: each export finds the
 * double that combase loads for the prefix's runtime classes (the DllPath of MediaCapture's
 * registration) and calls the function of the same name there, so one process has one camera
 * model whichever way the library reaches it. */
#ifndef VEXCAP_DOUBLE_MODULE_H
#define VEXCAP_DOUBLE_MODULE_H

#include <windows.h>

/* The double's export `name`; NULL (after a line on stderr) when the double cannot be found. */
FARPROC double_function(const char* name);

#endif
