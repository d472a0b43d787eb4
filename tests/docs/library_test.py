"""Every program text of docs/library.md stands in the example that is named before it, and every
link of the documents leads to a file. What ./dev and CONTRIBUTING.md offer is run by .ci/run.
"""
import re
import subprocess
import sys
import unittest

from markdown import ROOT, blocks


class Library(unittest.TestCase):
    def test_quotes(self):
        example = ""
        for language, text, before in blocks("docs/library.md"):
            example = (re.findall(r"\(\.\./(examples/\w+\.cpp)\)", before) or [example])[-1]
            self.assertEqual(language, "cpp")
            self.assertIn(text, (ROOT / example).read_text(), example)

    def test_links(self):
        documents = [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]
        for document in documents:
            for link in re.findall(r"\]\(([^)#:]+)[^):]*\)", document.read_text()):
                self.assertTrue((document.parent / link).exists(), f"{document}: {link}")

    def test_commands_are_run_by_ci(self):
        ci = (ROOT / ".ci/run").read_text()
        offered = subprocess.run([ROOT / "dev", "help"], stdout=subprocess.PIPE, text=True).stdout
        contributing = (ROOT / "CONTRIBUTING.md").read_text()
        commands = [f"./dev {command}" for command in re.findall(r"^  (\w+)", offered, re.M)]
        commands += re.findall(r"^    ((?:cmake|ctest) .+)", contributing, re.M)
        self.assertGreater(len(commands), 12)
        for command in commands:
            self.assertRegex(ci, rf"(?m)^ *{re.escape(command)}\b")
        for option in re.findall(r"--\w+", offered):
            self.assertIn(option, ci)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
