"""Inputs that the fuzzers keep: whatever is wrong with a file, nothing but vv.Error comes of it."""
import os
import pathlib
import shutil

import pytest
import velmar_video as vv

CORPUS = pathlib.Path(__file__).parents[2] / "fuzz/corpus"
INPUTS = sorted(
    path for path in CORPUS.glob("*/*") if path.parent.name.startswith(("img_", "rtv_"))
)


def read(path):
    with vv.open(path) as rec:
        assert repr(rec) and rec.camera_params is not None and rec.extended_info is not None
        assert len(rec.capture_times) == len(rec)
        for values in (rec.tags, rec.positions, rec.speed, rec.direction):
            assert values is None or len(values) == len(rec)
        few = rec[:20]
        frames, missing = few.frames(scale="1/8", errors="mask")
        assert not frames[missing].any()
        for i in range(len(few)):
            assert len(few.jpeg_view(i)) == len(few.jpeg(i))


def edit(path):
    with vv.edit(path) as changes:
        changes.device_id = b"\x01"


def recover(path):
    vv.recover(path, path.with_stem("recovered"), frame_rate=30, overwrite=True)


def test_there_are_inputs():
    assert len(INPUTS) >= 200


@pytest.mark.parametrize("call", [read, vv.verify, edit, recover], ids=lambda call: call.__name__)
def test_damaged_files_are_errors_at_most(call, tmp_path):
    outcomes = {True: 0, False: 0}
    for found in INPUTS:
        path = tmp_path / ("a." + found.parent.name[:3])
        shutil.copy(found, path)
        try:
            call(path)
            outcomes[True] += 1
        except vv.Error as error:
            assert str(error) and error.code.startswith("VELMAR_ERROR_CODE_")
            outcomes[False] += 1
        for left in os.listdir(tmp_path):
            os.unlink(tmp_path / left)
    assert call is vv.verify or min(outcomes.values()) > 0, outcomes
