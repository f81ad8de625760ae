# SPDX-License-Identifier: BSD-3-Clause
"""Names of orders and types, and the table of shapes."""

import pathlib
import re

import numpy as np
import pytest

import frames
import qvruncompressed as qvr
from qvruncompressed import _core, _formats

SHAPES_6X4 = {
    "YUY2": [(4, 6, 2)],
    "UYVY": [(4, 6, 2)],
    "ARGB": [(4, 6, 4)],
    "BGRA": [(4, 6, 4)],
    "RGB": [(4, 6, 3)],
    "BGR": [(4, 6, 3)],
    "RGBA": [(4, 6, 4)],
    "ABGR": [(4, 6, 4)],
    "YUV444": [(4, 6, 3)],
    "I420": [(4, 6), (2, 3), (2, 3)],
    "UYAVYA": [(4, 6, 3)],
    "YUVA444": [(4, 6, 4)],
    "A420": [(4, 6), (2, 3), (2, 3), (4, 6)],
    "Alpha": [(4, 6)],
    "YUY2+A": [(4, 6, 2), (4, 6)],
    "UYVY+A": [(4, 6, 2), (4, 6)],
}


@pytest.mark.parametrize("order", SHAPES_6X4)
def test_shapes_are_those_of_the_order(order):
    frame = qvr.empty(order, "U8", width=6, height=4)
    assert [plane.shape for plane in frames.as_planes(frame)] == SHAPES_6X4[order]
    assert isinstance(frame, tuple) == (len(SHAPES_6X4[order]) > 1)


def test_dtypes_are_those_of_the_type():
    for type, dtype in frames.DTYPES.items():
        assert qvr.empty("UYVY", type, width=6, height=4).dtype == dtype


@pytest.mark.parametrize("width, columns", [(2, 4), (6, 4), (8, 8), (1280, 856), (1920, 1280)])
def test_v210_is_rows_of_words(width, columns):
    assert qvr.empty("v210", width=width, height=3).shape == (3, columns)


def test_there_are_106_pairs():
    wanted = {(qvr.Order[order], qvr.Type[type]) for order, type in frames.pairs()}
    assert len(wanted) == 106
    assert set(_formats.LAYOUTS) == wanted


@pytest.mark.parametrize("order, type", frames.pairs())
def test_frames_are_as_large_as_the_library_says(order, type):
    for width in (2, 4, 6, 8, 14, 1280):
        for height in (0, 1, 2, 5, 720):
            planes = frames.as_planes(qvr.empty(order, type, width=width, height=height))
            record = (qvr.Order[order], qvr.Type[type], width, height, 0, 0, 0)
            assert sum(plane.nbytes for plane in planes) == _core.raw_size(record)


@pytest.mark.parametrize("name, order", [
    ("UYVY", 2), ("uyvy", 2), ("CbYCrY", 2), ("yuyv", 1), ("a", 14), ("Matte", 14), ("UYVY+A", 16), ("uyvy_a", 16),
    (2, 2), (qvr.Order.UYVY, 2), (np.uint32(2), 2), ("I420", 10), ("yuv420", 10), ("YUVA420", 13), ("ycbcr444", 9),
])
def test_orders_have_names_and_numbers(name, order):
    assert _formats.parse_format(name, None) == (qvr.Order(order), None)


@pytest.mark.parametrize("name, order, type", [
    ("v210", 2, 5), ("V210", 2, 5), ("v216", 2, 2), ("RGB24", 5, 1), ("bgr24", 6, 1), ("rgb48", 5, 2), ("RGBA64", 7, 2),
])
def test_some_names_imply_a_type(name, order, type):
    assert _formats.parse_format(name, None) == (order, type)
    assert _formats.parse_format(name, type) == (order, type)


@pytest.mark.parametrize("name, type", [
    ("U8", 1), ("uint8", 1), ("u16", 2), ("U10", 3), ("U12", 4), ("u10packed", 5), ("half", 6), ("float16", 6),
    ("Float", 7), ("fixed16", 214), (214, 214), (qvr.Type.U12, 4),
])
def test_types_have_names_and_numbers(name, type):
    assert _formats.parse_format(None, name) == (None, qvr.Type(type))


@pytest.mark.parametrize("order, type, message", [
    ("NV12", None, "there is no order 'NV12'; orders are YUY2, UYVY, ARGB, BGRA, RGB, BGR, RGBA, ABGR, YUV444, I420, "
                   "UYAVYA, YUVA444, A420, Alpha, YUY2_A, UYVY_A"),
    (17, "U8", "there is no order 17; orders are YUY2, UYVY, ARGB, BGRA, RGB, BGR, RGBA, ABGR, YUV444, I420, "
               "UYAVYA, YUVA444, A420, Alpha, YUY2_A, UYVY_A"),
    ("RGB", "U14", "there is no type 'U14'; types are U8, U16, U10, U12, U10Packed, Half, Float, Fixed16"),
    ("RGB", [], "there is no type []; types are U8, U16, U10, U12, U10Packed, Half, Float, Fixed16"),
    ("RGB", np.uint16, "samples of dtype uint16 can be any of U16, U10, U12: say which with type="),
    ("RGB", np.bool_, "order RGB takes uint8, uint16, float16, float32 or int16, not bool: convert it with astype()"),
    ("v210", np.uint16, "samples of dtype uint16 can be any of U16, U10, U12: say which with type="),
    ("v210", np.uint8, "type U8 contradicts the order's name, which is type U10Packed"),
    ("v210", "U8", "type U8 contradicts the order's name, which is type U10Packed"),
    ("Alpha", "Half", "order Alpha does not go with type Half; its types are U8, U16"),
    ("RGB", "U10Packed",
     "order RGB does not go with type U10Packed; its types are U8, U16, U10, U12, Half, Float, Fixed16"),
    ("RGB", None, "empty() needs a type, or an order's name that implies one"),
])
def test_what_does_not_exist_is_named(order, type, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.empty(order, type, width=2, height=2)
    assert str(caught.value) == message


@pytest.mark.parametrize("dtype, type", [
    (np.uint8, "U8"), (np.float16, "Half"), (np.float32, "Float"), (np.int16, "Fixed16")])
def test_a_dtype_that_leaves_no_choice_is_enough(dtype, type):
    frame = np.ones((2, 2, 3), dtype)
    assert qvr.encode(frame, "RGB") == qvr.encode(frame, "RGB", type)


@pytest.mark.parametrize("order, dtype, type", [
    ("RGB", np.uint8, 1), ("RGB", np.dtype(np.uint8), 1), (None, np.float16, 6), ("UYVY", np.uint32, 5),
    ("Alpha", np.uint16, 2), ("v210", np.uint32, 5), ("v216", np.uint16, 2), ("Y210", np.uint16, 3),
])
def test_a_dtype_may_stand_for_its_type(order, dtype, type):
    assert _formats.parse_format(order, dtype)[1] == type


def test_what_is_not_a_name_is_shown_briefly():
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode("RGBA", bytes(100000))
    assert len(str(caught.value)) < 300


TOOL = pathlib.Path(__file__).parents[2].joinpath("tools/qvr/formats.cpp").read_text()


def tools_rows(function, row):
    """What a pattern finds in each row of one of the tool's tables."""
    return re.findall(row, re.search(rf"& {function}\(\) {{\n(.*?)^}}", TOOL, re.M | re.S)[1], re.S)


def test_names_of_formats_are_those_of_the_tool():
    row = r'"(\w+)",\s*QVRUncompressed_Order(\w+),\s*QVRUncompressed_Type(\w+)'
    rows = tools_rows("all_named_formats", row)
    named = {name.lower(): (qvr.Order[order], qvr.Type[type]) for name, order, type in rows}
    assert len(named) > 30
    orders = {name.lower() for name in qvr.Order.__members__}
    assert _formats.PAIR_NAMES == {name: pair for name, pair in named.items() if name not in orders}
    for name, (order, _) in named.items():
        assert _formats.parse_format(name, None)[0] == order


@pytest.mark.parametrize("function, prefix, enum, index", [
    ("all_orders", "QVRUncompressed_Order", qvr.Order, 0), ("all_types", "QVRUncompressed_Type", qvr.Type, 1),
])
def test_names_of_orders_and_types_are_those_of_the_tool(function, prefix, enum, index):
    rows = tools_rows(function, rf'{prefix}(\w+),\s*"([^"]+)",\s*\{{(.*?)\}}')
    assert len(rows) == len(enum)
    for value, name, aliases in rows:
        for given in [value, name, *re.findall(r'"([^"]+)"', aliases)]:
            what = [None, None]
            what[index] = given
            assert _formats.parse_format(*what)[index] == enum[value]


def test_words_of_uyvy_are_v210():
    frame = np.arange(8, dtype=np.uint32).reshape(2, 4)
    assert qvr.encode(frame, "UYVY") == qvr.encode(frame, "v210")


@pytest.mark.parametrize("order, dtype, message", [
    ("RGB", np.uint16, "samples of dtype uint16 can be any of U16, U10, U12: say which with type="),
    ("RGB", float, "order RGB takes uint8, uint16, float16, float32 or int16, not float64: convert it with astype()"),
    ("RGB", bool, "order RGB takes uint8, uint16, float16, float32 or int16, not bool: convert it with astype()"),
    ("RGB", ">u2", "order RGB takes uint8, uint16, float16, float32 or int16, not >u2: convert it with astype()"),
    ("I420", np.int16, "order I420 takes uint8, uint16, float16 or float32, not int16: convert it with astype()"),
])
def test_other_dtypes_are_not(order, dtype, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode(np.ones((2, 2, 3), dtype), order)
    assert str(caught.value) == message


def test_versions_agree():
    assert qvr.__version__ == "2.7.4"
