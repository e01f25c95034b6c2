"""Every effect, from Python and from the command: the same bytes."""

import multiprocessing
import os
import subprocess

import kvx
import numpy as np

WIDTH, HEIGHT, FRAMES = 96, 64, 3
CLIP = np.random.default_rng(5).integers(0, 256, (FRAMES, HEIGHT, WIDTH, 4), dtype=np.uint8)


def differs(effect_id):
    """In a process in which no effect was made before, as it is in the command's."""
    command = [os.environ["KVX_COMMAND"], "render", str(effect_id), "--raw", f"{WIDTH}x{HEIGHT}", "-q", "-", "-"]
    there = subprocess.run(command, input=CLIP.tobytes(), stdout=subprocess.PIPE, check=True).stdout
    # Nobody knows how long a pipe is.
    return kvx.Effect(effect_id)(CLIP, layout="BGRA", frames=0).tobytes() != there


def differing(effects, start):
    with multiprocessing.get_context(start).Pool(2, maxtasksperchild=1) as pool:
        return [effect for effect, other in zip(effects, pool.map(differs, effects, chunksize=1)) if other]


def test_effects_without_randomness():
    steady = [effect.id for effect in kvx.effects() if not effect.random]
    assert steady and differing(steady, "fork") == []


def test_effects_that_seed_themselves_from_the_calendar():
    left = [effect.id for effect in kvx.effects() if effect.random]
    assert left
    # A second can turn between Python and the command. Each process must start the plug-in by itself.
    for _ in range(20):
        left = left and differing(left, "spawn")
    assert left == []
