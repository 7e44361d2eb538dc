"""An open camera: frames through a queue, the controls, the device properties and the device
events."""
import ctypes
import threading

from . import _contexts, _native, _runtime, discovery
from . import properties as props
from ._callbacks import inside_callback, report_exception
from ._device_handle import DeviceHandle
from ._events import EVENTS
from ._stream import FRAME_CALLBACK, FrameQueue
from .errors import CameraNotFoundError, InvalidStateError, check

STREAM_SELECT_EXCLUSIVE = 1

# The library keeps one device reading colour (stream mode 0) and one reading any other kind;
# a second open of a slot would leave the first device running but unreachable.
_slots_lock = threading.Lock()
_slots = {}
_log_wanted = None


def log(on=True):
    """Switches the library's diagnostic log (lines on standard output) on or off for the whole
    process. The library takes the switch through an open camera; with none open, the next
    camera opened applies it."""
    global _log_wanted
    _log_wanted = bool(on)
    with _slots_lock:
        open_now = list(_slots.values())
    for camera in open_now:
        if not camera.closed:
            camera.set_property(props.DIAGNOSTIC_LOG, _log_wanted)
            return


def _reader_mode(reader):
    if isinstance(reader, str):
        try:
            return discovery.READERS[reader]
        except KeyError:
            raise ValueError(f"reader {reader!r} is none of {', '.join(discovery.READERS)}") from None
    return int(reader)


def open(camera=None, reader="infrared", shared=True, *, size=(640, 480), queue_size=4, copy=False):
    """Opens a camera: `camera` is a CameraInfo, an id, or None for the first camera present.

    reader: "infrared", "colour" (or "color"), "depth", or the stream mode as a number.
    shared: stream from the library's shared read-only client (True) or its exclusive one.
    size: the colour size the format codes 11 to 17 refer to.
    queue_size: frames waiting for `read`; when full the oldest is dropped (and counted).
    copy: False hands out frames that view the library's records in place (the record goes
    back when the frame and its arrays are released); True copies each frame's pixels on
    arrival and gives the record back at once.
    """
    mode = _reader_mode(reader)
    if camera is None:
        present = discovery.cameras()
        if not present:
            raise CameraNotFoundError("no camera found (the library's device callbacks reported none)")
        camera = present[0]
    if isinstance(camera, discovery.CameraInfo):
        camera_id, name = camera.id, camera.name
    else:
        camera_id, name = str(camera), ""
    # Opening an id no camera has, or a source kind the camera lacks, would retry for ever.
    kinds = discovery.capabilities(camera_id)
    if kinds is None:
        raise CameraNotFoundError(
            f"no camera has the id {camera_id!r} (vexcap.cameras() lists those present)",
            code=-1,
            call="vexcap_get_device_capabilities",
        )
    wanted = discovery.SOURCE_KINDS[min(mode, len(discovery.SOURCE_KINDS) - 1)]
    if wanted not in kinds:
        has = ", ".join(kinds) or "none"
        raise CameraNotFoundError(f"the camera {camera_id!r} has no {wanted} source (it has: {has})")
    return Camera(camera_id, name, mode, shared, size, queue_size, copy)


class Camera:
    """An open camera; use `vexcap.open`. Close it (or use `with`): a camera left open is
    closed at interpreter exit."""

    def __init__(self, camera_id, name, mode, shared, size, queue_size, copy):
        self.id = camera_id
        self.name = name
        self.reader = discovery.READER_NAMES.get(mode, str(mode))
        self.shared = bool(shared)
        self._slot = 0 if mode == 0 else 1
        self._queue = FrameQueue(queue_size, copy)
        with _slots_lock:
            if self._slot in _slots:
                raise InvalidStateError(
                    f"{_slots[self._slot]!r} is open: the library keeps one camera reading colour and one "
                    "reading any other kind; close it first"
                )
            _slots[self._slot] = self
        try:
            handle = ctypes.c_void_p()
            params = _native.OpenParams(mode, size[0], size[1])
            code = _runtime.started_library().vexcap_device_open(
                ctypes.byref(handle), camera_id, ctypes.byref(params)
            )
            check("vexcap_device_open", code)
        except BaseException:
            self._leave_slot()
            raise
        self._handle = DeviceHandle(handle.value)
        self._queue_key = _contexts.enter(self._queue)
        self._event_key = _contexts.enter(self)
        self._event_callbacks = {}
        self._settings = {}  # write-only settings as last set through this camera
        self._stream_lock = threading.Lock()
        self._streaming = False
        _runtime.hold(self)
        if _log_wanted is not None:
            try:
                self.set_property(props.DIAGNOSTIC_LOG, _log_wanted)
            except BaseException:
                self.close()
                raise

    # ---- lifetime ---------------------------------------------------------------------------

    @property
    def closed(self):
        """True once `close` has begun."""
        return self._handle.closed

    def close(self):
        """Stops the stream and closes the device. From inside one of the library's callbacks
        the close completes right after the callback returns, on a thread of its own."""
        if not self._handle.begin_closing():
            return
        if inside_callback():
            threading.Thread(target=self._close_reporting, name="vexcap-close").start()
            return
        self._finish_close()

    def _close_reporting(self):
        try:
            self._finish_close()
        except BaseException:  # no caller to raise to on this thread
            report_exception(f"closing {self!r}")

    def _finish_close(self):
        device = self._handle.wait_unused()
        lib = _native.library()
        try:
            with self._stream_lock:
                streaming, self._streaming = self._streaming, False
            if streaming:
                self._stop_call(lib, device)  # the close would end the stream anyway
            code = lib.vexcap_device_close(device)
        finally:
            self._queue.close()
            _contexts.leave(self._queue_key)
            _contexts.leave(self._event_key)
            self._event_callbacks.clear()
            self._leave_slot()
            _runtime.let_go(self)
        check("vexcap_device_close", code)

    def _leave_slot(self):
        with _slots_lock:
            if _slots.get(self._slot) is self:
                del _slots[self._slot]

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __repr__(self):
        state = "closed" if self.closed else "open"
        stream = "shared" if self.shared else "exclusive"
        return f"<Camera {self.name or self.id!r} {self.reader} {stream}, {state}>"

    def _call(self, function, *args):
        with self._handle.use() as device:
            code = getattr(_native.library(), function)(device, *args)
        check(function, code)

    # ---- frames -----------------------------------------------------------------------------

    def start(self):
        """Starts the stream (`read` and `frames` start it themselves)."""
        with self._stream_lock:
            if self._streaming:
                return
            if self.shared:
                self._call("vexcap_start_streaming", FRAME_CALLBACK, self._queue_key)
            else:
                self._call(
                    "vexcap_start_streaming_ex", FRAME_CALLBACK, self._queue_key, STREAM_SELECT_EXCLUSIVE
                )
            self._streaming = True

    def stop(self):
        """Stops the stream and gives back the frames still queued."""
        with self._stream_lock:
            if not self._streaming:
                return
            self._streaming = False
            with self._handle.use() as device:
                function, code = self._stop_call(_native.library(), device)
            self._queue.clear()
        check(function, code)

    def _stop_call(self, lib, device):
        if self.shared:
            return "vexcap_stop_streaming", lib.vexcap_stop_streaming(device)
        return "vexcap_stop_streaming_ex", lib.vexcap_stop_streaming_ex(device, STREAM_SELECT_EXCLUSIVE)

    @property
    def streaming(self):
        return self._streaming

    def read(self, timeout=5.0):
        """The next frame, waiting up to `timeout` seconds (None: no limit); FrameTimeoutError
        when none came. Starts the stream when it is not running."""
        if not self._streaming:
            self.start()
        return self._queue.get(timeout)

    def frames(self, count=None, timeout=5.0):
        """Iterates over the next `count` frames (None: until the loop ends it), each within
        `timeout` seconds of the one before."""
        delivered = 0
        while count is None or delivered < count:
            yield self.read(timeout)
            delivered += 1

    @property
    def received(self):
        """Frames the library delivered since the camera opened."""
        return self._queue.received

    @property
    def dropped(self):
        """Frames dropped from a full queue before anyone read them."""
        return self._queue.dropped

    @property
    def queued(self):
        """Frames waiting to be read."""
        return len(self._queue)

    @property
    def records_held(self):
        """The library's records this camera's frames hold, queued or viewed. The library holds
        back a stream's frames while 64 are out, so past 56 new frames come as copies."""
        return self._queue.viewed

    # ---- controls ---------------------------------------------------------------------------

    def _control(read, write, kind, doc):  # builds the properties below
        def get(self):
            value = kind()
            self._call(read, ctypes.byref(value))
            return value.value

        def set_(self, value):
            self._call(write, int(value))

        return property(get, set_, doc=doc)

    exposure = _control(
        "vexcap_get_exposure",
        "vexcap_set_exposure",
        ctypes.c_uint64,
        "Exposure in 100 ns units. Reading it while auto exposure is on raises InvalidStateError.",
    )
    iso_speed = _control("vexcap_get_iso_speed", "vexcap_set_iso_speed", ctypes.c_uint32, "ISO speed.")
    led_power = _control(
        "vexcap_get_led_power", "vexcap_set_led_power", ctypes.c_uint, "LED (infrared torch) power."
    )
    del _control

    def _write_only(name, pid, doc):  # builds the properties below
        def get(self):
            return self._settings.get(name)

        def set_(self, value):
            self.set_property(pid, value)
            self._settings[name] = value

        return property(get, set_, doc=doc)

    auto_exposure = _write_only(
        "auto_exposure",
        props.AUTO_EXPOSURE,
        "True or False. The library reads none back: the value last set here, or None.",
    )
    face_auth_mode = _write_only(
        "face_auth_mode",
        props.FACE_AUTH_MODE,
        '"disabled", "alternative_illumination" or "background_subtraction" (or the number). '
        "The value last set here, or None.",
    )
    llc = _write_only(
        "llc", props.LLC, "Low-light compensation, True or False. The value last set here, or None."
    )
    del _write_only

    # ---- device properties ------------------------------------------------------------------

    def get_property(self, name_or_id):
        """A device property's answer: "rgb_status", "video_control_mode", "hires_sensor_type"
        (or the numeric id)."""
        record = _native.Property(props.property_id(name_or_id), 0)
        self._call("vexcap_get_dev_property", ctypes.byref(record))
        return record.value

    def set_property(self, name_or_id, value):
        """Sets a device property by name or id; values by name ("on", "disabled"), boolean
        for the on/off ones, or number. Unknown ids succeed and do nothing (the library's rule)."""
        pid = props.property_id(name_or_id)
        record = _native.Property(pid, props.property_value(pid, value))
        self._call("vexcap_set_dev_property", ctypes.byref(record))

    def set_format(self, code, apply=False):
        """Chooses the format by its code (device property 9); `apply` uses property 16, which
        also runs it briefly and sets the frame-rate limit."""
        self.set_property(props.STREAM_TYPE_APPLY if apply else props.STREAM_TYPE, code)

    # ---- device events ----------------------------------------------------------------------

    def on_exclusive_control(self, callback):
        """callback(status, available, text) when exclusive control changes: status 1 another
        application holds it (shared read-only available), 2 face authentication settling, 3
        anything else; `available` once exclusive control is free again. None unregisters."""
        self._set_event("exclusive_control", callback)

    def on_rgb_status(self, callback):
        """callback(active) while the colour status changes. Registering waits, without
        limit, until the camera reports a zero colour status and, on the infrared reader, a
        disabled face-auth mode. None unregisters."""
        self._set_event("rgb_status", callback)

    def on_unsupported_format(self, callback):
        """callback(status) when the camera's frames come in a format the library cannot
        decode. None unregisters."""
        self._set_event("unsupported_format", callback)

    def on_rgb_stopped(self, callback):
        """callback() once whoever used the colour stream has let it go; once per call of this
        method. None unregisters (which waits up to 20 s for the library's probing to end)."""
        self._set_event("rgb_stopped", callback)

    def _set_event(self, name, callback):
        event = EVENTS[name]
        previous = self._event_callbacks.get(name)
        if callback is None:
            if previous is not None:
                del self._event_callbacks[name]
                self._call(event.unregister)
            return
        self._event_callbacks[name] = callback
        # The library keeps a first registration (the new callable answers through it), except
        # for RGB stopped, which fires once per registration.
        if previous is not None and name != "rgb_stopped":
            return
        try:
            self._call(event.register, event.callback, self._event_key)
        except BaseException:
            if previous is None:
                self._event_callbacks.pop(name, None)
            raise
