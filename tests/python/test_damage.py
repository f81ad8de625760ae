# SPDX-License-Identifier: BSD-3-Clause
"""Bitstreams that are damaged, and handles after them."""

import io

import numpy as np
import pytest

import frames
import qvruncompressed as qvr


def message_of(call):
    with pytest.raises(qvr.DecodeError) as caught:
        call()
    assert isinstance(caught.value, qvr.QVRError) and isinstance(caught.value, ValueError)
    return str(caught.value)


@pytest.mark.parametrize("data, message", [
    (b"", "buffer size should be at least 8"),
    (b"1234567", "buffer size should be at least 8"),
    (b"\x10\0\0\0pick" + bytes(8), "'pack' box expected at offset 4"),
    (b"\x20\0\0\0pack" + bytes(8), "pack box size(32) is greater than buffer size(16)"),
    (b"\x08\0\0\0pack", "at least one 'sinf' and one 'sdat' box expected"),
])
def test_the_message_is_the_librarys(data, message):
    assert message_of(lambda: qvr.info(data)) == message
    assert message_of(lambda: qvr.decode(data)) == message
    assert message_of(lambda: qvr.unwrap(data)) == message


def test_a_frame_cut_anywhere_is_refused(rng):
    stream = qvr.encode(frames.noise(rng, (4, 6, 4), np.uint8), "RGBA", alpha_rle=True)
    with qvr.Decoder() as decoder:
        for size in range(len(stream)):
            message_of(lambda: decoder.decode(stream[:size]))
        assert decoder.decode(stream).shape == (4, 6, 4)


def test_a_turned_bit_gives_a_frame_or_a_message(rng):
    frame = frames.noise(rng, (4, 6, 4), np.uint8)
    stream = bytearray(qvr.encode(frame, "RGBA", alpha_rle=True))
    refused = 0
    with qvr.Decoder() as decoder:
        for bit in range(8 * len(stream)):
            stream[bit // 8] ^= 1 << bit % 8
            try:
                decoder.decode(stream, "RGBA")
            except qvr.QVRError:
                refused += 1
            except MemoryError:  # a coded plane that claims gigabytes of samples
                refused += 1
            stream[bit // 8] ^= 1 << bit % 8
        assert (decoder.decode(stream, "RGBA") == frame).all()
    assert refused > 100


def test_sizes_beyond_4_gib_are_refused():
    stream = bytearray(qvr.encode(np.zeros((2, 2), np.uint16), "Alpha", "U16", alpha_rle=True))
    at = stream.index(b"sinf") + 4
    stream[at : at + 8] = b"\xff" * 8
    assert message_of(lambda: qvr.decode(stream)) == (
        "order Alpha, type U16: a frame of 4294967295x4294967295 is too large; it must stay below 4 GiB")


def test_a_handle_goes_on_after_an_error(rng):
    frame = frames.noise(rng, (4, 6, 3), np.uint8)
    with qvr.Encoder() as encoder, qvr.Decoder() as decoder:
        for _ in range(3):
            with pytest.raises(qvr.EncodeError):
                encoder.encode((np.zeros((3, 3), np.uint8), *[np.zeros((2, 2), np.uint8)] * 2), "I420")
            with pytest.raises(qvr.DecodeError):
                decoder.decode(b"nothing at all")
            assert (decoder.decode(encoder.encode(frame, "RGB")) == frame).all()


def test_what_is_no_buffer_is_a_type_error():
    with pytest.raises(TypeError, match="bytes-like object is required"):
        qvr.info("text")


@pytest.mark.parametrize("data, message", [
    (memoryview(bytes(32))[::2], "this memoryview cannot be read as a run of bytes: it has gaps"),
    (np.zeros((8, 8), np.uint8)[:, :4], "this numpy.ndarray cannot be read as a run of bytes: it has gaps"),
    (np.asfortranarray(np.zeros((8, 8), np.uint8)), "this numpy.ndarray cannot be read as a run of bytes: it has gaps"),
    (np.array([b"a", None], object), "this numpy.ndarray cannot be read as a run of bytes: it holds Python objects"),
    (np.zeros(9, [("number", int), ("any", object)]),
     "this numpy.ndarray cannot be read as a run of bytes: it holds Python objects"),
    (np.zeros(9, "datetime64[s]"),
     "this numpy.ndarray cannot be read as a run of bytes: cannot include dtype 'M' in a buffer"),
])
def test_buffers_that_are_no_run_of_bytes_are_refused(data, message):
    stream = qvr.encode(np.zeros((2, 2), np.uint8), "Alpha")
    for use in (qvr.info, qvr.decode, qvr.unwrap, lambda it: qvr.wrap(it, np.zeros((2, 2), np.uint8)),
                lambda it: qvr.Writer(io.BytesIO()).write_bytes(it)):
        with pytest.raises(qvr.ArgumentError) as caught:
            use(data)
        assert str(caught.value) == message
    assert qvr.info(np.frombuffer(stream, [("Order", np.uint8)])) == qvr.info(stream)


@pytest.mark.parametrize("order, type", [("Alpha", None), (None, "U10Packed")])
def test_pairs_that_the_frame_leads_to_are_its_fault(order, type):
    stream = qvr.encode(np.zeros((2, 2, 3), np.float16), "RGB")
    assert "does not go with type" in message_of(lambda: qvr.decode(stream, order, type))
    with pytest.raises(qvr.ArgumentError, match="^order Alpha does not go with type Half"):
        qvr.decode(stream, "Alpha", "Half")


@pytest.mark.parametrize("order, type, message", [
    ("UYVY", None, "src metadata type is incompatible with color component order or component type"),
    ("Alpha", None, "src metadata type is incompatible with color component order or component type"),
    ("RGB", "U16", "bit depth in src metadata is different than bit depth in uncompressed params"),
])
def test_orders_that_the_planes_do_not_serve_are_refused(order, type, message):
    stream = qvr.encode(np.zeros((2, 2, 4), np.uint8), "RGBA")
    assert message_of(lambda: qvr.decode(stream, order, type)) == message
