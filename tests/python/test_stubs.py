# SPDX-License-Identifier: BSD-3-Clause
"""The type stubs declare what the package has: no more, no less, with the same parameters and defaults."""

import ast
import inspect
import pathlib

import pytest

import qvruncompressed as qvr

PACKAGE = pathlib.Path(qvr.__file__).parent
STUB = {node.name: node for node in ast.parse((PACKAGE / "__init__.pyi").read_text()).body
        if isinstance(node, (ast.ClassDef, ast.FunctionDef))}


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
