"""What tests of the tool share that need more than a shell."""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOL = Path(sys.argv.pop(1)).resolve()


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def ffmpeg(*arguments):
    output("ffmpeg", "-v", "error", "-y", "-nostdin", *map(str, arguments))


def times(file):
    rows = output(TOOL, "frames", file, "--csv").decode().splitlines()[1:]
    return [int(row.split(",")[1]) for row in rows]


class ToolCase(unittest.TestCase):
    """In a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def tool(self, *arguments, status=0, says="", **options):
        ran = subprocess.run(
            [TOOL, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options
        )
        said = ran.stderr.decode()
        self.assertEqual(ran.returncode, status, said)
        self.assertIn(says, said)
        if not says:
            self.assertEqual(said, "")

    def frames(self, file):
        return output(TOOL, "cat", file)

    def sample(self, file, *options):
        self.tool("sample", file, "--size", "320x200", "--force", *options)
