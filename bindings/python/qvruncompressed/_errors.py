# SPDX-License-Identifier: BSD-3-Clause
"""The exceptions of the package. All are ValueErrors."""


class QVRError(ValueError):
    """Base of all errors of this package."""


class ArgumentError(QVRError):
    """What was asked for is not possible: a name, shape, dtype or size; the message says what is expected."""


class EncodeError(QVRError):
    """The library refused to encode or wrap a frame. The message is the library's own."""


class DecodeError(QVRError):
    """The library refused a bitstream, or to decode it as asked for, or the frame is too large for an array.

    The message is the library's own where it was the library that refused.
    """


class FileError(QVRError):
    """A .qvr file is damaged, or reading or writing it has broken off. The message names the file and the place."""
