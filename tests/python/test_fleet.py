import os
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
import velmar_video as vv

if "asan" in os.environ.get("LD_PRELOAD", ""):
    pytest.skip(
        "it is the same code in more processes, which start slowly", allow_module_level=True
    )
fleet = pytest.importorskip("velmar_video.fleet")
distributed = pytest.importorskip("distributed")
pandas = pytest.importorskip("pandas")


@pytest.fixture(autouse=True)
def bounded():
    """Nothing here waits for ever for a process that does not answer."""

    def stop(*_):
        raise TimeoutError

    signal.signal(signal.SIGALRM, stop)
    signal.alarm(120)
    yield
    signal.alarm(0)


@pytest.fixture(scope="module")
def recordings(tmp_path_factory):
    """200 recordings, one of them long, one with a damaged frame, and one that is none."""
    folder = tmp_path_factory.mktemp("fleet")
    for i in range(200):
        name = f"{i:03}." + ("img" if i % 4 else "rtv")
        (folder / name[0]).mkdir(exist_ok=True)
        frames = 1500 if i == 100 else 10
        vv.sample(folder / name[0] / name, frames, width=64 + 8 * (i % 5), height=48)
    damaged = folder / "0/007.img"
    with vv.open(damaged) as whole:
        frame = whole.jpeg(3)
    damaged.write_bytes(damaged.read_bytes().replace(frame, bytes(len(frame))))
    (folder / "none.img").write_bytes(b"nothing")
    return folder


@pytest.fixture
def cluster(tmp_path):
    """A scheduler and two workers, processes of their own; a client and the workers."""
    file = tmp_path / "scheduler.json"
    options = ["--host", "127.0.0.1", "--no-dashboard", "--scheduler-file", str(file)]
    program = [sys.executable, "-m"]
    paths = [os.path.dirname(__file__), os.environ.get("PYTHONPATH", "")]  # its functions are here
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join(paths)}
    scheduler = [*program, "distributed.cli.dask_scheduler", *options, "--port", "0"]
    worker = [*program, "distributed.cli.dask_worker", *options, "--nthreads", "1", "--no-nanny"]
    worker += ["--local-directory", str(tmp_path)]
    with open(tmp_path / "log", "w") as log:
        processes = [
            subprocess.Popen(each, stderr=log, env=environment)
            for each in (scheduler, worker, worker)
        ]
    try:
        with distributed.Client(scheduler_file=str(file), set_as_default=False) as client:
            client.wait_for_workers(2)
            yield client, processes[1:]
    finally:
        for process in processes:
            process.kill()
            process.wait()


def brightness(frame):
    return float(frame.mean()), os.getpid()


def outcome(result):
    """Without what differs from process to process."""
    return str(result) if isinstance(result, vv.Error) else result[0]


def expected_of(table):
    """By this process alone."""
    for row in table.itertuples():
        if row.problem:
            yield row.file, None, f"{row.file}: {row.problem}"
            continue
        with vv.open(row.file) as rec:
            for i in range(row.first, row.behind):
                try:
                    yield row.file, i, brightness(rec[i])[0]
                except vv.Error as error:
                    yield row.file, i, str(error)


def test_whoever_dies_each_frame_is_given_once(recordings, cluster):
    client, workers = cluster
    table = fleet.scan(recordings, client=client)
    assert table.equals(fleet.scan(recordings)) and len(table) == 201
    got = []
    for each in fleet.map_frames(brightness, table, client=client):
        got.append(each)
        if len(got) == 1700:
            workers[0].kill()
    expected = list(expected_of(table))
    assert len(got) == len(expected) == 3490 + 1
    assert {each[:2]: outcome(each[2]) for each in got} == {each[:2]: each[2] for each in expected}
    assert sum(isinstance(result, vv.Error) for *_, result in got) == 2
    long = {result[1] for path, _, result in got if path.endswith("100.rtv")}
    assert long == {worker.pid for worker in workers}


def test_a_range_that_kills_each_worker_is_a_result(recordings):
    table = fleet.scan(recordings / "0")[:30]

    def deadly(frame):
        if frame.shape[1] == 64 + 8 * 4 and frame.mean() > 0:
            os._exit(1)
        return brightness(frame)

    table = table.drop(index=[4, 14, 19, 24, 29])  # but one of that width
    missing = str(recordings / "gone.rtv")
    table = pandas.concat([table, pandas.DataFrame([dict(file=missing, first=2, behind=4)])])
    got = list(fleet.map_frames(deadly, table[["file", "first", "behind"]], ordered=True))
    deadly_file = str(recordings / "0/009.img")
    assert [each[:2] for each in got] == [
        (row.file, i) for row in table.itertuples() for i in range(row.first, row.behind)
    ]
    for path, index, result in got:
        failed = path in (deadly_file, missing) or path.endswith("007.img") and index == 3
        assert isinstance(result, vv.Error) == failed, (path, index, result)
        assert not failed or result.path == path


def test_an_early_end_leaves_no_process(recordings):
    iterator = fleet.map_frames(brightness, fleet.scan(recordings / "0"))
    *_, (_, pid) = next(iterator)
    del iterator
    while os.path.exists(f"/proc/{pid}"):
        time.sleep(0.1)


PROGRAM = """
import sys
from velmar_video import fleet
def number(frame):
    return frame.size
if __name__ == "__main__":
    results = fleet.map_frames(number, fleet.scan(sys.argv[1]))
    next(results)
"""


def test_a_program_ends_with_results_left(recordings, tmp_path):
    (tmp_path / "program.py").write_text(PROGRAM)
    command = [sys.executable, str(tmp_path / "program.py"), str(recordings / "0")]
    ended = subprocess.run(command, timeout=60, capture_output=True, text=True)
    assert (ended.returncode, ended.stderr) == (0, "")


def test_what_dies_behind_the_last_result_is_no_failure(recordings, cluster):
    client, workers = cluster
    table = fleet.scan(recordings / "0/000.rtv")
    results = fleet.map_frames(brightness, table, client=client, ordered=True)
    got = [next(results) for _ in range(10)]
    other = fleet.map_frames(brightness, table, client=client)
    next(other)
    workers[0].send_signal(signal.SIGSTOP)
    assert len(got) == 10 and list(results) == []
    workers[0].kill()
    client.close()
    other.close()


def test_one_that_kills_workers_costs_the_others_nothing(recordings, tmp_path):
    from velmar_video.fleet._spread import workers_of

    files = sorted((recordings / "1").glob("*.img"))[:40]
    lazy = fleet.scan(files, npartitions=2)

    def die_once(table):
        if len(table) and not (tmp_path / "died").exists():
            (tmp_path / "died").touch()
            os._exit(1)
        return table

    class Deadly(distributed.WorkerPlugin):
        def setup(self, worker):
            from velmar_video.fleet import _catalog

            add = _catalog._core.catalog_add

            def catalog_add(path, paths, *rest):
                if any(each.endswith(b"105.img") for each in paths):
                    os._exit(1)
                return add(path, paths, *rest)

            _catalog._core.catalog_add = catalog_add

    with workers_of(None) as client:
        table = lazy.map_partitions(die_once, meta=lazy._meta)
        got = fleet.map_frames(brightness, table, ordered=True, client=client)
        assert [each[:2] for each in got] == [(str(file), i) for file in files for i in range(10)]
        client.register_worker_plugin(Deadly())
        changes = fleet.catalog(files, tmp_path / "some.db", client=client)
        assert changes == fleet.CatalogChanges(39, 0, 1, 0)
    bad = fleet.scan(tmp_path / "some.db").dropna(subset="problem")
    deadly = str(recordings / "1/105.img")
    assert [*zip(bad.file, bad.problem)] == [(deadly, "the workers that read it died")]


def test_a_frame_that_is_kept_stays_as_it_is(recordings, cluster):
    client, _ = cluster
    kept = {}

    def keep(frame):
        mean = frame.mean()
        kept[len(kept)] = (frame[::2], frame[::2].mean()) if len(kept) % 3 else (None, 0)
        assert all(part is None or part.mean() == then for part, then in kept.values())
        return mean

    table = fleet.scan(recordings / "0/000.rtv")
    got = [result for *_, result in fleet.map_frames(keep, table, client=client, ordered=True)]
    with vv.open(table.file[0]) as rec:
        assert got == [rec.frame(i).mean() for i in range(len(rec))]


def test_batches_come_with_their_table(recordings, cluster):
    client, _ = cluster
    lazy = fleet.scan(recordings / "0", "speed_m_s > 0", npartitions=3)
    table = lazy.compute()
    usable = table[table.problem.isna()]
    assert len(usable) == 25 and table.problem.dropna().str.contains("speed_m_s").all()

    def tell(frames, rows):
        assert len(frames) == len(rows) and frames.shape[1:] == (
            24,
            24 + 4 * (frames.shape[2] // 4 - 6),
            1,
        )
        return list(zip(rows["file"], rows["index"], rows["speed"], rows["capture_time"]))

    got = fleet.map_frames(
        tell, lazy, format="gray", scale="1/2", batched=True, ordered=True, client=client
    )
    got = [each for each in got if each[1] is not None]
    assert [each[:2] for each in got] == [
        (row.file, i) for row in usable.itertuples() for i in range(row.first, row.behind)
    ]
    for path, index, (file, number, speed, time) in got:
        assert (file, number) == (path, index) and speed > 0
        with vv.open(path) as rec:
            assert (speed, time) == (rec.speed[index], rec.capture_times[index])


def test_what_the_function_raises_is_raised(recordings, cluster):
    client, _ = cluster
    table = fleet.scan(recordings / "1")

    def raises(frame):
        raise LookupError("of the function")

    with pytest.raises(LookupError, match="of the function") as raised:
        list(fleet.map_frames(raises, table, client=client))
    assert raised.value.__notes__[0].startswith("frame ")
    with pytest.raises(ValueError, match="0 results"):
        list(fleet.map_frames(lambda frames, rows: [], table, batched=True, client=client))
    assert len(list(fleet.map_frames(brightness, table, client=client))) == 2490


def test_other_tables_will_do(recordings, cluster, monkeypatch):
    monkeypatch.chdir(recordings / "0")
    table = pandas.DataFrame({"file": ["000.rtv"], "first": 2.0, "behind": 4.0, "bytes": np.nan})
    got = fleet.map_frames(brightness, table, ordered=True, client=cluster[0])
    assert [each[:2] for each in got] == [(str(recordings / "0/000.rtv"), i) for i in (2, 3)]


def test_a_condition_gives_runs_of_frames(recordings):
    path = recordings / "1/100.rtv"
    table = fleet.scan([path, path], "index < 3 || index >= 10 && index != 20")
    assert table[["first", "behind", "frames"]].values.tolist()[:3] == [
        [0, 3, 3],
        [10, 20, 10],
        [21, 1500, 1479],
    ]
    with vv.open(path) as rec:
        assert table.bytes[1] == sum(len(rec.jpeg(i)) for i in range(10, 20))
        assert (table.start[1], table.end[1]) == tuple(rec.capture_times[[10, 19]])


def test_a_catalogue_by_workers_is_the_one_of_the_tool(recordings, cluster, tmp_path):
    client, _ = cluster
    files = [*sorted((recordings / "1").iterdir())[:20], recordings / "none.img"]
    folder = tmp_path / "drives"
    folder.mkdir()
    for file in files:
        os.link(file, folder / file.name)
    one, many = tmp_path / "one.db", tmp_path / "many.db"
    assert fleet.catalog(folder, one) == fleet.CatalogChanges(20, 0, 1, 0)
    assert fleet.catalog(folder, many, client=client) == fleet.CatalogChanges(20, 0, 1, 0)
    where = "speed_m_s > 0 && index >= 3"
    asked = [fleet.scan(db, where) for db in (one, many)]
    scanned = fleet.scan(folder, where)
    has_facts = ~scanned.problem.str.contains("speed_m_s", na=False)
    scanned = scanned[has_facts].sort_values("file").reset_index(drop=True)
    assert asked[0].equals(asked[1]) and asked[0].equals(scanned) and len(scanned) == 6
    usable = asked[1][asked[1].problem.isna()]
    assert len(list(fleet.map_frames(brightness, usable[1:], client=client))) == 4 * 7
    gone = folder / files[4].name
    gone.unlink()
    os.utime(folder / files[5].name, (1, 1))
    link = tmp_path / "link"
    link.symlink_to(folder)
    for expected in (fleet.CatalogChanges(1, 18, 1, 1), fleet.CatalogChanges(0, 19, 1, 0)):
        paths = [folder, gone, link, folder / files[5].name]
        assert fleet.catalog(paths, one) == expected
        assert fleet.catalog(paths, many, client=client) == expected


SIZES = {
    "long": [(100_000, 10_000)],
    "heavy": [(3_000, 1 << 20)],
    "many": [(10, 10_000)] * 3_000,
    "few": [(30, 10_000)],
    "without bytes": [(5_000, None)] * 3,
    "empty": [(0, 0), (1, 1)],
}


@pytest.mark.parametrize("name", SIZES)
def test_work_is_cut_by_frames_and_bytes(name):
    from velmar_video.fleet._ranges import _pieces

    table = pandas.DataFrame(
        [(f"{i}.img", 0, n, n * (size or 0)) for i, (n, size) in enumerate(SIZES[name])],
        columns=["file", "first", "behind", "bytes"],
    )
    total = int(table.behind.sum())
    given = table if name != "without bytes" else table.drop(columns="bytes")
    pieces = list(_pieces(given, total))
    frames = [
        (part.file, i) for piece in pieces for part in piece for i in range(part.first, part.behind)
    ]
    assert frames == [(row.file, i) for row in table.itertuples() for i in range(row.behind)]
    most = max(sum(part.behind - part.first for part in piece) for piece in pieces)
    assert most <= 1024 and most * (SIZES[name][0][1] or 0) <= 128 << 20
    assert max(map(len, pieces)) <= 64 and len(pieces) <= max(len(frames) / 5, 1)
    assert len(pieces) >= min(len(frames) // 8, 500) or name == "few"


def test_dask_is_needed_for_this_alone():
    program = (
        "import sys; sys.modules['dask'] = None\nimport velmar_video\nimport velmar_video.fleet"
    )
    ended = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True)
    assert "line 3" in ended.stderr and "apt install python3-dask" in ended.stderr


BAD_USES = {
    "table": lambda table: fleet.map_frames(brightness, ["a.img"]),
    "function": lambda table: fleet.map_frames("mean", table),
    "condition": lambda table: fleet.scan(table.file, "bogus > 3"),
    "scale": lambda table: fleet.map_frames(brightness, table, scale="1/3"),
    "fraction": lambda table: fleet.map_frames(brightness, table.assign(first=0.5)),
    "not a number": lambda table: fleet.map_frames(brightness, table.assign(behind=np.nan)),
    "negative": lambda table: fleet.map_frames(brightness, table.assign(first=-1)),
    "backward": lambda table: fleet.map_frames(brightness, table.assign(first=11)),
}


@pytest.mark.parametrize("name", BAD_USES)
def test_wrong_arguments_are_raised(recordings, name):
    with pytest.raises(ValueError):
        BAD_USES[name](fleet.scan(recordings / "0/000.rtv"))
