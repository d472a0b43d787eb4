"""Recordings of a vehicle-mounted camera: frames as numpy arrays.

    import velmar_video as vv

    rec = vv.open("drive.rtv")
    picture = rec[48211]  # (height, width, 3) uint8, RGB
"""

from collections.abc import Iterable

from ._errors import ClosedError, Error
from ._many import Recordings
from ._arguments import Path
from ._recording import Recording
from ._rescue import Finding, RecoveryReport, recover, verify
from ._writing import Edit, FrameTimes, Writer, create, edit, sample, undo_edit

__all__ = [
    "ClosedError",
    "Edit",
    "Error",
    "Finding",
    "FrameTimes",
    "Recording",
    "Recordings",
    "RecoveryReport",
    "Writer",
    "create",
    "edit",
    "open",
    "open_many",
    "recover",
    "sample",
    "undo_edit",
    "verify",
]


def open(path: Path) -> Recording:
    """Opens a recording for reading; its name ends in .img or .rtv."""
    return Recording(path)


def open_many(paths: Iterable[Path]) -> Recordings:
    """The frames of many recordings as one sequence, in the order of the paths.

    Files are opened when they are needed, at most 64 at a time. The number of frames takes opening
    each file once.
    """
    return Recordings(paths)
