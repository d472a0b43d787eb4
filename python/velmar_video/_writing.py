"""New recordings, and changes to those that are there."""

from __future__ import annotations

import json
import os
from collections.abc import Mapping
from typing import Any, Optional, cast

import numpy as np

from . import _core
from ._arguments import Bytes, Path, to_bool, to_bytes, to_number, to_path
from ._errors import closed_error, usage_error
from ._recording import Recording
from ._selection import number_of
from ._times import Duration, Time, Times, duration_to_microseconds, to_stored_microseconds, to_time

_TAG_FIELDS = ("x", "y", "z", "relative_distance", "speed", "direction")


class Writer:
    """A recording that is being written; see :func:`velmar_video.create`."""

    def __init__(self, path: Path, description: dict[str, Any], capacity: int, overwrite: bool):
        self._path = to_path(path)
        self._process = os.getpid()
        self._core = _core.Writer(os.fsencode(self._path), description, capacity, overwrite)

    @property
    def path(self) -> str:
        """Of the recording, once it is finished."""
        return self._path

    def __len__(self) -> int:
        """Frames that have been added."""
        return self._core.frames

    def add(
        self,
        jpeg: Bytes,
        capture_time: Time,
        arrival_time: Optional[Time] = None,
        *,
        tag: Optional[Mapping[str, int]] = None,
        can: Optional[Mapping[str, float]] = None,
    ) -> None:
        """Adds a frame. It is handed to the operating system and survives the end of this process,
        but not a power cut.

        :param jpeg: a whole JPEG of the recording's size, any contiguous buffer
        :param arrival_time: the capture time if not given; an rtv does not hold it
        :param tag: rtv: any of x, y, z, relative_distance, speed and direction, as stored
        :param can: rtv version 04: signals by name, as :attr:`Recording.can` has them
        """
        self._check_process()
        capture = to_stored_microseconds(capture_time)
        arrival = capture if arrival_time is None else to_stored_microseconds(arrival_time)
        values = {}
        for name, value in (*(tag or {}).items(), *(can or {}).items()):
            if (name in _TAG_FIELDS) != (name in (tag or {})):
                raise usage_error(f'there is no such value as "{name}"', self._path)
            values[name] = _text(value)
        try:
            view = memoryview(cast(bytes, jpeg))
        except TypeError:
            raise usage_error(f"jpeg is bytes, not {type(jpeg).__name__}", self._path) from None
        self._core.add(view, capture, arrival, values)

    def _check_process(self) -> None:
        if os.getpid() != self._process:
            raise usage_error("the recording belongs to the parent of this process", self._path)

    def close(self) -> None:
        """Finishes the recording: it is complete, on the disk and under its name. May be called
        again; add() afterwards raises ClosedError."""
        self._check_process()
        self._core.finish()

    def abandon(self) -> None:
        """Ends without a recording: the frames stay in PATH.tmp, for :func:`velmar_video.recover`."""
        self._check_process()
        self._core.abandon()

    def __enter__(self) -> Writer:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], *rest: object) -> None:
        if kind is None:
            self.close()
        else:
            self.abandon()


def _text(value: Any) -> str:
    if isinstance(value, (bool, np.bool_)):
        return str(int(value))
    if isinstance(value, (float, np.floating)) and value == np.trunc(value):
        return str(int(value))
    if isinstance(value, np.floating) and value.dtype != np.float32:
        return str(float(value))
    return str(value)


def _json(value: Mapping[str, Any], name: str) -> str:
    try:
        text = json.dumps(dict(value), allow_nan=False)
        json.loads(text, parse_int=_check_integer)
    except (TypeError, ValueError, RecursionError) as error:
        raise usage_error(f"{name} cannot be stored as JSON: {error}") from None
    return text


def _check_integer(digits: str) -> int:
    if not -(1 << 63) <= int(digits) < 1 << 64:
        raise ValueError(f"{digits} has more than 64 bits")
    return int(digits)


def create(
    path: Path,
    *,
    width: int = 0,
    height: int = 0,
    device_id: bytes = b"",
    undistorted: bool = False,
    camera_params: Optional[Mapping[str, Any]] = None,
    extended_info: Optional[Mapping[str, Any]] = None,
    start_time: Optional[Time] = None,
    start_position: Optional[tuple[float, float, float]] = None,
    version: Optional[str] = None,
    capacity: Optional[int] = None,
    overwrite: bool = False,
) -> Writer:
    """Starts a recording; its name's ending, .img or .rtv, says the container.

    Until it is finished, its frames are in PATH.tmp. As a context manager it is finished at the
    end; left by an exception, nothing is under the name, and the frames stay for
    :func:`velmar_video.recover`.

    :param width: pixels; that of the first frame if 0
    :param height: pixels; that of the first frame if 0
    :param device_id: identifier of the camera; at most 24 bytes in an rtv
    :param camera_params: img: anything that JSON can express
    :param extended_info: img: anything that JSON can express
    :param start_time: rtv: the first frame's capture time if not given
    :param start_position: rtv: longitude and latitude in degrees, altitude in metres
    :param version: rtv: "02", "03" or "04" (if not given), which holds signals
    :param capacity: rtv: the most frames there can be, 65535 if not given
    :param overwrite: replace an existing file and what an interrupted recording left

    An rtv keeps times in milliseconds.
    """
    name = to_path(path)
    rtv_only = {
        "start_time": start_time,
        "start_position": start_position,
        "version": version,
        "capacity": capacity,
    }
    for argument, value in rtv_only.items():
        if value is not None and not name.endswith(".rtv"):
            raise usage_error(f"{argument} is for an rtv", name)
    if (width == 0) != (height == 0):
        raise usage_error("width and height are given together", name)
    description = {
        "width": to_number(width, 0, 65535, "width"),
        "height": to_number(height, 0, 65535, "height"),
        "device_id": to_bytes(device_id, "device_id"),
        "undistorted": to_bool(undistorted, "undistorted"),
        "camera_params": _json(camera_params or {}, "camera_params"),
        "extended_info": _json(extended_info or {}, "extended_info"),
        "start_time": 0 if start_time is None else to_stored_microseconds(start_time),
        "start_position": _position(start_position or (0.0, 0.0, 0.0)),
        "version": version or "04",
    }
    most = to_number(65535 if capacity is None else capacity, 1, 65535, "capacity")
    return Writer(name, description, most, overwrite)


def _position(position: tuple[float, float, float]) -> tuple[float, float, float]:
    try:
        lng, lat, alt = (float(value) for value in position)
    except (TypeError, ValueError):
        raise usage_error("start_position is longitude, latitude and altitude") from None
    if not (-180 <= lng <= 180 and -90 <= lat <= 90 and -1e6 <= alt <= 1e6):
        raise usage_error("start_position is in degrees and metres")
    return lng, lat, alt


class FrameTimes:
    """Times of a recording's frames by index, for :class:`Edit`: assign to an element to change it."""

    __slots__ = ("_edit", "_times", "changes")

    def __init__(self, edit: Edit, times: Times):
        self._edit = edit
        self._times = times
        self.changes: dict[int, int] = {}

    def __len__(self) -> int:
        return len(self._times)

    def __getitem__(self, index: int) -> np.datetime64:
        number = number_of(index, len(self._times), self._edit.path)
        changed = self.changes.get(number)
        time: np.datetime64 = self._times[number] if changed is None else to_time(changed)
        return time

    def __setitem__(self, index: int, time: Time) -> None:
        self._edit._check_open()
        number = number_of(index, len(self._times), self._edit.path)
        self.changes[number] = to_stored_microseconds(time)


class Edit:
    """Changes to a recording, made together when it ends; see :func:`velmar_video.edit`."""

    # A misspelt attribute is an error.
    __slots__ = ("_path", "_now", "_capture", "_arrival", "_changes", "_is_over")

    def __init__(self, path: Path):
        self._path = to_path(path)
        with Recording(path) as recording:
            self._now: dict[str, Any] = {
                "device_id": recording.device_id,
                "undistorted": recording.undistorted,
                "start_time": recording.start_time,
                "camera_params": recording.camera_params,
                "extended_info": recording.extended_info,
            }
            self._capture = FrameTimes(self, recording.capture_times)
            self._arrival = FrameTimes(self, recording.arrival_times)
        self._changes: dict[str, Any] = {}
        self._is_over = False

    @property
    def path(self) -> str:
        """Path as given to edit()."""
        return self._path

    def _check_open(self) -> None:
        if self._is_over:
            raise closed_error(self._path)

    def _set(self, name: str, value: Any, stored: Any) -> None:
        self._check_open()
        self._now[name] = value
        self._changes[name] = stored

    @property
    def device_id(self) -> bytes:
        """Of the camera; at most 24 bytes in an rtv."""
        return bytes(self._now["device_id"])

    @device_id.setter
    def device_id(self, value: bytes) -> None:
        stored = to_bytes(value, "device_id")
        self._set("device_id", stored, stored)

    @property
    def undistorted(self) -> bool:
        """Whether the lens's distortion was taken out of the frames."""
        return bool(self._now["undistorted"])

    @undistorted.setter
    def undistorted(self, value: bool) -> None:
        stored = to_bool(value, "undistorted")
        self._set("undistorted", stored, stored)

    @property
    def start_time(self) -> np.datetime64:
        """Start time; the times of all frames move with it. rtv only."""
        time: np.datetime64 = self._now["start_time"]
        return time

    @start_time.setter
    def start_time(self, value: Time) -> None:
        microseconds = to_stored_microseconds(value)
        self._set("start_time", to_time(microseconds), microseconds)

    @property
    def camera_params(self) -> dict[str, Any]:
        """Camera parameters. Assign a new dict; changing the returned one does nothing. img only."""
        return dict(self._now["camera_params"])

    @camera_params.setter
    def camera_params(self, value: Mapping[str, Any]) -> None:
        self._set("camera_params", dict(value), _json(value, "camera_params"))

    @property
    def extended_info(self) -> dict[str, Any]:
        """Extended information. Assign a new dict, as for camera_params. img only."""
        return dict(self._now["extended_info"])

    @extended_info.setter
    def extended_info(self, value: Mapping[str, Any]) -> None:
        self._set("extended_info", dict(value), _json(value, "extended_info"))

    @property
    def capture_times(self) -> FrameTimes:
        """Capture times by index; assign to an element to change it."""
        return self._capture

    @property
    def arrival_times(self) -> FrameTimes:
        """Arrival times by index. img only."""
        return self._arrival

    def shift_times(self, delta: Duration) -> None:
        """Adds to all times of the recording. Not together with other changes of times."""
        self._check_open()
        shift = self._changes.get("shift", 0) + duration_to_microseconds(delta)
        self._set("shift", shift, shift)

    def close(self) -> None:
        """Makes the changes: all of them are on the disk then, or none."""
        if self._is_over:
            return
        self._is_over = True
        changes = dict(self._changes)
        for name, times in (("capture_times", self._capture), ("arrival_times", self._arrival)):
            if times.changes:
                changes[name] = times.changes
        if "shift" in changes and changes.keys() & {"capture_times", "arrival_times", "start_time"}:
            raise usage_error("shift_times() excludes other changes of times", self._path)
        if changes:
            _core.edit(os.fsencode(self._path), changes)

    def discard(self) -> None:
        """Ends without changing anything."""
        self._is_over = True

    def __enter__(self) -> Edit:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], *rest: object) -> None:
        if kind is None:
            self.close()
        else:
            self.discard()


def edit(path: Path) -> Edit:
    """Changes a recording in place, at the end of a with statement: all at once, or nothing.

    Left by an exception, the file stays as it is. A power cut leaves the old or the new.
    """
    return Edit(path)


def undo_edit(path: Path) -> bool:
    """Brings a recording back to what it was before an edit that was interrupted.

    :return: whether there was one
    """
    return _core.undo_edit(os.fsencode(to_path(path)))


def sample(
    path: Path,
    frames: int = 50,
    *,
    width: int = 1280,
    height: int = 800,
    frame_rate: float = 30.0,
    overwrite: bool = False,
) -> None:
    """Draws a drive on a country road, to have a recording to try.

    The same arguments give the same bytes.
    """
    _core.sample(os.fsencode(to_path(path)), frames, width, height, frame_rate, overwrite)
