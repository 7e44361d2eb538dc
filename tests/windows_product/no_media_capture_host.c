/* A C host of the product DLL on a system that has Media Foundation but no
 * Windows.Media.Capture runtime classes (Wine): start-up and exit succeed, and every request
 * that needs the capture runtime gives its documented failure, leaving the host's memory as
 * it was, without crashing, hanging or leaking. Never opens a device: with no camera, open
 * retries by design. */
#include <windows.h>

#include <tlhelp32.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vexcap/vexcap.h"

static int failures = 0;

#define CHECK(cond)                                                    \
    do {                                                               \
        if (!(cond)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                \
        }                                                              \
    } while (0)

#define UNTOUCHED 0xA5u

static volatile LONG callbacks_seen = 0;

static int on_added(const wchar_t* id, const wchar_t* name, void* context,
                    vexcap_device_subscription* subscription) {
    (void)id, (void)name, (void)context, (void)subscription;
    InterlockedIncrement(&callbacks_seen);
    return 0;
}

static int on_removed_or_updated(const wchar_t* id, void* context,
                                 vexcap_device_subscription* subscription) {
    (void)id, (void)context, (void)subscription;
    InterlockedIncrement(&callbacks_seen);
    return 0;
}

static int all_bytes_are(const uint8_t* bytes, size_t count, uint8_t value) {
    size_t i;
    for (i = 0; i < count; ++i)
        if (bytes[i] != value) return 0;
    return 1;
}

/* Each query enumerates the source groups; the failed enumeration answers -1 and writes
 * nothing. */
static void query_devices(void) {
    uint8_t capabilities[VEXCAP_CAPABILITY_COUNT];
    uint8_t locations[VEXCAP_PANEL_COUNT];
    uint32_t type = 0xA5A5A5A5u, panel = 0xA5A5A5A5u;

    memset(capabilities, UNTOUCHED, sizeof capabilities);
    memset(locations, UNTOUCHED, sizeof locations);
    CHECK(vexcap_get_device_capabilities(L"USB#VID_1234&PID_5678#1", capabilities) == VEXCAP_E_FAIL);
    CHECK(all_bytes_are(capabilities, sizeof capabilities, UNTOUCHED));
    CHECK(vexcap_get_device_locations(L"vid_1234", locations) == VEXCAP_E_FAIL);
    CHECK(all_bytes_are(locations, sizeof locations, UNTOUCHED));
    CHECK(vexcap_get_source_group_type(&type) == VEXCAP_E_FAIL);
    CHECK(type == 0xA5A5A5A5u);
    CHECK(vexcap_get_source_group_type_for_vid_pid(L"VID_1234", L"PID_5678", &type) == VEXCAP_E_FAIL);
    CHECK(type == 0xA5A5A5A5u);
    CHECK(vexcap_get_targeted_location(&panel) == VEXCAP_E_FAIL);
    CHECK(panel == 0xA5A5A5A5u);
    CHECK(vexcap_is_vidpid_used_by_device(L"USB#VID_1234&PID_5678#1", L"VID_1234", L"PID_5678") == 0);
}

/* The watcher cannot be built: registration fails and hands out no subscription. */
static void watch_devices(void) {
    vexcap_device_callbacks callbacks = {on_added, on_removed_or_updated, on_removed_or_updated};
    vexcap_device_subscription* subscription = NULL;
    int context = 0;

    CHECK(vexcap_regiester_for_device_callbacks(&subscription, &callbacks, &context) == VEXCAP_E_FAIL);
    CHECK(subscription == NULL);
    CHECK(vexcap_regiester_for_device_callbacks(NULL, &callbacks, &context) == VEXCAP_E_INVALID_ARG);
    CHECK(vexcap_unregiester_device_callbacks(NULL) == VEXCAP_E_INVALID_ARG);
}

/* ---- What the process holds ----------------------------------------------------------- */

/* Bytes in use on every heap of the process: what a leaked COM object, string or C++ object
 * leaves behind. */
static SIZE_T heap_bytes_in_use(void) {
    HANDLE heaps[64];
    DWORD count = GetProcessHeaps(64, heaps), i;
    SIZE_T total = 0;
    if (count > 64) count = 64;
    for (i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry;
        entry.lpData = NULL;
        if (!HeapLock(heaps[i])) continue;
        while (HeapWalk(heaps[i], &entry))
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) total += entry.cbData;
        HeapUnlock(heaps[i]);
    }
    return total;
}

/* The system's handle table (SystemHandleInformation): GetProcessHandleCount answers 0 under
 * Wine. */
typedef struct {
    ULONG process_id;
    BYTE object_type;
    BYTE flags;
    USHORT handle;
    PVOID object;
    ACCESS_MASK access;
} HandleEntry;
typedef struct {
    ULONG count;
    HandleEntry entries[1];
} HandleTable;
typedef LONG(WINAPI* QuerySystemInformation)(ULONG, PVOID, ULONG, PULONG);

static long handles_open(void) {
    QuerySystemInformation query = (QuerySystemInformation)(void (*)(void))GetProcAddress(
        GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation");
    ULONG size = 1u << 20, i;
    HandleTable* table = NULL;
    long count = -1;
    if (query == NULL) return -1;
    for (; size <= (1u << 26); size *= 2) {
        LONG status;
        table = (HandleTable*)malloc(size);
        if (table == NULL) return -1;
        status = query(16, table, size, NULL);
        if (status == 0) break;
        free(table);
        table = NULL;
        if (status != (LONG)0xC0000004L) return -1; /* anything but "length mismatch" */
    }
    if (table == NULL) return -1;
    count = 0;
    for (i = 0; i < table->count; ++i)
        if (table->entries[i].process_id == GetCurrentProcessId()) ++count;
    free(table);
    return count;
}

static int threads_running(void) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry;
    int count = 0;
    if (snapshot == INVALID_HANDLE_VALUE) return -1;
    entry.dwSize = sizeof entry;
    if (Thread32First(snapshot, &entry)) {
        do {
            if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
        } while (Thread32Next(snapshot, &entry));
    }
    CloseHandle(snapshot);
    return count;
}

typedef struct {
    SIZE_T heap_bytes;
    long handles;
    int threads;
} Holdings;

/* Worker threads of Media Foundation end a moment after MFShutdown returns. */
static Holdings holdings(void) {
    Holdings now;
    int threads = threads_running(), polls;
    for (polls = 0; polls < 50; ++polls) {
        int again;
        Sleep(20);
        again = threads_running();
        if (again == threads) break;
        threads = again;
    }
    now.heap_bytes = heap_bytes_in_use();
    now.handles = handles_open();
    now.threads = threads_running();
    return now;
}

/* Wine's Media Foundation keeps a little memory for every MFStartup / MFShutdown pair; what
 * it keeps is measured here so that the library is charged only for its own. */
static SIZE_T media_foundation_bytes_per_startup(int pairs) {
    typedef HRESULT(WINAPI * Startup)(ULONG, DWORD);
    typedef HRESULT(WINAPI * Shutdown)(void);
    const ULONG mf_version = 0x00020070; /* MF_VERSION */
    HMODULE mfplat = LoadLibraryW(L"mfplat.dll");
    Startup startup = (Startup)(void (*)(void))GetProcAddress(mfplat, "MFStartup");
    Shutdown shutdown = (Shutdown)(void (*)(void))GetProcAddress(mfplat, "MFShutdown");
    SIZE_T before = 0, after;
    int i;
    CHECK(startup != NULL && shutdown != NULL);
    if (startup == NULL || shutdown == NULL) return 0;
    for (i = 0; i <= pairs; ++i) {
        if (i == 1) before = holdings().heap_bytes; /* after a first pair that sets up */
        CHECK(startup(mf_version, 0) == S_OK);
        CHECK(shutdown() == S_OK);
    }
    after = holdings().heap_bytes;
    FreeLibrary(mfplat);
    return after > before ? (after - before) / (SIZE_T)pairs : 0;
}

static void print_change(const char* what, Holdings before, Holdings after) {
    printf("%s: heap bytes %lu -> %lu, handles %ld -> %ld, threads %d -> %d\n", what,
           (unsigned long)before.heap_bytes, (unsigned long)after.heap_bytes, before.handles,
           after.handles, before.threads, after.threads);
}

/* ---- The checks ------------------------------------------------------------------------- */

static void requests_hold_nothing(void) {
    enum { kRounds = 100 };
    Holdings before, after;
    int i;

    CHECK(vexcap_init() == VEXCAP_OK);
    query_devices();
    watch_devices();
    before = holdings();
    for (i = 0; i < kRounds; ++i) {
        query_devices();
        watch_devices();
    }
    after = holdings();
    CHECK(vexcap_exit() == VEXCAP_OK);

    print_change("requests", before, after);
    /* 900 failed calls: a leak of even one byte each shows. */
    CHECK(after.heap_bytes <= before.heap_bytes + 512);
    CHECK(after.handles == before.handles);
    CHECK(after.threads == before.threads);
}

enum { kSessions = 20 };

static void sessions_hold_nothing(SIZE_T kept_by_media_foundation) {
    Holdings before, after;
    int i;

    before = holdings();
    for (i = 0; i < kSessions; ++i) {
        CHECK(vexcap_init() == VEXCAP_OK);
        query_devices();
        watch_devices();
        CHECK(vexcap_exit() == VEXCAP_OK);
    }
    after = holdings();

    print_change("sessions", before, after);
    printf("Media Foundation keeps %lu bytes per start-up\n", (unsigned long)kept_by_media_foundation);
    CHECK(after.heap_bytes <= before.heap_bytes + kSessions * (kept_by_media_foundation + 64));
    CHECK(after.handles == before.handles);
    CHECK(after.threads == before.threads);
}

int main(void) {
    uint32_t type = 7;
    SIZE_T kept_by_media_foundation;

    /* Before vexcap_init there is no request thread to ask. */
    CHECK(vexcap_get_source_group_type(&type) == VEXCAP_E_INVALID_STATE);
    CHECK(type == 7);

    kept_by_media_foundation = media_foundation_bytes_per_startup(kSessions);

    /* The first session loads what the system keeps for the process's lifetime. */
    CHECK(vexcap_init() == VEXCAP_OK);
    query_devices();
    watch_devices();
    CHECK(vexcap_exit() == VEXCAP_OK);

    requests_hold_nothing();
    sessions_hold_nothing(kept_by_media_foundation);
    CHECK(callbacks_seen == 0);

    printf("%s\n", failures ? "FAILED" : "passed");
    return failures ? EXIT_FAILURE : EXIT_SUCCESS;
}
