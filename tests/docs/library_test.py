"""Every program text of docs/library.md stands in the example that is named before it, and every
link of the documents leads to a file.
"""
import re
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


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
