"""Runs the Python blocks of docs/python.md, one after the other; each prints what the block behind
it says. The block that needs more than the package is left out: it is "py".
"""
import contextlib
import io
import os
import sys
import tempfile
import unittest

from markdown import blocks


class Python(unittest.TestCase):
    def test_blocks(self):
        found = [(kind, text) for kind, text, _ in blocks("docs/python.md")]
        self.assertGreater(len(found), 15)
        names = {}
        with tempfile.TemporaryDirectory() as folder:
            self.addCleanup(os.chdir, os.getcwd())
            os.chdir(folder)
            printed = io.StringIO()
            for kind, text in found:
                if kind == "python":
                    printed = io.StringIO()
                    with contextlib.redirect_stdout(printed):
                        exec(compile(text, "docs/python.md", "exec"), names)
                elif kind == "output":
                    self.assertEqual(printed.getvalue(), text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
