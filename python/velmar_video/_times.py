"""Times, without a float on the way."""

from __future__ import annotations

import datetime
import operator
from typing import Any, Union

import numpy as np
from numpy.typing import NDArray

from ._errors import usage_error

Time = Union[np.datetime64, int]
Duration = Union[np.timedelta64, datetime.timedelta, int]
Times = NDArray[np.datetime64]


def to_microseconds(time: Any) -> int:
    """Microseconds since 1970. Raises Error for what is not exactly one."""
    if isinstance(time, np.datetime64):
        return _exact(time, np.datetime64(0, "us"))
    return _integer(time, "a time is a numpy.datetime64 or an integer, microseconds since 1970")


def duration_to_microseconds(duration: Any) -> int:
    """Microseconds. Raises Error for what is not exactly one."""
    if isinstance(duration, np.timedelta64):
        return _exact(duration, np.timedelta64(0, "us"))
    if isinstance(duration, datetime.timedelta):
        return duration // datetime.timedelta(microseconds=1)
    return _integer(duration, "a duration is a timedelta or an integer, microseconds")


def to_time(microseconds: int) -> np.datetime64:
    """NaT for what a damaged file may hold and datetime64 cannot, as in the arrays."""
    if microseconds >= 1 << 63:
        return np.datetime64("NaT", "us")
    return np.datetime64(microseconds, "us")


def _exact(value: Any, like: Any) -> int:
    if np.isnat(value):
        raise usage_error("it is no time (NaT)")
    rounded = value.astype(like.dtype)
    if rounded != value:
        raise usage_error(f"{value} is not a whole number of microseconds")
    return int(rounded.astype(np.int64))


def _integer(value: Any, words: str) -> int:
    try:
        return operator.index(value)
    except TypeError:
        raise usage_error(f"{words}, not {value!r}") from None
