"""Recordings that are being recorded, and what a recorder leaves that is killed."""
import json
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase, output

RECORDERS = [("drive.img", []), ("drive.rtv", ["--rtv-version", "02"])]
RECORDERS += [("drive.rtv", ["--rtv-version", version]) for version in ("03", "04")]


class Running(ToolCase):
    def setUp(self):
        super().setUp()
        self.sample("source.img", "--frames", "40")
        self.jpegs = [
            output(TOOL, "cat", "source.img", "--range", f"{i}:{i + 1}") for i in range(40)
        ]

    def start(self, recording, options):
        for file in Path().glob("drive.*"):
            file.unlink()
        recorder = subprocess.Popen(
            [TOOL, "--quiet", "create", recording, "-", "--fps", "10", *options],
            stdin=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        self.addCleanup(recorder.wait)
        self.addCleanup(recorder.stdin.close)
        return recorder

    def feed(self, recorder, first, end):
        recorder.stdin.write(b"".join(self.jpegs[first:end]))
        recorder.stdin.flush()

    def wait_for(self, is_there, what):
        deadline = time.monotonic() + 60
        while not is_there():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.01)

    def count(self, recording):
        ran = subprocess.run([TOOL, "info", recording, "--json"], capture_output=True)
        return json.loads(ran.stdout)["frames_count"] if ran.returncode == 0 else 0

    def test_is_read_as_far_as_it_is(self):
        for recording, options in RECORDERS:
            with self.subTest(options or recording):
                recorder = self.start(recording, options)
                # The last frame that is sent may wait for its end.
                self.feed(recorder, 0, 20)
                self.wait_for(lambda: self.count(recording) >= 19, "19 frames")
                is_recording = f"process {recorder.pid} (velmar-video) is recording it"
                for file in recording, recording + ".tmp":
                    info = subprocess.run(
                        [TOOL, "info", file, "--json"], capture_output=True, check=True
                    )
                    self.assertIn(is_recording, info.stderr.decode())
                    known = json.loads(info.stdout)
                    self.assertEqual((known["state"], known["width"]), ("recording", 320))
                    self.assertEqual(known["version"][-1], (options or "0")[-1][-1])
                    cat = subprocess.run(
                        [TOOL, "cat", file, "--range", "3:19"], capture_output=True
                    )
                    self.assertEqual(cat.stdout, b"".join(self.jpegs[3:19]))
                self.tool("verify", recording, "--decode", "--strict", status=1)
                verified = subprocess.run([TOOL, "verify", recording + ".tmp"], capture_output=True)
                self.assertIn("frames, 0 errors, 1 warning\n", verified.stdout.decode())
                self.tool(
                    "extract",
                    recording,
                    "--output",
                    "pictures",
                    "--range",
                    "3:5",
                    "--force",
                    says=is_recording,
                )
                self.assertEqual(Path("pictures/frame_000004.jpg").read_bytes(), self.jpegs[4])
                # Whatever changes or copies it waits for its end.
                for command in ("cut", "x" + recording[5:]), ("edit", "--device-id", "0a"):
                    self.tool(command[0], recording, *command[1:], status=1, says=is_recording)
                recorder.kill()
                recorder.wait()
                self.tool(
                    "info",
                    recording,
                    says="its recorder has ended without finishing it",
                )

    def follow(self, command, recording, *options):
        with open("followed", "wb") as followed:
            follower = subprocess.Popen(
                [TOOL, command, recording, "--follow", *options],
                stdout=followed,
                stderr=subprocess.PIPE,
            )
        self.addCleanup(follower.stderr.close)
        return follower

    def test_is_followed_to_its_end(self):
        columns = ["--csv", "--columns", "index,time,size,acceleration_m_s2,xxh3_128"]
        for recording, options in RECORDERS:
            for command, how in ("frames", columns), ("cat", []), ("cat", ["--every", "3"]):
                with self.subTest(recording=recording, options=options, command=command):
                    recorder = self.start(recording, options)
                    self.feed(recorder, 0, 10)
                    self.wait_for(lambda: self.count(recording) > 0, "a frame")
                    follower = self.follow(command, recording, *how)
                    self.wait_for(lambda: os.path.getsize("followed") > 100, "lines")
                    before = os.path.getsize("followed")
                    for first in range(10, 40, 10):
                        self.feed(recorder, first, first + 10)
                    self.wait_for(lambda: os.path.getsize("followed") > 2 * before, "more lines")
                    recorder.stdin.close()
                    self.assertEqual(recorder.wait(60), 0)
                    said = follower.communicate(timeout=60)[1].decode()
                    self.assertEqual(follower.returncode, 0, said)
                    self.assertIn("is recording it", said)
                    self.assertEqual(
                        Path("followed").read_bytes(), output(TOOL, command, recording, *how)
                    )

    def test_what_comes_just_before_the_end_is_followed(self):
        for recording, options in RECORDERS[::3]:
            for how in (
                ["--range", "39:40"],
                ["--every", "3"],
                ["--where", "index > 19 && size > 9"],
            ):
                with self.subTest(recording=recording, how=how):
                    recorder = self.start(recording, options)
                    self.feed(recorder, 0, 20)
                    self.wait_for(lambda: self.count(recording) > 18, "frames")
                    how = ["--csv", "--columns", "index,time,size", *how]
                    follower = self.follow("frames", recording, *how)
                    self.wait_for(lambda: self.is_watching(follower), "the watch")
                    self.feed(recorder, 20, 40)
                    recorder.stdin.close()
                    said = follower.communicate(timeout=60)[1].decode()
                    self.assertEqual(follower.returncode, 0, said)
                    self.assertEqual(
                        Path("followed").read_bytes(),
                        output(TOOL, "frames", recording, *how),
                    )

    def is_watching(self, follower):
        files = Path(f"/proc/{follower.pid}/fd").iterdir()
        return any("inotify" in os.readlink(file) for file in files)

    def test_following_ends_before_the_recorder(self):
        for recording, options in RECORDERS[::3]:
            recorder = self.start(recording, options)
            self.feed(recorder, 0, 20)
            self.wait_for(lambda: self.count(recording) > 18, "frames")
            # No frame behind these is asked for.
            self.tool("cat", recording, "--follow", "--range", "2:5", says="is recording it")
            follower = self.follow("frames", recording, "--time", "2030-01-01:2031-01-01")
            self.wait_for(lambda: self.is_watching(follower), "the watch")
            Path(recording + ".tmp").unlink()
            said = follower.communicate(timeout=60)[1].decode()
            self.assertEqual(follower.returncode, 1, said)
            self.assertIn("its recorder has given it up", said)
            self.assertIn("no frame was captured in that time", said)

    def test_the_end_of_a_recorder_that_is_killed_is_told(self):
        for recording, options in RECORDERS[::3]:
            recorder = self.start(recording, options)
            self.feed(recorder, 0, 10)
            self.wait_for(lambda: self.count(recording) > 8, "frames")
            follower = self.follow("frames", recording, "--csv")
            self.wait_for(lambda: os.path.getsize("followed") > 100, "lines")
            recorder.kill()
            said = follower.communicate(timeout=60)[1].decode()
            self.assertEqual(follower.returncode, 3, said)
            self.assertIn(f"{recording}: its recorder has ended without finishing it", said)
            self.assertGreaterEqual(len(Path("followed").read_text().splitlines()), 10)

    def test_a_recorder_that_is_killed_at_the_very_end_has_moved_frames(self):
        finished = Path("source.img").read_bytes()
        Path("left.img.tmp").write_bytes(finished)
        # A journal of version 1.0, which is like the index.
        Path("left.img.tmp.index").write_bytes(finished[8 : 8 + 40 * 28])
        verified = subprocess.run([TOOL, "verify", "left.img"], capture_output=True).stdout.decode()
        self.assertIn("left.img: 40 frames, 1 error, 0 warnings\n", verified)
        self.assertEqual(
            subprocess.run([TOOL, "cat", "left.img"], capture_output=True).stdout,
            b"".join(self.jpegs),
        )

    def test_stops_when_it_is_to(self):
        recorder = self.start("drive.img", [])
        self.feed(recorder, 0, 10)
        self.wait_for(lambda: self.count("drive.img") > 0, "a frame")
        follower = self.follow("cat", "drive.img")
        self.wait_for(lambda: os.path.getsize("followed") > 100, "frames")
        follower.send_signal(signal.SIGINT)
        self.assertIn(b"is recording it", follower.communicate(timeout=60)[1])
        self.assertEqual(follower.returncode, 0)
        self.tool("frames", "source.img", "--follow", "--gpx", "a.gpx", status=2, says="--follow")
        self.tool("cat", "source.img", "source.img", "--follow", status=2, says="one recording")


if __name__ == "__main__":
    unittest.main()
