"""A catalogue that many workers make."""

from __future__ import annotations

import contextlib
import dataclasses
import os
import sqlite3
import tempfile
from collections.abc import Iterable, Iterator
from typing import Optional, Union

from distributed import Client, KilledWorker

from .. import _core
from .._arguments import Path, to_path
from .._errors import Error
from ._scan import folders_of, recordings_of
from ._spread import spread

_FILES_AT_ONCE = 256  # a second or so of a worker's time
_KILLERS_AT_ONCE = 16  # of those one of which killed its workers

State = tuple[int, int, int]  #: bytes, modification time in nanoseconds, inode


@dataclasses.dataclass(frozen=True)
class CatalogChanges:
    """What catalog() has found.

    Attributes:
        added: recordings that are new in the catalogue, or changed
        unchanged: those that it had as they are
        unreadable: those that are in it with a problem only; it can be that workers died of them
        removed: those of which it knew and that are not there any more
    """

    added: int
    unchanged: int
    unreadable: int
    removed: int


@dataclasses.dataclass(frozen=True)
class _Batch:
    """Recordings that become a catalogue of their own."""

    files: list[str]
    known: list[Optional[State]]  # those that were read, as they were

    def singles(self) -> list[_Batch]:
        return [_Batch([file], [known]) for file, known in zip(self.files, self.known)]


@dataclasses.dataclass(frozen=True)
class _Summaries:
    catalog: bytes  # the file, empty if it has nothing
    added: int = 0
    unchanged: int = 0
    unreadable: int = 0
    gone: list[str] = dataclasses.field(default_factory=list)


def _summarise(batch: _Batch) -> _Summaries:
    files, gone = [], []
    for file, known in zip(batch.files, batch.known):
        try:
            status = os.stat(file)
        except OSError:
            gone.append(file)
            continue
        if (status.st_size, status.st_mtime_ns, status.st_ino) != known:
            files.append(os.fsencode(file))
    unchanged = len(batch.files) - len(files) - len(gone)
    if not files:
        return _Summaries(b"", 0, unchanged, 0, gone)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "catalog.db")
        added, _, unreadable, _ = _core.catalog_add(os.fsencode(path), files, [], 1)
        with open(path, "rb") as made:
            return _Summaries(made.read(), added, unchanged, unreadable, gone)


def catalog(
    paths: Union[Path, Iterable[Path]], db: Path, *, client: Optional[Client] = None
) -> CatalogChanges:
    """Adds recordings to a catalogue, which is made if it is not there, as the tool's ``catalog add``
    does: only what is new or changed.

    The workers summarise; this process alone writes. If it is ended, what is written stays, and the
    next call does the rest.

    :param paths: recordings, or folders, of which all recordings are taken, also in folders in them
    :param db: on a disk of this machine
    :param client: of a cluster; without one it is threads of this process
    :raises Error: if the catalogue cannot be written
    """
    path = os.fsencode(to_path(db))
    files = list(recordings_of(paths))
    folders = [os.fsencode(folder) for folder in folders_of(paths)]
    jobs = len(os.sched_getaffinity(0))
    if client is None:
        return CatalogChanges(*_core.catalog_add(path, [*map(os.fsencode, files)], folders, jobs))
    _core.catalog_add(path, [], [], 1)
    totals = [0, 0, 0]
    gone: list[bytes] = []
    for made in _summaries(path, client, _batches(files, _known(to_path(db)))):
        counts = (made.added, made.unchanged, made.unreadable)
        totals = [total + count for total, count in zip(totals, counts)]
        gone += map(os.fsencode, made.gone)
        if made.catalog:
            _take(path, made.catalog)
    *rest, removed = _core.catalog_add(path, gone, folders, 1)
    added, unchanged, unreadable = (total + count for total, count in zip(totals, rest))
    return CatalogChanges(added, unchanged, unreadable, removed)


def _batches(files: list[str], known: dict[str, State]) -> list[_Batch]:
    # Under one name, as the catalogue has it, whatever links lead to it.
    names = [
        os.path.join(os.path.realpath(os.path.dirname(file)), os.path.basename(file))
        for file in files
    ]
    names = list(dict.fromkeys(names))
    return [
        _Batch(some, [known.get(file) for file in some])
        for some in (names[at : at + _FILES_AT_ONCE] for at in range(0, len(names), _FILES_AT_ONCE))
    ]


def _summaries(path: bytes, client: Client, batches: list[_Batch]) -> Iterator[_Summaries]:
    singles: list[_Batch] = []
    for batch, made in spread(client, _summarise, [[batch] for batch in batches], ordered=False):
        if isinstance(made, KilledWorker):
            singles += batch.singles()
        else:
            yield made
    pieces = [
        singles[at : at + _KILLERS_AT_ONCE] for at in range(0, len(singles), _KILLERS_AT_ONCE)
    ]
    for batch, made in spread(client, _summarise, pieces, ordered=False) if pieces else ():
        if isinstance(made, KilledWorker):
            made = _deadly(path, batch.files[0])
        yield made


def _deadly(path: bytes, file: str) -> _Summaries:
    try:
        words = "the workers that read it died"
        is_there = _core.catalog_put_unreadable(path, os.fsencode(file), words)
    except Error:  # it cannot even be looked at
        is_there = True
    return _Summaries(b"", unreadable=1) if is_there else _Summaries(b"", gone=[file])


def _known(db: str) -> dict[str, State]:
    with contextlib.closing(sqlite3.connect(db)) as connection:
        connection.text_factory = os.fsdecode
        rows = connection.execute(
            "SELECT file, bytes, mtime_ns, inode FROM recordings WHERE state = 'ok'"
        )
        return {file: (size, time, inode) for file, size, time, inode in rows}


def _take(path: bytes, content: bytes) -> None:
    with tempfile.NamedTemporaryFile(suffix=".db") as file:
        file.write(content)
        file.flush()
        _core.catalog_take(path, os.fsencode(file.name))
