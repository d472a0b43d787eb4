"""New recordings, and changes to those that are there."""

from __future__ import annotations

import json
import os
from collections.abc import Mapping
from types import TracebackType
from typing import Any, Optional, Union

import numpy as np

from . import _core
from ._errors import closed_error, usage_error
from ._recording import Path, Recording
from ._selection import number_of
from ._times import Duration, Time, Times, duration_to_microseconds, to_microseconds, to_time

#: Anything with the buffer protocol.
Bytes = Union[bytes, bytearray, memoryview, "np.ndarray[Any, Any]"]


class Writer:
    """A recording that is being written; see :func:`velmar_video.create`."""

    def __init__(self, path: Path, description: dict[str, Any], capacity: int, overwrite: bool):
        self._path = os.fsdecode(path)
        self._core = _core.Writer(os.fsencode(path), description, capacity, overwrite)

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
        capture = to_microseconds(capture_time)
        arrival = capture if arrival_time is None else to_microseconds(arrival_time)
        if capture < 0 or arrival < 0:
            raise usage_error("a time before 1970", self._path)
        values = {name: _text(value) for name, value in (tag or {}).items()}
        values.update((name, _text(value)) for name, value in (can or {}).items())
        self._core.add(jpeg, capture, arrival, values)

    def close(self) -> None:
        """Finishes the recording: it is complete, on the disk and under its name. May be called
        again; add() afterwards raises ClosedError."""
        self._core.finish()

    def abandon(self) -> None:
        """Ends without a recording: the frames stay in PATH.tmp, for :func:`velmar_video.recover`."""
        self._core.abandon()

    def __enter__(self) -> Writer:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        if kind is None:
            self.close()
        else:
            self.abandon()


def _text(value: Any) -> str:
    if isinstance(value, (bool, np.bool_)):
        return str(int(value))
    if isinstance(value, np.floating):
        value = float(value) if value.dtype != np.float32 else value
    return str(value)


def _json(value: Mapping[str, Any]) -> str:
    try:
        return json.dumps(value, allow_nan=False)
    except ValueError as error:
        raise usage_error(f"it is no JSON: {error}") from None


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
    start_position: tuple[float, float, float] = (0.0, 0.0, 0.0),
    version: str = "04",
    capacity: int = 65535,
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
    :param version: rtv: "02", "03" or "04", which holds signals
    :param capacity: rtv: the most frames there can be, 65535 at most
    :param overwrite: replace an existing file and what an interrupted recording left
    """
    longitude, latitude, _ = start_position
    if not (-180 <= longitude <= 180 and -90 <= latitude <= 90):
        raise usage_error("start_position is longitude, latitude and altitude", os.fsdecode(path))
    if not 0 <= width <= 65535 or not 0 <= height <= 65535:
        raise usage_error("width and height are 0 to 65535 pixels", os.fsdecode(path))
    if not 1 <= capacity <= 65535:
        raise usage_error("the capacity is 1 to 65535 frames", os.fsdecode(path))
    description = {
        "width": width,
        "height": height,
        "device_id": bytes(device_id),
        "undistorted": undistorted,
        "camera_params": _json(camera_params or {}),
        "extended_info": _json(extended_info or {}),
        "start_time": 0 if start_time is None else to_microseconds(start_time),
        "start_position": start_position,
        "version": version,
    }
    return Writer(path, description, capacity, overwrite)


class FrameTimes:
    """Times of a recording's frames by index, for :class:`Edit`: assign to an element to change it."""

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
        self.changes[number] = to_microseconds(time)


class Edit:
    """Changes to a recording, made together when it ends; see :func:`velmar_video.edit`."""

    def __init__(self, path: Path):
        self._path = os.fsdecode(path)
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
        self._set("device_id", bytes(value), bytes(value))

    @property
    def undistorted(self) -> bool:
        """Whether the lens's distortion was taken out of the frames."""
        return bool(self._now["undistorted"])

    @undistorted.setter
    def undistorted(self, value: bool) -> None:
        self._set("undistorted", bool(value), bool(value))

    @property
    def start_time(self) -> np.datetime64:
        """Start time; the times of all frames move with it. rtv only."""
        time: np.datetime64 = self._now["start_time"]
        return time

    @start_time.setter
    def start_time(self, value: Time) -> None:
        microseconds = to_microseconds(value)
        self._set("start_time", to_time(microseconds), microseconds)

    @property
    def camera_params(self) -> dict[str, Any]:
        """Camera parameters. Assign a new dict; changing the returned one does nothing. img only."""
        return dict(self._now["camera_params"])

    @camera_params.setter
    def camera_params(self, value: Mapping[str, Any]) -> None:
        self._set("camera_params", dict(value), _json(value))

    @property
    def extended_info(self) -> dict[str, Any]:
        """Extended information. Assign a new dict, as for camera_params. img only."""
        return dict(self._now["extended_info"])

    @extended_info.setter
    def extended_info(self, value: Mapping[str, Any]) -> None:
        self._set("extended_info", dict(value), _json(value))

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

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
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
    return _core.undo_edit(os.fsencode(path))


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
    _core.sample(os.fsencode(path), frames, width, height, frame_rate, overwrite)
