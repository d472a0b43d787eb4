"""Recordings as sequences of frames."""

from __future__ import annotations

import collections
import concurrent.futures
import itertools
import json
import multiprocessing
import operator
import os
from collections.abc import Iterator, Sequence
from typing import TYPE_CHECKING, Any, Literal, Optional, Union, overload

import numpy as np
from numpy.typing import NDArray

from . import _core, _forks
from ._arguments import Path, to_form, to_number, to_path
from ._errors import closed_error, range_error, usage_error
from ._selection import Index, Indices, index_error, select
from ._times import Time, Times, to_microseconds, to_time

if TYPE_CHECKING:
    import pandas  # type: ignore[import]

Pixels = NDArray[np.uint8]
Format = Literal["rgb", "bgr", "gray"]
Scale = Literal["1", "1/2", "1/4", "1/8"]


class _File(_forks.Forked):
    """An open file, with what is read of it once. Shared by the sequences over its frames."""

    core: _core.File

    def __init__(self, path: str):
        super().__init__()
        self.path = os.path.abspath(path)
        self._lock = _forks.Lock()
        self._cache: dict[str, Any] = {}
        self.core = _core.File(os.fsencode(path))  # errors name it as it was given
        self.facts = self.core.facts()
        self.is_closed = False

    def forked(self) -> None:
        # A thread of the parent may have held a lock of it.
        self.__dict__.pop("core", None)

    def __getattr__(self, name: str) -> Any:
        """Opens the file again in a child process."""
        if name != "core":
            raise AttributeError(name)
        if self.is_closed:
            raise closed_error(self.path)
        with self._lock:
            if "core" not in self.__dict__:
                self.core = _core.File(os.fsencode(self.path))
        return self.core

    def close(self) -> None:
        self.is_closed = True
        if "core" in self.__dict__:
            self.core.close()

    def once(self, name: str) -> Any:
        """What the method of the core gives, read-only."""
        with self._lock:
            if name not in self._cache:
                self._cache[name] = getattr(self.core, name)()
            return self._cache[name]


def _thread_count(threads: int) -> int:
    """0 is one a core, but a single one in a process of a pool, which has others beside it."""
    most = 1024
    count = to_number(threads, 0, 1 << 31, "threads")
    if count > 0:
        return min(count, most)
    if multiprocessing.parent_process() is not None:
        return 1
    return min(len(os.sched_getaffinity(0)), most)


class Recording:
    """The frames of a recording, in order; see :func:`velmar_video.open`.

    An index gives a frame as an array (height, width, 3) of uint8, RGB. A slice, a sequence of
    integers or a mask gives a Recording over those frames, without reading any. A Recording may be
    used by several threads, and is pickled by path and selection.

    Times are numpy.datetime64 (UTC) or integers, microseconds since 1970.

    Methods raise :class:`velmar_video.Error`: with ``index`` set if a frame cannot be read; also an
    IndexError if an index is out of range, and a ValueError for a wrong argument and after close().
    Arguments of a wrong type may raise TypeError.
    """

    def __init__(self, path: Path):
        self._path = to_path(path)
        self._file = _File(self._path)
        self._numbers: Sequence[int] = range(self._file.facts["frames"])

    def _view(self, numbers: Sequence[int]) -> Recording:
        view = object.__new__(Recording)
        view._file = self._file
        view._path = self._path
        view._numbers = numbers
        return view

    # -- the sequence

    def __len__(self) -> int:
        return len(self._numbers)

    @overload
    def __getitem__(self, index: Index) -> Pixels:
        ...

    @overload
    def __getitem__(self, index: Indices) -> Recording:
        ...

    def __getitem__(self, index: Union[Index, Indices]) -> Union[Pixels, Recording]:
        if isinstance(index, (int, np.integer)):
            return self.frame(index)
        return self._view(select(self._numbers, index, self._path))

    def __getitems__(self, indices: Sequence[int]) -> list[Pixels]:
        """Frames at once, as loaders of data sets ask for them."""
        return list(self.frames(indices))

    def __iter__(self) -> Iterator[Pixels]:
        return self.iterate()

    def __reduce__(self) -> tuple[Any, ...]:
        return _reopened, (self._file.path, self._path, self._numbers)

    def __repr__(self) -> str:
        facts = self._file.facts
        return (
            f"<velmar_video.Recording {self._path!r}: {len(self)} frames, "
            f"{facts['width']}x{facts['height']}>"
        )

    def __enter__(self) -> Recording:
        return self

    def __exit__(self, *error: object) -> None:
        self.close()

    def close(self) -> None:
        """Closes the file for all sequences over its frames. May be called again."""
        self._file.close()

    @property
    def closed(self) -> bool:
        """Whether close() has been called."""
        return self._file.is_closed

    # -- what the recording says of itself

    @property
    def path(self) -> str:
        """Path as given to open()."""
        return self._path

    @property
    def container(self) -> str:
        """ "img" or "rtv"."""
        return str(self._file.facts["container"])

    @property
    def version(self) -> str:
        """Version of the container format, such as "04"."""
        return str(self._file.facts["version"])

    @property
    def width(self) -> int:
        """Width of the frames in pixels."""
        return int(self._file.facts["width"])

    @property
    def height(self) -> int:
        """Height of the frames in pixels."""
        return int(self._file.facts["height"])

    @property
    def device_id(self) -> bytes:
        """Identifier of the camera; an rtv stores 24 bytes, or none."""
        return bytes(self._file.facts["device_id"])

    @property
    def undistorted(self) -> bool:
        """Whether the lens's distortion was taken out of the frames."""
        return bool(self._file.facts["undistorted"])

    @property
    def start_time(self) -> np.datetime64:
        """Start of the recording, datetime64[us], UTC. For an img, when its first frame arrived."""
        return to_time(self._file.facts["start_time"])

    @property
    def start_position(self) -> Optional[tuple[float, float, float]]:
        """Start longitude and latitude in degrees, altitude in metres. None for an img."""
        position: Optional[tuple[float, float, float]] = self._file.facts["start_position"]
        return position

    @property
    def camera_params(self) -> dict[str, Any]:
        """Camera parameters, a new dict at each call. Empty for an rtv."""
        return self._json("camera_params")

    @property
    def extended_info(self) -> dict[str, Any]:
        """Extended information, a new dict at each call. Empty for an rtv."""
        return self._json("extended_info")

    def _json(self, name: str) -> dict[str, Any]:
        try:
            value: dict[str, Any] = json.loads(self._file.once(name))
        except RecursionError:
            raise usage_error(f"{name} is nested too deeply", self._path) from None
        return {} if value is None else value

    # -- pictures

    def _number(self, index: Index) -> int:
        """In the file."""
        try:
            return self._numbers[operator.index(index)]
        except IndexError:
            raise index_error(int(index), len(self._numbers), self._path) from None

    def frame(
        self,
        index: Index,
        *,
        format: Format = "rgb",
        scale: Scale = "1",
        crop: tuple[int, int] = (0, 0),
        out: Optional[Pixels] = None,
    ) -> Pixels:
        """A frame as an array (height, width, channels) of uint8; gray has one channel.

        :param index: negative ones count from the end
        :param format: "rgb", "bgr" or "gray"
        :param scale: "1", "1/2", "1/4" or "1/8"; sizes are rounded up
        :param crop: rows to remove at the top and bottom before scaling
        :param out: a writable C-contiguous uint8 array of the returned shape; it is filled and
            returned
        :raises Error: if the frame cannot be read or decoded
        """
        core = self._file.core
        number = self._number(index)
        form = to_form(format, scale, crop)
        if out is None:
            out = np.empty(core.shape(*form), np.uint8)
        core.decode(number, *form, out)
        return out

    @overload
    def frames(
        self,
        indices: Optional[Indices] = ...,
        *,
        format: Format = ...,
        scale: Scale = ...,
        crop: tuple[int, int] = ...,
        out: Optional[Pixels] = ...,
        threads: int = ...,
        errors: Literal["raise"] = ...,
    ) -> Pixels:
        ...

    @overload
    def frames(
        self,
        indices: Optional[Indices] = ...,
        *,
        format: Format = ...,
        scale: Scale = ...,
        crop: tuple[int, int] = ...,
        out: Optional[Pixels] = ...,
        threads: int = ...,
        errors: Literal["mask"],
    ) -> tuple[Pixels, NDArray[np.bool_]]:
        ...

    def frames(
        self,
        indices: Optional[Indices] = None,
        *,
        format: Format = "rgb",
        scale: Scale = "1",
        crop: tuple[int, int] = (0, 0),
        out: Optional[Pixels] = None,
        threads: int = 0,
        errors: Literal["raise", "mask"] = "raise",
    ) -> Union[Pixels, tuple[Pixels, NDArray[np.bool_]]]:
        """Frames as an array (n, height, width, channels) of uint8, all if no indices are given.

        `format`, `scale` and `crop` are those of :meth:`frame`.

        :param indices: a slice, a sequence of integers or a mask
        :param out: a writable C-contiguous uint8 array of the returned shape; it is filled and
            returned
        :param threads: number of threads; 0 is one for each core, but a single one in a child
            process of multiprocessing
        :param errors: "raise" raises for the first frame that cannot be had; "mask" gives zeros for
            such frames, and (frames, mask) with True where one is missing
        """
        numbers = self._numbers if indices is None else select(self._numbers, indices, self._path)
        if errors not in ("raise", "mask"):
            raise usage_error('errors is "raise" or "mask"', self._path)
        core = self._file.core
        form = to_form(format, scale, crop)
        if out is None:
            out = np.empty((len(numbers), *core.shape(*form)), np.uint8)
        missing = core.decode_many(
            list(numbers), *form, out, _thread_count(threads), errors == "mask"
        )
        if errors == "raise":
            return out
        mask = np.zeros(len(numbers), bool)
        mask[missing] = True
        return out, mask

    def iterate(
        self,
        indices: Optional[Indices] = None,
        *,
        format: Format = "rgb",
        scale: Scale = "1",
        crop: tuple[int, int] = (0, 0),
        threads: int = 0,
        ahead: Optional[int] = None,
    ) -> Iterator[Pixels]:
        """Frames one after the other, each an array of its own, decoded ahead by threads.

        `indices`, `format`, `scale`, `crop` and `threads` are those of :meth:`frames`.

        :param ahead: how many frames are decoded before they are asked for, at most; two a thread
            if not given
        """
        view = self if indices is None else self._view(select(self._numbers, indices, self._path))
        count = _thread_count(threads)
        if ahead is None:
            ahead = 2 * count
        ahead = to_number(ahead, 0, 1 << 31, "ahead")
        self._file.core.shape(*to_form(format, scale, crop))  # says now what is wrong with them
        return view._iterate(dict(format=format, scale=scale, crop=crop), count, ahead)

    def _iterate(self, form: dict[str, Any], threads: int, ahead: int) -> Iterator[Pixels]:
        done = 0
        if ahead > 0:
            for frame in self._decoded_ahead(form, threads, ahead):
                done += 1
                yield frame
        # All of them, or the rest in a child process, which has none of its parent's threads.
        for index in range(done, len(self)):
            yield self.frame(index, **form)

    def _decoded_ahead(self, form: dict[str, Any], threads: int, ahead: int) -> Iterator[Pixels]:
        process = os.getpid()
        pool = concurrent.futures.ThreadPoolExecutor(threads, "velmar_video")
        coming: collections.deque[concurrent.futures.Future[Pixels]] = collections.deque()
        indices = iter(range(len(self)))
        try:
            while os.getpid() == process:
                for index in itertools.islice(indices, ahead + 1 - len(coming)):
                    coming.append(pool.submit(self.frame, index, **form))
                if not coming:
                    return
                yield coming.popleft().result()
        finally:
            if os.getpid() == process:
                pool.shutdown(wait=True, cancel_futures=True)

    # -- bytes

    def jpeg(self, index: Index) -> bytes:
        """The stored JPEG bytes of a frame."""
        return self._file.core.jpeg(self._number(index))

    def jpeg_view(self, index: Index) -> memoryview:
        """The stored JPEG bytes of a frame as a read-only view of the mapped file, without a copy.

        The view stays valid after close(). The process is killed (SIGBUS) if
        another one makes the file shorter meanwhile, or if the disk cannot read it.
        """
        return self._file.core.jpeg_view(self._number(index))

    @property
    def sizes(self) -> NDArray[np.int64]:
        """(n,) int64: bytes of each frame as stored."""
        return self._column(self._file.once("sizes")).copy()

    # -- times

    def _column(self, values: NDArray[Any]) -> NDArray[Any]:
        numbers = self._numbers
        if isinstance(numbers, range):
            stop = numbers.stop if numbers.stop >= 0 else None
            chosen: NDArray[Any] = values[slice(numbers.start, stop, numbers.step)]
            return chosen if len(numbers) else values[:0]
        return values[numbers]

    @property
    def capture_times(self) -> Times:
        """(n,) datetime64[us], UTC; NaT where a damaged file has a time beyond it."""
        return self._column(self._file.once("times")[:, 0]).astype("datetime64[us]")

    @property
    def arrival_times(self) -> Times:
        """(n,) datetime64[us], UTC: when the frames came to the recorder. An rtv does not have it
        and gives the capture times."""
        return self._column(self._file.once("times")[:, 1]).astype("datetime64[us]")

    def index_at(self, time: Time, side: Literal["nearest", "before", "after"] = "nearest") -> int:
        """The index of a frame by its capture time.

        :param side: "nearest" is the frame captured nearest to `time`, of two as near the earlier
            one; "before" the last at or before it; "after" the first at or after it
        :raises IndexError: if there is none
        """
        wanted = to_microseconds(time)
        times = self._column(self._file.once("times")[:, 0])
        order = np.argsort(times, kind="stable")
        order = order[int(np.searchsorted(times[order], 0)) :]  # NaT comes first
        ordered = times[order]
        after = int(np.searchsorted(ordered, wanted, "left"))
        before = int(np.searchsorted(ordered, wanted, "right")) - 1
        if side == "before":
            at = before
        elif side == "after":
            at = after
        elif side == "nearest":
            at = before
            if before < 0 or (
                after < len(ordered)
                and int(ordered[after]) - wanted < wanted - int(ordered[before])
            ):
                at = after
        else:
            raise usage_error('side is "nearest", "before" or "after"', self._path)
        if not 0 <= at < len(ordered):
            raise range_error(f"there is no frame {side} {to_time(wanted)}", self._path)
        return int(order[at])

    def between(self, start: Time, stop: Time) -> Recording:
        """The frames captured from `start` to before `stop`."""
        times = self._column(self._file.once("times")[:, 0])
        chosen = (times >= to_microseconds(start)) & (times < to_microseconds(stop))
        found = np.flatnonzero(chosen)
        if found.size and found[-1] - found[0] + 1 == found.size:
            return self[int(found[0]) : int(found[-1]) + 1]
        return self[found]

    def where(self, expression: str) -> Recording:
        """The frames for which a condition holds, such as "speed_m_s > 20 && index < 1000".

        It is that of the tool's ``--where``: docs/tool.md lists the names. It is asked about the
        frames of the file, so `time` and `index` are those there.

        :raises ValueError: if the expression is wrong
        :raises Error: if the recording has nothing of what it asks for
        """
        if not isinstance(expression, str):
            raise usage_error("an expression is text", self._path)
        found = self._file.core.find(expression)
        return self[np.flatnonzero(np.isin(self._numbers, found))]

    # -- what an rtv knows of each frame

    @property
    def tags(self) -> Optional[NDArray[np.void]]:
        """(n,) structured, as stored. None for an img.

        x, y, z: int32, hundredths of a metre from the start position; relative_distance: uint32,
        hundredths of a metre; speed: uint16, hundredths of a metre a second; direction: uint16,
        degrees.
        """
        if self.container == "img":
            return None
        return self._column(self._file.once("tags")).copy()

    @property
    def positions(self) -> Optional[NDArray[np.float64]]:
        """(n, 3) float64: longitude and latitude in degrees, altitude in metres. None for an img."""
        if self.container == "img":
            return None
        return self._column(self._file.once("positions")).copy()

    @property
    def speed(self) -> Optional[NDArray[np.float64]]:
        """(n,) float64, metres a second. None for an img."""
        tags = self.tags
        return None if tags is None else tags["speed"] / 100.0

    @property
    def direction(self) -> Optional[NDArray[np.float64]]:
        """(n,) float64, degrees. None for an img."""
        tags = self.tags
        return None if tags is None else tags["direction"].astype(np.float64)

    @property
    def can(self) -> dict[str, "np.ma.MaskedArray[Any, Any]"]:
        """Vehicle bus signals by name, (n,) each; masked where a frame does not have one.

        Empty for an img and for rtv versions 02 and 03.
        """
        if not self._file.facts["has_signals"]:
            return {}
        return {
            name: np.ma.array(  # type: ignore[no-untyped-call]
                self._column(values), mask=self._column(mask), copy=True
            )
            for name, (values, mask) in self._file.once("signals").items()
        }

    def to_pandas(self) -> pandas.DataFrame:
        """Times, positions, speed, direction and signals, a row for each frame. Needs pandas."""
        import pandas

        columns: dict[str, Any] = {
            "capture_time": self.capture_times,
            "arrival_time": self.arrival_times,
        }
        positions = self.positions
        if positions is not None:
            columns.update(zip(("lng", "lat", "alt"), positions.T))
            columns["speed"] = self.speed
            columns["direction"] = self.direction
        for name, values in self.can.items():
            series = pandas.Series(values.data)
            columns[name] = series.where(~values.mask) if values.mask.any() else series
        return pandas.DataFrame(columns)


def _reopened(path: str, name: str, numbers: Sequence[int]) -> Recording:
    recording = Recording(path)
    last = int(np.max(numbers)) if len(numbers) else -1
    if last >= len(recording):
        raise index_error(last, len(recording), path)
    recording._path = name
    recording._numbers = numbers
    return recording
