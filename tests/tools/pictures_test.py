"""Pictures in and out: EXIF, other formats, contact sheets.
Usage: pictures_test.py PATH-OF-VELMAR-VIDEO
"""
import shutil
import struct
import sys
import unittest
from pathlib import Path

from tool_case import ToolCase, ffmpeg, times


def with_exif(jpeg, taken, fraction=None, offset=None):
    """The JPEG with the time at which it was taken."""
    texts = [(0x9003, taken), (0x9011, offset), (0x9291, fraction)]
    entries = [(tag, text.encode() + b"\0") for tag, text in texts if text is not None]
    data_at = 26 + 2 + 12 * len(entries) + 4
    table, data = struct.pack(">H", len(entries)), b""
    for tag, text in entries:
        far = len(text) > 4
        value = struct.pack(">I", data_at + len(data)) if far else text.ljust(4, b"\0")
        table += struct.pack(">HHI", tag, 2, len(text)) + value
        data += text if far else b""
    tiff = b"MM\0*" + struct.pack(">IHHHIII", 8, 1, 0x8769, 4, 1, 26, 0)
    body = b"Exif\0\0" + tiff + table + bytes(4) + data
    return jpeg[:2] + b"\xff\xe1" + struct.pack(">H", len(body) + 2) + body + jpeg[2:]


def with_place(jpeg):
    """The JPEG with the latitude at which it was taken, 48 degrees."""
    tiff = b"MM\0*" + struct.pack(">IHHHIII", 8, 1, 0x8825, 4, 1, 26, 0)
    place = struct.pack(">HHHIII", 1, 2, 5, 3, 44, 0) + struct.pack(">6I", 48, 1, 0, 1, 0, 1)
    body = b"Exif\0\0" + tiff + place
    return jpeg[:2] + b"\xff\xe1" + struct.pack(">H", len(body) + 2) + body + jpeg[2:]


def pixels(file):
    """Of frame 0 or of a picture file."""
    ffmpeg("-i", file, "-f", "rawvideo", "-pix_fmt", "rgb24", "pixels")
    return Path("pixels").read_bytes()


class Pictures(ToolCase):
    def setUp(self):
        super().setUp()
        self.sample("drive.img", "--frames", 5)
        self.tool("extract", "drive.img", "--output", "in", "--no-table")
        self.files = sorted(Path("in").glob("*.jpg"))

    def test_places_in_pictures_are_named_where_places_are_cleared(self):
        for file in self.files[1:3]:
            file.write_bytes(with_place(file.read_bytes()))
        self.files[4].write_bytes(with_exif(self.files[4].read_bytes(), "2023:11:14 22:13:20"))
        self.tool("create", "places.img", "in", "--fps", 5)
        said = "places.img: frames 1 to 2 are kept with the place in the EXIF data of the picture"
        for options in [[], ["--dry-run"]]:
            self.tool("edit", "places.img", "--clear", "positions", *options, status=3, says=said)

    def test_exif_gives_times_and_order(self):
        plain = self.files[3].read_bytes()
        exif = [
            ("2023:11:14 22:13:21", "5", "+00:00"),
            ("2023:11:14 23:13:21", None, "   :  "),
            ("2023:11:14 17:43:20", "000123", "-04:30"),
            ("2023:11:14 23:13:20", "9", None),
            ("2023:11:14 22:13:20", "25", "+00:00"),
        ]
        for file, entries in zip(self.files, exif):
            file.write_bytes(with_exif(file.read_bytes(), *entries))
        self.tool("create", "out.img", "in", "--times", "exif", env={"TZ": "CET-1"})
        start = 1700000000000000
        self.assertEqual(
            [time - start for time in times("out.img")], [123, 250000, 900000, 1000000, 1500000]
        )
        order = b"".join(self.files[i].read_bytes() for i in [2, 4, 3, 1, 0])
        self.assertEqual(self.frames("out.img"), order)
        for says, bad in [
            ("do not say when it was taken", plain),
            ("name no time: yesterday", with_exif(plain, "yesterday")),
        ]:
            self.files[3].write_bytes(bad)
            with self.subTest(says):
                self.tool("create", "no.img", "in", "--times", "exif", status=1, says=says)
                self.assertEqual(list(Path().glob("no*")), [])

    def test_other_pictures_are_left_out_or_encoded(self):
        names = [self.files[0]]
        for file, name in zip(self.files[1:], ["b.png", "c.bmp", "d.tif", "e.webp"]):
            options = ["-lossless", 1] if name == "e.webp" else []
            ffmpeg(
                "-i",
                file,
                "-pix_fmt",
                "bgr0" if name == "e.webp" else "rgb24",
                *options,
                f"in/{name}",
            )
            names.append(Path("in") / name)
            file.unlink()
        self.tool(
            "create",
            "one.img",
            "in",
            "--fps",
            5,
            status=3,
            says="in/b.png, in/c.bmp, in/d.tif, in/e.webp: left out, not a JPEG; --encode",
        )
        self.assertEqual(self.frames("one.img"), self.files[0].read_bytes())
        self.tool("create", "all.img", *names, "--fps", 5, "--encode", "--quality", 100)
        self.tool("extract", "all.img", "--output", "out", "--as", "ppm", "--no-table")
        for got, want in zip(sorted(Path("out").iterdir())[1:], names[1:]):
            steps = [abs(a - b) for a, b in zip(pixels(got), pixels(want))]
            self.assertLess(sum(steps) / len(steps), 1, want)
        self.tool("create", "no.img", *names[1:], "--fps", 5, status=1, says="not a JPEG; --encode")
        names[2].write_bytes(b"no picture")
        self.tool(
            "create",
            "no.img",
            "in",
            "--fps",
            5,
            "--encode",
            status=1,
            says="in/c.bmp: it cannot be decoded",
        )
        ffmpeg("-f", "lavfi", "-i", "color=s=8x8:d=0.04", "in/c.bmp")
        self.tool(
            "create", "no.img", "in", "--fps", 5, "--encode", status=1, says="the picture is 8x8"
        )
        self.assertEqual(list(Path().glob("no*")), [])

    def test_skip_existing_goes_on(self):
        def extract(frames, *options, **expected):
            self.tool(
                "extract", "drive.img", "--output", "out", "--range", frames, *options, **expected
            )

        extract("0:2")
        taken = Path("out/frame_000000.jpg")
        taken.write_text("kept")
        extract("1:4", "--skip-existing")
        rows = Path("out/frames.csv").read_text().splitlines()
        self.assertEqual(
            [row[:19] for row in rows[1:]], [f"frame_{i:06}.jpg,{i}," for i in range(4)]
        )
        self.assertEqual(taken.read_text(), "kept")
        Path("out/frames.csv").write_text("mine\n")
        extract("0:5", "--skip-existing", status=1, says="it is not the table of an earlier run")
        self.assertEqual(Path("out/frames.csv").read_text(), "mine\n")
        self.tool("extract", "drive.img", "--output", "same", "--as", "jpg", "--scale", "1/1")
        self.assertEqual(Path("same/frame_000001.jpg").read_bytes(), self.files[1].read_bytes())

    def test_contact_sheet(self):
        """Each picture is where it belongs, and every time stands under it."""
        self.tool("sheet", "drive.img", "sheet.png", "--columns", 2)
        self.tool("extract", "drive.img", "--output", "out", "--as", "ppm", "--no-table")
        texts = set()
        gap, text = 4, 9 * (320 // 145)
        width = 2 * (320 + gap) + gap
        sheet = pixels("sheet.png")
        self.assertEqual(len(sheet), 3 * width * (3 * (200 + gap + text) + gap))
        for i, file in enumerate(sorted(Path("out").iterdir())):
            picture = pixels(file)
            left, top = gap + i % 2 * (320 + gap), gap + i // 2 * (200 + gap + text)
            for row in [0, 100, 199]:
                at = 3 * ((top + row) * width + left)
                self.assertEqual(sheet[at : at + 960], picture[row * 960 : row * 960 + 960])
            under = [sheet[3 * ((top + 200 + y) * width + left) :][:960] for y in range(text)]
            texts.add(b"".join(under))
            self.assertGreater(sum(byte > 200 for line in under for byte in line), 1000)
        self.assertEqual(len(texts), 5)
        damaged = bytearray(Path("drive.img").read_bytes())
        at = damaged.index(self.files[3].read_bytes())
        damaged[at : at + 4] = bytes(4)
        Path("damaged.img").write_bytes(damaged)
        self.tool(
            "sheet", "damaged.img", "sheet.jpg", "--count", 3, status=3, says="frame 3 is skipped"
        )
        self.tool("sheet", "drive.img", "sheet.png", status=1, says="it is already there")
        self.tool(
            "sheet", "drive.img", "sheet.gif", status=1, says="has to end in .jpg, .jpeg or .png"
        )
        self.tool("sample", "long.img", "--frames", 1500, "--size", "64x64")
        self.tool("sheet", "long.img", "many.png", "--every", 20, "--columns", 25)
        self.assertEqual(len(pixels("many.png")), 3 * (25 * 68 + 4) * (3 * (68 + 9) + 4))
        self.tool(
            "sheet",
            "long.img",
            "no.png",
            "--count",
            1500,
            "--columns",
            1,
            status=1,
            says="a sheet of so many pictures would have 72x",
        )
        self.assertEqual(list(Path().glob("no*")), [])


if __name__ == "__main__":
    if not shutil.which("ffmpeg"):
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
