"""Tables of frame ranges, and how they are cut into pieces of work."""

from __future__ import annotations

import dataclasses
import itertools
import os
from collections.abc import Callable, Iterator
from typing import Any, Optional, Union

import dask.dataframe.core
import pandas  # type: ignore[import]
from distributed import Client, KilledWorker

from .._arguments import to_path
from .._errors import usage_error

Ranges = Union["pandas.DataFrame", "dask.dataframe.core.DataFrame"]

#: What scan() gives. `behind` is the frame behind the last.
COLUMNS = {
    "file": "object",
    "first": "int64",
    "behind": "int64",
    "start": "datetime64[ns]",
    "end": "datetime64[ns]",
    "frames": "int64",
    "bytes": "int64",
    "problem": "object",
}

# A piece is at most about four seconds of decoding, so that a scheduler keeps thousands of cores
# busy, and at least eight frames. In between, there are enough pieces for hundreds of cores.
_MOST_FRAMES = 1024
_LEAST_FRAMES = 8
_MOST_BYTES = 128 << 20
_MOST_PARTS = 64
_ENOUGH_PIECES = 1024


@dataclasses.dataclass(frozen=True)
class FrameRange:
    """Frames of a recording, or why there are none."""

    file: str
    first: int
    behind: int
    problem: Optional[str] = None


def pieces_of(
    ranges: Ranges, client: Client, wait_for_all: Callable[[], None]
) -> Iterator[list[FrameRange]]:
    """Cuts long ranges and joins short ones. Which frames are together depends on nothing but the
    table.

    :param wait_for_all: until none of the pieces is worked on
    """
    total = 0
    for table in _tables(ranges, client, wait_for_all):
        total += int((table["behind"] - table["first"]).sum())
        yield from _pieces(table, total)


def checked(ranges: Ranges) -> Ranges:
    columns = getattr(ranges, "columns", None)
    if columns is None or not {"file", "first", "behind"} <= set(columns):
        raise usage_error('ranges is a table with the columns "file", "first" and "behind"')
    return _checked(ranges) if isinstance(ranges, pandas.DataFrame) else ranges


def _checked(table: Any) -> Any:
    """A table of absolute paths and whole numbers."""
    try:
        files = [os.path.abspath(to_path(file)) for file in table["file"]]
    except TypeError:
        raise usage_error('the column "file" has something else than paths') from None
    table = table.assign(
        file=files, first=_whole(table["first"], "first"), behind=_whole(table["behind"], "behind")
    )
    if "bytes" in table:
        table["bytes"] = _whole(table["bytes"].fillna(0), "bytes")
    if ((table["first"] < 0) | (table["behind"] < table["first"])).any():
        raise usage_error("ranges has frames that do not exist: 0 <= first <= behind")
    return table


def _whole(column: Any, name: str) -> Any:
    try:
        whole = column.astype("int64")
    except (TypeError, ValueError):  # NaN, too
        whole = None
    if whole is None or (whole != column).any():
        raise usage_error(f'the column "{name}" has something else than whole numbers')
    return whole


def _tables(ranges: Ranges, client: Client, wait_for_all: Callable[[], None]) -> Iterator[Any]:
    if isinstance(ranges, pandas.DataFrame):
        yield ranges
        return
    partitions = list(ranges.partitions)
    coming = client.compute(partitions[0])
    for partition, following in itertools.zip_longest(partitions, partitions[1:]):
        ready = coming
        if following is not None:
            coming = client.compute(following)  # while the frames of this one are mapped
        if isinstance(ready.exception(), KilledWorker):  # maybe of a piece that was beside it
            wait_for_all()
            coming.exception()
            # As a whole, since what failed of it is known to have failed.
            ready = client.submit(partition.compute, scheduler="synchronous", pure=False)
        yield _checked(ready.result())


def _pieces(table: Any, total: int) -> Iterator[list[FrameRange]]:
    """:param total: frames that are cut into pieces up to the end of this table"""
    most = min(max(total // _ENOUGH_PIECES, _LEAST_FRAMES), _MOST_FRAMES)
    piece: list[FrameRange] = []
    filled = 0.0
    for part, share in _parts(table, most):
        if piece and filled + share > 1:
            yield piece
            piece, filled = [], 0.0
        piece.append(part)
        filled += share
    if piece:
        yield piece


def _parts(table: Any, usual: int) -> Iterator[tuple[FrameRange, float]]:
    """Ranges that fit into a piece, and which share of one they are."""
    nothing = itertools.repeat(None)
    for file, first, behind, size, problem in zip(
        table["file"].tolist(),
        table["first"].tolist(),
        table["behind"].tolist(),
        table["bytes"].tolist() if "bytes" in table else nothing,
        table["problem"].tolist() if "problem" in table else nothing,
    ):
        if isinstance(problem, str):  # otherwise None or NaN
            yield FrameRange(file, first, behind, problem), 1 / _MOST_PARTS
            continue
        most = usual
        if size:
            most = max(min(usual, _MOST_BYTES * (behind - first) // int(size)), 1)
        for at in range(first, behind, most):
            part = FrameRange(file, at, min(at + most, behind))
            yield part, (part.behind - at) / most + 1 / _MOST_PARTS
