# SPDX-License-Identifier: BSD-3-Clause
"""What the documents show does work."""

import os
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import frames
import qvruncompressed as qvr

ROOT = pathlib.Path(__file__).parents[2]


def blocks(path):
    return re.findall(r"^```python\n(.*?)^```", (ROOT / path).read_text(), re.M | re.S)


def run(code, folder):
    environment = dict(os.environ, MPLBACKEND="agg", PYTHONPATH=str(pathlib.Path(qvr.__file__).parents[1]))
    done = subprocess.run([sys.executable, "-c", code], cwd=folder, env=environment, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_the_notebook_runs_from_top_to_bottom(tmp_path):
    out = run("\n".join(blocks("docs/python.md")), tmp_path)
    assert "the same picture: True" in out
    picture = (tmp_path / "matte.pgm").read_bytes()
    header = b"P5 320 180 255\n"
    assert picture.startswith(header)
    matte = np.frombuffer(picture[len(header) :], np.uint8).reshape(180, 320)
    with qvr.Reader(tmp_path / "again.qvr", "RGBA") as reader:
        assert (next(reader)[..., 3] == matte).all() and 0 < matte.mean() < 255


def test_the_readme_runs(tmp_path):
    made = blocks("README.md")
    assert made
    assert run("\n".join(made), tmp_path)


def shown_table():
    """{order: shapes as text} of the table of shapes in docs/python.md."""
    rows = re.findall(r"^\| (\d+) \| `(\S+?)`.*?\| `(\(.*?)` \| .*\|$", (ROOT / "docs/python.md").read_text(), re.M)
    return {int(number): (name, shapes) for number, name, shapes in rows}


@pytest.mark.parametrize("order", qvr.Order)
def test_the_table_shows_the_shape_of_each_order(order):
    name, text = shown_table()[order]
    assert name == order.name
    height, width = 6, 10
    shapes = eval(text.replace("/", "//"), {"h": height, "w": width})
    shapes = shapes if isinstance(shapes[0], tuple) else (shapes,)
    assert list(shapes) == frames.shapes(order.name, "U8", width, height)
