"""The library's lifetime in this process: started (vexcap_init) on first use, shut down at
interpreter exit (vexcap_exit) after every camera and device watch still open has been closed,
so that no library thread calls into an interpreter that is going away."""
import atexit
import threading

from . import _native
from ._callbacks import report_exception
from .errors import CameraClosedError, check

_lock = threading.Lock()
_started = False
_finished = False
_open = {}  # id(resource) -> resource with close(); closed at exit, newest first


def started_library():
    """The native library, started on the first call; refused once the interpreter is exiting."""
    global _started
    lib = _native.library()
    if _started and not _finished:
        return lib
    with _lock:
        if _finished:
            raise CameraClosedError("the library was shut down at interpreter exit")
        if not _started:
            check("vexcap_init", lib.vexcap_init())
            _started = True
    return lib


def hold(resource):
    """Keeps `resource` (a camera or a device watch) to be closed at exit if its owner does not."""
    with _lock:
        _open[id(resource)] = resource


def let_go(resource):
    with _lock:
        _open.pop(id(resource), None)


def shut_down():
    """Closes what is still open, then stops the library. Runs at interpreter exit."""
    global _finished
    with _lock:
        if _finished:
            return
        _finished = True
        resources = list(_open.values())[::-1]
    for resource in resources:
        try:
            resource.close()
        except BaseException:  # exit goes on whatever one resource did
            report_exception(f"closing {resource!r} at exit")
    if _started:
        _native.library().vexcap_exit()


atexit.register(shut_down)
