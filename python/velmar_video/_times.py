"""Times, without a float on the way."""

from __future__ import annotations

import datetime
import operator
from typing import Any, SupportsIndex, Union

import numpy as np
from numpy.typing import NDArray

from ._errors import usage_error

Time = Union[np.datetime64, SupportsIndex]
Duration = Union[np.timedelta64, datetime.timedelta, SupportsIndex]
Times = NDArray[np.datetime64]

_LIMIT = 1 << 63
_PICOSECONDS = {
    "W": 7 * 86400 * 10**12,
    "D": 86400 * 10**12,
    "h": 3600 * 10**12,
    "m": 60 * 10**12,
    "s": 10**12,
    "ms": 10**9,
    "us": 10**6,
    "ns": 10**3,
    "ps": 1,
}


def to_microseconds(time: Any) -> int:
    """Microseconds since 1970. Raises Error for what is not exactly one."""
    if isinstance(time, np.datetime64):
        return _exact(_with_days(time))
    return _integer(time, "a time is a numpy.datetime64 or an integer, microseconds since 1970")


def to_stored_microseconds(time: Any) -> int:
    """The same of a time that a recording can have."""
    microseconds = to_microseconds(time)
    if microseconds < 0:
        raise usage_error("a time before 1970")
    return microseconds


def duration_to_microseconds(duration: Any) -> int:
    """Microseconds. Raises Error for what is not exactly one."""
    if isinstance(duration, np.timedelta64):
        return _exact(duration)
    if isinstance(duration, datetime.timedelta):
        return duration // datetime.timedelta(microseconds=1)
    return _integer(duration, "a duration is a timedelta or an integer, microseconds")


def to_time(microseconds: int) -> np.datetime64:
    """NaT for what a damaged file may hold and datetime64 cannot, as in the arrays."""
    if microseconds >= _LIMIT:
        return np.datetime64("NaT", "us")
    return np.datetime64(microseconds, "us")


def _with_days(time: np.datetime64) -> np.datetime64:
    """Years and months are of different lengths."""
    unit, _ = np.datetime_data(time.dtype)
    if unit in ("Y", "M") and abs(int(time.astype(np.int64))) < 10**7:
        time = time.astype("datetime64[D]")
    return time


def _exact(value: Any) -> int:
    # numpy's own conversions wrap around.
    if np.isnat(value):
        raise usage_error("it is no time (NaT)")
    unit, count = np.datetime_data(value.dtype)
    if unit not in _PICOSECONDS:
        raise usage_error(f"{value!r} has a unit that is no fixed number of microseconds")
    picoseconds = int(value.astype(np.int64)) * count * _PICOSECONDS[unit]
    microseconds, rest = divmod(picoseconds, 10**6)
    if rest:
        raise usage_error(f"{value} is not a whole number of microseconds")
    return _in_range(microseconds)


def _integer(value: Any, words: str) -> int:
    try:
        return _in_range(operator.index(value))
    except TypeError:
        raise usage_error(f"{words}, not {type(value).__name__}") from None


def _in_range(microseconds: int) -> int:
    if not -_LIMIT < microseconds < _LIMIT:
        raise usage_error("a time or duration beyond what datetime64[us] can hold")
    return microseconds
