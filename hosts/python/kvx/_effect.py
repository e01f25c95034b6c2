"""An effect that is called with pictures."""

import math
import numbers
import threading
from ctypes import byref

import numpy as np

from . import _describe, _image
from ._library import FRAME_SIZE, Error, Frame, library


class Effect:
    """An effect with its values: Effect("Saturation", Saturation=90, opacity=80).

    effect: name, slug, id or GUID; case does not matter.
    opacity: percent, 0 to 100.
    Every parameter goes by its name, with '_' for what a Python name cannot have. A value is a number in the parameter's
    range, or a dict {frame: number}, linear between the frames. What is not named keeps its default.

    An effect never changes. It can be compared, hashed, pickled, and used by many threads at once, each of which gets an
    object of its own in the library. Only one whose info.ordered is true, which remembers earlier frames, belongs to the
    first thread that calls it; copy.copy(effect) makes another.

    Raises KeyError for an unknown effect or parameter, ValueError for a value out of range, TypeError for one that is
    no number.
    """

    __slots__ = ("_info", "_values", "_opacity", "_idle", "_lock", "_owner", "_next")

    def __init__(self, effect, /, *, opacity=100, **params):
        self._info = _describe.info(effect)
        self._values = {}
        for name, value in params.items():
            self._values[_param_name(self._info, name)] = _plain_value(name, value)
        self._opacity = _plain_number("opacity", opacity)
        self._lock = threading.Lock()
        self._owner = None  # thread that an ordered effect belongs to
        self._next = None  # frame that continues what an ordered effect remembers
        self._idle = [self._create()]

    info = property(lambda self: self._info, doc="The EffectInfo.")
    opacity = property(lambda self: self._opacity, doc="Percent, 0 to 100.")
    values = property(lambda self: dict(self._values), doc="The values that were given, by parameter name.")

    def __call__(self, image, *, frame=0, frames=None, fps=25, layout=None, out=None):
        """Renders `image` and returns a new picture of the same kind and shape.

        image: uint8 array of shape (height, width, 3), RGB; (height, width, 4), RGBA; (frames, height, width, 3 or 4),
            the frames of a clip in order; or a Pillow image of mode RGB or RGBA.
        frame: number of the picture in its clip, or of the first of several; from 0.
        frames: length of the clip, 0 if unknown. By default the pictures given are all of it if `frame` is 0, else it is
            unknown.
        fps: frames per second, for effects that move with time.
        layout: "BGR" or "BGRA", the order in OpenCV, instead of RGB or RGBA.
        out: array of the same shape that gets the result and is returned; may be `image`.

        Colours of four-channel results are multiplied by their alpha. An ordered effect remembers the frames of a clip
        as long as each call's frame follows the last one's; any other frame begins a new clip.

        Raises TypeError for anything but uint8, ValueError for a wrong shape, layout or frame, MemoryError, and
        kvx.Error if the plug-in fails or a second thread calls an ordered effect.
        """
        return _image.run(self._render, image, out, layout, frame, frames, fps)

    def _render(self, source, target, frame, frames, seconds):
        handle = self._take(frame)
        status = library().render(handle.pointer, byref(source), byref(target),
                                  byref(Frame(FRAME_SIZE, frame, frames, seconds)))
        library().check(status)
        self._next = frame + 1
        self._idle.append(handle)

    def _take(self, frame):
        """An object of the library for this thread alone. A failure drops it."""
        if self._info.ordered:
            self._own()
            if frame != self._next and self._next is not None:
                self._idle.clear()
            self._next = None
        try:
            return self._idle.pop()
        except IndexError:
            return self._create()

    def _own(self):
        me = threading.get_ident()
        with self._lock:
            if self._owner != me and self._owner in [thread.ident for thread in threading.enumerate()]:
                raise Error(f"{self._info.name} remembers earlier frames and belongs to the thread that called it first: "
                            "make one for each thread, with copy.copy(effect)")
            self._owner = me

    def _create(self):
        handle = library().create(self._info.id)
        for name, value in self._values.items():
            library().set(handle.pointer, name, _text(value))
        library().set(handle.pointer, "opacity", self._opacity)
        return handle

    def _key(self):
        return self._info.id, self._opacity, tuple(sorted((name, _text(value)) for name, value in self._values.items()))

    def __eq__(self, other):
        return self._key() == other._key() if isinstance(other, Effect) else NotImplemented

    def __hash__(self):
        return hash(self._key())

    def __dask_tokenize__(self):
        return "kvx.Effect", self._key()

    def __reduce__(self):
        return _make, (self._info.id, self._opacity, self._values)

    def __repr__(self):
        unique = len(_describe.namesakes(self._info.name)) == 1
        words = [repr(self._info.name if unique else self._info.id)]
        words += [f"{_describe.identifier(name)}={value!r}" for name, value in self._values.items()]
        if self._opacity != 100:
            words.append(f"opacity={self._opacity!r}")
        return f"kvx.Effect({', '.join(words)})"


def _make(effect, opacity, values):
    return Effect(effect, opacity=opacity, **values)


def _param_name(info, name):
    """The parameter's own name; the library tells what there is if it is none."""
    for param in info.params:
        if name in (param.name, param.identifier):
            return param.name
    return name


def _plain_number(name, value):
    """An int or a float, so that equal values look equal wherever they come from."""
    if not isinstance(value, (numbers.Real, np.bool_)):
        raise TypeError(f"{name} must be a number, not {type(value).__name__}")
    try:
        value = float(value)
    except OverflowError:
        raise ValueError(f"{name} is out of range") from None
    return int(value) if math.isfinite(value) and value == int(value) else value


def _plain_value(name, value):
    if isinstance(value, str):
        return value
    if isinstance(value, dict):
        if not value:
            raise ValueError(f"{name}: no frames")
        points = [(_plain_number("a frame", frame), _plain_number(name, number)) for frame, number in value.items()]
        return dict(sorted(points))
    return _plain_number(name, value)


def _text(value):
    """Values at frames in the library's notation; anything else as it is."""
    if isinstance(value, dict):
        return ",".join(f"{frame!r}:{number!r}" for frame, number in value.items())
    return value
