"""Many recordings as one sequence."""

from __future__ import annotations

import collections
import os
from collections.abc import Iterable, Iterator, Sequence
from typing import Any, Optional, Union, overload

import numpy as np

from . import _forks
from ._recording import Indices, Path, Pixels, Recording, number_of, select

_MOST_OPEN = 64


class _Files:
    """Opens recordings when they are needed and closes those that were not for the longest."""

    def __init__(self, paths: tuple[str, ...]):
        self.paths = paths
        self._lock = _forks.Lock()
        self._open: collections.OrderedDict[int, Recording] = collections.OrderedDict()
        self._starts: Optional["np.ndarray[Any, np.dtype[np.int64]]"] = None

    def recording(self, number: int) -> Recording:
        with self._lock:
            found = self._open.pop(number, None)
            if found is None:
                found = Recording(self.paths[number])
            self._open[number] = found
            # One that another thread still reads stays until it has done so.
            while len(self._open) > _MOST_OPEN:
                self._open.popitem(last=False)
            return found

    def starts(self) -> "np.ndarray[Any, np.dtype[np.int64]]":
        """Where the frames of each begin, and the number of all."""
        with self._lock:
            if self._starts is None:
                counts = [len(self.recording(number)) for number in range(len(self.paths))]
                self._starts = np.cumsum([0, *counts], dtype=np.int64)
            return self._starts


class Recordings(Sequence[Pixels]):
    """The frames of many recordings, one behind the other; see :func:`velmar_video.open_many`.

    Indices are as those of a :class:`Recording`; at most 64 files are open at a time.
    """

    def __init__(self, paths: Iterable[Path]):
        self._files = _Files(tuple(os.fsdecode(path) for path in paths))
        self._numbers: Optional[Sequence[int]] = None  # all, which are not counted yet

    def _selected(self) -> Sequence[int]:
        return range(int(self._files.starts()[-1])) if self._numbers is None else self._numbers

    def __len__(self) -> int:
        return len(self._selected())

    @property
    def paths(self) -> tuple[str, ...]:
        """Of all recordings, in order."""
        return self._files.paths

    def locate(self, index: int) -> tuple[str, int]:
        """The recording's path and the frame's number in it."""
        file, number = self._place(index)
        return self._files.paths[file], number

    def _place(self, index: int) -> tuple[int, int]:
        numbers = self._selected()
        number = int(numbers[number_of(index, len(numbers))])
        starts = self._files.starts()
        file = int(np.searchsorted(starts, number, "right")) - 1
        return file, number - int(starts[file])

    def recording(self, index: int) -> tuple[Recording, int]:
        """The open recording of a frame, and the frame's number in it."""
        file, number = self._place(index)
        return self._files.recording(file), number

    @overload
    def __getitem__(self, index: int) -> Pixels: ...
    @overload
    def __getitem__(self, index: Indices) -> Recordings: ...
    def __getitem__(self, index: Union[int, Indices]) -> Union[Pixels, Recordings]:
        if isinstance(index, (int, np.integer)):
            return self.frame(index)
        view = object.__new__(Recordings)
        view._files = self._files
        view._numbers = select(self._selected(), index)
        return view

    def __getitems__(self, indices: Sequence[int]) -> list[Pixels]:
        """Frames at once, as loaders of data sets ask for them."""
        return [self.frame(index) for index in indices]

    def __iter__(self) -> Iterator[Pixels]:
        return (self.frame(index) for index in range(len(self)))

    def frame(self, index: int, **form: Any) -> Pixels:
        """As :meth:`Recording.frame`."""
        recording, number = self.recording(index)
        return recording.frame(number, **form)

    def jpeg(self, index: int) -> bytes:
        """The frame as it is stored."""
        recording, number = self.recording(index)
        return recording.jpeg(number)

    def __reduce__(self) -> tuple[Any, ...]:
        paths = tuple(os.path.abspath(path) for path in self._files.paths)
        return _reopened, (paths, self._numbers)

    def __repr__(self) -> str:
        return f"<velmar_video.Recordings: {len(self._files.paths)} files>"


def _reopened(paths: tuple[str, ...], numbers: Optional[Sequence[int]]) -> Recordings:
    recordings = Recordings(paths)
    recordings._numbers = numbers
    return recordings
