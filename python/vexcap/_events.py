"""Device events of an open camera: the library's four event callbacks, each reaching the
Python callable a Camera holds for that event."""
from . import _contexts, _native
from ._callbacks import run_callback


def _fire(context, event, *args):
    camera = _contexts.lookup(context)
    callback = camera._event_callbacks.get(event) if camera is not None else None
    if callback is not None:
        run_callback(callback, args, f"the {event} callback")


def _on_exclusive_control(text, status, available, context):
    _fire(context, "exclusive_control", status, bool(available), text or "")


def _on_rgb_status(active, context):
    _fire(context, "rgb_status", bool(active))


def _on_unsupported_format(status, context):
    _fire(context, "unsupported_format", status)


def _on_rgb_stopped(_stopped, context):
    _fire(context, "rgb_stopped")


class Event:
    def __init__(self, register, unregister, callback):
        self.register = register
        self.unregister = unregister
        self.callback = callback  # alive as long as the module: the library may call it any time


EVENTS = {
    "exclusive_control": Event(
        "vexcap_register_for_excl_ctrl_status_event",
        "vexcap_unregister_for_excl_ctrl_status_event",
        _native.EXCL_CTRL_STATUS_CALLBACK(_on_exclusive_control),
    ),
    "rgb_status": Event(
        "vexcap_register_for_rgb_status_event",
        "vexcap_unregister_for_rgb_status_event",
        _native.RGB_STATUS_CALLBACK(_on_rgb_status),
    ),
    "unsupported_format": Event(
        "vexcap_register_for_unsupported_format_status_event",
        "vexcap_unregister_for_unsupported_format_status_event",
        _native.UNSUPPORTED_FORMAT_CALLBACK(_on_unsupported_format),
    ),
    "rgb_stopped": Event(
        "vexcap_register_for_rgb_stopped_event",
        "vexcap_unregister_for_rgb_stopped_event",
        _native.RGB_STOPPED_CALLBACK(_on_rgb_stopped),
    ),
}
