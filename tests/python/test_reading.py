import gc
import io
import json
import multiprocessing
import os
import pickle
import shutil
import subprocess
import sys
import threading

import numpy as np
import pytest
from PIL import Image

import velmar_video as vv

TOOL = os.environ["VELMAR_TOOL"]


def pillow(jpeg, mode="RGB"):
    """TurboJPEG's output by another route."""
    picture = Image.open(io.BytesIO(jpeg))
    picture.draft(mode, picture.size)
    return np.asarray(picture)


def shown(path):
    """The frames as the tool shows them."""
    lines = subprocess.run([TOOL, "frames", path, "--json"], check=True, capture_output=True).stdout
    return [json.loads(line) for line in lines.splitlines()]


def test_pictures_are_those_of_another_decoder(rec):
    for i in range(len(rec)):
        assert np.array_equal(rec[i], pillow(rec.jpeg(i)))
    assert np.array_equal(rec.frame(0, format="bgr"), rec[0][:, :, ::-1])
    assert np.array_equal(rec.frame(0, format="gray")[:, :, 0], pillow(rec.jpeg(0), "L"))
    assert rec.frame(3, scale="1/2", crop=(10, 4)).shape == (25, 48, 3)
    assert np.array_equal(rec.frame(3, crop=(10, 4)), rec[3][10:-4])


def test_many_frames_are_the_single_ones(rec):
    singles = np.stack([rec[i] for i in range(len(rec))])
    assert np.array_equal(rec.frames(), singles)
    assert np.array_equal(rec.frames([3, -1, 3], threads=3), singles[[3, -1, 3]])
    assert np.array_equal(np.stack(list(rec)), singles)
    assert np.array_equal(
        np.stack(list(rec.iterate(range(8, 2, -2), threads=2, ahead=1))), singles[8:2:-2]
    )
    assert np.array_equal(np.stack(rec.__getitems__([2, 5])), singles[[2, 5]])
    out = np.empty((2, 64, 96, 3), np.uint8)
    assert rec.frames([0, 1], out=out) is out and np.array_equal(out, singles[:2])
    assert rec.frames([]).shape == (0, 64, 96, 3)


VIEWS = [
    slice(2, 9, 3),
    slice(None, None, -1),
    slice(9, 2, -4),
    slice(5, 2),
    [4, 0, -1],
    np.arange(12) % 3 == 0,
    range(1, 11, 2),
]


@pytest.mark.parametrize("chosen", VIEWS, ids=str)
def test_views_are_over_the_chosen_frames(rec, chosen):
    numbers = np.arange(12)[list(chosen) if isinstance(chosen, range) else chosen]
    view = rec[chosen]
    assert [view.jpeg(i) for i in range(len(view))] == [rec.jpeg(int(i)) for i in numbers]
    assert np.array_equal(view.capture_times, rec.capture_times[numbers])
    assert np.array_equal(pickle.loads(pickle.dumps(view)).capture_times, view.capture_times)
    again = view[::-1]
    assert np.array_equal(again.capture_times, rec.capture_times[numbers][::-1])


def test_facts_and_columns_are_those_of_the_tool(path, rec):
    info = json.loads(
        subprocess.run([TOOL, "info", path, "--json"], check=True, capture_output=True).stdout
    )
    assert (rec.width, rec.height, rec.container, rec.path) == (
        96,
        64,
        info["container"],
        str(path),
    )
    assert rec.device_id.hex() == info["device_id"] and rec.undistorted is True
    frames = shown(path)
    assert rec.capture_times.astype(np.int64).tolist() == [f["sensor_time_us"] for f in frames]
    assert rec.arrival_times.astype(np.int64).tolist() == [f["arrived_time_us"] for f in frames]
    if rec.container == "img":
        assert rec.tags is None and rec.positions is None and rec.speed is None and rec.can == {}
        assert rec.camera_params["height_above_road_mm"] == 1400 and rec.start_position is None
        return
    for name in rec.tags.dtype.names:
        assert rec.tags[name].tolist() == [f[name] for f in frames]
    assert np.allclose(
        rec.positions[:, :2], [(f["lng_deg"], f["lat_deg"]) for f in frames], atol=1e-9, rtol=0
    )
    assert np.allclose(rec.speed, [f["speed_m_s"] for f in frames], atol=1e-9)
    for name, values in rec.can.items():
        for value, frame in zip(values, frames):
            assert (value is np.ma.masked) == (name not in frame["can"]), name
            if value is not np.ma.masked:
                assert float(value) == pytest.approx(frame["can"][name], rel=1e-6)


def test_frames_are_found_by_time(rec):
    times = rec.capture_times
    for i in (0, 7, 11):
        assert (
            rec.index_at(times[i])
            == rec.index_at(times[i], "before")
            == rec.index_at(times[i], "after")
            == i
        )
    assert rec.index_at(times[3] + np.timedelta64(1, "us"), "before") == 3
    assert rec.index_at(times[3] + np.timedelta64(1, "us"), "after") == 4
    assert rec.index_at(times[4] - np.timedelta64(1, "us")) == 4
    assert rec.index_at(0) == 0 and rec.index_at(0, "after") == 0
    assert np.array_equal(rec.between(times[2], times[5]).capture_times, times[2:5])
    assert len(rec.between(times[5], times[2])) == 0
    with pytest.raises(IndexError):
        rec.index_at(0, "before")


def test_a_view_of_stored_bytes_outlives_the_recording(path):
    rec = vv.open(path)
    view, jpeg = rec.jpeg_view(3), rec.jpeg(3)
    rec.close()
    del rec
    gc.collect()
    assert view.readonly and bytes(view) == jpeg


def test_pandas_has_a_row_for_each_frame(rec):
    pandas = pytest.importorskip("pandas")
    frame = rec.to_pandas()
    assert len(frame) == 12 and np.array_equal(frame["capture_time"], rec.capture_times)
    assert isinstance(frame, pandas.DataFrame)
    if rec.container == "rtv":
        assert np.array_equal(frame["vehicle_speed"], rec.can["vehicle_speed"])


BAD_USES = {
    "index": (IndexError, lambda rec: rec[12]),
    "negative index": (IndexError, lambda rec: rec[-13]),
    "huge indices": (IndexError, lambda rec: rec.frames([2**62])),
    "huge range": (IndexError, lambda rec: rec.frames(range(10**9))),
    "mask": (ValueError, lambda rec: rec[np.ones(3, bool)]),
    "text index": (TypeError, lambda rec: rec.frame("x")),
    "format": (ValueError, lambda rec: rec.frame(0, format="hsv")),
    "scale": (ValueError, lambda rec: rec.frame(0, scale="1/3")),
    "crop": (ValueError, lambda rec: rec.frame(0, crop=(60, 60))),
    "negative crop": (ValueError, lambda rec: rec.frame(0, crop=(-1, 0))),
    "threads": (ValueError, lambda rec: rec.frames(threads=-1)),
    "no format": (ValueError, lambda rec: rec.frame(0, format=None)),
    "crop of three": (ValueError, lambda rec: rec.frame(0, crop=(1, 2, 3))),
    "threads in part": (ValueError, lambda rec: rec.frames(threads=1.5)),
    "null character": (ValueError, lambda rec: vv.open(rec.path + "\0.img")),
    "one path for many": (ValueError, lambda rec: vv.open_many(rec.path)),
    "time": (ValueError, lambda rec: rec.index_at(np.datetime64(300000, "Y"))),
    "duration": (ValueError, lambda rec: rec.index_at(2**63)),
    "float time": (ValueError, lambda rec: rec.index_at(1.5)),
    "NaT": (ValueError, lambda rec: rec.index_at(np.datetime64("NaT"))),
    "out of another shape": (
        ValueError,
        lambda rec: rec.frame(0, out=np.empty((64, 96), np.uint8)),
    ),
    "out of another type": (
        ValueError,
        lambda rec: rec.frame(0, out=np.empty((64, 96, 3), np.int8)),
    ),
    "out with strides": (
        ValueError,
        lambda rec: rec.frame(0, out=np.empty((64, 192, 3), np.uint8)[:, ::2]),
    ),
    "out that is read-only": (
        ValueError,
        lambda rec: rec.frame(
            0, out=np.frombuffer(bytes(64 * 96 * 3), np.uint8).reshape(64, 96, 3)
        ),
    ),
    "out of another number": (
        ValueError,
        lambda rec: rec.frames([0, 1], out=np.empty((3, 64, 96, 3), np.uint8)),
    ),
}


@pytest.mark.parametrize("name", BAD_USES)
def test_bad_use_is_an_exception(rec, name):
    kind, use = BAD_USES[name]
    with pytest.raises(kind):
        use(rec)
    assert rec[0].any()


def test_a_closed_recording_is_an_exception(path):
    rec = vv.open(path)
    view = rec[2:5]
    rec.close()
    rec.close()
    assert view.closed
    for use in (
        lambda: rec[0],
        lambda: view.frames(),
        lambda: rec.capture_times,
        lambda: rec.jpeg_view(0),
        lambda: next(rec.iterate(ahead=0)),
    ):
        with pytest.raises(vv.ClosedError):
            use()


def test_files_that_do_not_open_say_why(drives, tmp_path):
    cut = tmp_path / "cut.img"
    cut.write_bytes((drives / "drive.img").read_bytes()[:5000])
    with pytest.raises(FileNotFoundError) as missing:
        vv.open(tmp_path / "none.rtv")
    assert (
        missing.value.code == "VELMAR_ERROR_CODE_FILE_NOT_EXIST_E"
        and missing.value.path.endswith("none.rtv")
    )
    with pytest.raises(vv.Error, match="VIDEO_NOT_COMPLETE"):
        vv.open(cut)
    assert pickle.loads(pickle.dumps(missing.value)).path == missing.value.path


def test_a_damaged_frame_is_named_or_masked(drives, tmp_path):
    damaged = tmp_path / "damaged.rtv"
    with vv.open(drives / "drive.rtv") as whole:
        bad = whole.jpeg(4)
        good = whole.frames()
    content = (drives / "drive.rtv").read_bytes()
    damaged.write_bytes(content.replace(bad, bytes(len(bad))))
    with vv.open(damaged) as rec:
        with pytest.raises(vv.Error) as error:
            rec.frames()
        assert error.value.index == 4
        frames, mask = rec.frames(errors="mask")
        assert np.flatnonzero(mask).tolist() == [4] and not frames[4].any()
        assert np.array_equal(np.delete(frames, 4, 0), np.delete(good, 4, 0))
        assert [f.frame for f in vv.verify(damaged, decode=True)] == [4]


def test_threads_share_a_recording(rec):
    expected = rec.frames()
    wrong = []

    def read(seed):
        for i in np.random.default_rng(seed).integers(0, 12, 100):
            if not np.array_equal(rec[i], expected[i]) or bytes(rec.jpeg_view(i)) != rec.jpeg(i):
                wrong.append(i)

    threads = [threading.Thread(target=read, args=(seed,)) for seed in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def _sum(view):
    return int(view.frames().sum())


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_share_a_recording(rec, method):
    views = [rec[i::4] for i in range(4)]
    with multiprocessing.get_context(method).Pool(4) as pool:
        assert pool.map(_sum, views) == [_sum(view) for view in views]


def test_nothing_grows_over_opens(path):
    def used():
        gc.collect()
        with open("/proc/self/maps") as maps:
            return len(os.listdir("/proc/self/fd")), sum("drive" in line for line in maps)

    before = used()
    for _ in range(200):
        rec = vv.open(path)
        rec.jpeg_view(0)
        rec[0]
        del rec
    assert used() == before


def test_a_child_goes_on_with_its_parents_iterator(rec):
    frames = rec.iterate(threads=2, ahead=2)
    next(frames)
    child = os.fork()
    if child == 0:
        try:
            os._exit(0 if all(map(np.array_equal, frames, rec[1:])) else 1)
        finally:
            os._exit(2)
    assert os.waitpid(child, 0)[1] == 0
    assert len(list(frames)) == 11


def test_a_thread_may_decode_when_the_interpreter_ends(path):
    script = """
import sys, threading, time, velmar_video as vv
rec = vv.open(sys.argv[1])
def decode():
    while True: rec[5]
for _ in range(3): threading.Thread(target=decode, daemon=True).start()
time.sleep(0.2)
"""
    for _ in range(3):
        subprocess.run([sys.executable, "-c", script, path], check=True, timeout=30)


def test_a_file_that_has_changed_is_an_error(drives, tmp_path):
    path = tmp_path / "a.img"
    shutil.copy(drives / "drive.img", path)
    rec = vv.open(path)
    pickled = pickle.dumps(rec[[0, 11, 1]])
    os.truncate(path, 8000)
    with pytest.raises(vv.Error, match="shorter"):
        rec.jpeg_view(11)
    vv.sample(path, 3, width=96, height=64, overwrite=True)
    with pytest.raises(IndexError):
        pickle.loads(pickled)
