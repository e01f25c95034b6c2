"""Pictures of Python as images of the library."""

import numbers
import operator
import sys

import numpy as np

from ._library import IMAGE_SIZE, LAYOUTS, Image

_LAYOUT_OF_CHANNELS = {3: "RGB", 4: "RGBA"}
_MAX_STRIDE = 2**31 - 1
_MAX_FRAMES = 2**63 - 2**32  # leaves room for the pictures of one call


def run(render, image, out, layout, frame, frames, fps):
    """Calls render(input, output, frame, frames, seconds) for every picture of `image` and returns the result.

    The arguments are those of Effect.__call__. `input` and `output` are images of the library.
    """
    picture = _pillow(image)
    source = np.asarray(image) if picture or hasattr(image, "__array__") else image
    _check_array(source, "the image")
    layout = _layout(source, layout or (picture and picture.mode))
    frame, frames, fps = _place(frame, frames, fps, len(source) if source.ndim == 4 else 1)
    result = out
    if out is None:
        result = np.empty(source.shape, np.uint8)
    else:
        _check_array(out, "out")
        if out.shape != source.shape:
            raise ValueError(f"out has shape {out.shape}, the image {source.shape}")
        if not out.flags.writeable:
            raise ValueError("out is read-only")
        if np.may_share_memory(source, out) and _start(source) != _start(out):
            source = source.copy()
    pictures, results = (source, result) if source.ndim == 4 else (source[np.newaxis], result[np.newaxis])
    for index, (one, target) in enumerate(zip(pictures, results)):
        rows = one if _has_rows(one) else np.ascontiguousarray(one)
        target_rows = target if _has_rows(target) else np.empty(target.shape, np.uint8)
        number = frame + index
        render(_image(rows, layout), _image(target_rows, layout), number, frames, number / fps)
        if target_rows is not target:
            target[...] = target_rows
    if picture and out is None:
        return sys.modules["PIL.Image"].fromarray(result)
    return result


def scratch(like):
    """A BGRA image of the size of image `like`, and the array that owns its memory."""
    array = np.empty((like.height, like.width, 4), np.uint8)
    return _image(array, LAYOUTS["BGRA"]), array


def _pillow(image):
    """`image`, if it is one of Pillow's."""
    module = sys.modules.get("PIL.Image")
    if module is None or not isinstance(image, module.Image):
        return None
    if image.mode not in LAYOUTS:
        raise ValueError(f'a picture of mode {image.mode}: convert it with image.convert("RGB") or ("RGBA")')
    return image


def _check_array(array, what):
    if not isinstance(array, np.ndarray):
        raise TypeError(f"{what} must be a uint8 array or a Pillow image, not {type(array).__name__}")
    if array.dtype != np.uint8:
        raise TypeError(f"{what} must be uint8, not {array.dtype}")
    if array.ndim not in (3, 4) or array.shape[-1] not in _LAYOUT_OF_CHANNELS or 0 in array.shape[-3:]:
        raise ValueError(f"{what} has shape {array.shape}: wanted are (height, width, 3 or 4), or (frames, height, "
                         "width, 3 or 4)")


def _layout(array, name):
    channels = array.shape[-1]
    name = name or _LAYOUT_OF_CHANNELS[channels]
    if name not in LAYOUTS:
        raise ValueError(f"layout {name!r}: wanted is one of {', '.join(LAYOUTS)}")
    if len(name) != channels:
        raise ValueError(f"layout {name} of an image with {channels} channels")
    return LAYOUTS[name]


def _place(frame, frames, fps, count):
    frame = operator.index(frame)
    frames = (count if frame == 0 else 0) if frames is None else operator.index(frames)
    if not isinstance(fps, numbers.Real):
        raise TypeError(f"fps must be a number, not {type(fps).__name__}")
    if not (0 <= frame < _MAX_FRAMES and 0 <= frames < _MAX_FRAMES and fps > 0):
        raise ValueError(f"frame {frame} of {frames} at {fps} frames per second")
    return frame, frames, fps


def _start(array):
    return array.__array_interface__["data"][0], array.strides


def _has_rows(array):
    """Whether the pixels of each row lie one behind the other, and rows do not overlap."""
    height, width, channels = array.shape
    row, pixel, byte = array.strides
    return byte == 1 and (pixel == channels or width == 1) and (
        height == 1 or width * channels <= abs(row) <= _MAX_STRIDE)


def _image(array, layout):
    height, width, channels = array.shape
    stride = array.strides[0] if height > 1 else width * channels
    return Image(IMAGE_SIZE, array.__array_interface__["data"][0], width, height, stride, layout)
