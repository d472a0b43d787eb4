"""What callers give, checked before the core gets it."""

from __future__ import annotations

import operator
import os
from typing import Any, SupportsIndex, Union

import numpy as np

from ._errors import usage_error

Path = Union[str, "os.PathLike[str]"]
#: Anything with the buffer protocol.
Bytes = Union[bytes, bytearray, memoryview, "np.ndarray[Any, Any]"]


def to_path(path: Path) -> str:
    name = os.fsdecode(path)
    if "\0" in name:  # the system would take what stands before it for another file
        raise usage_error("a path has no null character", name)
    return name


def to_bytes(value: Any, name: str) -> bytes:
    try:
        return bytes(memoryview(value))
    except TypeError:
        raise usage_error(f"{name} is bytes, not {type(value).__name__}") from None


def to_bool(value: Any, name: str) -> bool:
    if not isinstance(value, (bool, np.bool_)):
        raise usage_error(f"{name} is True or False")
    return bool(value)


def to_number(value: SupportsIndex, least: int, most: int, name: str) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise usage_error(f"{name} is an integer, not {type(value).__name__}") from None
    if not least <= number <= most:
        raise usage_error(f"{name} is {least} to {most}")
    return number


def to_form(format: Any, scale: Any, crop: Any) -> tuple[str, str, int, int]:
    """What the core takes in front of an array to decode into."""
    try:
        top, bottom = crop
    except (TypeError, ValueError):
        raise usage_error("crop is two numbers of rows, at the top and at the bottom") from None
    if not isinstance(format, str):
        raise usage_error('format is "rgb", "bgr" or "gray"')
    if not isinstance(scale, str):
        raise usage_error('scale is "1", "1/2", "1/4" or "1/8"')
    return format, scale, to_number(top, 0, 65535, "crop"), to_number(bottom, 0, 65535, "crop")
