#!/usr/bin/env python3
"""What architecture.md says of the folders: each includes from those below it, and no file is in a circle."""
import graphlib
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
MOST_SOURCES = 25

# From the lowest to the highest; those on one line do not know each other. A folder stands for those in it.
LAYERS = [
    ["include", "logger"],
    ["src/base"],
    ["src/jpeg"],
    ["src/container/img", "src/container/rtv"],
    ["src/common"],
    ["toolkit/base"],
    ["toolkit/files"],
    ["toolkit/text", "scene"],
    ["toolkit/jpeg"],
    ["toolkit/recording"],
    ["toolkit/frames"],
    ["toolkit/writing"],
    ["toolkit/tables"],
    ["toolkit/logs"],
    ["toolkit/video"],
    [
        "toolkit/comparison",
        "toolkit/copying",
        "toolkit/creating",
        "toolkit/editing",
        "toolkit/pictures",
        "toolkit/rescue",
    ],
    ["toolkit/catalog"],
    ["viewer/server"],
    ["tools/velmar-video/program", "python/core"],
    ["tools/velmar-video/commands"],
    ["tools/velmar-video", "tools/reference"],
]
# What the names of these folders are in.
NAMESPACES = {
    "src/base/": "velmar::detail",
    "src/jpeg/": "velmar::detail",
    "toolkit/": "velmar::toolkit",
    "python/core/": "velmar::python",
    "viewer/server/": "velmar::viewer",
    "tools/velmar-video/commands/": "velmar::tool",
    "tools/velmar-video/program/": "velmar::tool",
}
# Where the paths of #include lines begin.
STARTS = ["include", "src", "logger", "tools/velmar-video", "python", "viewer", ""]


def layer_of(path):
    found = [
        (len(folder), level, folder)
        for level, folders in enumerate(LAYERS)
        for folder in folders
        if path.startswith(folder + "/")
    ]
    return max(found, default=None)


def included(path):
    text = (ROOT / path).read_text()
    for name in re.findall(r'^#include ["<]([^">]+)[">]', text, re.MULTILINE):
        beside = str(pathlib.PurePosixPath(path).parent / name)
        for candidate in [beside] + [f"{start}/{name}".lstrip("/") for start in STARTS]:
            if candidate in sources:
                yield candidate
                break


listed = subprocess.run(
    ["git", "ls-files", "*.h", "*.cpp"], cwd=ROOT, check=True, capture_output=True, text=True
).stdout.split()
sources = {path for path in listed if layer_of(path)}
arrows = {path: sorted(included(path)) for path in sources}
faults = []
for path, others in sorted(arrows.items()):
    _, level, folder = layer_of(path)
    for other in others:
        _, other_level, other_folder = layer_of(other)
        if other_folder != folder and other_level >= level:
            faults.append(f"{path} includes {other}, which is not below it")
try:
    graphlib.TopologicalSorter(arrows).prepare()
except graphlib.CycleError as error:
    faults.append("circle: " + " <- ".join(error.args[1]))
for folders in LAYERS:
    for folder in folders:
        count = sum(str(pathlib.PurePosixPath(path).parent) == folder for path in sources)
        if count > MOST_SOURCES:
            faults.append(f"{folder} has {count} sources, {MOST_SOURCES} at most")
for folder, namespace in NAMESPACES.items():
    for path in sorted(path for path in sources if path.startswith(folder)):
        if f"\nnamespace {namespace} {{\n" not in (ROOT / path).read_text():
            faults.append(f"{path} has its names outside {namespace}")
print("\n".join(faults) or f"{len(sources)} sources, {sum(map(len, arrows.values()))} includes")
sys.exit(bool(faults))
