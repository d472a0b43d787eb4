"""Checking and recovering recordings."""

from __future__ import annotations

import dataclasses
import os
from typing import Any, Literal, Optional

from . import _core
from ._errors import in_python
from ._arguments import Path, to_bool, to_bytes, to_path
from ._times import Time, to_stored_microseconds


@dataclasses.dataclass(frozen=True)
class Finding:
    """Something that is wrong with a recording.

    Attributes:
        severity: "error" if something cannot be read from it, or not as it was recorded, else
            "warning"
        frame: index of the first frame that it is about, or None
        last_frame: index of the last one, if it is about several
        offset: bytes from the start of the file, or None
        text: what is wrong
    """

    severity: Literal["error", "warning"]
    frame: Optional[int]
    last_frame: Optional[int]
    offset: Optional[int]
    text: str


@dataclasses.dataclass(frozen=True)
class RecoveryReport:
    """What came back of a recording.

    Attributes:
        frames: number of frames in the new recording
        frames_before: number of frames that there were, as far as can be told
        losses: what is lost
        notes: what is not lost but worth knowing
    """

    frames: int
    frames_before: int
    losses: list[str]
    notes: list[str]


def verify(path: Path, decode: bool = False) -> list[Finding]:
    """Checks a recording for damage; an empty list if there is none.

    :param decode: decode every frame as well
    """
    return [Finding(*each) for each in _core.verify(os.fsencode(to_path(path)), decode)]


def recover(
    leftover: Path,
    output: Path,
    *,
    device_id: Optional[bytes] = None,
    start_time: Optional[Time] = None,
    frame_rate: Optional[float] = None,
    keep_damaged: bool = False,
    overwrite: bool = False,
) -> RecoveryReport:
    """Makes a recording of what an interrupted or damaged one left, which stays as it is.

    :param leftover: the temporary file, PATH.tmp, or the damaged recording
    :param device_id: identifier of the camera; an interrupted recording does not contain it
    :param start_time: rtv: start time; img: capture time of the first frame, needs frame_rate
    :param frame_rate: img: frames a second, for frames whose times are lost
    :param keep_damaged: keep pictures that are cut short
    :param overwrite: replace an existing file
    """
    options: dict[str, Any] = {"keep_damaged": to_bool(keep_damaged, "keep_damaged")}
    if device_id is not None:
        options["device_id"] = to_bytes(device_id, "device_id")
    if start_time is not None:
        options["start_time"] = to_stored_microseconds(start_time)
    if frame_rate is not None:
        options["frame_rate"] = float(frame_rate)
    frames, before, losses, notes = _core.recover(
        os.fsencode(to_path(leftover)), os.fsencode(to_path(output)), options, overwrite
    )
    return RecoveryReport(
        frames, before, [in_python(each) for each in losses], [in_python(each) for each in notes]
    )
