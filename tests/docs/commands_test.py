"""Runs the commands of a document in order in one folder, as a reader would.
Each `sh` block ends with status 0, or with the one that its comment "exit status N" names, and
prints what the `text` block behind it shows; "…" stands for anything.
Usage: commands_test.py PATH-OF-VELMAR-VIDEO DOCUMENT
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from markdown import blocks

os.environ["PATH"] = f"{Path(sys.argv[1]).resolve().parent}:{os.environ['PATH']}"


def run(script):
    """What it prints, and its status. Processes that it leaves behind are not waited for."""
    with tempfile.TemporaryFile() as output:
        status = subprocess.run(
            ["bash", "-euo", "pipefail", "-c", script], stdout=output, stderr=output
        ).returncode
        output.seek(0)
        return output.read().decode(), status


def matches(shown, printed):
    return re.fullmatch(".*".join(map(re.escape, shown.split("…"))), printed, re.S)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    printed, failed = "", False
    for language, text, _ in blocks(sys.argv[2]):
        if language == "sh":
            if "ffmpeg" in text and not shutil.which("ffmpeg"):
                print(f"SKIPPED, there is no ffmpeg:\n{text}")
                printed = None
                continue
            printed, status = run(text)
            expected = int((re.findall(r"# exit status (\d+)", text) or [0])[-1])
            if status != expected:
                print(f"FAILED: status {status} instead of {expected}:\n{text}\n{printed}")
                failed = True
        elif language == "text" and printed is not None and not matches(text, printed):
            print(f"FAILED: this was printed:\n{printed}\ninstead of:\n{text}")
            failed = True
    os.chdir("/")
sys.exit(failed)
