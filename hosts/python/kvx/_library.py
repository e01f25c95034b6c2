"""libkvx, found, loaded and called through ctypes."""

import ctypes
import os
import threading
from ctypes import POINTER, Structure, byref, c_char_p, c_double, c_int32, c_int64, c_uint32, c_void_p
from pathlib import Path

LIBRARY = "libkvx.so.0"
LEVELS_UP = 6

BGRA, RGBA, BGR, RGB = range(4)
LAYOUTS = {"BGRA": BGRA, "RGBA": RGBA, "BGR": BGR, "RGB": RGB}
MOVING, ORDERED, RANDOM, MATERIAL = 1, 2, 4, 8
TEXT, WHOLE, COLOUR, HIDDEN = 1, 2, 4, 8


class Error(Exception):
    """Something did not work: the plug-in, its files or the machine."""


class UnknownName(Error, KeyError):
    """No effect or parameter of this name, or several. The message names the nearest, or the ids."""

    __str__ = Exception.__str__  # KeyError would put the message in quotes


class Options(Structure):
    _fields_ = [("size", c_uint32), ("plugin", c_char_p), ("resources", c_char_p)]


class EffectRecord(Structure):
    _fields_ = [("size", c_uint32), ("id", c_int32), ("name", c_char_p), ("slug", c_char_p), ("guid", c_char_p),
                ("family", c_char_p), ("flags", c_uint32), ("param_count", c_int32)]


class ParamRecord(Structure):
    _fields_ = [("size", c_uint32), ("flags", c_uint32), ("name", c_char_p), ("kind", c_char_p),
                ("minimum", c_double), ("maximum", c_double), ("default", c_double)]


class Image(Structure):
    _fields_ = [("size", c_uint32), ("data", c_void_p), ("width", c_int32), ("height", c_int32), ("stride", c_int32),
                ("layout", c_int32)]


class Frame(Structure):
    _fields_ = [("size", c_uint32), ("frame", c_int64), ("frames", c_int64), ("seconds", c_double)]


IMAGE_SIZE = ctypes.sizeof(Image)
FRAME_SIZE = ctypes.sizeof(Frame)

_SIGNATURES = {
    "kvx_open": (c_int32, [POINTER(Options), POINTER(c_void_p)]),
    "kvx_effect_count": (c_int32, [c_void_p]),
    "kvx_describe_effect": (c_int32, [c_void_p, c_int32, POINTER(EffectRecord)]),
    "kvx_describe_param": (c_int32, [c_void_p, c_int32, c_int32, POINTER(ParamRecord)]),
    "kvx_find": (c_int32, [c_void_p, c_char_p]),
    "kvx_create": (c_int32, [c_void_p, c_char_p, POINTER(c_void_p)]),
    "kvx_destroy": (None, [c_void_p]),
    "kvx_set_number": (c_int32, [c_void_p, c_char_p, c_double]),
    "kvx_set_text": (c_int32, [c_void_p, c_char_p, c_char_p]),
    "kvx_render": (c_int32, [c_void_p, c_void_p, c_void_p, c_void_p]),
    "kvx_last_error": (c_char_p, []),
}


def _find():
    """The library beside this package or above it, in a build tree and in an installed tree alike."""
    here = Path(__file__).resolve().parent
    for folder in (here, *list(here.parents)[:LEVELS_UP]):
        for place in (folder / LIBRARY, folder / "lib" / LIBRARY, *folder.glob("lib/*-linux-gnu/" + LIBRARY)):
            if place.exists():
                return str(place)
    return LIBRARY  # wherever the system keeps libraries


def _error(status, line):
    kinds = {-1: Error, -2: ValueError, -3: UnknownName, -4: ValueError, -5: MemoryError}
    return kinds.get(status, Error)(line)


class _Library:
    """The one library of the process. Calls release the interpreter's lock."""

    def __init__(self):
        path = _find()
        try:
            self._c = ctypes.CDLL(path)
        except OSError as error:
            raise Error(f"{path} cannot be loaded: {error}; is the package libkvx0 installed?") from None
        for name, (result, arguments) in _SIGNATURES.items():
            function = getattr(self._c, name)
            function.restype, function.argtypes = result, arguments
        handle = c_void_p()
        self.check(self._c.kvx_open(None, byref(handle)))
        self.handle = handle
        self.render = self._c.kvx_render
        self.destroy = self._c.kvx_destroy

    def check(self, status):
        """`status`, unless it tells of a failure: that is raised."""
        if status < 0:
            raise _error(status, self._c.kvx_last_error().decode(errors="replace"))
        return status

    def count(self):
        return self.check(self._c.kvx_effect_count(self.handle))

    def find(self, effect):
        return self.check(self._c.kvx_find(self.handle, os.fsencode(effect)))

    def describe_effect(self, index):
        record = EffectRecord(ctypes.sizeof(EffectRecord))
        self.check(self._c.kvx_describe_effect(self.handle, index, byref(record)))
        return record

    def describe_param(self, index, param):
        record = ParamRecord(ctypes.sizeof(ParamRecord))
        self.check(self._c.kvx_describe_param(self.handle, index, param, byref(record)))
        return record

    def create(self, effect_id):
        return Handle(self, effect_id)

    def set(self, handle, name, value):
        if isinstance(value, str):
            self.check(self._c.kvx_set_text(handle, name.encode(), value.encode()))
        else:
            self.check(self._c.kvx_set_number(handle, name.encode(), value))

    def _create(self, effect_id, place):
        self.check(self._c.kvx_create(self.handle, str(effect_id).encode(), place))


class Handle:
    """An effect object of the library, ended with the last reference."""

    __slots__ = ("pointer", "_destroy")

    def __init__(self, library, effect_id):
        self.pointer = None
        self._destroy = library.destroy
        pointer = c_void_p()
        library._create(effect_id, byref(pointer))
        self.pointer = pointer.value

    def __del__(self):
        if self.pointer:
            self._destroy(self.pointer)


_lock = threading.Lock()
_opened = None


def library():
    """The library, opened by the first call: importing costs nothing of it."""
    global _opened
    if _opened is None:
        with _lock:
            if _opened is None:
                _opened = _Library()
    return _opened
