"""What a child process must not take over from the threads of its parent."""

from __future__ import annotations

import os
import threading
import weakref

_registered: weakref.WeakSet[Forked]


class Forked:
    """Hears that it is in a child process now."""

    def __init__(self) -> None:
        _registered.add(self)

    def forked(self) -> None:
        raise NotImplementedError


class Lock(Forked):
    """A reentrant lock that nobody holds in a child process."""

    def __init__(self) -> None:
        super().__init__()
        self._lock = threading.RLock()

    def __enter__(self) -> None:
        self._lock.acquire()

    def __exit__(self, *error: object) -> None:
        self._lock.release()

    def forked(self) -> None:
        self._lock = threading.RLock()


_registered = weakref.WeakSet()


def _tell_all() -> None:
    for each in list(_registered):
        each.forked()


os.register_at_fork(after_in_child=_tell_all)
