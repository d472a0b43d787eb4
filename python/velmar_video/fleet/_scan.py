"""Which frames of which recordings."""

from __future__ import annotations

import concurrent.futures
import contextlib
import dataclasses
import operator
import os
import sqlite3
from collections.abc import Iterable, Iterator, Sequence
from typing import Any, Optional, Union

from dask.dataframe.io.io import from_delayed, from_pandas
from dask.delayed import delayed
import numpy as np
import pandas  # type: ignore[import]
from distributed import Client, KilledWorker

from .. import _core
from .._arguments import Path, to_number, to_path
from .._errors import Error, usage_error
from .._recording import Recording
from ._ranges import COLUMNS, Ranges
from ._spread import spread

_PATHS_AT_ONCE = 64  # a message to a worker takes a millisecond, opening a recording too

_LAST_MICROSECOND = (1 << 63) // 1000 - 1  # that pandas' times hold

_EXTENSIONS = (".img", ".rtv")

Row = tuple[Any, ...]


def scan(
    paths_or_db: Union[Path, Iterable[Path]],
    where: Optional[str] = None,
    *,
    client: Optional[Client] = None,
    npartitions: Optional[int] = None,
) -> Ranges:
    """A table of the frames of recordings: a row for each recording, or for each run of frames for
    which a condition holds.

    Its columns: `file`, an absolute path; `first` and `behind`, the numbers of the first frame and
    of the one behind the last; `start` and `end`, capture times of the first and the last frame,
    UTC (NaT where there is none); `frames`; `bytes` of the frames as stored; `problem`, why a
    recording cannot be read, in a row without frames, else None.

    :param paths_or_db: recordings, or folders, of which all recordings are taken, also in folders in
        them; or a catalogue, as of :func:`catalog`. It knows which recordings need not be opened.
    :param where: a condition as of :meth:`velmar_video.Recording.where`
    :param client: of a cluster, whose workers open the recordings. Without one it is threads of
        this process.
    :param npartitions: gives a dask DataFrame of so many parts, for tables that are larger than
        memory. Recordings are opened when a part is computed.
    :raises ValueError: if the condition is wrong
    :raises OSError: if a folder cannot be listed
    """
    if where is not None and not isinstance(where, str):
        raise usage_error("where is text")
    files = list(recordings_of(paths_or_db))
    if len(files) == 1 and not files[0].endswith(_EXTENSIONS):
        return _asked(files[0], where or "", npartitions)
    scanned = _Scanned(where)
    if npartitions is not None:
        return _lazy(files, scanned, to_number(npartitions, 1, 1 << 31, "npartitions"))
    if client is None:
        with concurrent.futures.ThreadPoolExecutor() as pool:
            return _table(pool.map(scanned, files))
    pieces = [files[at : at + _PATHS_AT_ONCE] for at in range(0, len(files), _PATHS_AT_ONCE)]
    return _table(
        [_problem(file, "the workers that opened it died")]
        if isinstance(rows, KilledWorker)
        else rows
        for file, rows in spread(client, scanned, pieces, ordered=True)
    )


def _absolute(paths: Union[Path, Iterable[Path]]) -> list[str]:
    if isinstance(paths, (str, bytes, os.PathLike)):
        paths = [paths]
    return [os.path.abspath(to_path(path)) for path in paths]


def folders_of(paths: Union[Path, Iterable[Path]]) -> list[str]:
    return [path for path in _absolute(paths) if os.path.isdir(path)]


def recordings_of(paths: Union[Path, Iterable[Path]]) -> Iterator[str]:
    for top in _absolute(paths):
        if not os.path.isdir(top):
            yield top
            continue
        for folder, folders, names in os.walk(top, onerror=_raise):
            folders.sort()
            for name in sorted(names):
                if name.endswith(_EXTENSIONS):
                    yield os.path.join(folder, name)


def _raise(error: OSError) -> None:
    raise error


def _asked(db: str, where: str, npartitions: Optional[int]) -> Ranges:
    found, problems = _core.catalog_find(os.fsencode(db), where, len(os.sched_getaffinity(0)))
    rows: list[Row] = [
        (file, first, behind, _time(start), _time(end), behind - first, size, None)
        for file, first, behind, start, end, size in found
    ]
    rows += [_problem(*each) for each in [*problems, *_unreadable(db)]]
    table = _table([sorted(rows, key=operator.itemgetter(0))])
    return table if npartitions is None else from_pandas(table, npartitions)


def _unreadable(db: str) -> list[tuple[str, str]]:
    with contextlib.closing(sqlite3.connect(db)) as connection:
        connection.text_factory = os.fsdecode
        return list(
            connection.execute("SELECT file, problem FROM recordings WHERE state = 'unreadable'")
        )


def _time(microseconds: int) -> Optional[np.datetime64]:
    return np.datetime64(microseconds, "us") if microseconds <= _LAST_MICROSECOND else None


def _lazy(files: Sequence[str], scanned: _Scanned, npartitions: int) -> Ranges:
    batches = [list(batch) for batch in np.array_split(np.array(files, object), npartitions)]
    parts = [delayed(_scan_batch)(scanned, batch) for batch in batches]
    return from_delayed(parts, meta=_table([]))


def _scan_batch(scanned: _Scanned, files: Sequence[str]) -> Any:
    return _table(map(scanned, files))


def _table(found: Iterable[list[Row]]) -> Any:
    rows = [row for rows in found for row in rows]
    return pandas.DataFrame(rows, columns=list(COLUMNS)).astype(COLUMNS)


def _problem(file: str, words: str) -> Row:
    return file, 0, 0, None, None, 0, 0, words


@dataclasses.dataclass(frozen=True)
class _Scanned:
    """What is found in a recording."""

    where: Optional[str]

    def __call__(self, file: str) -> list[Row]:
        try:
            with Recording(file) as recording:
                return self._rows(recording)
        except Error as error:
            if not error.path:  # the condition is wrong, whatever the file is like
                raise
            return [_problem(file, error.message)]

    def _rows(self, recording: Recording) -> list[Row]:
        runs: list[Any] = [range(len(recording))]
        if self.where is not None:
            found = recording._file.core.find(self.where)
            runs = np.split(found, np.flatnonzero(np.diff(found) != 1) + 1) if len(found) else []
        times = recording.capture_times
        times[times.astype(np.int64) > _LAST_MICROSECOND] = np.datetime64("NaT")
        sizes = recording.sizes
        rows: list[Row] = []
        for run in runs:
            first, behind = (int(run[0]), int(run[-1]) + 1) if len(run) else (0, 0)
            start, end = (times[first], times[behind - 1]) if len(run) else (None, None)
            size = int(sizes[first:behind].sum())
            rows.append((recording.path, first, behind, start, end, behind - first, size, None))
        return rows
