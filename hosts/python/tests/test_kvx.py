"""Pictures, values, threads, processes, chains and errors of the Python package."""

import copy
import inspect
import multiprocessing
import os
import pickle
import subprocess
import threading
import warnings

import kvx
import numpy as np
import pytest
from PIL import Image

RANDOM = np.random.default_rng(11)
RGBA = RANDOM.integers(0, 256, (48, 80, 4), dtype=np.uint8)
RGB = np.ascontiguousarray(RGBA[..., :3])


def run(*arguments):
    return subprocess.run([os.environ["KVX_COMMAND"], *arguments], check=True, capture_output=True, text=True).stdout


def opaque(picture):
    return np.dstack([picture, np.full(picture.shape[:2], 255, np.uint8)])


# Emboss looks at neighbours; Saturation weighs red and blue differently.
@pytest.mark.parametrize("effect", [kvx.Emboss(), kvx.Saturation(Saturation=90, opacity=70)], ids=["Emboss", "Saturation"])
def test_layouts_and_views_give_one_picture(effect):
    expected = effect(RGBA)
    assert effect(RGBA[..., [2, 1, 0, 3]], layout="BGRA").tobytes() == expected[..., [2, 1, 0, 3]].tobytes()
    three = effect(opaque(RGB))[..., :3]
    assert (effect(RGB) == three).all()
    assert (effect(RGB[..., ::-1].copy(), layout="BGR") == three[..., ::-1]).all()

    frozen = RGB.copy()
    frozen.flags.writeable = False
    wide = np.zeros((48, 100, 3), np.uint8)
    wide[:, 7:87] = RGB
    for view in (frozen, wide[:, 7:87], np.asfortranarray(RGB), RGB[::-1].copy()[::-1], RGB[..., ::-1].copy()[..., ::-1],
                 np.repeat(RGB, 2, axis=1)[:, ::2]):
        before = view.copy()
        assert (effect(view) == three).all()
        assert (view == before).all()

    for out in (np.empty_like(RGB), wide[:, 7:87], np.empty((48, 160, 3), np.uint8)[:, ::2], np.empty_like(RGB)[::-1]):
        wide[:] = 9
        assert effect(RGB, out=out) is out
        assert (out == three).all()
    assert effect(RGB, out=wide[:, 7:87]) is not None and (wide[:, :7] == 9).all() and (wide[:, 87:] == 9).all()
    for place in (RGBA.copy(), RGB.copy()):
        assert (effect(place.copy()) == effect(place, out=place)).all()
    column = RGBA[:, :1]  # rows of one pixel
    assert (effect(column) == effect(column.copy())).all()


def test_an_output_that_overlaps_the_input_elsewhere():
    clip = RANDOM.integers(0, 256, (5, 16, 24, 4), dtype=np.uint8)
    expected = kvx.Invert()(clip[:4])
    kvx.Invert()(clip[:4], out=clip[1:])
    assert (clip[1:] == expected).all()


def test_pillow_and_clips():
    effect = kvx.Soble()
    picture = effect(Image.fromarray(RGBA))
    assert picture.mode == "RGBA" and (np.asarray(picture) == effect(RGBA)).all()
    clip = np.stack([RGB, RGB[::-1], RGB[:, ::-1]])
    assert (effect(clip) == np.stack([effect(frame) for frame in clip])).all()
    assert effect(clip[:0]).shape == (0, 48, 80, 3)
    with pytest.raises(ValueError, match="convert"):
        effect(Image.fromarray(RGB).convert("L"))


def test_an_ordered_effect_remembers_a_clip_and_nothing_else():
    clip = RANDOM.integers(0, 256, (6, 48, 80, 3), dtype=np.uint8)
    ordered = [info for info in kvx.effects() if info.ordered and not info.random and info.name != "BGFNoise"]
    remembering = 0
    for info in ordered:
        effect = kvx.Effect(info.id)
        whole = effect(clip)
        apart = np.stack([effect(frame, frame=i, frames=6) for i, frame in enumerate(clip)])
        assert (apart == whole).all(), info.name
        assert (effect(clip[5]) == kvx.Effect(info.id)(clip[5])).all(), info.name
        remembering += (effect(clip[5]) != whole[5]).any()
    assert remembering > 5


def test_values_over_time():
    effect = kvx.Saturation(Saturation={0: 10, 4: 90})
    assert (effect(RGB, frame=2) == kvx.Saturation(Saturation=50)(RGB)).all()
    assert effect == kvx.Saturation(Saturation={4.0: 90, 0: 10.0})


def test_two_threads():
    effect, expected = kvx.Emboss(), kvx.Emboss()(RGB)
    wrong = []

    def work():
        for _ in range(200):
            if not (effect(RGB) == expected).all():
                wrong.append(1)

    threads = [threading.Thread(target=work) for _ in range(4)]
    [thread.start() for thread in threads]
    [thread.join() for thread in threads]
    assert not wrong

    ordered = kvx.Effect(next(info for info in kvx.effects() if info.ordered).id)
    ordered(RGB)
    said = []

    def share():
        try:
            ordered(RGB, frame=1)
        except kvx.Error as error:
            said.append(str(error))
        said.append((copy.copy(ordered)(RGB)).shape)

    thread = threading.Thread(target=share)
    thread.start()
    thread.join()
    assert "copy.copy" in said[0] and said[1] == RGB.shape


def there(effect):
    return effect, effect(RGB).tobytes()


def test_every_effect_pickles_to_another_process():
    made = []
    for info in kvx.effects():
        values = {param.identifier: param.maximum for param in info.params if not param.text}
        made.append(kvx.Effect(info.id, opacity=60, **values))
    assert [eval(repr(effect)) for effect in made] == made
    assert len(set(made)) == len(kvx.effects())
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        back = pool.map(there, made)
    for effect, (same, picture) in zip(made, back):
        assert same == effect and hash(same) == hash(effect)
        if not effect.info.random and not effect.info.ordered:
            assert effect(RGB).tobytes() == picture, effect
    chain = kvx.Chain(made[:2])
    assert pickle.loads(pickle.dumps(chain)) == chain == eval(repr(chain))


def test_dask_tokens_are_stable():
    tokenize = pytest.importorskip("dask.base").tokenize
    effect = kvx.Saturation(Saturation=90)
    assert tokenize(effect) == tokenize(pickle.loads(pickle.dumps(effect))) != tokenize(kvx.Saturation(Saturation=91))


def test_a_forked_process_renders_what_its_parent_rendered():
    big = RANDOM.integers(0, 256, (540, 960, 4), dtype=np.uint8)
    fill = kvx.BGFGray()  # uses worker threads
    expected = fill(big).tobytes()
    with multiprocessing.get_context("fork").Pool(1) as pool:
        assert pool.apply_async(fill, (big,)).get(60).tobytes() == expected


def test_chains_and_recipes_as_the_command_has_them(tmp_path):
    source, expected, recipe = (str(tmp_path / name) for name in ("in.png", "out.png", "look.json"))
    Image.fromarray(RGBA).save(source)
    run("recipe", "write", "-e", "Warm", "-e", "Brightness:Bringhtness=0:20,50:80;opacity=60", "-e", "Emboss", recipe)
    run("render", "--recipe", recipe, source, expected)
    chain = kvx.Chain.read(recipe)
    expected = np.asarray(Image.open(expected))
    assert (chain(RGBA) == expected).all()
    assert (chain[2](chain[1](chain[0](RGBA))) == expected).all()
    again = tmp_path / "again.json"
    chain.write(again)
    assert kvx.Chain.read(again) == chain
    run("recipe", "check", str(again))
    with pytest.raises(FileExistsError):
        chain.write(again)
    chain[:1] and chain.write(again, overwrite=True)
    assert sorted(os.listdir(tmp_path)) == ["again.json", "in.png", "look.json", "out.png"]
    # A picture's alpha goes from effect to effect even where the caller has none.
    veil = next(info.id for info in kvx.effects() if kvx.Effect(info.id)(opaque(RGB))[..., 3].min() < 255)
    both = kvx.Chain([kvx.Effect(veil), kvx.Invert()])
    assert (both(RGB) == both(opaque(RGB))[..., :3]).all()


@pytest.mark.parametrize("text, said", [
    ("{", "not JSON"), ('{"effects": []}', "at least one"), ('{"effects": [{"effect": "Wam"}]}', r"effects\[0\].*Warm"),
    ('{"effects": [{"effect": 26, "params": {"Saturation": 101}}]}', r"effects\[0\].*out of range"),
    ('{"effects": [{"effect": 26, "params": {"Saturation": [1]}}]}', r"effects\[0\].*must be a number"),
    ('{"effects": [{"effect": 26, "prams": {}}]}', 'unknown key "prams"'),
])
def test_wrong_recipes(tmp_path, text, said):
    path = tmp_path / "wrong.json"
    path.write_text(text)
    with pytest.raises((ValueError, KeyError), match=said):
        kvx.Chain.read(path)


def test_what_a_recipe_holds_beyond_effects_is_told(tmp_path):
    path = tmp_path / "seed.json"
    path.write_text('{"effects": [{"effect": 26}], "seed": 3}')
    with pytest.warns(UserWarning, match="seed"):
        kvx.Chain.read(path)


@pytest.mark.parametrize("wrong, kind, said", [
    (lambda: kvx.Effect("Saturatoin"), KeyError, "Saturation"),
    (lambda: kvx.Effect("canvas"), KeyError, "11 .*349 "),
    (lambda: kvx.Canvas, AttributeError, "Canvas_11.*Canvas_349"),
    (lambda: kvx.Saturatoin, AttributeError, "Saturation"),
    (lambda: kvx.Effect(None), TypeError, "NoneType"),
    (lambda: kvx.Saturation(Contrast=1), KeyError, "it has Saturation"),
    (lambda: kvx.Saturation(Saturation=101), ValueError, "0 to 100"),
    (lambda: kvx.Saturation(Saturation=float("nan")), ValueError, "not a number"),
    (lambda: kvx.Saturation(Saturation=[1]), TypeError, "list"),
    (lambda: kvx.Saturation(opacity=-1), ValueError, "opacity"),
    (lambda: kvx.Invert()(None), TypeError, "NoneType"),
    (lambda: kvx.Invert()(RGB.astype(float)), TypeError, "uint8, not float64"),
    (lambda: kvx.Invert()(RGB[..., 0]), ValueError, "shape"),
    (lambda: kvx.Invert()(RGB[:0]), ValueError, "shape"),
    (lambda: kvx.Invert()(RGB, layout="BGRA"), ValueError, "3 channels"),
    (lambda: kvx.Invert()(RGB, layout="HSV"), ValueError, "BGRA, RGBA, BGR, RGB"),
    (lambda: kvx.Invert()(RGB, out=RGBA.copy()), ValueError, "shape"),
    (lambda: kvx.Invert()(RGB, out=np.broadcast_to(RGB, RGB.shape)), ValueError, "read-only"),
    (lambda: kvx.Invert()(RGB, frame=-1), ValueError, "frame -1"),
    (lambda: kvx.Invert()(RGB, frame=2**70), ValueError, "frame"),
    (lambda: kvx.Chain(["Warm"]).write("/nowhere/look.json"), FileNotFoundError, "/nowhere/look.json"),
    (lambda: kvx.Invert()(np.broadcast_to(np.uint8(0), (40000, 1, 3))), ValueError, "32768"),
    (lambda: kvx.Chain([]), ValueError, "at least one"),
    (lambda: kvx.Chain("Warm"), TypeError, "list"),
])
def test_errors(wrong, kind, said):
    with warnings.catch_warnings(), pytest.raises(kind, match=said):
        warnings.simplefilter("error")
        wrong()


def test_without_its_files_the_package_says_what_is_missing():
    said = subprocess.run([os.sys.executable, "-c", "import kvx; kvx.effects()"], capture_output=True, text=True,
                          env={**os.environ, "KVX_RESOURCES": "/nowhere"}, check=False)
    assert said.returncode == 1 and "kvx.Error: no resource directory: /nowhere" in said.stderr


def test_help_tells_parameters():
    assert str(inspect.signature(kvx.Saturation)) == "(*, Saturation=25.0, opacity=100)"
    assert "Saturation: float, 0 to 100, default 25" in inspect.getdoc(kvx.Saturation)
    assert kvx._3DGrid() == kvx.Effect("3DGrid") and kvx.Canvas_11() == kvx.Effect(11)
    assert {"Saturation", "_3DGrid", "Chain"} <= set(dir(kvx))
    assert len(set(dir(kvx))) == len(kvx.effects()) + len(kvx.__all__)  # no effect hides another or a class
