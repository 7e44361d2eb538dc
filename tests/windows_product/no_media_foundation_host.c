/* A C host of the product DLL on a system without Media Foundation (mfplat.dll and mf.dll
 * disabled for this run, as on a Windows N edition): the DLL loads, vexcap_init answers a
 * failure instead of the loader refusing the program, and the library can be tried again. */
#include <stdio.h>

#include "vexcap/vexcap.h"

int main(void) {
    int failures = 0, i;
    for (i = 0; i < 3; ++i) {
        const int started = vexcap_init();
        if (started != VEXCAP_E_FAIL) {
            fprintf(stderr, "vexcap_init answered %d without Media Foundation\n", started);
            ++failures;
        }
        vexcap_exit();
    }
    if (!failures) printf("without Media Foundation: the DLL loads, vexcap_init fails\n");
    return failures ? 1 : 0;
}
