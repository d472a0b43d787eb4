"""What the server of the viewer answers, and what it does not."""
import http.client
import json
import os
import random
import socket
import subprocess
import sys
import time
import unittest
from pathlib import Path

from jsonschema import Draft202012Validator

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tools"))
from tool_case import TOOL, ToolCase, output


class Server(ToolCase):
    def setUp(self):
        super().setUp()
        self.sample("drive.rtv", "--rtv-version", "04", "--frames", "20")
        self.sample("plain.img", "--frames", "3")
        Path("broken.img").write_bytes(b"no recording")
        self.start("drive.rtv", "plain.img", "broken.img")

    def start(self, *arguments):
        self.server = subprocess.Popen(
            [TOOL, "view", "--no-browser", *arguments], stdout=subprocess.PIPE, text=True
        )
        self.addCleanup(self.server.stdout.close)
        self.addCleanup(self.server.wait, 60)
        self.addCleanup(self.server.terminate)
        url = self.server.stdout.readline().strip()
        self.host, self.start_path = url.removeprefix("http://").split("/", 1)
        self.start_path = "/" + self.start_path

    def get(self, path, headers={}, method="GET", whole=False):
        connection = http.client.HTTPConnection(self.host, timeout=60)
        self.addCleanup(connection.close)
        connection.request(method, path if whole else self.start_path + path, headers=headers)
        response = connection.getresponse()
        return response, response.read()

    def answer(self, path, status=200, **options):
        response, body = self.get(path, **options)
        self.assertEqual(response.status, status, body[:200])
        return body

    def json(self, path, schema):
        value = json.loads(self.answer(path))
        schemas = Path(__file__).resolve().parents[2] / "docs/schemas"
        Draft202012Validator(json.loads((schemas / schema).read_text())).validate(value)
        return value

    def test_gives_what_the_tool_gives(self):
        jpeg = output(TOOL, "cat", "drive.rtv", "--range", "7:8")
        self.assertEqual(self.answer("0/frames/7.jpg"), jpeg)
        self.assertEqual(
            self.answer("0/table?range=3:9"),
            output(TOOL, "frames", "drive.rtv", "--csv", "--range", "3:9"),
        )
        output(TOOL, "cut", "drive.rtv", "scene.rtv", "--range", "3:9")
        response, body = self.get("0/scene?range=3:9")
        self.assertEqual(body, Path("scene.rtv").read_bytes())
        self.assertIn("drive-3-9.rtv", response.headers["Content-Disposition"])
        output(TOOL, "extract", "drive.rtv", "--range", "7:8", "--as", "png", "--output", "p")
        self.assertEqual(self.answer("0/frames/7.png"), Path("p/frame_000007.png").read_bytes())
        verified = self.json("0/verify", "verify.json")
        self.assertEqual((verified["frames"], verified["findings"]), (20, []))
        names = "index,sensor_time_us,alt_m,yaw_rate"
        columns = self.json("0/columns?names=" + names, "columns.json")["columns"]
        rows = output(TOOL, "frames", "drive.rtv", "--csv", "--columns", names).decode().split()
        for i, name in enumerate(names.split(",")):
            cells = [row.split(",")[i] for row in rows[1:]]
            self.assertEqual(columns[name], [float(cell) if cell else None for cell in cells])
        known = self.json("0/columns", "columns.json")["names"]
        self.assertIn("speed_m_s", known)
        self.assertEqual(json.loads(self.answer("1/columns")), {"frames": 3, "names": []})

    def test_lists_recordings(self):
        found = self.json("recordings", "recordings.json")["recordings"]
        self.assertEqual([one["name"] for one in found], ["drive.rtv", "plain.img", "broken.img"])
        info = json.loads(output(TOOL, "info", "drive.rtv", "--json"))
        self.assertEqual(found[0]["info"], info)
        self.assertIn("NOT_VELMAR_VIDEO_FORMAT", found[2]["problem"])
        self.assertIn("problem", json.loads(self.answer("2/frames/0.jpg", status=422)))

    def test_shows_the_recordings_of_ranges(self):
        Path("found.csv").write_text(
            "file,first,behind\nplain.img,0,2\ndrive.rtv,3,5\nplain.img,2,3\n"
        )
        self.start("--ranges-from", "found.csv")
        found = self.json("recordings", "recordings.json")["recordings"]
        self.assertEqual([one["name"] for one in found], ["plain.img", "drive.rtv"])

    def test_small_pictures_are_side_by_side(self):
        jpeg = self.answer("0/small?frames=0,5,99&height=20")
        Path("strip.jpg").write_bytes(jpeg)
        size = jpeg[jpeg.index(b"\xff\xc0") + 5 :][:4]
        self.assertEqual((size[:2], size[2:]), (b"\0\x19", b"\0\x78"))  # 25 rows of 3 times 40

    def test_stored_frames_have_strong_tags_and_come_whole(self):
        response, body = self.get("0/frames/2.jpg")
        etag = response.headers["ETag"]
        self.assertRegex(etag, '^"')
        self.assertEqual(self.answer("0/frames/2.jpg", 304, headers={"If-None-Match": etag}), b"")
        # What is asked for of it does not lead beyond it.
        for part in "10-19", "20000-90000", "999999999-", "0-1,5-9":
            headers = {"Range": "bytes=" + part}
            self.assertEqual(self.answer("0/frames/2.jpg", headers=headers), body)
            refused = self.answer("/x", 403, headers=headers, whole=True)
            self.assertIn("problem", json.loads(refused))
        other = self.get("0/frames/3.jpg")[0].headers["ETag"]
        self.assertNotEqual(etag, other)

    def test_refuses_what_is_not_for_it(self):
        token = self.start_path
        for path in "/", "/recordings", "/" + "0" * 32 + "/recordings", token[:-1]:
            self.answer(path, 403, whole=True)
        port = self.host.split(":")[1]
        for host in "evil.example:" + port, "127.0.0.1", self.host + "0", "":
            self.answer("recordings", 403, headers={"Host": host})
        self.answer("recordings", 200, headers={"Host": "localhost:" + port})
        for method in "POST", "PUT", "DELETE", "OPTIONS":
            self.assertIn(self.get("recordings", method=method)[0].status, (400, 405))
        for path, status in [
            ("0/frames/20.jpg", 404),
            ("0/frames/-1.jpg", 404),
            ("0/frames/../../etc/passwd", 404),
            ("3/columns", 404),
            ("99999999999999999999/columns", 404),
            ("0/columns?names=spede", 400),
            ("0/columns?names=file", 400),
            ("0/small?frames=1", 400),
            ("0/small?height=50&frames=" + ",".join(["1"] * 201), 400),
            ("0/scene?range=5:5", 404),
            ("0/scene?range=0:21", 404),
            ("0/scene?range=a", 400),
        ]:
            body = self.answer(path, status)
            self.assertIn("problem", json.loads(body), path)

    def test_lives_on_whatever_is_asked(self):
        draw = random.Random(1)
        text = lambda most: bytes(draw.randrange(33, 256) for _ in range(draw.randrange(1, most)))
        connection = None
        for _ in range(10000):
            if connection is None:
                host, port = self.host.split(":")
                connection = socket.create_connection((host, int(port)), 60)
            start = draw.choice(["/", self.start_path, self.start_path + "0/"]).encode()
            host = b"Host: " + self.host.encode()
            lines = [b"GET " + start + text(60) + b" HTTP/1.1", host, text(30) + b": " + text(60)]
            connection.sendall(b"\r\n".join(lines) + b"\r\n\r\n")
            response = http.client.HTTPResponse(connection)
            response.begin()
            response.read()
            self.assertIn(response.status, [200, *range(400, 500)])
            if response.will_close:
                connection.close()
                connection = None
        if connection is not None:
            connection.close()
        self.answer("recordings")

    def test_slow_and_vanished_clients_do_no_harm(self):
        host, port = self.host.split(":")
        clients = [socket.create_connection((host, int(port)), 60) for _ in range(110)]
        for client in clients[10:]:
            client.sendall(b"GET /")  # and never ends
        for client in clients[:10]:
            path = self.start_path + "0/scene?range=0:20"
            client.sendall(f"GET {path} HTTP/1.1\r\nHost: {self.host}\r\n\r\n".encode())
            client.close()
        began = time.monotonic()
        self.answer("0/frames/0.jpg")
        self.assertLess(time.monotonic() - began, 3)
        self.server.terminate()
        self.server.wait(3)
        for client in clients:
            client.close()

    def test_a_request_has_an_end(self):
        host, port = self.host.split(":")
        with socket.create_connection((host, int(port)), 60) as client:
            client.sendall(b"GET / HTTP/1.1\r\n")
            with self.assertRaises(OSError):
                for _ in range(100000):
                    client.sendall(b"A: " + b"a" * 1000 + b"\r\n")
        self.answer("0/frames/0.jpg")

    def test_tiles_are_allowed_from_their_host_alone(self):
        self.start("drive.rtv", "--tiles", "https://tiles.example:8443/{z}/{x}/{y}.png")
        policy = self.get("")[0].headers["Content-Security-Policy"]
        self.assertRegex(policy, "img-src 'self' blob: data: https://tiles.example:8443;")
        for tiles in (
            "https://{s}.example/{z}/{x}/{y}.png",
            "https://*/{z}/{x}/{y}",
            "file:///{z}{x}{y}",
            "https:///{z}/{x}/{y}.png",
            "https://tiles.example/{z}/{x}/{y}.png; script-src *",
        ):
            done = subprocess.run(
                [TOOL, "view", "drive.rtv", "--tiles", tiles], capture_output=True
            )
            self.assertEqual(done.returncode, 2, tiles)

    def test_tells_of_a_file_that_is_not_the_same_any_more(self):
        for shown in True, False:
            listed = self.json("recordings", "recordings.json")["recordings"][0]
            old = "?revision=" + listed["revision"]
            if shown:
                self.answer("0/frames/2.jpg" + old)
            os.truncate("drive.rtv", 100)
            self.assertIn(b"while it was shown", self.answer("0/frames/2.jpg" + old, 410))
            self.answer("0/frames/2.jpg", 422)
            self.assertIn("problem", json.loads(self.answer("recordings"))["recordings"][0])
            self.sample("drive.rtv", "--rtv-version", "04", "--frames", "9")
            listed = self.json("recordings", "recordings.json")["recordings"][0]
            self.assertEqual(listed["info"]["frames_count"], 9)
            # Another page may still show the old one.
            self.answer("0/columns" + old, 410)
            for what in "", "?revision=" + listed["revision"]:
                self.answer("0/frames/8.jpg" + what)
                self.answer("0/frames/9.jpg" + what, 404)
            os.remove("drive.rtv")
            self.answer("0/frames/2.jpg?revision=" + listed["revision"], 410)
            self.sample("drive.rtv", "--rtv-version", "04", "--frames", "20")

    def test_the_page_comes_from_here_alone(self):
        response, page = self.get("")
        policy = response.headers["Content-Security-Policy"]
        self.assertIn("default-src 'none'", policy)
        self.assertNotIn("unsafe", policy)
        self.assertIn(b"page.js", page)
        for file in "page.js", "chunk.js", "main.js", "page.css":
            self.assertGreater(len(self.answer(file)), 100)

    def test_ends_with_the_last_page(self):
        self.start("drive.rtv", "--once")
        host, port = self.host.split(":")
        page = socket.create_connection((host, int(port)), 60)
        page.sendall(f"GET {self.start_path}alive HTTP/1.1\r\nHost: {self.host}\r\n\r\n".encode())
        self.assertIn(b"200", page.recv(1000))
        time.sleep(4)
        self.assertIsNone(self.server.poll())
        page.close()
        self.assertEqual(self.server.wait(60), 0)


if __name__ == "__main__":
    unittest.main()
