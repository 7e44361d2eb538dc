"""Which cameras the system has: the device callbacks (every present camera is reported at
once on registration, then arrivals, removals and updates) and the discovery queries."""
import ctypes
import dataclasses
import re
import threading
import time

from . import _contexts, _native, _runtime
from ._callbacks import run_callback
from .errors import check

# Reader kinds (the open parameters' stream mode) by name.
READERS = {"colour": 0, "color": 0, "infrared": 1, "depth": 2}
READER_NAMES = {0: "colour", 1: "infrared", 2: "depth"}
# vexcap_get_device_capabilities: one byte per source kind, in this order.
SOURCE_KINDS = ("colour", "infrared", "depth", "other")
GROUP_TYPES = {1: "software", 2: "usb", 3: "other"}
PANELS = ("unknown", "front", "back", "top", "bottom", "left", "right")

_VID_PID = re.compile(r"(VID_[0-9A-F]{4})&(PID_[0-9A-F]{4})", re.IGNORECASE)

# Present cameras are reported at once on registration; a real system may take a moment.
_QUIET_AFTER_LAST = 0.25


@dataclasses.dataclass(frozen=True)
class CameraInfo:
    """A camera as discovery describes it. `id` is what `vexcap.open` takes."""

    id: str
    name: str
    sources: tuple  # source kinds: "infrared", "colour", "depth", "other"
    group_type: object  # "usb", "software", "other" or None
    vid: object  # "VID_F00D" or None
    pid: object  # "PID_CAFE" or None
    locations: tuple  # enclosure panels: "front", "back", ..., "unknown"


def capabilities(camera_id):
    """The source kinds of the group whose id is exactly `camera_id`; None when there is none."""
    flags = (ctypes.c_uint8 * len(SOURCE_KINDS))()
    if _runtime.started_library().vexcap_get_device_capabilities(camera_id, flags) != 0:
        return None
    shown = ("infrared", "colour", "depth", "other")
    return tuple(kind for kind in shown if flags[SOURCE_KINDS.index(kind)] == 1)


def locations(id_text):
    """The panels of the sources whose device id contains `id_text` (any case); () for none."""
    flags = (ctypes.c_uint8 * len(PANELS))()
    if _runtime.started_library().vexcap_get_device_locations(id_text, flags) != 0:
        return ()
    return tuple(panel for index, panel in enumerate(PANELS) if flags[index] == 1)


def source_group_type():
    """"usb", "software" or "other" for the system's source groups; None when there is none."""
    value = ctypes.c_uint32()
    if _runtime.started_library().vexcap_get_source_group_type(ctypes.byref(value)) != 0:
        return None
    return GROUP_TYPES.get(value.value)


def source_group_type_for_vid_pid(vid, pid):
    """The type of the group with a source whose id holds both texts; None when there is none."""
    value = ctypes.c_uint32()
    lib = _runtime.started_library()
    if lib.vexcap_get_source_group_type_for_vid_pid(vid, pid, ctypes.byref(value)) != 0:
        return None
    return GROUP_TYPES.get(value.value)


def targeted_location():
    """The panel of the first colour or infrared source that reports one; None when none does."""
    panel = ctypes.c_uint32(len(PANELS))
    lib = _runtime.started_library()
    check("vexcap_get_targeted_location", lib.vexcap_get_targeted_location(ctypes.byref(panel)))
    return PANELS[panel.value] if panel.value < len(PANELS) else None


def vid_pid_used(camera_id, vid, pid):
    """Whether the group `camera_id` has a source whose id holds both texts."""
    return _runtime.started_library().vexcap_is_vidpid_used_by_device(camera_id, vid, pid) == 1


def vid_pid_of(camera_id):
    """("VID_F00D", "PID_CAFE") of a USB instance path; (None, None) when it has none."""
    match = _VID_PID.search(camera_id)
    return (match.group(1), match.group(2)) if match else (None, None)


def describe(camera_id, name=""):
    """A CameraInfo for the camera `camera_id`, from the discovery queries."""
    vid, pid = vid_pid_of(camera_id)
    group_type = source_group_type_for_vid_pid(vid, pid) if vid else None
    # Sources report locations under their own ids, which share the VID/PID text with the group.
    return CameraInfo(
        id=camera_id,
        name=name,
        sources=capabilities(camera_id) or (),
        group_type=group_type,
        vid=vid,
        pid=pid,
        locations=locations(f"{vid}&{pid}" if vid else camera_id),
    )


class DeviceWatch:
    """A device-callbacks registration: `added(id, name)`, `removed(id)` and `updated(id)` run
    on the library's watcher thread until `close()`. Cameras present when it starts are
    reported as added at once."""

    def __init__(self, added=None, removed=None, updated=None):
        lib = _runtime.started_library()
        self._callbacks = {"added": added, "removed": removed, "updated": updated}
        self._key = _contexts.enter(self)
        self._subscription = ctypes.c_void_p()
        try:
            check(
                "vexcap_regiester_for_device_callbacks",
                lib.vexcap_regiester_for_device_callbacks(
                    ctypes.byref(self._subscription), ctypes.byref(_DEVICE_CALLBACKS), self._key
                ),
            )
        except BaseException:
            _contexts.leave(self._key)
            raise
        _runtime.hold(self)

    def close(self):
        """Ends the registration; no callback runs after this returns (except from inside one)."""
        subscription, self._subscription = self._subscription, None
        if subscription is None:
            return
        try:
            code = _native.library().vexcap_unregiester_device_callbacks(subscription)
            check("vexcap_unregiester_device_callbacks", code)
        finally:
            _contexts.leave(self._key)
            _runtime.let_go(self)

    def _report(self, kind, *args):
        callback = self._callbacks[kind]
        if callback is not None:
            run_callback(callback, args, f"the device-{kind} callback")

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __repr__(self):
        return f"<DeviceWatch {'open' if self._subscription is not None else 'closed'}>"


def _watch_of(context):
    return _contexts.lookup(context)


def _on_added(camera_id, name, context, _subscription):
    watch = _watch_of(context)
    if watch is not None:
        watch._report("added", camera_id or "", name or "")
    return 0


def _on_removed(camera_id, context, _subscription):
    watch = _watch_of(context)
    if watch is not None:
        watch._report("removed", camera_id or "")
    return 0


def _on_updated(camera_id, context, _subscription):
    watch = _watch_of(context)
    if watch is not None:
        watch._report("updated", camera_id or "")
    return 0


# One record for every registration, alive as long as the module: the library may call these
# until an unregistration has returned.
_ADDED = _native.DEVICE_ADDED_CALLBACK(_on_added)
_REMOVED = _native.DEVICE_REMOVED_CALLBACK(_on_removed)
_UPDATED = _native.DEVICE_UPDATED_CALLBACK(_on_updated)
_DEVICE_CALLBACKS = _native.DeviceCallbacks(_ADDED, _REMOVED, _UPDATED)


def watch(added=None, removed=None, updated=None):
    """Starts a DeviceWatch (use it with `with`, or close it)."""
    return DeviceWatch(added, removed, updated)


def cameras(wait=1.5):
    """The cameras present, in the order the library reports them, each described.

    Waits up to `wait` seconds for the first report, then until none came for a quarter second.
    """
    arrived = []
    changed = threading.Condition()

    def added(camera_id, name):
        with changed:
            arrived.append((camera_id, name))
            changed.notify_all()

    deadline = time.monotonic() + wait
    with watch(added=added):
        with changed:
            changed.wait_for(lambda: arrived, timeout=wait)
            seen = -1
            while arrived and len(arrived) != seen and time.monotonic() < deadline:
                seen = len(arrived)
                changed.wait_for(lambda: len(arrived) > seen, timeout=_QUIET_AFTER_LAST)
            found = list(arrived)
    return [describe(camera_id, name) for camera_id, name in found]
