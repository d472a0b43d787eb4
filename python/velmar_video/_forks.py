"""What a child process must not take over from the threads of its parent."""

from __future__ import annotations

import os
import threading
import weakref
from types import TracebackType
from typing import Optional

_locks: weakref.WeakSet[Lock]

#: Goes up in a child process.
generation = 0


class Lock:
    """A reentrant lock that nobody holds in a child process."""

    def __init__(self) -> None:
        self._lock = threading.RLock()
        _locks.add(self)

    def __enter__(self) -> None:
        self._lock.acquire()

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self._lock.release()

    def _renew(self) -> None:
        self._lock = threading.RLock()


_locks = weakref.WeakSet()


def _forked() -> None:
    global generation
    generation += 1
    for lock in list(_locks):
        lock._renew()


os.register_at_fork(after_in_child=_forked)
