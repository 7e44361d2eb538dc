/* A host written in C99: the public header compiles as C, its layouts hold, and the library
 * answers through it, including the C++-named vexcap_get_led_power. */
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include "vexcap/vexcap.h"

static int failures = 0;

#define CHECK(cond)                                               \
    do {                                                          \
        if (!(cond)) {                                            \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                           \
        }                                                         \
    } while (0)

int main(void) {
    unsigned int power = 0;
    vexcap_device device = {0, 0, 0};

    CHECK(sizeof(vexcap_frame) == 64);
    CHECK(offsetof(vexcap_frame, timestamp) == 40);
    CHECK(offsetof(vexcap_frame, pixel_format) == 52);
    CHECK(sizeof(vexcap_device) == 12);
    CHECK(sizeof(vexcap_open_params) == 8);
    CHECK(sizeof(vexcap_property) == 8);

    CHECK(vexcap_exit() == VEXCAP_OK);
    CHECK(vexcap_return_frame(NULL) == VEXCAP_E_INVALID_ARG);
    CHECK(vexcap_init() == VEXCAP_OK);
    CHECK(vexcap_get_led_power(NULL, &power) == VEXCAP_E_INVALID_ARG);
    CHECK(vexcap_is_vidpid_used_by_device(NULL, L"v", L"p") == 0);
    CHECK(vexcap_device_close(NULL) == VEXCAP_E_INVALID_ARG);
    (void)device;
    CHECK(vexcap_exit() == VEXCAP_OK);

    printf("%d passed, %d failed\n", failures ? 0 : 1, failures ? 1 : 0);
    return failures ? EXIT_FAILURE : EXIT_SUCCESS;
}
