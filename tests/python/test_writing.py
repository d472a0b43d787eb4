import pickle
import signal

import numpy as np
import pytest

import velmar_video as vv

START = np.datetime64("2026-11-21T08:00:00", "us")


def copied(source, target, **options):
    """Every frame of one recording into another by create()."""
    with vv.create(target, device_id=source.device_id, undistorted=True, **options) as writer:
        for i in range(len(source)):
            extra = {}
            if source.container == "rtv" and str(target).endswith(".rtv"):
                tag = source.tags[i]
                signals = {
                    name: values[i]
                    for name, values in source.can.items()
                    if values[i] is not np.ma.masked
                }
                extra = {"tag": {name: tag[name] for name in tag.dtype.names}, "can": signals}
            writer.add(
                source.jpeg_view(i), source.capture_times[i], source.arrival_times[i], **extra
            )
    return vv.open(target)


@pytest.mark.parametrize("ending", ["img", "rtv"])
def test_what_is_written_is_read(rec, tmp_path, ending):
    copy = copied(rec, tmp_path / f"copy.{ending}")
    assert [copy.jpeg(i) for i in range(12)] == [rec.jpeg(i) for i in range(12)]
    assert (copy.width, copy.height, copy.undistorted) == (96, 64, True)
    exact = 1 if ending == "img" else 1000  # an rtv holds milliseconds
    assert np.array_equal(
        copy.capture_times.astype(int) // exact, rec.capture_times.astype(int) // exact
    )
    assert vv.verify(copy.path, decode=True) == []
    if ending == rec.container == "rtv":
        assert np.array_equal(copy.tags, rec.tags)
        for name, values in rec.can.items():
            assert np.ma.allequal(copy.can[name], values) and np.array_equal(
                copy.can[name].mask, values.mask
            )


@pytest.mark.parametrize("ending", ["img", "rtv"])
def test_an_exception_leaves_the_frames_for_recover(rec, tmp_path, ending):
    path = tmp_path / f"new.{ending}"
    with pytest.raises(KeyError), vv.create(path) as writer:
        for i in range(5):
            writer.add(rec.jpeg(i), START + i * 1000)
        raise KeyError
    assert not path.exists()
    report = vv.recover(f"{path}.tmp", path, device_id=b"\x0a", start_time=START)
    assert (report.frames, report.frames_before, report.losses) == (5, 5, [])
    assert [vv.open(path).jpeg(i) for i in range(5)] == [rec.jpeg(i) for i in range(5)]


BAD_FRAMES = {
    "no picture": lambda w, jpeg: w.add(b"no picture", START),
    "half a picture": lambda w, jpeg: w.add(jpeg[:-100], START),
    "float time": lambda w, jpeg: w.add(jpeg, 1.5e15),
    "nanoseconds": lambda w, jpeg: w.add(jpeg, np.datetime64("2026-11-21T08:00:00.000000001")),
    "time beyond": lambda w, jpeg: w.add(jpeg, 2**63),
    "years beyond": lambda w, jpeg: w.add(jpeg, np.datetime64(600000, "Y")),
    "text": lambda w, jpeg: w.add("jpeg", START),
    "a signal as a tag": lambda w, jpeg: w.add(jpeg, START, tag={"vehicle_speed": 3}),
    "no such signal": lambda w, jpeg: w.add(jpeg, START, can={"warp": 9}),
    "a value too large": lambda w, jpeg: w.add(jpeg, START, tag={"speed": 70000}),
    "before the start": lambda w, jpeg: (w.add(jpeg, START), w.add(jpeg, START - 5000)),
}


@pytest.mark.parametrize("name", BAD_FRAMES)
def test_a_frame_that_cannot_be_is_refused(rec, tmp_path, name):
    path = tmp_path / "new.rtv"
    with vv.create(path) as writer:
        with pytest.raises(ValueError):
            BAD_FRAMES[name](writer, rec.jpeg(0))
        writer.add(rec.jpeg(1), START)
    assert vv.open(path).jpeg(len(vv.open(path)) - 1) == rec.jpeg(1)


def test_a_full_recording_is_not_finished(rec, tmp_path):
    with pytest.raises(ValueError, match="no room"), vv.create(
        tmp_path / "a.rtv", capacity=3
    ) as writer:
        for i in range(4):
            writer.add(rec.jpeg(i), START)
    assert [path.name for path in tmp_path.iterdir()] == ["a.rtv.tmp"]


BAD_DESCRIPTIONS = {
    "number as id": dict(path="a.img", device_id=5),
    "long id": dict(path="a.rtv", device_id=bytes(25)),
    "text as flag": dict(path="a.img", undistorted="no"),
    "width alone": dict(path="a.img", width=96),
    "start of an img": dict(path="a.img", start_time=START),
    "before 1970": dict(path="a.rtv", start_time=-1),
    "no place": dict(path="a.rtv", start_position=(500, 0, 0)),
    "two numbers": dict(path="a.rtv", start_position=(1, 2)),
    "parameters of an rtv": dict(path="a.rtv", camera_params={"f": 1}),
    "no JSON": dict(path="a.img", camera_params={"f": float("nan")}),
    "a large number": dict(path="a.img", extended_info={"n": 2**70}),
    "version": dict(path="a.rtv", version="05"),
    "null character": dict(path="kept.img\0.img", overwrite=True),
}


@pytest.mark.parametrize("name", BAD_DESCRIPTIONS)
def test_what_a_recording_cannot_hold_is_refused(tmp_path, monkeypatch, name):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "kept.img").write_bytes(b"kept")
    with pytest.raises(ValueError):
        vv.create(**BAD_DESCRIPTIONS[name])
    assert [path.name for path in tmp_path.iterdir()] == ["kept.img"]


def test_a_signal_leaves_nothing_half_done(tmp_path):
    class Interrupted(Exception):
        pass

    def interrupt(*_):
        raise Interrupted

    before = signal.signal(signal.SIGALRM, interrupt)
    try:
        vv.sample(tmp_path / "whole.img", 400, width=320, height=200)
        works = [
            lambda: vv.sample(tmp_path / "a.img", 100000),
            lambda: [vv.open(tmp_path / "whole.img").frames() for _ in range(1000)],
            lambda: [
                vv.recover(tmp_path / "whole.img", tmp_path / "a.img", overwrite=True)
                for _ in range(1000)
            ],
        ]
        for work in works:
            signal.setitimer(signal.ITIMER_REAL, 0.15)
            with pytest.raises(Interrupted):
                work()
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert {path.name for path in tmp_path.iterdir()} <= {"whole.img", "a.img"}
    assert not (tmp_path / "a.img").exists() or len(vv.open(tmp_path / "a.img")) == 400


def test_nothing_is_replaced_unasked(rec, tmp_path):
    path = tmp_path / "new.img"
    vv.sample(path, 1, width=96, height=64)
    before = path.read_bytes()
    with pytest.raises(FileExistsError, match="overwrite=True"):
        vv.create(path)
    with pytest.raises(FileExistsError):
        vv.sample(path, 1)
    assert path.read_bytes() == before
    with vv.create(path, overwrite=True) as writer:
        writer.add(rec.jpeg(0), START)
    with pytest.raises(vv.ClosedError):
        writer.add(rec.jpeg(0), START)
    with pytest.raises(FileNotFoundError):
        vv.create(tmp_path / "none" / "a.img")


def test_edits_are_made_together_or_not_at_all(drives, tmp_path):
    path = tmp_path / "drive.img"
    path.write_bytes((drives / "drive.img").read_bytes())
    old = vv.open(path).capture_times
    with vv.edit(path) as edit:
        edit.device_id = b"\x01\x02"
        edit.undistorted = False
        edit.capture_times[7] = START
        edit.arrival_times[-1] = int(START.astype(int))
        edit.camera_params = {"focal_length": 4.5}
    with vv.open(path) as rec:
        assert rec.device_id == b"\x01\x02" and not rec.undistorted
        assert rec.capture_times[7] == START == rec.arrival_times[11]
        assert np.array_equal(np.delete(rec.capture_times, 7), np.delete(old, 7))
        assert rec.camera_params == {"focal_length": 4.5}
    edited = path.read_bytes()
    with pytest.raises(KeyError), vv.edit(path) as edit:
        edit.device_id = b"\x03"
        raise KeyError
    with pytest.raises(vv.Error), vv.edit(path) as edit:
        edit.device_id = b"\x03"
        edit.start_time = START  # an img has none
    with pytest.raises(ValueError), vv.edit(path) as edit:
        edit.shift_times(1)
        edit.capture_times[1] = START
    with pytest.raises(AttributeError), vv.edit(path) as edit:
        edit.devise_id = b"\x03"
    assert path.read_bytes() == edited
    with vv.edit(path) as edit:
        edit.shift_times(np.timedelta64(-3, "s"))
    assert vv.open(path).capture_times[7] == START - np.timedelta64(3, "s")


def test_many_recordings_are_one_sequence(drives, tmp_path):
    paths = []
    for i in range(70):  # more than are open at a time
        paths.append(tmp_path / f"{i}.img")
        paths[-1].write_bytes((drives / "drive.img").read_bytes())
    many = vv.open_many([*paths, drives / "drive.rtv"])
    assert len(many) == 71 * 12
    assert many.locate(12 * 70 + 3) == (str(drives / "drive.rtv"), 3)
    assert many.locate(-1) == (str(drives / "drive.rtv"), 11)
    assert many.jpeg(25) == vv.open(paths[2]).jpeg(1)
    view = many[5::100][::-1]
    assert [view.locate(i) for i in range(len(view))] == [
        many.locate(i) for i in range(5, len(many), 100)
    ][::-1]

    again = pickle.loads(pickle.dumps(view))
    assert np.array_equal(again[0], view[0]) and len(again) == len(view)
    with pytest.raises(IndexError):
        many[71 * 12]
