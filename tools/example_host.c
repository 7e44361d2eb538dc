/* The smallest host: start the library, ask which kind of camera group the system has, stop. */
#include <stdint.h>
#include <stdio.h>

#include "vexcap/vexcap.h"

static const char* describe(int code) {
    switch (code) {
        case VEXCAP_OK: return "success";
        case VEXCAP_E_FAIL: return "failed (or not supported by this build)";
        case VEXCAP_E_INVALID_STATE: return "not in a valid state";
        case VEXCAP_E_TIMEOUT: return "timed out";
        case VEXCAP_E_ACCESS_DENIED: return "access denied";
        case VEXCAP_E_INVALID_ARG: return "invalid argument";
        case VEXCAP_E_NO_INTERFACE: return "the camera lacks the interface";
        default: return "unexpected code";
    }
}

static const char* group_type_name(uint32_t type) {
    switch (type) {
        case VEXCAP_GROUP_TYPE_SOFTWARE: return "software device";
        case VEXCAP_GROUP_TYPE_USB: return "USB camera";
        case VEXCAP_GROUP_TYPE_OTHER: return "camera without a bus marker";
        default: return "none";
    }
}

int main(void) {
    uint32_t type = 0;
    int code = vexcap_init();
    printf("vexcap_init: %d (%s)\n", code, describe(code));
    if (code != VEXCAP_OK) return 1;

    code = vexcap_get_source_group_type(&type);
    printf("vexcap_get_source_group_type: %d (%s)", code, describe(code));
    if (code == VEXCAP_OK) printf(", type %u: %s", (unsigned)type, group_type_name(type));
    printf("\n");

    code = vexcap_exit();
    printf("vexcap_exit: %d (%s)\n", code, describe(code));
    return code == VEXCAP_OK ? 0 : 1;
}
