"""The library's result codes as exceptions.

Every failing call raises a subclass of `Error` that carries the result code (`code`) and the
name of the C function that answered it (`call`). Checks the package makes itself (an unknown
camera id, a closed camera, no frame in time) raise subclasses of `Error` too, with `code` None
unless a library call gave the verdict.
"""

OK = 0
E_FAIL = -1
E_INVALID_STATE = -2
E_TIMEOUT = -3
E_ACCESS_DENIED = -4
E_INVALID_ARG = -5
E_NO_INTERFACE = -6
E_INIT_THREAD = -2147467259  # 0x80004005, answered by vexcap_init alone


class Error(Exception):
    """A VexcapLib request failed."""

    def __init__(self, message, code=None, call=None):
        super().__init__(message)
        self.code = code
        self.call = call


class OperationFailedError(Error):
    """-1: any other failure, including requests this camera or library build does not serve."""


class InvalidStateError(Error):
    """-2: not in a valid state for the request (e.g. exposure read while auto exposure is on)."""


class DeviceTimeoutError(Error):
    """-3: the camera did not answer in time."""


class AccessDeniedError(Error):
    """-4: access denied; another application may hold the camera."""


class InvalidArgumentError(Error, ValueError):
    """-5: an argument out of range for this camera."""


class NoInterfaceError(Error):
    """-6: the camera lacks the interface the request needs."""


class InitError(Error):
    """vexcap_init could not start the library's request thread."""


class CameraNotFoundError(Error, LookupError):
    """No camera has this id, or the camera has no source of the wanted kind."""


class CameraClosedError(Error, ValueError):
    """The camera was closed (or the library shut down) before this request."""


class FrameTimeoutError(Error, TimeoutError):
    """No frame arrived within the time allowed."""


class LibraryNotFoundError(Error, OSError):
    """The native library could not be loaded."""


# code: (exception class, name in the header, meaning)
_CODES = {
    E_FAIL: (OperationFailedError, "VEXCAP_E_FAIL", "failed, or not supported by this camera or library"),
    E_INVALID_STATE: (InvalidStateError, "VEXCAP_E_INVALID_STATE", "not in a state that allows this request"),
    E_TIMEOUT: (DeviceTimeoutError, "VEXCAP_E_TIMEOUT", "the camera did not answer in time"),
    E_ACCESS_DENIED: (AccessDeniedError, "VEXCAP_E_ACCESS_DENIED", "another application may hold the camera"),
    E_INVALID_ARG: (InvalidArgumentError, "VEXCAP_E_INVALID_ARG", "an argument is out of range"),
    E_NO_INTERFACE: (NoInterfaceError, "VEXCAP_E_NO_INTERFACE", "the camera lacks the interface"),
    E_INIT_THREAD: (InitError, "VEXCAP_E_INIT_THREAD", "the library could not start its request thread"),
}


def result_name(code):
    """"VEXCAP_E_INVALID_ARG" for -5; "unknown result code" for codes the header does not define."""
    return "VEXCAP_OK" if code == OK else _CODES.get(code, (None, "unknown result code"))[1]


def error_for(call, code, detail=""):
    """The exception for `code` answered by `call`."""
    kind, name, meaning = _CODES.get(code, (OperationFailedError, "unknown result code", "undocumented"))
    message = f"{call} failed: {code} {name} ({meaning})"
    return kind(message + (f": {detail}" if detail else ""), code=code, call=call)


def check(call, code, detail=""):
    """Raises the exception for a non-zero result code."""
    if code != OK:
        raise error_for(call, code, detail)
