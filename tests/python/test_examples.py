import pathlib
import subprocess
import sys

import velmar_video as vv

EXAMPLES = pathlib.Path(__file__).parents[2] / "examples/python"


def run(name, *arguments):
    command = [sys.executable, EXAMPLES / name, *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def test_examples_do_what_they_say(path, rec, tmp_path):
    run("contact_sheet.py", path, 0.1, tmp_path / "sheet.ppm")
    assert (tmp_path / "sheet.ppm").read_bytes().startswith(b"P6\n96 8\n255\n")
    assert run("copy_scene.py", path, 0.1, 0.3, tmp_path / "scene.img") == "6 frames\n"
    with vv.open(tmp_path / "scene.img") as scene:
        assert [scene.jpeg(i) for i in range(6)] == [rec.jpeg(i) for i in range(3, 9)]
        assert (scene.capture_times == rec.capture_times[3:9]).all()
