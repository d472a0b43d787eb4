"""Runs the Python blocks of docs/python.md and README.md, one after the other; each prints what the block behind
it says. Blocks that need PyTorch or matplotlib are "py"; they run with --all.
"""
import contextlib
import io
import os
import sys
import tempfile
import unittest

from markdown import blocks

KINDS = ["python", "py"] if "--all" in sys.argv else ["python"]
PAGES = ["docs/python.md", "README.md"]


class Python(unittest.TestCase):
    def test_blocks(self):
        found = [(page, kind, text) for page in PAGES for kind, text, _ in blocks(page)]
        self.assertGreater(len(found), 15)
        names = {}
        with tempfile.TemporaryDirectory() as folder:
            self.addCleanup(os.chdir, os.getcwd())
            os.chdir(folder)
            printed = io.StringIO()
            for page, kind, text in found:
                if kind in KINDS:
                    printed = io.StringIO()
                    with contextlib.redirect_stdout(printed):
                        exec(compile(text, page, "exec"), names)
                elif kind == "output":
                    self.assertEqual(printed.getvalue(), text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
