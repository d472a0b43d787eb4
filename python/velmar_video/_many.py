"""Many recordings as one sequence."""

from __future__ import annotations

import bisect
import collections
import itertools
import os
from collections.abc import Iterable, Iterator, Sequence
from typing import Any, Optional, Union, overload

import numpy as np

from . import _forks
from ._arguments import Path, to_path
from ._errors import closed_error, usage_error
from ._recording import Format, Pixels, Recording, Scale
from ._selection import Index, Indices, number_of, select

_MOST_OPEN = 64


class _Files:
    """Opens recordings when they are needed and closes those that were not for the longest."""

    def __init__(self, paths: tuple[str, ...]):
        self.paths = paths
        self._lock = _forks.Lock()
        self._open: collections.OrderedDict[int, Recording] = collections.OrderedDict()
        self._starts = [0]  # where the frames of each begin, as far as they are counted
        self.is_closed = False

    def recording(self, number: int) -> Recording:
        with self._lock:
            if self.is_closed:
                raise closed_error(self.paths[number])
            found = self._open.pop(number, None)
            if found is None:
                found = Recording(self.paths[number])
            self._open[number] = found
            # One that another thread still reads stays until it has done so.
            while len(self._open) > _MOST_OPEN:
                self._open.popitem(last=False)
            return found

    def close(self) -> None:
        with self._lock:
            self.is_closed = True
            self._open.clear()

    def count(self) -> int:
        """Of all frames."""
        with self._lock:
            while len(self._starts) <= len(self.paths):
                self._count_next()
            return self._starts[-1]

    def place(self, number: int) -> tuple[int, int]:
        """The file of a frame and its number there."""
        with self._lock:
            while self._starts[-1] <= number:
                self._count_next()
            file = bisect.bisect_right(self._starts, number) - 1
            return file, number - self._starts[file]

    def _count_next(self) -> None:
        self._starts.append(self._starts[-1] + len(self.recording(len(self._starts) - 1)))

    def __reduce__(self) -> tuple[Any, ...]:
        paths = tuple(os.path.abspath(path) for path in self.paths)
        return _counted, (paths, self._starts)


def _counted(paths: tuple[str, ...], starts: list[int]) -> _Files:
    files = _Files(paths)
    files._starts = starts
    return files


class Recordings:
    """The frames of many recordings, one behind the other; see :func:`velmar_video.open_many`.

    Indices are those of a :class:`Recording`, as are errors and threads. The frames of one call may
    be of different sizes only where they are given one by one.
    """

    def __init__(self, paths: Iterable[Path]):
        if isinstance(paths, (str, bytes, os.PathLike)):
            raise usage_error("paths is a sequence of paths", os.fsdecode(paths))
        self._files = _Files(tuple(to_path(path) for path in paths))
        self._numbers: Optional[Sequence[int]] = None  # all, which are not counted yet

    def _selected(self) -> Sequence[int]:
        return range(self._files.count()) if self._numbers is None else self._numbers

    def _view(self, indices: Indices) -> Recordings:
        view = object.__new__(Recordings)
        view._files = self._files
        view._numbers = select(self._selected(), indices)
        return view

    def __len__(self) -> int:
        return len(self._selected())

    @property
    def paths(self) -> tuple[str, ...]:
        """Of all recordings, in order."""
        return self._files.paths

    def locate(self, index: Index) -> tuple[str, int]:
        """The recording's path and the frame's number in it."""
        file, number = self._place(index)
        return self._files.paths[file], number

    def _place(self, index: Index) -> tuple[int, int]:
        numbers = self._selected()
        return self._files.place(int(numbers[number_of(index, len(numbers))]))

    def recording(self, index: Index) -> tuple[Recording, int]:
        """The open recording of a frame, and the frame's number in it."""
        file, number = self._place(index)
        return self._files.recording(file), number

    @overload
    def __getitem__(self, index: Index) -> Pixels:
        ...

    @overload
    def __getitem__(self, index: Indices) -> Recordings:
        ...

    def __getitem__(self, index: Union[Index, Indices]) -> Union[Pixels, Recordings]:
        if isinstance(index, (int, np.integer)):
            return self.frame(index)
        return self._view(index)

    def __getitems__(self, indices: Sequence[int]) -> list[Pixels]:
        """Frames at once, as loaders of data sets ask for them."""
        pictures: dict[int, Pixels] = {}
        for file, places in self._by_file(self._view(indices)).items():
            frames = self._files.recording(file).frames([number for _, number in places])
            pictures.update((at, frame) for (at, _), frame in zip(places, frames))
        return [pictures[at] for at in range(len(pictures))]

    @staticmethod
    def _by_file(view: Recordings) -> dict[int, list[tuple[int, int]]]:
        """The places in the view and the numbers in the file."""
        files: dict[int, list[tuple[int, int]]] = {}
        for at in range(len(view)):
            file, number = view._place(at)
            files.setdefault(file, []).append((at, number))
        return files

    def __iter__(self) -> Iterator[Pixels]:
        return self.iterate()

    def frame(
        self,
        index: Index,
        *,
        format: Format = "rgb",
        scale: Scale = "1",
        crop: tuple[int, int] = (0, 0),
        out: Optional[Pixels] = None,
    ) -> Pixels:
        """As :meth:`Recording.frame`."""
        recording, number = self.recording(index)
        return recording.frame(number, format=format, scale=scale, crop=crop, out=out)

    def iterate(
        self,
        indices: Optional[Indices] = None,
        *,
        format: Format = "rgb",
        scale: Scale = "1",
        crop: tuple[int, int] = (0, 0),
        threads: int = 0,
    ) -> Iterator[Pixels]:
        """As :meth:`Recording.iterate`, one recording after the other."""
        view = self if indices is None else self._view(indices)
        for file, run in itertools.groupby(
            map(view._place, range(len(view))), lambda each: each[0]
        ):
            numbers = [number for _, number in run]
            recording = self._files.recording(file)
            yield from recording.iterate(
                numbers, format=format, scale=scale, crop=crop, threads=threads
            )

    def jpeg(self, index: Index) -> bytes:
        """The stored JPEG bytes of a frame."""
        recording, number = self.recording(index)
        return recording.jpeg(number)

    def close(self) -> None:
        """Closes the files for all sequences over their frames. May be called again."""
        self._files.close()

    def __enter__(self) -> Recordings:
        return self

    def __exit__(self, *error: object) -> None:
        self.close()

    def __reduce__(self) -> tuple[Any, ...]:
        return _reopened, (self._files, self._numbers)

    def __repr__(self) -> str:
        return f"<velmar_video.Recordings: {len(self._files.paths)} files>"


def _reopened(files: _Files, numbers: Optional[Sequence[int]]) -> Recordings:
    recordings = object.__new__(Recordings)
    recordings._files = files
    recordings._numbers = numbers
    return recordings
