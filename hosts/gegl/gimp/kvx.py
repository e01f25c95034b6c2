#!/usr/bin/env python3
"""A procedure for GIMP 2.10's scripts, which cannot run GEGL's operations themselves:

    (plug-in-kvx RUN-NONINTERACTIVE image drawable "kvx:warm opacity=60 kvx:emboss")

runs a chain of operations, written as for the command `gegl`, on the selected part of a drawable. It goes through the C
libraries that GIMP brings along, since this GIMP has no modern Python interface.
"""
import ctypes
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_void_p

INT32, STRING, IMAGE, DRAWABLE, STATUS = 0, 4, 13, 16, 21
PLUGIN = 1
EXECUTION_ERROR, CALLING_ERROR, SUCCESS = 0, 1, 3
NAME = b"plug-in-kvx"

gimp = ctypes.CDLL("libgimp-2.0.so.0")
gegl = ctypes.CDLL("libgegl-0.4.so.0")
gobject = ctypes.CDLL("libgobject-2.0.so.0")


class ParamDef(ctypes.Structure):
    _fields_ = [("type", c_int), ("name", c_char_p), ("description", c_char_p)]


class ParamData(ctypes.Union):
    _fields_ = [("number", ctypes.c_int32), ("text", c_char_p), ("largest", c_double * 4)]


class Param(ctypes.Structure):
    _fields_ = [("type", c_int), ("data", ParamData)]


class Error(ctypes.Structure):
    _fields_ = [("domain", ctypes.c_uint32), ("code", c_int), ("message", c_char_p)]


RunProc = ctypes.CFUNCTYPE(None, c_char_p, c_int, POINTER(Param), POINTER(c_int), POINTER(POINTER(Param)))
PlainProc = ctypes.CFUNCTYPE(None)


class PlugInInfo(ctypes.Structure):
    _fields_ = [("init", PlainProc), ("quit", PlainProc), ("query", PlainProc), ("run", RunProc)]


for function in (gimp.gimp_drawable_get_buffer, gimp.gimp_drawable_get_shadow_buffer, gegl.gegl_node_new,
                 gegl.gegl_node_new_child):
    function.restype = c_void_p
gegl.gegl_create_chain.argtypes = [c_char_p, c_void_p, c_void_p, c_double, c_int, c_char_p, POINTER(POINTER(Error))]


def child(root, operation, *properties):
    return c_void_p(gegl.gegl_node_new_child(root, b"operation", operation, *properties, None))


def apply_chain(drawable, chain):
    """Raises ValueError, with GEGL's reason, for a chain that cannot be read."""
    x, y, width, height = c_int(), c_int(), c_int(), c_int()
    if not gimp.gimp_drawable_mask_intersect(drawable, byref(x), byref(y), byref(width), byref(height)):
        return  # the selection misses the drawable
    gegl.gegl_init(None, None)
    source = c_void_p(gimp.gimp_drawable_get_buffer(drawable))
    shadow = c_void_p(gimp.gimp_drawable_get_shadow_buffer(drawable))
    root = c_void_p(gegl.gegl_node_new())
    try:
        start = child(root, b"gegl:buffer-source", b"buffer", source)
        selected = child(root, b"gegl:crop", *(part for name, value in (
            (b"x", x), (b"y", y), (b"width", width), (b"height", height)) for part in (name, c_double(value.value))))
        end = child(root, b"gegl:write-buffer", b"buffer", shadow)
        gegl.gegl_node_link(start, selected)
        error = POINTER(Error)()
        gegl.gegl_create_chain(chain, selected, end, 0.0, 0, b".", byref(error))
        if error:
            raise ValueError(error.contents.message.decode(errors="replace"))
        gegl.gegl_node_process(end)
        gegl.gegl_buffer_flush(shadow)
    finally:
        for thing in (root, source, shadow):
            gobject.g_object_unref(thing)
    gimp.gimp_drawable_merge_shadow(drawable, 1)
    gimp.gimp_drawable_update(drawable, x, y, width, height)


def query():
    arguments = (ParamDef * 4)(
        (INT32, b"run-mode", b"The run mode; there is no dialog"), (IMAGE, b"image", b"The image"),
        (DRAWABLE, b"drawable", b"What is changed, where it is selected"),
        (STRING, b"chain", b"Operations with their properties, such as: kvx:warm opacity=60 kvx:emboss"))
    gimp.gimp_install_procedure(
        NAME, b"Run kvx effects, or any chain of GEGL operations", b"The chain is written as for the command gegl.",
        b"kvx", b"kvx", b"2026", None, b"RGB*, GRAY*", PLUGIN, len(arguments), 0, arguments, None)


results = (Param * 2)()


def run(_name, count, parameters, result_count, result_values):
    result_values[0] = ctypes.cast(results, POINTER(Param))
    result_count[0] = 1
    results[0].type = STATUS
    results[0].data.number = SUCCESS
    try:
        if count != 4 or not parameters[3].data.text:
            raise ValueError("a chain of operations is wanted")
        apply_chain(parameters[2].data.number, parameters[3].data.text)
    except Exception as error:  # whatever it is, GIMP must hear of it
        results[0].data.number = CALLING_ERROR if isinstance(error, ValueError) else EXECUTION_ERROR
        results[1].type = STRING
        results[1].data.text = str(error).encode()
        result_count[0] = 2


def main():
    import sys
    info = PlugInInfo(PlainProc(), PlainProc(), PlainProc(query), RunProc(run))
    arguments = (c_char_p * len(sys.argv))(*(word.encode() for word in sys.argv))
    # GIMP keeps a copy of neither.
    main.kept = (info, arguments)
    return gimp.gimp_main(byref(info), len(sys.argv), arguments)


if __name__ == "__main__":
    raise SystemExit(main())
