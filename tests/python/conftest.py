import pathlib

import pytest
import velmar_video as vv


@pytest.fixture(scope="session")
def drives(tmp_path_factory):
    """A drawn drive in each container."""
    folder = tmp_path_factory.mktemp("drives")
    for name in ("drive.img", "drive.rtv"):
        vv.sample(folder / name, 12, width=96, height=64)
    return folder


@pytest.fixture(params=["drive.img", "drive.rtv"])
def path(request, drives) -> pathlib.Path:
    return drives / request.param


@pytest.fixture
def rec(path):
    with vv.open(path) as recording:
        yield recording
