#!/usr/bin/env python3
"""Holds every include of the sources against the floors in floors.txt: one that runs up, or across, is an error."""
import pathlib
import re
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
ROOTS = ("include", "src", "cli", ".")  # where an include's path may begin
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def read_floors():
    floors = {}
    for floor, line in enumerate((TOP / "scripts/floors.txt").read_text().splitlines()):
        for room in line.split("#")[0].split():
            floors[room] = floor
    return floors


def room_of(path, floors):
    parts = path.split("/")
    return next((room for n in range(len(parts) - 1, 0, -1) if (room := "/".join(parts[:n])) in floors), None)


def main():
    floors = read_floors()
    trees = {room.split("/")[0] for room in floors}
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", *sorted(trees)], cwd=TOP, check=True,
                            capture_output=True, text=True).stdout.split("\n")
    sources = {path for path in listed if path.endswith((".h", ".cpp", ".c")) and (TOP / path).exists()}
    faults = []
    for path in sorted(sources):
        room = room_of(path, floors)
        if room is None:
            faults.append(f"{path}: its folder stands on no floor")
            continue
        for name in INCLUDE.findall((TOP / path).read_text(encoding="utf-8")):
            found = next((p for root in ROOTS if (p := str(pathlib.PurePosixPath(root, name))) in sources), None)
            target = room_of(found, floors) if found else None
            if target and target != room and floors[target] >= floors[room]:
                faults.append(f"{path}: includes {found}, which is {'across' if floors[target] == floors[room] else 'up'}")
    print("\n".join(faults) if faults else f"{len(sources)} files, every include falls")
    return 1 if faults else 0


sys.exit(main())
