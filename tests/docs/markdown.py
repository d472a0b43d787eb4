"""The fenced blocks of a Markdown document."""
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def blocks(document):
    """(language, text, what stands before it), in order."""
    text = (ROOT / document).read_text()
    end = 0
    for match in re.finditer(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S):
        yield match[1], match[2], text[end : match.start()]
        end = match.end()
