"""Video effects on NumPy arrays and Pillow images.

    import kvx
    effect = kvx.Saturation(Saturation=90)
    picture = effect(picture)

effects() lists all effects and info(name) tells one. Each is an attribute of this module, made when it is asked for:
help(kvx.Saturation) tells its parameters. Effect(name, ...) does the same for any name, id or GUID; Chain([...]) puts several
in a row.
"""

import sys as _sys

from . import _describe
from ._chain import Chain
from ._describe import EffectInfo, Param, effects, info
from ._effect import Effect
from ._library import Error, UnknownName

__all__ = ["Chain", "Effect", "EffectInfo", "Error", "Param", "UnknownName", "effects", "info"]

# What users see belongs to the package, not to the file that it is written in.
for _public in (Chain, Effect, EffectInfo, Error, Param, UnknownName):
    _public.__module__ = __name__


def __getattr__(name):
    """kvx.NAME makes the effect of this name."""
    if name.startswith("__"):
        raise AttributeError(name)
    found = _describe.makers().get(name)
    if found is None:
        alike = ", ".join(f"kvx.{effect.identifier}" for effect in _describe.namesakes(name))
        if alike:
            raise AttributeError(f"kvx has no {name}, but {alike}")
        raise AttributeError(f"kvx has no {name}: {_describe.suggestion(name)}")

    def make(*, opacity=100, **params):
        return Effect(found, opacity=opacity, **params)

    make.__name__ = make.__qualname__ = name
    make.__module__ = __name__
    make.__signature__ = _describe.signature(found)
    make.__doc__ = f"{found}\n\nMakes kvx.Effect({found.id}, ...)."
    setattr(_sys.modules[__name__], name, make)
    return make


def __dir__():
    return sorted([*__all__, *_describe.makers()])
