# SPDX-License-Identifier: BSD-3-Clause
"""Raw video frames to a self-describing, lossless, uncompressed bitstream and back, as NumPy arrays.

    import numpy as np, qvruncompressed as qvr

    frame = np.zeros((1080, 1920, 4), np.uint8)
    stream = qvr.encode(frame, "RGBA", alpha_rle=True)      # bytes
    qvr.info(stream)                                        # order, type, width, height, interlaced, wrapped
    again = qvr.decode(stream, "RGBA")                      # (1080, 1920, 4) of uint8

The functions make a handle for each call. Who codes many frames, or with several threads, keeps an Encoder or Decoder;
Reader and Writer take whole files. docs/python.md has the shape and dtype of each order and type.
"""

try:
    from ._core import version as _version
except ModuleNotFoundError as error:
    import sys

    raise ImportError(f"this Python is not the one that the package was built for: {error}; {sys.executable} is "
                      f"{sys.implementation.name} {sys.version_info.major}.{sys.version_info.minor}") from error
from ._codec import Decoder, Encoder, FrameInfo, Payload, Unwrapped, WrapType
from ._errors import ArgumentError, DecodeError, EncodeError, FileError, QVRError
from ._files import Reader, Writer
from ._formats import Order, Type, find_layout, parse_format
from ._frames import new_frame, whole

__all__ = [
    "ArgumentError", "DecodeError", "Decoder", "EncodeError", "Encoder", "FileError", "FrameInfo", "Order", "Payload",
    "QVRError", "Reader", "Type", "Unwrapped", "WrapType", "Writer", "decode", "empty", "encode", "info", "unwrap",
    "wrap", "wrap_tiles",
]

__version__ = "{}.{}.{}".format(*_version())


def encode(array, order, type=None, *, width=None, interlaced=False, alpha_rle=False, rle_slices=0, threads=1):
    """Encodes one frame and returns its bitstream as bytes: see Encoder.encode."""
    with Encoder(threads) as encoder:
        return encoder.encode(array, order, type, width=width, interlaced=interlaced, alpha_rle=alpha_rle,
                              rle_slices=rle_slices)


def decode(data, order=None, type=None, out=None, *, threads=1):
    """Decodes one frame and returns its samples, one array or a tuple of planes: see Decoder.decode."""
    with Decoder(threads) as decoder:
        return decoder.decode(data, order, type, out)


def info(data):
    """Describes the frame that data begins with: a FrameInfo. Raises DecodeError."""
    with Decoder() as decoder:
        return decoder.info(data)


def wrap(qcx, alpha, *, interlaced=False, alpha_rle=False, rle_slices=0, threads=1):
    """Wraps a compressed QCX frame beside an alpha plane and returns the bitstream: see Encoder.wrap."""
    with Encoder(threads) as encoder:
        return encoder.wrap(qcx, alpha, interlaced=interlaced, alpha_rle=alpha_rle, rle_slices=rle_slices)


def wrap_tiles(chunks, width, height, *, interlaced=False):
    """Wraps stitched chunks, in order, and returns the bitstream: see Encoder.wrap_tiles."""
    with Encoder() as encoder:
        return encoder.wrap_tiles(chunks, width, height, interlaced=interlaced)


def unwrap(data, *, threads=1):
    """Takes the wrapped payloads out of a frame: an Unwrapped. See Decoder.unwrap."""
    with Decoder(threads) as decoder:
        return decoder.unwrap(data)


def empty(order, type=None, *, width, height):
    """A new frame, its samples unset: one array, or a tuple of planes that lie in one run of memory.

    Such planes are encoded from and decoded into without a copy. order, type: as for encode; the type may be left out
    only where the order's name implies it.
    """
    order, type = parse_format(order, type)
    if type is None:
        raise ArgumentError("empty() needs a type, or an order's name that implies one")
    _, arrays = new_frame(find_layout(order, type), whole("width", width), whole("height", height), unset=True)
    return arrays[0] if len(arrays) == 1 else arrays
