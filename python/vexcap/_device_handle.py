"""The library's device handle, shared by the calls in flight. vexcap_device_close frees it,
so closing waits until no other call is using it and later calls are refused."""
import contextlib
import threading

from .errors import CameraClosedError


class DeviceHandle:
    def __init__(self, address):
        self._address = address
        self._closing = False
        self._users = 0
        self._idle = threading.Condition(threading.Lock())

    @contextlib.contextmanager
    def use(self):
        """The handle's address, for one call; CameraClosedError once closing has begun."""
        with self._idle:
            if self._closing:
                raise CameraClosedError("the camera is closed")
            self._users += 1
        try:
            yield self._address
        finally:
            with self._idle:
                self._users -= 1
                if self._users == 0:
                    self._idle.notify_all()

    def begin_closing(self):
        """Refuses new calls from now on; False when closing had begun already."""
        with self._idle:
            if self._closing:
                return False
            self._closing = True
            return True

    def wait_unused(self):
        """The address, once no call is using it any more."""
        with self._idle:
            self._idle.wait_for(lambda: self._users == 0)
            return self._address

    @property
    def closed(self):
        with self._idle:
            return self._closing
