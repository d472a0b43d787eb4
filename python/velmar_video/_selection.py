"""Which frames an index means."""

from __future__ import annotations

import operator
from collections.abc import Sequence
from typing import Any, Optional, Union, cast

import numpy as np
from numpy.typing import NDArray

from ._errors import Error, range_error, usage_error

Index = Union[int, "np.integer[Any]"]
#: Numbers of frames in the sequence that is asked, negative ones from its end; or a mask.
Indices = Union[slice, Sequence[int], "NDArray[np.integer[Any]]", "NDArray[np.bool_]"]


def index_error(index: int, count: int, path: str = "") -> Error:
    return range_error(f"there is no frame {index}, only {count}", path)


def number_of(index: Any, count: int, path: str = "") -> int:
    """A number from 0 on for an index that may be negative."""
    number = operator.index(index)
    if not -count <= number < count:
        raise index_error(number, count, path)
    return number + count if number < 0 else number


def select(numbers: Sequence[int], indices: Indices, path: str = "") -> Sequence[int]:
    """Those of the numbers at the indices."""
    if isinstance(indices, slice):
        return numbers[indices]
    if isinstance(indices, range) and isinstance(numbers, range):
        found = _range_of_range(numbers, indices, path)
        if found is not None:
            return found
    places = _places(indices, len(numbers), path)
    if isinstance(numbers, range):
        return cast("Sequence[int]", numbers.start + numbers.step * places)
    return cast("Sequence[int]", np.asarray(numbers)[places])


def _range_of_range(numbers: range, indices: range, path: str) -> Optional[range]:
    """Without a list of the indices, which may be long. None if they go through zero."""
    if not indices:
        return range(0)
    for end in (indices[0], indices[-1]):
        number_of(end, len(numbers), path)
    if (indices[0] < 0) != (indices[-1] < 0):
        return None
    step = numbers.step * indices.step
    first, last = numbers[indices[0]], numbers[indices[-1]]
    return range(first, last + (1 if step > 0 else -1), step)


def _places(indices: Indices, count: int, path: str) -> NDArray[np.int64]:
    array = np.asarray(indices)
    if array.dtype == bool and array.shape != (count,):
        raise usage_error(f"a mask has to have {count} elements", path)
    if array.dtype == bool:
        return np.flatnonzero(array)
    if array.size == 0:
        return np.zeros(0, np.int64)
    if array.ndim != 1 or array.dtype.kind not in "iu":
        raise usage_error("indices are a slice, a sequence of integers or a mask", path)
    outside = (array < -count) | (array >= count)
    if outside.any():
        raise index_error(int(array[outside][0]), count, path)
    places: NDArray[np.int64] = array.astype(np.int64)
    places[places < 0] += count
    return places
