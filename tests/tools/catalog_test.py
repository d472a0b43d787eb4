"""A catalogue that grows, is killed, and is asked."""
import json
import os
import random
import shutil
import signal
import sqlite3
import subprocess
import time
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase, output

FAST = "speed_m_s > 12"


def contents(database):
    """All of it but row ids and when it was added; the stretches by the files that they are of."""
    with sqlite3.connect(database) as catalog:
        catalog.row_factory = sqlite3.Row
        assert catalog.execute("PRAGMA integrity_check").fetchone()[0] == "ok"
        rows = {}
        for table in "spans", "stretches":
            rows[table] = catalog.execute(
                f"SELECT file, {table}.* FROM {table} "
                f"JOIN recordings ON recordings.id = recording ORDER BY file, first"
            ).fetchall()
        rows["places"] = catalog.execute(
            "SELECT file, places.* FROM places JOIN stretches ON stretches.id = stretch "
            "JOIN recordings ON recordings.id = recording ORDER BY file, first"
        ).fetchall()
        rows["recordings"] = catalog.execute("SELECT * FROM recordings ORDER BY file").fetchall()
        left_out = {"id", "recording", "stretch", "added"}
        return {
            table: [{key: row[key] for key in row.keys() if key not in left_out} for row in found]
            for table, found in rows.items()
        }


class Catalog(ToolCase):
    def setUp(self):
        super().setUp()
        os.makedirs("day/late")
        for name in "day/a.rtv", "day/late/a.rtv":
            self.sample(name, "--frames", "60", "--rtv-version", "04")
        self.sample("day/b.img", "--frames", "5")

    def add(self, *arguments, says="", status=0):
        ran = subprocess.run(
            [TOOL, "catalog", "add", "fleet.db", *arguments],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        self.assertEqual(ran.returncode, status, ran.stderr)
        self.assertIn(says, ran.stderr.decode())
        return ran.stdout.decode().split(": ", 1)[1].strip()

    def find(self, where=FAST, *options):
        return output(TOOL, "catalog", "find", "fleet.db", "--where", where, *options).decode()

    def test_what_is_new_changed_gone_and_bad(self):
        Path("day/bad.rtv").write_text("neither")
        for added, says in (
            ("3 added, 0 unchanged, 1 unreadable, 0 removed", "bad.rtv: it is not a recording"),
            ("0 added, 3 unchanged, 1 unreadable, 0 removed", "bad.rtv"),
        ):
            self.assertEqual(self.add("day", "--recursive", says=says, status=1), added)
        os.remove("day/bad.rtv")
        shutil.copy("day/b.img", "day/c.img")
        self.tool("edit", "day/a.rtv", "--shift-time", "1h")
        self.assertEqual(self.add("day"), "2 added, 1 unchanged, 0 unreadable, 1 removed")
        self.assertEqual(
            self.add("day", "--recursive", "--verify"),
            "4 added, 0 unchanged, 0 unreadable, 0 removed",
        )
        # One that has changed is asked as it is; one that is gone is named.
        self.tool("edit", "day/a.rtv", "--shift-time", "1h")
        ran = subprocess.run(
            [TOOL, "catalog", "find", "fleet.db", "--where", "time < 0.05"],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        self.assertIn("a.rtv: it has changed", ran.stderr.decode())
        self.assertIn('"start":"2023-11-15T00:13:20.000000Z"', ran.stdout.decode())
        os.remove("day/late/a.rtv")
        self.tool(
            "catalog", "find", "fleet.db", "--where", FAST, status=1, says="late/a.rtv: it is not"
        )
        # An empty folder may be one that is not mounted.
        shutil.rmtree("day/late")
        os.makedirs("empty")
        self.add("empty", status=1, says="there is no recording in it")
        info = json.loads(output(TOOL, "catalog", "info", "fleet.db", "--json"))
        self.assertEqual((info["recordings"], info["unreadable"], info["removed"]), (4, 0, 1))

    def test_ranges_go_to_other_commands(self):
        self.add("day", "--recursive")
        found = [json.loads(line) for line in self.find("index >= 10 && index < 12").splitlines()]
        self.assertEqual(
            [(Path(row["file"]).parent.name, row["range"]) for row in found],
            [("day", [10, 12]), ("late", [10, 12])],
        )
        for csv in [], ["--csv"]:
            ranges = self.find("index >= 10 && index < 12", *csv).encode()
            for command in (
                ["cut", "--output-dir", "scenes", "--force"],
                ["extract", "--output", "pictures", "--force"],
            ):
                subprocess.run(
                    [TOOL, "--quiet", *command, "--ranges-from", "-"],
                    input=ranges,
                    check=True,
                    stdout=subprocess.DEVNULL,
                )
            listed = subprocess.run(
                [TOOL, "frames", "--ranges-from", "-", "--columns", "index", "--csv"],
                input=ranges,
                check=True,
                stdout=subprocess.PIPE,
            ).stdout.split()
            self.assertEqual(listed, [b"index", b"10", b"11", b"10", b"11"])
        made = sorted(str(path) for path in Path("scenes").rglob("*.rtv"))
        self.assertEqual(made, ["scenes/a-0001.rtv", "scenes/late/a-0001.rtv"])
        self.assertEqual(len(list(Path("pictures/late/a").glob("*.jpg"))), 2)
        Path("wrong").write_text('{"file": "a.rtv", "range": [3, 2]}')
        self.tool("frames", "--ranges-from", "wrong", status=1, says="line 1 is not like")

    def test_other_databases_stay_as_they_are(self):
        foreign = sqlite3.connect("foreign")
        foreign.execute("CREATE TABLE other (x)")
        foreign.close()
        self.add("day")
        shutil.copy("fleet.db", "newer")
        newer = sqlite3.connect("newer")
        newer.execute("PRAGMA user_version = 99")
        newer.close()
        Path("text").write_text("no database, but longer than the header of one" * 9)
        for file, words in (
            ("foreign", "no catalogue of recordings"),
            ("newer", "version 99, made by a newer program"),
            ("text", "it is not a database"),
        ):
            before = Path(file).read_bytes()
            self.tool("catalog", "add", file, "day", status=1, says=words)
            self.tool("catalog", "info", file, status=1, says=words)
            self.assertEqual(Path(file).read_bytes(), before)
        for words, says in (
            (["catalog"], "a command is missing: add or find or info or sql"),
            (["help", "catalog", "ad"], "catalog: there is no command ad; did you mean add?"),
            (["catalog", "--verify", "add", "x.db"], "catalog add: --verify has to come after"),
            (["catalog", "info", "x.db", "day"], "catalog info: day is one argument too many"),
        ):
            self.tool(*words, status=2, says=says)
        for query in "DELETE FROM places", "VACUUM INTO 'x.db'", "PRAGMA journal_mode = DELETE":
            self.tool("catalog", "sql", "fleet.db", query, status=2, says="only a SELECT")
        self.assertFalse(Path("x.db").exists())
        wrong = "SELECT speed FROM stretches"
        self.tool("catalog", "sql", "fleet.db", wrong, status=2, says="no such column: speed")
        self.assertEqual(
            output(
                TOOL, "catalog", "sql", "fleet.db", "SELECT frames FROM recordings; -- all", "--csv"
            ),
            b"frames\n60\n5\n",
        )

    def test_killed_at_any_moment(self):
        os.makedirs("fleet")
        for i in range(400):
            os.link("day/a.rtv", f"fleet/{i}.rtv")
        self.tool("catalog", "add", "whole.db", "fleet")
        whole = contents("whole.db")
        dice = random.Random(18)
        begun = time.monotonic()
        self.add("fleet")
        once = time.monotonic() - begun
        stopped = 0
        for _ in range(20):
            for suffix in "", "-wal", "-shm":
                Path("fleet.db" + suffix).unlink(missing_ok=True)
            adding = subprocess.Popen(
                [TOOL, "catalog", "add", "fleet.db", "fleet"], stdout=subprocess.DEVNULL
            )
            time.sleep(dice.uniform(0, once))
            adding.send_signal(signal.SIGKILL)
            stopped += adding.wait() == -signal.SIGKILL
            with sqlite3.connect("fleet.db") as left:
                self.assertEqual(left.execute("PRAGMA integrity_check").fetchone()[0], "ok")
            self.add("fleet")
            self.assertEqual(contents("fleet.db"), whole)
        self.assertGreater(stopped, 5)

    def test_two_add_at_once(self):
        os.makedirs("fleet")
        for i in range(100):
            os.link("day/a.rtv", f"fleet/{i}.rtv")
        self.tool("catalog", "add", "whole.db", "fleet")
        self.add_at_once("fleet.db", "fleet", "fleet")
        self.assertEqual(contents("fleet.db"), contents("whole.db"))
        for i in range(20):
            self.add_at_once(f"{i}.db", "fleet/0.rtv", "fleet/1.rtv")

    def add_at_once(self, database, *inputs):
        both = [
            subprocess.Popen([TOOL, "catalog", "add", database, path], stdout=subprocess.DEVNULL)
            for path in inputs
        ]
        self.assertEqual([one.wait() for one in both], [0, 0])


if __name__ == "__main__":
    unittest.main()
