"""What there is: effects and their parameters."""

import functools
import inspect
import keyword
import re
from dataclasses import dataclass

from . import _library
from ._library import UnknownName, library


@dataclass(frozen=True)
class Param:
    """A parameter of an effect."""

    name: str
    kind: str  # "float", "integer", "check box", "colour", ...
    minimum: float
    maximum: float
    default: float
    whole: bool  # whole numbers only
    text: bool  # takes a text: the numbers are 0
    hidden: bool  # not meant for a user interface

    @property
    def identifier(self):
        """The name as a keyword of a call."""
        return identifier(self.name)

    def __str__(self):
        if self.text:
            return f"{self.identifier}: {self.kind}"
        low, high, default = (f"{value:.10g}" for value in (self.minimum, self.maximum, self.default))
        return f"{self.identifier}: {self.kind}, {low} to {high}, default {default}"


@dataclass(frozen=True)
class EffectInfo:
    """An effect. `str()` of it is what `help()` shows."""

    id: int
    name: str  # two effects may share one
    slug: str  # lower case, '-' between words; unique
    guid: str
    family: str
    moving: bool  # moves on a still source
    ordered: bool  # remembers earlier frames: give it a clip's frames in order
    random: bool  # two runs of a program differ
    material: bool  # draws with pictures of the resources
    params: tuple  # of Param, without the opacity, which every effect has

    @property
    def identifier(self):
        """The attribute of this module that makes the effect."""
        names = {other.id: name for name, other in makers().items()}
        return names[self.id]

    def __str__(self):
        traits = [word for word in ("moving", "ordered", "random", "material") if getattr(self, word)]
        head = f"{self.name}, effect {self.id} of the family \"{self.family}\""
        lines = [head + (f" ({', '.join(traits)})" if traits else ""), ""]
        lines += [f"    {param}" for param in self.params]
        lines.append("    opacity: percent, 0 to 100, default 100")
        return "\n".join(lines)


def identifier(name):
    """`name` with '_' for everything that an identifier cannot have: "3DGrid" becomes "_3DGrid"."""
    name = re.sub(r"\W", "_", name)
    if not name or name[0].isdigit():
        name = "_" + name
    return name + "_" if keyword.iskeyword(name) else name


@functools.lru_cache(maxsize=None)
def effects():
    """Every effect, in the catalogue's order, as a tuple of EffectInfo."""
    return tuple(_effect_at(index) for index in range(library().count()))


def info(effect):
    """The EffectInfo of the effect with this name, slug, id or GUID; case does not matter.

    Raises KeyError, with the nearest names, or with the ids if the name stands twice.
    """
    if isinstance(effect, EffectInfo):
        return effect
    if isinstance(effect, bool) or not isinstance(effect, (str, int)):
        raise TypeError(f"an effect is a name, an id or a GUID, not {type(effect).__name__}")
    return effects()[library().find(str(effect))]


@functools.lru_cache(maxsize=None)
def makers():
    """Identifier -> EffectInfo. Effects that share a name get their ids behind it."""
    return {identifier(effect.name if len(namesakes(effect.name)) == 1 else f"{effect.name}_{effect.id}"): effect
            for effect in effects()}


def namesakes(name):
    """The effects with this name, or this identifier; case does not matter, as it does not where effects are found."""
    return [effect for effect in effects() if name.lower() in (effect.name.lower(), identifier(effect.name).lower())]


def suggestion(name):
    """What the library says of a name that is none."""
    try:
        return info(name).identifier
    except UnknownName as error:
        return str(error)


def signature(effect):
    """What can be said when the effect is made."""
    only = inspect.Parameter.KEYWORD_ONLY
    params = [inspect.Parameter(param.identifier, only, default=_plain(param))
              for param in effect.params]
    return inspect.Signature(params + [inspect.Parameter("opacity", only, default=100)])


def _plain(param):
    if param.text:
        return ""
    return int(param.default) if param.whole else param.default


def _effect_at(index):
    record = library().describe_effect(index)
    flags = record.flags
    return EffectInfo(
        record.id, record.name.decode(), record.slug.decode(), record.guid.decode(), record.family.decode(),
        bool(flags & _library.MOVING), bool(flags & _library.ORDERED), bool(flags & _library.RANDOM),
        bool(flags & _library.MATERIAL), tuple(_param_at(index, i) for i in range(record.param_count)))


def _param_at(index, param):
    record = library().describe_param(index, param)
    flags = record.flags
    return Param(record.name.decode(), record.kind.decode(), record.minimum, record.maximum, record.default,
                 bool(flags & _library.WHOLE), bool(flags & _library.TEXT), bool(flags & _library.HIDDEN))
