"""A function over many frames."""

from __future__ import annotations

import atexit
import contextlib
import dataclasses
import sys
from collections.abc import Callable, Generator, Iterator, Sequence
from typing import Any, Optional, get_args
import weakref

import numpy as np
from distributed import Client, KilledWorker

from .._arguments import to_bool, to_form
from .._errors import Error, usage_error
from .._recording import Format, Pixels, Recording, Scale
from ._ranges import FrameRange, Ranges, checked, pieces_of
from ._spread import run_of, workers_of

_BATCH_BYTES = 64 << 20  # of pixels

Result = tuple[str, Optional[int], Any]
Results = Generator[Result, None, None]

_results_alive: weakref.WeakSet[Results] = weakref.WeakSet()


@atexit.register
def _end_all() -> None:
    """Before dask's threads are gone, without which the workers cannot be told to end."""
    for results in list(_results_alive):
        with contextlib.suppress(ValueError):  # another thread is in it
            results.close()


class _Memory:
    """Memory for the pixels of some frames, the same again unless somebody has kept it.

    New memory for each frame costs a worker a quarter of the decoding or more: dask sets
    MALLOC_TRIM_THRESHOLD_, with which what is freed goes back to the system.
    """

    def __init__(self, shape: tuple[int, ...]):
        self._shape = shape
        self._pixels: Optional[Pixels] = None

    def get(self, count: int) -> Pixels:
        is_free = sys.getrefcount(self._pixels) == 2  # of this object and of that call
        if self._pixels is None or not is_free or len(self._pixels) < count:
            self._pixels = np.empty((count, *self._shape), np.uint8)
        return self._pixels[:count]


@dataclasses.dataclass(frozen=True)
class _Mapped:
    """What a worker does with a range."""

    function: Callable[..., Any]
    format: Format
    scale: Scale
    crop: tuple[int, int]
    batched: bool

    def __call__(self, part: FrameRange) -> list[tuple[Optional[int], Any]]:
        if part.problem is not None:
            return [(None, Error(part.problem, "", part.file))]
        numbers = range(part.first, part.behind)
        try:
            recording = Recording(part.file)
            shape = recording._file.core.shape(*to_form(self.format, self.scale, self.crop))
        except Error as error:
            if not error.path:  # the call is wrong, whatever the file is like
                raise
            return [(index, error) for index in numbers]
        most = max(_BATCH_BYTES // int(np.prod(shape)), 1) if self.batched else 1
        results: list[tuple[Optional[int], Any]] = []
        memory = _Memory(shape)
        with recording:
            for at in range(0, len(numbers), most):
                results += self._some(recording, numbers[at : at + most], memory)
        return results

    def _some(
        self, recording: Recording, numbers: range, memory: _Memory
    ) -> list[tuple[Optional[int], Any]]:
        try:
            pixels = memory.get(len(numbers))
        except MemoryError as error:
            return [(index, _as_result(error, recording)) for index in numbers]
        results: dict[int, Any] = {}
        decoded: list[int] = []
        for index in numbers:
            try:
                recording.frame(
                    index,
                    format=self.format,
                    scale=self.scale,
                    crop=self.crop,
                    out=pixels[len(decoded)],
                )
                decoded.append(index)
                results[index] = None
            except Error as error:
                results[index] = error
        if decoded:
            results.update(zip(decoded, self._call(recording, decoded, pixels[: len(decoded)])))
        return list(results.items())

    def _call(self, recording: Recording, numbers: list[int], pixels: Pixels) -> Sequence[Any]:
        try:
            table = self._table(recording, numbers) if self.batched else None
        except (Error, MemoryError) as error:
            return [_as_result(error, recording)] * len(numbers)
        try:
            if table is None:
                return [self.function(pixels[0])]
            results = list(self.function(pixels, table))
            if len(results) != len(numbers):
                raise usage_error(f"{len(results)} results for {len(numbers)} frames")
            return results
        except Exception as error:
            frames = f"frame {numbers[0]}" + (f" to {numbers[-1]}" if self.batched else "")
            error.add_note(f"{frames} of {recording.path}")
            raise

    @staticmethod
    def _table(recording: Recording, numbers: list[int]) -> Any:
        table = recording[numbers].to_pandas()
        table.insert(0, "file", recording.path)
        table.insert(1, "index", numbers)
        return table


def _as_result(error: Exception, recording: Recording) -> Error:
    if isinstance(error, Error):
        return error
    return Error("a worker has not enough memory for it", "", recording.path)


def map_frames(
    function: Callable[..., Any],
    ranges: Ranges,
    *,
    format: Format = "rgb",
    scale: Scale = "1",
    crop: tuple[int, int] = (0, 0),
    batched: bool = False,
    ordered: bool = False,
    client: Optional[Client] = None,
) -> Iterator[Result]:
    """What a function gives for frames of many recordings, as (path, index, result).

    Workers read and decode the frames and call the function. Each frame is given once, whatever
    the number of workers and whichever of them die. There are no more results waiting than keep
    the workers busy, but those of 16,384 frames may come to this process in one go: return what
    fits. Whoever ends the iteration early, ends the work.

    The result is an :class:`velmar_video.Error` where there is no other one: the frame cannot be
    had, or the workers died each time that they worked on frames of its range. It is one for the
    whole recording, with None as index, if the table has a `problem` for it. What the function
    raises ends the iteration and is raised, as in `map`.

    :param function: gets a frame, an array (height, width, channels) of uint8 that is its own. It
        is sent to each worker once, with what it refers to, and may be called by several threads
        of a worker at a time. Its results are pickled.
    :param ranges: a table as :func:`scan` gives it, in pandas or in dask. Its columns `file`,
        `first` and `behind` (the frame behind the last) are needed; with `bytes` work is divided
        better. Relative files are in the current folder of this process.
    :param format: with `scale` and `crop` as in :meth:`velmar_video.Recording.frame`
    :param batched: the function gets an array (n, height, width, channels) of frames of one
        recording, at most 64 MiB unless one frame has more, and a pandas table with `file`, `index`
        and the columns of :meth:`velmar_video.Recording.to_pandas`. It returns n results.
    :param ordered: gives the results in the order of the table, instead of as they come
    :param client: of the cluster; without one there is a process for each core of this machine
        for as long as the iteration takes. As for any module that starts processes, the code of a
        program then has to be under `if __name__ == "__main__":`.
    :raises ValueError: if an argument is wrong; during the iteration, if a part of a dask table is
    """
    if not callable(function):
        raise usage_error("function is called with frames")
    ranges = checked(ranges)
    to_form(format, scale, crop)
    for value, known, name in ((format, Format, "format"), (scale, Scale, "scale")):
        if value not in get_args(known):
            raise usage_error(f"{name} is one of {', '.join(get_args(known))}, not {value}")
    mapped = _Mapped(function, format, scale, crop, to_bool(batched, "batched"))
    results = _results(mapped, ranges, to_bool(ordered, "ordered"), client)
    _results_alive.add(results)
    return results


def _results(mapped: _Mapped, ranges: Ranges, ordered: bool, client: Optional[Client]) -> Results:
    with workers_of(client) as workers, run_of(workers, mapped, ordered) as run:
        for part, found in run.results(pieces_of(ranges, workers, run.wait)):
            if isinstance(found, KilledWorker):
                words = "the workers that worked on it died"
                found = [
                    (index, Error(words, "", part.file, index))
                    for index in range(part.first, part.behind)
                ]
            for index, result in found:
                yield part.file, index, result
