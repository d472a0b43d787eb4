"""Checking, recovering, and a recording to try."""

from __future__ import annotations

import dataclasses
import os
from typing import Any, Literal, Optional

from . import _core
from ._errors import in_python
from ._recording import Path
from ._times import Time, to_microseconds


@dataclasses.dataclass(frozen=True)
class Finding:
    """Something that is wrong with a recording."""

    #: "error": something cannot be had from it, or not as it was recorded; "warning": unusual.
    severity: Literal["error", "warning"]
    #: The first frame it is about, if it is about any.
    frame: Optional[int]
    #: The last one, if it is about several.
    last_frame: Optional[int]
    #: Bytes from the start of the file.
    offset: Optional[int]
    text: str


@dataclasses.dataclass(frozen=True)
class RecoveryReport:
    """What came back of a recording."""

    #: Frames that the new recording has.
    frames: int
    #: Frames that there were, as far as can be told.
    frames_before: int
    #: What is lost, in words.
    losses: list[str]
    #: What is not lost but worth knowing.
    notes: list[str]


def verify(path: Path, decode: bool = False) -> list[Finding]:
    """Checks a recording for damage; an empty list if there is none.

    :param decode: whether every frame is decoded as well
    """
    return [Finding(*each) for each in _core.verify(os.fsencode(path), decode)]


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
    :param device_id: instead of what the file says; an interrupted recording does not say it
    :param start_time: rtv: the same; img: of the first frame, with a frame rate
    :param frame_rate: img: frames a second, for frames whose times are lost
    :param keep_damaged: whether pictures that are cut short are kept, too
    """
    options: dict[str, Any] = {"keep_damaged": keep_damaged}
    if device_id is not None:
        options["device_id"] = bytes(device_id)
    if start_time is not None:
        options["start_time"] = to_microseconds(start_time)
    if frame_rate is not None:
        options["frame_rate"] = float(frame_rate)
    frames, before, losses, notes = _core.recover(
        os.fsencode(leftover), os.fsencode(output), options, overwrite
    )
    return RecoveryReport(
        frames, before, [in_python(each) for each in losses], [in_python(each) for each in notes]
    )


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
