"""Context values for the library's callbacks: small integers naming a Python object, so the C
side never holds a Python pointer, and a callback that comes after its object has gone finds
nothing instead of freed memory."""
import itertools

_keys = itertools.count(1)
_objects = {}


def enter(obj):
    """A new context value naming `obj`."""
    key = next(_keys)
    _objects[key] = obj
    return key


def lookup(key):
    """The object `key` names, or None once it has left (or for a null context)."""
    return _objects.get(key)


def leave(key):
    _objects.pop(key, None)
