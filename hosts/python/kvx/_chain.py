"""Several effects, one after the other, and their files."""

import json
import os
import tempfile
import warnings

from . import _describe, _image
from ._effect import Effect


class Chain:
    """Effects that a picture goes through in order: Chain([kvx.Warm(), kvx.Snow(Percent=40), "Vignette1"]).

    A chain is called as an Effect is, never changes, and can be compared, hashed, pickled and indexed. Between effects,
    pictures keep their alpha.
    """

    def __init__(self, effects, /):
        if isinstance(effects, (str, Effect)):
            raise TypeError("a chain is made of a list of effects")
        self._effects = tuple(effect if isinstance(effect, Effect) else Effect(effect) for effect in effects)
        if not self._effects:
            raise ValueError("a chain needs at least one effect")
        self._idle = []

    def __call__(self, image, *, frame=0, frames=None, fps=25, layout=None, out=None):
        """Renders `image` through every effect; the arguments are those of Effect.__call__."""
        return _image.run(self._render, image, out, layout, frame, frames, fps)

    __call__.__doc__ += "\n\n" + Effect.__call__.__doc__

    def _render(self, source, target, *place):
        if len(self._effects) == 1:
            self._effects[0]._render(source, target, *place)
            return
        between = self._scratch(source)
        for index, effect in enumerate(self._effects[:-1]):
            effect._render(source, between[index % 2][0], *place)
            source = between[index % 2][0]
        self._effects[-1]._render(source, target, *place)
        self._idle = [between]

    def _scratch(self, like):
        """Two pictures for this thread alone, those of the last call if they fit."""
        try:
            between = self._idle.pop()
        except IndexError:
            between = None
        if between is None or (between[0][0].width, between[0][0].height) != (like.width, like.height):
            between = _image.scratch(like), _image.scratch(like)
        return between

    @classmethod
    def read(cls, path):
        """The chain in a recipe, a JSON file as `kvx recipe write` makes it.

        Raises OSError, and ValueError or KeyError that name the place in the file.
        """
        with open(path, encoding="utf-8") as file:
            try:
                recipe = json.load(file, parse_constant=_no_constant)
            except ValueError as error:
                raise ValueError(f"{path}: not JSON: {error}") from None
        if not isinstance(recipe, dict) or not isinstance(recipe.get("effects"), list) or not recipe["effects"]:
            raise ValueError(f"{path}: effects: must be a list of at least one effect")
        left = sorted(set(recipe) - {"effects"})
        if left:
            warnings.warn(f"{path}: {', '.join(left)}: not used here", stacklevel=2)
        return cls([_read_effect(entry, f"{path}: effects[{index}]") for index, entry in enumerate(recipe["effects"])])

    def write(self, path, *, overwrite=False):
        """Writes a recipe, which `kvx render --recipe` and read() take.

        Raises FileExistsError if there is a file already, unless `overwrite` is true, and OSError.
        """
        if not overwrite and os.path.lexists(path):
            raise FileExistsError(f"{path}: exists; overwrite=True replaces it")
        entries = []
        for effect in self._effects:
            entry = {"effect": effect.info.id, "opacity": effect.opacity}
            if effect.values:
                entry["params"] = effect.values
            entries.append(entry)
        # The file gets its name when it is whole.
        folder = os.path.dirname(os.path.abspath(path))
        try:
            number, part = tempfile.mkstemp(prefix=".kvx-", suffix=".json", dir=folder)
        except OSError as error:
            raise type(error)(error.errno, error.strerror, path) from None
        try:
            with open(number, "w", encoding="utf-8") as file:
                file.write(json.dumps({"effects": entries}, indent=2) + "\n")
            os.chmod(part, 0o666 & ~_umask())
            os.replace(part, path)
        except BaseException:
            os.unlink(part)
            raise

    def __len__(self):
        return len(self._effects)

    def __getitem__(self, index):
        return self._effects[index]

    def __eq__(self, other):
        return self._effects == other._effects if isinstance(other, Chain) else NotImplemented

    def __hash__(self):
        return hash(self._effects)

    def __dask_tokenize__(self):
        return "kvx.Chain", [effect.__dask_tokenize__() for effect in self._effects]

    def __reduce__(self):
        return Chain, (self._effects,)

    def __repr__(self):
        return f"kvx.Chain([{', '.join(map(repr, self._effects))}])"


def _read_effect(entry, place):
    try:
        if not isinstance(entry, dict):
            raise ValueError("must be an object")
        for key in entry:
            if key not in ("effect", "opacity", "params"):
                raise ValueError(f'unknown key "{key}"')
        params = entry.get("params", {})
        if not isinstance(params, dict):
            raise ValueError("params must be an object")
        values = {name: _read_value(value) for name, value in params.items()}
        return Effect(_describe.info(entry.get("effect")), opacity=entry.get("opacity", 100), **values)
    except (TypeError, ValueError, KeyError) as error:
        kind = ValueError if isinstance(error, TypeError) else type(error)
        raise kind(f"{place}: {error}") from None


def _read_value(value):
    if isinstance(value, dict):
        try:
            return {float(frame): number for frame, number in value.items()}
        except ValueError as error:
            raise ValueError(f"values at frames: {error}") from None
    return value


def _no_constant(name):
    raise ValueError(name)


def _umask():
    mask = os.umask(0)
    os.umask(mask)
    return mask
