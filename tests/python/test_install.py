# SPDX-License-Identifier: BSD-3-Clause
"""What `cmake --install --component python` leaves behind can be used."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

import qvruncompressed as qvr

BUILD = os.environ.get("QVR_BUILD_DIR")


@pytest.mark.skipif(not BUILD, reason="QVR_BUILD_DIR does not say where the build is")
def test_an_installed_package_works(tmp_path):
    subprocess.run(["cmake", "--install", BUILD, "--component", "python", "--prefix", str(tmp_path)], check=True,
                   capture_output=True)
    (package,) = tmp_path.rglob("qvruncompressed")
    ours = pathlib.Path(qvr.__file__).parent
    assert {path.name for path in package.iterdir()} == {path.name for path in ours.iterdir() if path.is_file()}
    code = (
        "import importlib.metadata, numpy, qvruncompressed as qvr\n"
        "frame = numpy.ones((2, 2, 3), numpy.uint8)\n"
        "assert (qvr.decode(qvr.encode(frame, 'RGB')) == frame).all()\n"
        "print(qvr.__file__, importlib.metadata.version('qvruncompressed'), qvr.__version__)\n"
    )
    # The library itself belongs to another component, and is found here by its path.
    environment = dict(os.environ, PYTHONPATH=str(package.parent), LD_LIBRARY_PATH=str(pathlib.Path(BUILD, "src")))
    done = subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True, cwd=tmp_path)
    assert done.returncode == 0, done.stderr
    assert done.stdout.split() == [str(package / "__init__.py"), qvr.__version__, qvr.__version__]


def test_another_python_is_told_so(tmp_path):
    """One of another version finds no compiled part under the name that it expects."""
    shutil.copytree(pathlib.Path(qvr.__file__).parent, tmp_path / "qvruncompressed", ignore=lambda *_: ["__pycache__"])
    for compiled in tmp_path.glob("qvruncompressed/_core*"):
        compiled.rename(compiled.with_name("_core.cpython-27-elsewhere.so"))
    environment = dict(os.environ, PYTHONPATH=str(tmp_path))
    done = subprocess.run([sys.executable, "-c", "import qvruncompressed"], env=environment, capture_output=True,
                          text=True, cwd=tmp_path)
    message = "this Python is not the one that the package was built for"
    assert done.returncode == 1
    assert f"\nImportError: {message}: No module named 'qvruncompressed._core'; " in done.stderr
    # As docs/python.md quotes it.
    document = pathlib.Path(__file__).parents[2].joinpath("docs/python.md").read_text()
    assert message in " ".join(document.split())
