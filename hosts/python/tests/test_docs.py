"""docs/python.md: every example runs, as a program of its own."""

import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest
from PIL import Image

PAGE = pathlib.Path(__file__).parents[3] / "docs" / "python.md"
BLOCKS = re.findall(r"^```python\n(.*?)^```", PAGE.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)


@pytest.mark.parametrize("block", BLOCKS, ids=lambda block: re.findall(r'"([^"]*)"', block + '""')[0])
def test_the_page(block, tmp_path):
    for module in ("cv2", "imageio"):
        if f"import {module}" in block:
            pytest.importorskip(module)
    generator = np.random.default_rng(2)
    frames = [Image.fromarray(generator.integers(0, 256, (80, 120, 3), dtype=np.uint8)) for _ in range(4)]
    (tmp_path / "photos").mkdir()
    for name in ("photo.jpg", "photos/one.jpg", "photos/two.jpg"):
        frames[0].save(tmp_path / name)
    frames[0].save(tmp_path / "clip.gif", save_all=True, append_images=frames[1:])
    if "clip.avi" in block:
        import cv2

        writer = cv2.VideoWriter(str(tmp_path / "clip.avi"), cv2.VideoWriter_fourcc(*"MJPG"), 25, (120, 80))
        for frame in frames:
            writer.write(np.asarray(frame))
        writer.release()
    (tmp_path / "example.py").write_text(block)
    ran = subprocess.run([sys.executable, "-B", "example.py"], cwd=tmp_path, capture_output=True, text=True, timeout=120,
                         check=False)
    assert ran.returncode == 0, ran.stderr
    for name in ("vivid.png", "emboss.png", "developed/one.png", "developed/two.png"):
        if name.split("/")[0] in block:
            assert Image.open(tmp_path / name).size == (120, 80)
    for name in ("out.avi", "out.gif"):
        assert name not in block or (tmp_path / name).stat().st_size > 0
