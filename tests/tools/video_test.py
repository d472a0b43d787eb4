"""Videos in and out, by ffmpeg's and ffprobe's reckoning.
Usage: video_test.py PATH-OF-VELMAR-VIDEO
"""
import resource
import shutil
import signal
import subprocess
import sys
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase, ffmpeg, output, times

START = 1700000000123456
START_TEXT = "2023-11-14T22:13:20.123456Z"
# Steps of a clock that jitters, microseconds.
TIMES = [0, 33333, 66666, 66667, 140001, 1140001, 1173334, 1300000]


def probed(file, entries, *options):
    text = output(
        "ffprobe", "-v", "error", *options, "-show_entries", entries, "-of", "csv=p=0", file
    )
    return [line.strip(",") for line in text.decode().split()]


def micros(texts):
    return [round(float(text) * 1e6) for text in texts]


def from_first(values):
    return [value - values[0] for value in values]


def limit_files():
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (50000, 50000))


class Video(ToolCase):
    def irregular(self, file, *options):
        self.sample("even.img", "--frames", len(TIMES))
        self.tool("extract", "even.img", "--output", "pictures", "--force")
        rows = [f"frame_{i:06}.jpg,{START + time},0\n" for i, time in enumerate(TIMES)]
        Path("times.csv").write_text("file,sensor_time_us,arrived_time_us\n" + "".join(rows))
        self.tool(
            "create", file, "pictures", "--times", "times.csv", "--device-id", "0aff", *options
        )

    def test_irregular_times_survive_both_ways(self):
        self.irregular("drive.img")
        for name in ["out.mkv", "out.mp4", "out.mov"]:
            with self.subTest(name):
                self.tool("export", "drive.img", name)
                self.assertEqual(micros(probed(name, "packet=pts_time")), TIMES)
                tags = "".join(probed(name, "format_tags")).lower()
                self.assertIn("0aff", tags)
                self.assertIn(START_TEXT.lower(), tags)
                ffmpeg("-i", name, "-c", "copy", "-f", "mjpeg", "out.mjpeg")
                self.assertEqual(Path("out.mjpeg").read_bytes(), self.frames("drive.img"))
                self.tool("create", "back.img", name, "--force")
                self.assertEqual(times("back.img"), times("drive.img"))
                self.assertEqual(self.frames("back.img"), self.frames("drive.img"))

    def test_avi_takes_even_times_only(self):
        self.irregular("drive.img")
        self.tool("export", "drive.img", "out.avi", status=1, says="the rate of the frames varies")
        self.assertEqual(list(Path().glob("out.avi*")), [])
        self.tool("export", "drive.img", "out.avi", "--constant-rate")
        self.assertEqual(
            [round(time / 1e5) for time in micros(probed("out.avi", "packet=pts_time"))],
            [round(i * 13 / 7) for i in range(len(TIMES))],
        )
        # 30 frames a second, rounded to microseconds.
        self.sample("even.img")
        for name, options in [("all.avi", []), ("some.avi", ["--range", "7:50", "--every", 3])]:
            self.tool("export", "even.img", name, *options)
            rate = "10/1" if options else "30/1"
            self.assertEqual(probed(name, "stream=r_frame_rate")[0], rate)
        self.tool("create", "back.img", "all.avi")
        self.assertEqual(times("back.img"), times("even.img"))
        self.assertEqual(self.frames("back.img"), self.frames("even.img"))

    def test_frames_without_bytes_do_not_move_the_others(self):
        self.irregular("drive.img")
        whole = Path("drive.img").read_bytes()
        first = Path("pictures/frame_000000.jpg").read_bytes()
        Path("drive.img").write_bytes(whole.replace(first, bytes(4) + first[4:]))
        for name in ["out.mkv", "out.mp4", "out.avi"]:
            options = ["--constant-rate"] if name == "out.avi" else []
            says = "frame 0 is skipped"
            self.tool("export", "drive.img", name, *options, status=3, says=says)
            self.tool("create", "back.img", name, "--force")
            if name != "out.avi":
                self.assertEqual(times("back.img"), [START + time for time in TIMES[1:]])
            self.assertEqual(len(times("back.img")), len(TIMES) - 1)

    def test_times_that_videos_lack(self):
        self.sample("even.img", "--frames", 12)
        self.tool("export", "even.img", "even.mkv")
        # A year is no time.
        ffmpeg(
            "-i", "even.mkv", "-map_metadata", -1, "-c", "copy", "-metadata", "date=2023", "a.mkv"
        )
        self.tool("create", "in.img", "a.mkv", says="its first frame is at 0")
        self.assertEqual(times("in.img")[0], 0)
        # The last frames of a codec that reorders them have none in an AVI.
        ffmpeg("-i", "even.mkv", "-c:v", "mpeg4", "-bf", 2, "b.avi")
        self.tool("create", "in.img", "b.avi", "--force", status=3, says="time is estimated")
        self.assertEqual(len(times("in.img")), 12)
        ffmpeg("-i", "even.mkv", "-c:v", "mpeg4", "-f", "m4v", "c.m4v")
        says = "--fps gives the frames times"
        self.tool("create", "no.img", "c.m4v", status=1, says=says)
        ffmpeg("-i", "even.mkv", "-c", "copy", "end.mp4")
        cat = subprocess.Popen(["cat", "end.mp4"], stdout=subprocess.PIPE)
        says = "from a pipe an MP4 or MOV has to have its index in front"
        self.tool("create", "no.img", "-", status=1, says=says, stdin=cat.stdout)
        cat.communicate()
        self.assertEqual(list(Path().glob("no*")), [])

    def test_rtv_keeps_milliseconds_and_position(self):
        self.sample("drive.rtv")
        for name in ["out.mkv", "out.mp4", "out.mov", "out.avi"]:
            with self.subTest(name):
                self.tool("export", "drive.rtv", name)
                self.assertRegex(
                    "".join(probed(name, "format_tags")), r"\+48.1374\d*\+011.5755\d*\+519"
                )
                self.tool("create", "back.rtv", name, "--force")
                self.assertEqual(times("back.rtv"), times("drive.rtv"))
                self.assertEqual(self.frames("back.rtv"), self.frames("drive.rtv"))

    def test_variable_rate_of_ffmpeg(self):
        self.irregular("drive.img")
        for codec in [["mjpeg", "-q:v", 3], ["mpeg4", "-bf", 2], ["ffv1"]]:
            name = "in.nut" if codec == ["ffv1"] else "in.mp4"
            source = "drive.mkv"
            self.tool("export", "drive.img", source, "--force")
            ffmpeg(
                "-i",
                source,
                "-fps_mode",
                "vfr",
                "-enc_time_base",
                "1:30000",
                "-c:v",
                *codec,
                "-metadata",
                "creation_time=2023-11-14T22:13:20Z",
                name,
            )
            with self.subTest(codec[0]):
                self.tool(
                    "create",
                    "in.img",
                    name,
                    "--force",
                    says="" if codec[0] == "mjpeg" else "assumed",
                )
                shown = from_first(micros(probed(name, "frame=pts_time")))
                self.assertGreater(len(set(b - a for a, b in zip(shown, shown[1:]))), 3)
                self.assertEqual(from_first(times("in.img")), shown)
                self.assertEqual(times("in.img")[0], 1700000000000000)
                if codec[0] == "mjpeg":
                    ffmpeg("-i", name, "-c", "copy", "-f", "mjpeg", "in.mjpeg")
                    self.assertEqual(self.frames("in.img"), Path("in.mjpeg").read_bytes())

    def test_negative_first_time(self):
        self.sample("even.img", "--frames", 12)
        self.tool("export", "even.img", "even.mkv")
        ffmpeg(
            "-i",
            "even.mkv",
            "-c",
            "copy",
            "-avoid_negative_ts",
            "disabled",
            "-output_ts_offset",
            "-0.25",
            "negative.mkv",
        )
        shown = micros(probed("negative.mkv", "packet=pts_time"))
        self.assertLess(shown[0], 0)
        self.tool("create", "in.img", "negative.mkv", "--start-time", 5)
        self.assertEqual(times("in.img"), [5 + time for time in from_first(shown)])

    def test_selection_and_standard_input(self):
        self.irregular("drive.img")
        self.tool("export", "drive.img", "out.mkv")
        with open("out.mkv", "rb") as video:
            self.tool("create", "file.img", "-", "--range", "2:8", "--every", 2, stdin=video)
        cat = subprocess.Popen(["cat", "out.mkv"], stdout=subprocess.PIPE)
        self.tool("create", "pipe.img", "-", "--time", "+1.14s:+1.3s", stdin=cat.stdout)
        cat.communicate()
        self.assertEqual(from_first(times("file.img")), [0, 140001 - 66666, 1173334 - 66666])
        self.assertEqual(times("pipe.img"), [START + 1140001, START + 1173334])
        self.tool("export", "drive.img", "part.mkv", "--time", "+1.14s:+1.3s")
        self.assertEqual(micros(probed("part.mkv", "packet=pts_time")), [0, 33333])

    def test_logs_beside_a_video(self):
        """A recording comes back from its video and the table of its frames."""
        self.sample("drive.rtv", "--rtv-version", "04", "--frames", 9)
        self.tool("export", "drive.rtv", "drive.mkv")
        Path("log.csv").write_bytes(output(TOOL, "frames", "drive.rtv", "--csv"))
        log = ["--log", "log.csv", "--start-position", "11.5755,48.1374,519"]
        lost = "it does not hold CAN signals"
        self.tool("create", "03.rtv", "drive.mkv", "--rtv-version", "03", *log, status=3, says=lost)
        says = "log.csv: time from"
        self.tool("create", "back.rtv", "drive.mkv", "--rtv-version", "04", *log, says=says)
        table = output(TOOL, "frames", "back.rtv", "--csv")
        self.assertEqual(table, Path("log.csv").read_bytes())
        says = "--log-offset moves the log"
        late = ["--start-time", 0]
        self.tool("create", "no.rtv", "drive.mkv", *log, *late, status=1, says=says)
        self.assertEqual(list(Path().glob("no*")), [])

    def test_colours(self):
        """Against ffmpeg's own conversion to RGB, on flat blocks of many colours."""
        cases = [
            # pixels, matrix that is named, range that is named, height, matrix that is meant
            ("yuv420p", "bt709", "tv", 240, "bt709"),
            ("yuv420p", "smpte170m", "tv", 240, "bt601"),
            ("yuv422p", "bt709", "pc", 240, "bt709"),
            ("yuv444p", "smpte170m", "pc", 240, "bt601"),
            ("yuv420p", None, "tv", 240, "bt601"),
            ("yuv420p", None, "tv", 720, "bt709"),
            ("yuv420p10le", "bt709", "tv", 240, "bt709"),
            ("yuv411p", "smpte170m", "tv", 240, "bt601"),
            ("gray", None, "pc", 240, "bt601"),
            ("bgr0", None, None, 240, None),
        ]
        for pixels, named, scope, height, meant in cases:
            with self.subTest((pixels, named, scope, height)):
                colours = (
                    []
                    if meant is None
                    else [
                        "-vf",
                        f"scale=out_color_matrix={meant}:out_range={scope}:flags=accurate_rnd",
                    ]
                )
                names = (["-colorspace", named] if named else []) + (
                    ["-color_range", scope] if scope else []
                )
                ffmpeg(
                    "-f",
                    "lavfi",
                    "-i",
                    f"smptebars=s=320x{height}:d=0.04",
                    *colours,
                    "-pix_fmt",
                    pixels,
                    *names,
                    "-c:v",
                    "ffv1",
                    "in.mkv",
                )
                kept = (
                    []
                    if meant is None
                    else [
                        "-vf",
                        f"scale=in_color_matrix={meant}:in_range={scope}:flags=accurate_rnd",
                    ]
                )
                ffmpeg("-i", "in.mkv", *kept, "-pix_fmt", "rgb24", "-f", "rawvideo", "want")
                says = (
                    ""
                    if named or pixels in ["gray", "bgr0"]
                    else ("assumed: BT.601" if height < 720 else "assumed: BT.709")
                )
                self.tool(
                    "create",
                    "in.img",
                    "in.mkv",
                    "--start-time",
                    0,
                    "--quality",
                    100,
                    "--force",
                    says=says,
                )
                self.tool("extract", "in.img", "--output", "out", "--as", "ppm", "--force")
                got = Path("out/frame_000000.ppm").read_bytes()[-320 * height * 3 :]
                want = Path("want").read_bytes()
                # Chroma is blurred at the edges; in the middle of a bar a step or two are rounding.
                rows = [height // 4, height * 7 // 10]
                places = [(y * 320 + 23 + 46 * bar) * 3 for y in rows for bar in range(6)]
                for at in places:
                    for channel in range(3):
                        self.assertAlmostEqual(got[at + channel], want[at + channel], delta=3)

    def test_what_a_video_says(self):
        self.sample("even.img", "--frames", 5)
        self.tool("export", "even.img", "even.mkv")
        ffmpeg("-i", "even.mkv", "-c", "copy", "-metadata:s:v", "rotate=270", "turned.mp4")
        self.tool(
            "create", "in.img", "turned.mp4", "--start-time", 0, says="turned to the right by 90"
        )
        ffmpeg("-i", "even.mkv", "-c:v", "mpeg4", "-flags", "+ildct+ilme", "-top", 1, "fields.mp4")
        self.tool("create", "in.img", "fields.mp4", "--force", says="it is interlaced")
        self.assertEqual(times("in.img")[0], 0)

    def test_damage_and_refusals(self):
        self.sample("even.img")
        self.tool("export", "even.img", "even.mp4")
        ffmpeg("-i", "even.mp4", "-c", "copy", "-movflags", "faststart", "fast.mp4")
        whole = Path("fast.mp4").read_bytes()
        Path("cut.mp4").write_bytes(whole[: len(whole) // 2])
        self.tool(
            "create", "in.img", "cut.mp4", "--start-time", 0, status=3, says="it is cut short"
        )
        self.assertGreater(len(times("in.img")), 20)
        self.tool("export", "even.img", "even.mkv")
        Path("cut.mkv").write_bytes(Path("even.mkv").read_bytes()[: len(whole) // 2])
        self.tool("create", "in.img", "cut.mkv", "--force", status=3, says="it is cut short")
        Path("end.mp4").write_bytes(Path("even.mp4").read_bytes()[:9000])
        Path("text.bin").write_text("no video at all\n")
        Path("bare.mjpeg").write_bytes(self.frames("even.img"))
        # Two frames with one time.
        self.irregular("drive.img")
        Path("times.csv").write_text(
            Path("times.csv").read_text().replace(str(START + 33333), str(START))
        )
        self.tool("create", "twice.img", "pictures", "--times", "times.csv")
        self.tool("export", "twice.img", "twice.mkv", status=3, says="frame 1 is left out")
        for status, says, *arguments in [
            (1, "it is cut short or damaged", "create", "no.img", "end.mp4"),
            (1, "neither a JPEG picture nor a video", "create", "no.img", "text.bin"),
            (1, "No such file", "create", "no.img", "none.mp4"),
            (1, "it has no times of its own", "create", "no.img", "bare.mjpeg"),
            (1, "goes beyond its 50 frames", "create", "no.img", "even.mp4", "--range", "40:51"),
            (
                1,
                "no frame was captured in that time",
                "create",
                "no.img",
                "even.mp4",
                "--time",
                "+9s:+10s",
            ),
            (1, "are for pictures", "create", "no.img", "even.mp4", "--times", "times.csv"),
            (
                1,
                "--quality needs a video",
                "create",
                "no.img",
                "pictures",
                "--fps",
                "5",
                "--quality",
                "9",
            ),
            (1, "has to end in .mkv", "export", "even.img", "no.wmv"),
            (1, "--constant-rate needs an .avi", "export", "even.img", "no.mkv", "--constant-rate"),
            (1, "there is no folder no", "export", "even.img", "no/no.mkv"),
            (1, "it is already there", "export", "even.img", "even.mp4"),
        ]:
            with self.subTest(says):
                usage = "needs" in says or "are for" in says
                self.tool(*arguments, status=2 if usage else status, says=says)
                self.assertEqual(list(Path().glob("no*")), [])
        self.tool("create", "in.img", "bare.mjpeg", "--fps", 30, "--start-time", 0, "--force")
        self.assertEqual(times("in.img")[-1], 1633333)
        # A full disk leaves nothing.
        self.tool(
            "export", "even.img", "no.mkv", status=1, says="cannot write it", preexec_fn=limit_files
        )
        self.assertEqual(list(Path().glob("no*")), [])


if __name__ == "__main__":
    if not (shutil.which("ffmpeg") and shutil.which("ffprobe")):
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
