# SPDX-License-Identifier: BSD-3-Clause
"""The type stubs declare what the package has: no more, no less, with the same parameters and defaults."""

import ast
import inspect
import os
import pathlib
import re
import shutil
import subprocess
import sys

import numpy as np
import pytest

import qvruncompressed as qvr

DOCUMENTS = pathlib.Path(__file__).parents[2] / "docs"
PACKAGE = pathlib.Path(qvr.__file__).parent
TREE = ast.parse((PACKAGE / "__init__.pyi").read_text())
# What is declared under each public name; of overloads the last one, which takes all that the others take.
STUB = {node.name: node for node in TREE.body
        if isinstance(node, (ast.ClassDef, ast.FunctionDef)) and not node.name.startswith("_")}


def declared_parameters(function):
    """(name, kind, default) of each parameter in the stub."""
    given = function.args
    positional = given.posonlyargs + given.args
    defaults = [None] * (len(positional) - len(given.defaults)) + given.defaults
    made = [(arg.arg, "positional", default) for arg, default in zip(positional, defaults)]
    made += [(given.vararg.arg, "all", None)] if given.vararg else []
    made += [(arg.arg, "keyword", default) for arg, default in zip(given.kwonlyargs, given.kw_defaults)]
    return [(name, kind, ast.literal_eval(default) if default is not None else inspect.Parameter.empty)
            for name, kind, default in made]


def real_parameters(function):
    kinds = {inspect.Parameter.POSITIONAL_OR_KEYWORD: "positional", inspect.Parameter.VAR_POSITIONAL: "all",
             inspect.Parameter.KEYWORD_ONLY: "keyword"}
    return [(it.name, kinds[it.kind], it.default) for it in inspect.signature(function).parameters.values()]


def methods(cls):
    return {name for base in cls.__mro__ if base.__module__.startswith("qvruncompressed")
            for name, member in vars(base).items() if inspect.isfunction(member)
            and (not name.startswith("_") or name in ("__init__", "__iter__", "__next__", "__enter__", "__exit__"))}


def test_all_that_is_public_is_declared():
    assert set(STUB) == set(qvr.__all__)
    assert (PACKAGE / "py.typed").exists()


@pytest.mark.parametrize("name", [name for name in qvr.__all__ if inspect.isfunction(getattr(qvr, name))])
def test_functions_have_the_declared_parameters(name):
    assert declared_parameters(STUB[name]) == real_parameters(getattr(qvr, name))


@pytest.mark.parametrize("name", ["Encoder", "Decoder", "Reader", "Writer"])
def test_classes_have_the_declared_methods(name):
    cls = getattr(qvr, name)
    declared = {node.name: node for node in STUB[name].body if isinstance(node, ast.FunctionDef)}
    assert set(declared) == methods(cls)
    for method, node in declared.items():
        assert declared_parameters(node) == real_parameters(getattr(cls, method)), method


@pytest.mark.parametrize("body", [TREE.body, STUB["Decoder"].body])
def test_overloads_have_the_same_parameters(body):
    variants = {}
    for node in body:
        if isinstance(node, ast.FunctionDef) and node.decorator_list:
            variants.setdefault(node.name, []).append([name for name, *_ in declared_parameters(node)])
    assert variants and all(len(them) == 2 and them[0] == them[1] for them in variants.values())


def test_names_that_stand_for_one_array_do():
    (names,) = [node.value.slice.elts for node in TREE.body
                if isinstance(node, ast.Assign) and node.targets[0].id == "_OneArray"]
    strings = {name.value for name in names if isinstance(name, ast.Constant)}
    members = {name.attr for name in names if isinstance(name, ast.Attribute)}
    single = {order.name for order in qvr.Order if isinstance(qvr.empty(order, "U8", width=2, height=2), np.ndarray)}
    assert members == single and strings == single | {"v210", "v216"}
    assert all(isinstance(qvr.empty(name, width=2, height=2), np.ndarray) for name in strings - members)


USE = """
import io
import sys
import numpy as np
import qvruncompressed as qvr

frame = qvr.empty("UYVY", np.uint8, width=np.uint32(4), height=2)
reveal_type(frame)
reveal_type(qvr.decode(b"", qvr.Order.RGBA, "U8"))
with qvr.Decoder(2) as decoder:
    reveal_type(decoder.decode(b"", "v210", out=frame))
    y, cb, cr = decoder.decode(b"", "I420")
print(qvr.info(b"").order.name)
with qvr.Reader(sys.stdin.buffer) as reader, qvr.Writer(io.BytesIO()) as writer:
    writer.write_bytes(reader.read_bytes())
    writer.write(next(reader))
qvr.Reader(open("clip.qvr", "rb", buffering=0))
qvr.Reader(open("clip.qvr"))
qvr.Writer(0)
"""


@pytest.mark.skipif(not shutil.which("mypy"), reason="mypy is not there")
def test_a_type_checker_understands_them(tmp_path):
    notebook = "".join(re.findall(r"^```python\n(.*?)^```", (DOCUMENTS / "python.md").read_text(), re.M | re.S))
    (tmp_path / "notebook.py").write_text(notebook)
    (tmp_path / "use.py").write_text(USE)
    # MYPYPATH, as mypy refuses a PYTHONPATH with what the interpreter has besides.
    environment = {name: value for name, value in os.environ.items() if name not in ("PYTHONPATH", "LD_PRELOAD")}
    done = subprocess.run(["mypy", "--strict", "--ignore-missing-imports", "--python-executable", sys.executable,
                           "notebook.py", "use.py"], capture_output=True, text=True, cwd=tmp_path,
                          env=dict(environment, MYPYPATH=str(PACKAGE.parent)))
    said = [tuple(line.split(": ")[:3]) for line in done.stdout.splitlines()[:-1]]
    assert [it[:2] for it in said[:3]] == [(f"use.py:{line}", "note") for line in (8, 9, 11)], done.stdout
    assert all(it[2].startswith('Revealed type is "numpy.ndarray[') for it in said[:3]), done.stdout
    # Text and numbers of files are refused, and nothing else.
    assert [it[:2] for it in said[3:]] == [("use.py:18", "error"), ("use.py:19", "error")], done.stdout


@pytest.mark.parametrize("name", ["Order", "Type", "WrapType"])
def test_enumerations_have_the_declared_members(name):
    declared = {node.targets[0].id: ast.literal_eval(node.value) for node in STUB[name].body}
    assert declared == {key: int(member) for key, member in getattr(qvr, name).__members__.items()}


@pytest.mark.parametrize("name", ["FrameInfo", "Payload", "Unwrapped"])
def test_records_have_the_declared_fields(name):
    assert tuple(node.target.id for node in STUB[name].body) == getattr(qvr, name)._fields


@pytest.mark.parametrize("name", [name for name in qvr.__all__ if name.endswith("Error")])
def test_errors_have_the_declared_base(name):
    assert STUB[name].bases[0].id == getattr(qvr, name).__base__.__name__
    assert issubclass(getattr(qvr, name), ValueError)


METHODS = [f"{cls}.{method}" for cls in ("Encoder", "Decoder", "Reader", "Writer")
           for method in sorted(methods(getattr(qvr, cls))) if not method.startswith("__")]


@pytest.mark.parametrize("name", [*qvr.__all__, *METHODS])
def test_everything_is_documented(name):
    thing = qvr
    for part in name.split("."):
        thing = getattr(thing, part)
    assert vars(thing)["__doc__"] if inspect.isclass(thing) else thing.__doc__
