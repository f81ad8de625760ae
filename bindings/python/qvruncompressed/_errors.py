# SPDX-License-Identifier: BSD-3-Clause
"""The exceptions of the package. All are ValueErrors."""


class QVRError(ValueError):
    """Base of all errors of this package."""


class ArgumentError(QVRError):
    """What was asked for is not possible: a name, shape, dtype or size; the message says what is expected."""


class EncodeError(QVRError):
    """The library refused to encode or wrap a frame. The message is the library's own."""


class DecodeError(QVRError):
    """The library refused a bitstream, or to decode it as asked for. The message is the library's own."""


class FileError(QVRError):
    """A .qvr file is damaged. The message names the file, the frame's number and its offset."""
