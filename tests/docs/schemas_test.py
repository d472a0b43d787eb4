"""Holds docs/schemas against what the tool prints.
Usage: schemas_test.py PATH-OF-VELMAR-VIDEO
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from jsonschema import Draft202012Validator
from markdown import ROOT

TOOL = Path(sys.argv.pop(1)).resolve()


def objects(command, *arguments):
    ran = subprocess.run([TOOL, command, *arguments, "--json"], stdout=subprocess.PIPE)
    return [json.loads(line) for line in ran.stdout.splitlines()]


class Json(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        self.files = ["drive.img", "02.rtv", "03.rtv", "04.rtv"]
        for file in self.files:
            version = [] if file == "drive.img" else ["--rtv-version", file[:2]]
            subprocess.run(
                [TOOL, "sample", file, "--frames", "2", "--size", "64x64", *version], check=True
            )

    def check(self, schema, found):
        schema = json.loads((ROOT / f"docs/schemas/{schema}.json").read_text())
        Draft202012Validator.check_schema(schema)
        validator = Draft202012Validator(schema)
        for value in found:
            validator.validate(value)
            # Nothing may be missing, and nothing may come that the schema does not tell of.
            self.assertFalse(validator.is_valid({**value, "unknown": 1}))
            kinds = schema.get("oneOf", [schema])
            kind = next(kind for kind in kinds if value.keys() <= kind["properties"].keys())
            for key in kind["required"]:
                self.assertFalse(validator.is_valid({k: v for k, v in value.items() if k != key}))
        return schema

    def test_info(self):
        found = objects("info", *self.files)
        self.assertEqual(len(found), 4)
        schema = self.check("info", found)
        # As a recorder would have left it.
        shutil.copy("04.rtv", "left.rtv.tmp")
        left = objects("info", "left.rtv")
        self.assertEqual(left[0]["state"], "interrupted")
        self.check("info", left)
        self.check("frames", objects("frames", "left.rtv"))
        known = found[0].keys() | found[1].keys() | left[0].keys()
        self.assertEqual(known, schema["properties"].keys())

    def test_frames(self):
        found = {file: objects("frames", file) for file in self.files}
        schema = self.check("frames", sum(found.values(), []))
        every = found["04.rtv"][0].keys()
        others = objects("frames", *self.files, "--hash")
        others += objects("frames", *self.files, "--hash", "sha256")
        self.check("frames", others)
        added = set().union(*others) - every
        self.assertEqual(added, {"file", "xxh3_128", "sha256"})
        self.assertEqual(every | added, schema["properties"].keys())
        self.assertEqual(every - found["03.rtv"][0].keys(), {"can"})
        signals = (
            subprocess.run(
                [TOOL, "frames", "04.rtv", "--csv"], check=True, stdout=subprocess.PIPE, text=True
            )
            .stdout.splitlines()[0]
            .split(",")[len(every) - 1 :]
        )
        self.assertEqual(set(signals), schema["properties"]["can"]["properties"].keys())

    def test_verify(self):
        whole = Path("drive.img").read_bytes()
        Path("zeros.img").write_bytes(whole[:400] + bytes(3000) + whole[3400:])
        tall = whole.replace(b'"height" : 64', b'"height" : 65')
        Path("tall.img").write_bytes(tall)
        Path("cut.img").write_bytes(whole[:2000])
        found = objects("verify", *self.files, "zeros.img", "tall.img", "cut.img", "--decode")
        self.check("verify", found)
        kinds = {frozenset(finding) for report in found[:-1] for finding in report["findings"]}
        self.assertEqual(len(kinds), 3, kinds)  # of a frame, of several, of the file
        objects("verify", *self.files, "--manifest-out", "manifest")
        lines = Path("manifest").read_text().splitlines()
        self.check("manifest", [json.loads(line) for line in lines])

    def test_catalog(self):
        for command in ["add", "fleet.db", *self.files], ["find", "fleet.db", "--where", "1"]:
            ran = subprocess.run([TOOL, "catalog", *command], check=True, stdout=subprocess.PIPE)
        self.check("found", [json.loads(line) for line in ran.stdout.splitlines()])
        self.check("catalog", objects("catalog", "info", "fleet.db"))

    def test_diff(self):
        damaged = bytearray(Path("drive.img").read_bytes())
        damaged[32] = 1  # in the size of frame 0
        Path("damaged.img").write_bytes(damaged)
        subprocess.run([TOOL, "cut", "drive.img", "one.img", "--range", "1:2"], check=True)
        shutil.copy("04.rtv", "edited.rtv")
        with open("log.csv", "w") as log:
            log.write("time_s,speed_kmh,brake_active\n1700000000,36,1\n1700000001,36,1\n")
        edit = [TOOL, "edit", "edited.rtv", "--log", "log.csv", "--device-id", "01"]
        subprocess.run(edit, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        pairs = [("drive.img", "04.rtv"), ("04.rtv", "edited.rtv"), ("one.img", "drive.img")]
        pairs += [("drive.img", "damaged.img"), ("drive.img", "drive.img")]
        found = sum((objects("diff", *pair) for pair in pairs), [])
        self.assertEqual([report["same"] for report in found], [True, False, False, False, True])
        self.assertEqual(
            found[2]["frames"], [{"b_frames": [0, 0]}, {"a_frames": [0, 0], "b_frames": [1, 1]}]
        )
        self.assertEqual([item["frames"] for item in found[3]["b"]["not_compared"]], [[0, 0]])
        names = {item["name"] for report in found for item in report["frame_differences"]}
        self.assertTrue({"speed_m_s", "brake_active"} <= names, names)
        self.check("diff", found)


if __name__ == "__main__":
    unittest.main()
