#!/usr/bin/env python3
"""Usage: scripts/make_effects_doc.py [--check] [BUILD_FOLDER]. Writes docs/effects.md and docs/effects/ anew from the built
command, the effect table and the sources. With --check nothing is written: it says whether they are up to date."""
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PLUGIN = ROOT / "plugins" / "kvxFilterPureCPlugin"
CHECK = "--check" in sys.argv
FOLDERS = [word for word in sys.argv[1:] if word != "--check"]
BUILD = Path(FOLDERS[0]).resolve() if FOLDERS else ROOT / "build" / "release"
KVX = BUILD / "bin" / "kvx"
PICTURES = ROOT / "docs" / "effects"
WIDTH = 144


def sources(*folders):
    return [(path, path.read_text()) for folder in folders for path in sorted((PLUGIN / folder).glob("*.cpp"))]


def file_of_class(name, cache={}):
    """The file that renders the frames of a class: where its Process, or that of a class it is made of, stands."""
    if not cache:
        for path, text in sources("Source"):
            for found in re.findall(r"\b(\w+)::Process(?:Timed)?\(", text):
                cache[found] = path
        for path in sorted((PLUGIN / "Source").glob("*.h")):
            for derived, base in re.findall(r"class (\w+)[\w\s]*: public (\w+)", path.read_text()):
                cache.setdefault(derived, base)
    at = name
    while isinstance(cache.get(at), str):
        at = cache[at]
    if at in cache:
        return cache[at]
    for path in sorted((PLUGIN / "Source").glob("*.h")):
        if re.search(rf"\b(class|using) {name}\b", path.read_text()):
            return path.with_suffix(".cpp") if path.with_suffix(".cpp").exists() else path
    raise SystemExit(f"no file for {name}")


def file_of_code(name):
    """The file whose routine list or range of blends holds an engine code."""
    text = (PLUGIN / "engine" / "engine_codes.h").read_text()
    numbers, value = {}, 0
    for code, number in re.findall(r"^  (k\w+)(?: = (\d+))?,", text, re.M):
        value = int(number) if number else value + 1
        numbers[code] = value
    wanted = numbers[name]
    lists = re.compile(r"\{code::(k\w+), (?:code::(k\w+), )?(?:film::)?(\w+)")
    for path, source in sources("engine"):
        if path.name == "engine_init.cpp":
            continue
        for first, last, routine in lists.findall(source):
            if numbers[first] <= wanted <= numbers[last or first]:
                definition = re.compile(rf"^int32_t {routine}\(", re.M)
                others = [other for other, body in sources("engine") if definition.search(body)]
                return path if not others or path in others else others[0]
    raise SystemExit(f"no file for {name}")


def files_by_id():
    """Every id that the factory serves, with the file to read."""
    table = (PLUGIN / "framework" / "factory" / "effect_table.cpp").read_text()
    codes = dict(re.findall(r"\{(\d+), code::(k\w+)", (PLUGIN / "engine/shells/shell_rows.cpp").read_text()))
    codes.update(re.findall(r"\{(\d+), code::(k\w+)\}", (PLUGIN / "Source/MergeFilter.cpp").read_text()))
    makers = {}
    for path, text in sources("Source"):
        for maker in re.findall(r"^CBaseFilterProc\* (Make\w+)\(", text, re.M):
            makers[maker] = path
    files = {}
    rows = re.findall(r"^    \{(\d+), [^\n]*?(Make<(\w+)>|Make\w+), Family", table, re.M)
    for identity, maker, name in rows:
        if identity in codes:
            files[int(identity)] = file_of_code(codes[identity])
        else:
            files[int(identity)] = file_of_class(name) if name else makers[maker]
    if len(files) != len(re.findall(r"^    \{\d+, (?:u\"|nullptr)", table, re.M)):
        raise SystemExit("a row of the effect table could not be read")
    return files


def range_text(param):
    if "min" not in param:
        return f"`{param['name']}` ({param['kind']})"
    return f"`{param['name']}` ({param['kind']}) {param['min']:g} to {param['max']:g}, {param['default']:g}"


def draw_pictures(ids):
    shutil.rmtree(PICTURES, ignore_errors=True)
    PICTURES.mkdir()
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([KVX, "gallery", "demo", "--seed", "1", "-o", folder + "/gallery", "--width", str(WIDTH)],
                       check=True, capture_output=True)
        for identity in ids:
            shutil.copy(f"{folder}/gallery/pictures/{identity}.jpg", PICTURES)


def main():
    effects = json.loads(subprocess.run([KVX, "list", "--json"], check=True, capture_output=True, text=True).stdout)
    files = files_by_id()
    lines = ["# Effects", "",
             "Made by `scripts/make_effects_doc.py`; the pictures show the built-in demo picture with default values. "
             "Ranges are followed by the default. Every effect also takes `--opacity`. `file` is below "
             "`plugins/kvxFilterPureCPlugin/`.", ""]
    families = list(dict.fromkeys(effect["family"] for effect in effects))
    lines += [f"- [{family}](#{re.sub(r'[^a-z -]', '', family).replace(' ', '-')})" for family in families] + [""]
    for family in families:
        lines += [f"## {family}", "", "| | effect | parameters | line | file |", "|---|---|---|---|---|"]
        for effect in (e for e in effects if e["family"] == family):
            identity = effect["id"]
            notes = [word for word, on in [("moves", effect["moving"]), ("frames in order", not effect["stateless"]),
                                           ("random", effect.get("random")), ("picture", effect["material"])] if on]
            lines.append(f"| ![{effect['name']}](effects/{identity}.jpg) | {effect['name']} ({identity})"
                         f"{'<br>' + ', '.join(notes) if notes else ''} | "
                         f"{'<br>'.join(map(range_text, effect['params'])) or 'none'} | "
                         f"`kvx render {identity} in.png out.png` | `{files[identity].relative_to(PLUGIN)}` |")
        lines.append("")
    known = {effect["id"] for effect in effects}
    lines += ["## Served by the factory alone", "", "These ids have no record, so no host can choose them by name.", "",
              "| id | file |", "|---|---|"]
    lines += [f"| {identity} | `{path.relative_to(PLUGIN)}` |" for identity, path in sorted(files.items())
              if identity not in known]
    text = "\n".join(lines) + "\n"
    page = ROOT / "docs" / "effects.md"
    if CHECK:
        missing = [identity for identity in known if not (PICTURES / f"{identity}.jpg").exists()]
        if missing or page.read_text() != text:
            raise SystemExit("docs/effects.md is not up to date: run scripts/make_effects_doc.py")
        return
    page.write_text(text)
    draw_pictures(known)


if __name__ == "__main__":
    main()
