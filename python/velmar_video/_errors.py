"""The exceptions of velmar_video."""

from __future__ import annotations

import errno
import re
from typing import Optional


class Error(Exception):
    """Base class of the package's errors.

    Where one of Python's own exceptions fits, the error is one of these, too: FileNotFoundError,
    FileExistsError, PermissionError, IndexError or ValueError.

    Attributes:
        message: what happened, without the path
        code: name of the library's error code, such as "VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E"
        path: the file, "" if the error is about none
        index: number of the frame in the file, or None
    """

    def __init__(self, message: str, code: str = "", path: str = "", index: Optional[int] = None):
        super().__init__(f"{path}: {message}" if path else message)
        self.message = message
        self.code = code
        self.path = path
        self.index = index

    def __str__(self) -> str:  # OSError and KeyError have their own
        return str(self.args[0]) if self.args else ""

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (self.message, self.code, self.path, self.index)


class _FileError(Error, OSError):
    number: int

    def __init__(self, message: str, code: str = "", path: str = "", index: Optional[int] = None):
        super().__init__(message, code, path, index)
        self.errno = self.number
        self.filename = path


class _NotFoundError(_FileError, FileNotFoundError):
    number = errno.ENOENT


class _ExistsError(_FileError, FileExistsError):
    number = errno.EEXIST


class _PermissionError(_FileError, PermissionError):
    number = errno.EACCES


class _RangeError(Error, IndexError):
    pass


class _UsageError(Error, ValueError):
    pass


class ClosedError(Error, ValueError):
    """A recording, writer or edit that is used after it was closed."""


_CLASSES: dict[str, type[Error]] = {
    "VELMAR_ERROR_CODE_FILE_NOT_EXIST_E": _NotFoundError,
    "VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E": _PermissionError,
    "VELMAR_ERROR_CODE_OUT_RANGE_E": _RangeError,
    "VELMAR_ERROR_CODE_INVALID_PARAMETER_E": _UsageError,
    "VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E": _UsageError,
    "VELMAR_ERROR_CODE_NOT_INIT_E": ClosedError,
}


#: What the options of the tool, which the toolkit's words name, are called here.
_NAMES = {
    "--force": "overwrite=True",
    "--fps": "frame_rate",
    "--sensor-time": "capture_times",
    "--arrived-time": "arrival_times",
    "--shift-time": "shift_times",
}


def in_python(words: str) -> str:
    """The toolkit's words with the package's names."""
    return re.sub(
        "--[a-z-]+[a-z]", lambda found: _NAMES.get(found[0], found[0][2:].replace("-", "_")), words
    )


def make_error(words: str, code: str, path: str, index: Optional[int]) -> Error:
    """The exception for a failure of the toolkit."""
    kind = _CLASSES.get(code, Error)
    if "it is already there" in words:
        kind = _ExistsError
    return kind(in_python(words), code, path, index)


def usage_error(words: str, path: str = "") -> Error:
    return make_error(words, "VELMAR_ERROR_CODE_INVALID_PARAMETER_E", path, None)


def range_error(words: str, path: str = "") -> Error:
    return make_error(words, "VELMAR_ERROR_CODE_OUT_RANGE_E", path, None)


def closed_error(path: str) -> Error:
    return make_error("it is closed", "VELMAR_ERROR_CODE_NOT_INIT_E", path, None)
