"""Pieces of work for the workers of a cluster."""

from __future__ import annotations

import contextlib
import itertools
import logging
import os
import pickle
import tempfile
import time
import uuid
import warnings
from collections.abc import Callable, Iterable, Iterator
from typing import Any, Generic, Optional, TypeVar, cast

import cloudpickle  # type: ignore[import]
from distributed import (
    Client,
    Future,
    KilledWorker,
    LocalCluster,
    WorkerPlugin,
    as_completed,
    get_worker,
    wait,
)

Part = TypeVar("Part")

_WINDOW_CHECK = 2.0  # seconds
_WORKERS_EXPECTED = 10.0  # seconds
_CLEANED_UP = 5.0  # seconds
_FETCHED_AT_ONCE = 16  # pieces; one after the other takes a round trip each


class _Work(WorkerPlugin):  # type: ignore[misc]
    """A function that each worker gets once, also one that joins later."""

    def __init__(self, function: Callable[[Any], Any]):
        self.function = function


def _do(name: str, piece: list[Any]) -> bytes:
    function = cast(_Work, get_worker().plugins[name]).function
    # As bytes, so that what cannot be pickled fails here, and is not an endless loop of transfers.
    return bytes(cloudpickle.dumps([function(part) for part in piece]))


@contextlib.contextmanager
def workers_of(client: Optional[Client]) -> Iterator[Client]:
    """The client, or one with a process for each core of this machine, which ends with the block."""
    if client is not None:
        yield client
        return
    folder = tempfile.TemporaryDirectory(prefix="velmar-video-", ignore_cleanup_errors=True)
    with folder as temporary, LocalCluster(
        n_workers=len(os.sched_getaffinity(0)),
        threads_per_worker=1,
        dashboard_address=":0",  # any port; there may be other clusters
        local_directory=temporary,  # killed workers leave something there
        scheduler_kwargs={"allowed_failures": 0},  # what its worker died of is tried alone then
        silence_logs=logging.ERROR,  # what fails is raised or a result
    ) as cluster, Client(cluster, set_as_default=False) as own:
        yield own


class _Run(Generic[Part]):
    """Keeps all workers busy, but has no more pieces on their way than that takes."""

    def __init__(self, client: Client, name: str, ordered: bool):
        self._client = client
        self._name = name
        self._running: dict[Future, list[Part]] = {}
        self._done = None if ordered else as_completed(loop=client.loop)
        self._window = 0
        self._checked = 0.0

    def results(self, pieces: Iterable[list[Part]]) -> Iterator[tuple[Part, Any]]:
        coming = iter(pieces)
        while True:
            room = max(self._most_running() - len(self._running), 0)
            some = list(itertools.islice(coming, room))
            futures = self._submit(some)
            self._running.update(zip(futures, some))
            if self._done is not None:
                self._done.update(futures)
            if not self._running:
                return
            done = self._next_done()
            while done:
                fetched, done = done[:_FETCHED_AT_ONCE], done[_FETCHED_AT_ONCE:]
                for future, results in zip(fetched, self._results_of(fetched)):
                    yield from zip(self._running.pop(future), results)

    def wait(self) -> None:
        """Until nothing runs."""
        self._wait(list(self._running))

    def cancel(self) -> None:
        _try(self._client, self._client.cancel, list(self._running))
        self._running.clear()

    def _submit(self, pieces: list[list[Part]]) -> list[Future]:
        return list(self._client.map(_do, [self._name] * len(pieces), pieces, pure=False))

    def _most_running(self) -> int:
        """Workers may come and go."""
        if time.monotonic() - self._checked > _WINDOW_CHECK:
            self._window = _FETCHED_AT_ONCE + 2 * sum(self._client.nthreads().values())
            self._checked = time.monotonic()
        return self._window

    def _next_done(self) -> list[Future]:
        """At least one."""
        if self._done is not None:
            return [next(self._done), *self._done.next_batch(block=False)]
        self._wait([next(iter(self._running))])
        return list(itertools.takewhile(Future.done, self._running))

    def _wait(self, futures: list[Future]) -> None:
        with self._client.as_current():
            wait(futures)

    def _results_of(self, futures: list[Future]) -> Iterator[list[Any]]:
        fine = [future for future in futures if future.status == "finished"]
        results: dict[Future, bytes] = {}
        with contextlib.suppress(KilledWorker):  # it had one of them; each is asked for below
            results.update(zip(fine, self._client.gather(fine)))
        for future in futures:
            try:
                yield pickle.loads(results.pop(future) if future in results else future.result())
            except KilledWorker:
                yield self._alone(self._running[future])

    def _alone(self, piece: list[Part]) -> list[Any]:
        """The results of a piece whose workers died. Others may have killed them: with nothing
        beside it, a part is known to do so."""
        self.wait()
        return [self._one(part) for part in piece]

    def _one(self, part: Part) -> Any:
        for last in (False, True):  # a worker may also die of something else
            try:
                (future,) = self._submit([[part]])
                return pickle.loads(future.result())[0]
            except KilledWorker as error:
                if last:
                    return error


@contextlib.contextmanager
def run_of(client: Client, function: Callable[[Part], Any], ordered: bool) -> Iterator[_Run[Part]]:
    """All workers have the function until the block ends."""
    try:
        client.wait_for_workers(1, timeout=_WORKERS_EXPECTED)
    except TimeoutError:
        warnings.warn("the cluster has no workers; waiting for some", stacklevel=2)
    name = f"velmar-video-{uuid.uuid4().hex}"
    client.register_worker_plugin(_Work(function), name=name)
    run = _Run[Part](client, name, ordered)
    try:
        yield run
    finally:
        run.cancel()
        _try(client, client.unregister_worker_plugin, name)


def _try(client: Client, clean_up: Callable[..., Any], *arguments: Any) -> None:
    """Workers that died or a client that is closed are no failure of the work that is done."""
    with contextlib.suppress(Exception):
        client.sync(clean_up, *arguments, callback_timeout=_CLEANED_UP)


def spread(
    client: Client,
    function: Callable[[Part], Any],
    pieces: Iterable[list[Part]],
    ordered: bool,
) -> Iterator[tuple[Part, Any]]:
    """(part, what `function` gives for it), each once, as they come or in order.

    A piece is what a worker does in one go. What the function raises is raised. The result of a part
    that kills each worker is a KilledWorker.
    """
    with run_of(client, function, ordered) as run:
        yield from run.results(pieces)
