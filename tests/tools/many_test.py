"""Work on many recordings with one command, and their parts."""
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase, output, times


def names(folder):
    return sorted(str(file.relative_to(folder)) for file in Path(folder).rglob("*.*"))


class Many(ToolCase):
    def setUp(self):
        super().setUp()
        os.makedirs("day/late")
        for name in ("day/a2.rtv", "day/a10.rtv", "day/late/a2.rtv"):
            self.sample(name, "--frames", "40", "--rtv-version", "04", "--fps", "10")
        Path("day/bad.rtv").write_text("neither")

    def run_all(self, command, *options, says="bad.rtv: it is not a recording"):
        self.tool(command, "day", "--recursive", *options, status=1, says=says)

    def test_results_come_in_the_order_of_the_inputs(self):
        for jobs in "1", "8":
            ran = subprocess.run(
                [TOOL, "frames", "day", "--recursive", "--csv", "--columns", "file,index"]
                + ["--where", "speed_m_s > 5 && near(48.137, 11.575, 20000)", "--jobs", jobs],
                stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL,
            )
            rows = ran.stdout.decode().splitlines()
            self.assertEqual((ran.returncode, rows[0], len(rows)), (1, "file,index", 121))
            self.assertEqual(
                [rows[at] for at in (1, 41, 120)],
                ["day/a2.rtv,0", "day/a10.rtv,0", "day/late/a2.rtv,39"],
            )

    def test_each_has_its_output(self):
        outputs = ["a10", "a2", "late/a2"]
        self.run_all("extract", "--output", "pictures", "--every", "2s")
        self.assertEqual(
            names("pictures"),
            [
                f"{name}/{file}"
                for name in outputs
                for file in ("frame_000000.jpg", "frame_000020.jpg", "frames.csv")
            ],
        )
        self.run_all("export", "--output-dir", "videos/of/day", "--as", "mp4")
        self.assertEqual(names("videos/of/day"), [name + ".mp4" for name in outputs])
        self.run_all("cut", "--output-dir", "cuts", "--range", "3:5")
        self.assertEqual(names("cuts"), [name + ".rtv" for name in outputs])
        self.assertEqual(times("cuts/late/a2.rtv"), times("day/late/a2.rtv")[3:5])
        # What is there stays, and the others are made.
        os.remove("cuts/a2.rtv")
        self.run_all("cut", "--output-dir", "cuts", "--range", "5:6", says="it is already there")
        self.assertEqual([len(times(f"cuts/{name}.rtv")) for name in outputs], [2, 1, 2])
        os.remove("day/bad.rtv")
        Path("list").write_bytes(b"day/a2.rtv\0day/late/a2.rtv\0")
        # Neither is one made twice, nor is an input replaced.
        self.tool(
            "cut",
            "day/a2.rtv",
            "day/late",
            "day/a2.rtv",
            "--output-dir",
            "out",
            status=1,
            says="day/late/a2.rtv: out/a2.rtv is made of day/a2.rtv already",
        )
        self.assertEqual(names("out"), ["a2.rtv"])
        self.tool(
            "cut",
            "day",
            "--recursive",
            "--output-dir",
            "day/late",
            "--force",
            "--jobs",
            "1",
            status=1,
            says="day/late/a2.rtv: it would be overwritten",
        )
        self.assertEqual(len(times("day/late/a2.rtv")), 40)
        both = output(TOOL, "cat", "--files-from", "list", "-0", "--range", "1:2")
        one = output(TOOL, "cat", "day/a2.rtv", "--range", "1:2")
        self.assertEqual(both, one + one)

    def test_refusals_come_before_any_work(self):
        for status, says, *arguments in (
            (2, "--output-dir names no folder", "cut", "day/a2.rtv", "x.rtv", "--output-dir", ""),
            (2, "--strip names nothing", "cut", "day/a2.rtv", "x.rtv", "--strip", ""),
            (
                1,
                "there is no recording to make it of",
                "concat",
                "x.rtv",
                "--files-from",
                os.devnull,
            ),
            (2, "OUTPUT is missing", "cut", "day/a2.rtv"),
            (2, "several inputs need --output-dir", "export", "a.rtv", "b.rtv", "c.mkv"),
            (2, "--files-from needs --output-dir", "cut", "--files-from", "list"),
            (2, "--as goes with --output-dir", "export", "day/a2.rtv", "a.mkv", "--as", "mkv"),
            (
                1,
                "none of the frames fulfils --where",
                "cut",
                "day/a2.rtv",
                "day/a10.rtv",
                "--output-dir",
                "out",
                "--where",
                "index > 99",
            ),
            (
                1,
                "there is no interrupted recording (*.img.tmp, *.rtv.tmp) in it",
                "recover",
                "day",
                "--recursive",
                "--output-dir",
                "out",
            ),
            (
                2,
                "recover: --times is of one recording",
                "recover",
                "day",
                "--output-dir",
                "out",
                "--times",
                "t.csv",
            ),
            (2, "split: --duration, --size or --at-gaps is needed", "split", "day/a2.rtv", "x.rtv"),
            (
                2,
                "--duration is a duration longer than 0",
                "split",
                "a.rtv",
                "x.rtv",
                "--duration",
                "0s",
            ),
            (
                1,
                "two recordings would have this name",
                "split",
                "day/a2.rtv",
                "x-%H.rtv",
                "--duration",
                "1s",
            ),
            (2, "--strip: place is neither", "cut", "day/a2.rtv", "x.rtv", "--strip", "ids,place"),
        ):
            with self.subTest(says):
                self.tool(*arguments, status=status, says=says)
                self.assertFalse(list(Path().glob("x*")) or Path("out").exists())

    def record_and_kill(self, recording):
        """Leaves what a recorder has that is killed."""
        frames = output(TOOL, "cat", "day/a2.rtv", "--range", "0:10")
        recorder = subprocess.Popen(
            [TOOL, "create", recording, "-", "--fps", "10", "--device-id", "0a"],
            stdin=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        recorder.stdin.write(frames)
        recorder.stdin.flush()
        journal = Path(recording + ".tmp.index")
        while not journal.exists() or journal.stat().st_size < 12 + 36 * 9:
            time.sleep(0.01)
        recorder.send_signal(signal.SIGKILL)
        recorder.wait()
        recorder.stdin.close()

    def test_leftovers_are_recovered(self):
        self.record_and_kill("day/b.img")
        self.record_and_kill("day/late/c.img")
        Path("day/d.img.tmp").write_text("of nothing")
        command = [TOOL, "recover", "day", "--recursive", "--output-dir", "saved"]
        ran = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(ran.returncode, 1, ran.stderr)
        self.assertIn(b"day/d.img.tmp: it holds no frame", ran.stderr)
        lines = ran.stdout.decode().splitlines()
        self.assertEqual(len(lines), 3)
        self.assertRegex(lines[2], r"^3 files: 2 recovered with (18|19|20) of .* frames, 1 not$")
        self.assertEqual(names("saved"), ["b.img", "late/c.img"])
        # The header of a whole recording is not changed unasked.
        override = ["recover", "day/a2.rtv", "again.rtv", "--device-id", "ff"]
        self.tool(*override, status=1, says="its header is whole")
        self.assertFalse(Path("again.rtv").exists())
        self.tool(*override, "--force")
        self.tool("recover", "day/a2.rtv", "same.rtv")

    def test_parts_join_again_by_their_start(self):
        self.tool("split", "day/a2.rtv", "part-%M%S.rtv", "--duration", "1s")
        parts = sorted(map(str, Path().glob("part-*.rtv")))
        self.assertEqual(parts, [f"part-13{second}.rtv" for second in (20, 21, 22, 23)])
        self.assertEqual(times(parts[1]), times("day/a2.rtv")[10:20])
        os.makedirs("small")
        self.tool("split", "day/a2.rtv", "small/%03d.rtv", "--size", "100K")
        sizes = [file.stat().st_size for file in Path("small").iterdir()]
        self.assertTrue(len(sizes) > 2 and max(sizes) <= 100 * 1024, sizes)
        whole = output(TOOL, "frames", "day/a2.rtv", "--csv", "--hash")
        for given in (reversed(parts), ["small"]):
            self.tool("concat", "whole.rtv", *given, "--force")
            self.assertEqual(output(TOOL, "frames", "whole.rtv", "--csv", "--hash"), whole)
        self.tool(
            "concat",
            "odd.rtv",
            parts[2],
            parts[0],
            "--in-order",
            says="part-1320.rtv: all of its 10 frames were captured before",
        )
        self.assertEqual(times("odd.rtv"), times(parts[2]) + times(parts[0]))
        self.tool("cut", "day/a2.rtv", "middle.rtv", "--range", "5:15")
        self.tool(
            "concat",
            "joined.rtv",
            *parts[1:3],
            "middle.rtv",
            parts[0],
            "--drop-overlap",
            says="part-1321.rtv: 5 of its 10 frames were captured before",
        )
        self.assertEqual(times("joined.rtv"), times("day/a2.rtv")[:30])

    def test_copies_are_stripped(self):
        self.tool("cut", "day/a2.rtv", "bare.rtv", "--strip", "positions,ids,exif")
        info = output(TOOL, "info", "bare.rtv", "--json").decode()
        self.assertIn('"device_id":""', info)
        self.assertIn('"start_position":{"lng_deg":0.000000000,"lat_deg":0.000000000', info)
        columns = ["--csv", "--columns", "x,y,z,relative_distance,direction"]
        self.assertEqual(
            set(output(TOOL, "frames", "bare.rtv", *columns).split()[1:]), {b"0,0,0,0,0"}
        )
        pictures = output(TOOL, "cat", "bare.rtv")
        self.assertNotIn(b"Exif", pictures)
        speeds = ["--csv", "--columns", "index,speed_m_s,vehicle_speed"]
        self.assertEqual(
            output(TOOL, "frames", "bare.rtv", *speeds),
            output(TOOL, "frames", "day/a2.rtv", *speeds),
        )


if __name__ == "__main__":
    unittest.main()
