"""Holds the byte-by-byte examples of docs/formats against recordings that the tool makes.
Usage: formats_test.py PATH-OF-VELMAR-VIDEO
"""
import os
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from markdown import blocks

TOOL = Path(sys.argv.pop(1)).resolve()


def jpeg(comment):
    """A header of one grey pixel: as little as a recorder takes for a picture."""
    return (
        b"\xff\xd8\xff\xfe"
        + struct.pack(">H", len(comment) + 2)
        + comment.encode()
        + bytes.fromhex("ffc0000b080001000101011100ffda000801010000003f0000ffd9")
    )


def dump(document, language, number=0):
    """The bytes of a block: lines of offset, hexadecimal bytes and, two blanks on, words."""
    text = [text for kind, text, _ in blocks(document) if kind == language][number]
    if language != "hex":
        return text.encode()
    found = b""
    for line in text.splitlines():
        offset, digits = line.split("  ")[:2]
        at = int(offset, 16)
        found += bytes(at - len(found)) + bytes.fromhex(digits)
    return found


class Formats(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        for number, comment in enumerate(["The first frame of a recording.", "Two"]):
            Path(f"{number}.jpg").write_bytes(jpeg(comment))

    def create(self, *arguments):
        times = {
            "0.jpg": "1700000000000000,1700000000040000",
            "1.jpg": "1700000000033333,1700000000073333",
        }
        rows = [f"{file},{times[file]}\n" for file in arguments if file in times]
        Path("times.csv").write_text("file,sensor_time_us,arrived_time_us\n" + "".join(rows))
        subprocess.run([TOOL, "create", *arguments, "--times", "times.csv"], check=True)
        return Path(arguments[0]).read_bytes()

    def test_img(self):
        made = self.create("drive.img", "0.jpg", "1.jpg", "--device-id", "0aff")
        page = "docs/formats/img.md"
        self.assertEqual(made.hex(" "), (dump(page, "hex") + dump(page, "json")).hex(" "))

    def test_img_journal(self):
        recorder = subprocess.Popen(
            [TOOL, "create", "drive.img", "-", "--fps", "30", "--start-time", "1700000000000000"],
            stdin=subprocess.PIPE,
        )
        frames = Path("0.jpg").read_bytes() + Path("1.jpg").read_bytes()
        recorder.stdin.write(frames)
        recorder.stdin.flush()
        journal = Path("drive.img.tmp.index")
        deadline = time.monotonic() + 10
        while not (journal.exists() and journal.stat().st_size >= 84):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)
        recorder.kill()
        recorder.communicate()
        self.assertEqual(Path("drive.img.tmp").read_bytes(), bytes(8) + frames)
        self.assertEqual(
            journal.read_bytes().hex(" "), dump("docs/formats/img.md", "hex", 1).hex(" ")
        )

    def test_rtv(self):
        Path("tags.csv").write_text(
            "file,x,y,z,relative_distance,speed,direction,vehicle_speed,abs_active\n"
            "1.jpg,-56,1250,3,1388,1200,359,12.25,0\n"
        )
        made = self.create(
            "drive.rtv",
            "1.jpg",
            "--rtv-version",
            "04",
            "--tags",
            "tags.csv",
            "--device-id",
            "0aff",
            "--undistorted",
            "--start-position",
            "8.55,47.37,408.5",
            "--start-time",
            "2023-11-14T22:13:19.960Z",
        )
        self.assertEqual(made.hex(" "), dump("docs/formats/rtv.md", "hex").hex(" "))


if __name__ == "__main__":
    unittest.main()
