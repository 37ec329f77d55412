#!/usr/bin/env python3
"""coverage.py [--list]: sums up the counters of build/coverage.

The branches of lines that hold a condition count, except for those that only an exception takes. On other lines the
compiler makes branches of its own, which free temporary objects. Every branch of src/ and state/ that counts and is never
taken needs a reason in scripts/branches-never-taken.txt. --list shows also those that have one.
"""

import json
import re
import subprocess
import sys
from dataclasses import dataclass, field
from fnmatch import fnmatch
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
REASONS = TOP / "scripts/branches-never-taken.txt"
TEXT_OR_COMMENT = re.compile(r'"(\\.|[^"\\])*"|//.*')
CONDITION = re.compile(r"\b(if|while|for|switch|case|default)\b|\?|&&|\|\|")


@dataclass
class Share:
    reached: int = 0
    of: int = 0

    @property
    def percent(self) -> float:
        return 100 * self.reached / self.of if self.of else 0

    def add(self, reached: int, of: int) -> None:
        self.reached += reached
        self.of += of


@dataclass
class Folder:
    name: str
    wanted: tuple[str, float]  # what has to be reached, and how much of it in percent
    shares: dict[str, Share] = field(default_factory=lambda: {"branches": Share(), "lines": Share()})

    def is_enough(self) -> bool:
        return self.shares[self.wanted[0]].percent >= self.wanted[1]


@dataclass
class Missed:
    """A line with branches that are never taken."""
    place: str
    branches: int
    code: str
    reason: str | None


def read_counters(folders: list[Folder]) -> list[dict]:
    command = ["gcovr", "--gcov-executable", "x86_64-w64-mingw32-gcov-posix", "--root", ".", "--json",
               # The counters of threads that run at once can become negative, which gcovr cannot read.
               "--gcov-ignore-parse-errors", "--exclude-throw-branches", "--exclude-unreachable-branches",
               *(f"--filter={folder.name}" for folder in folders), "build/coverage"]
    return json.loads(subprocess.run(command, cwd=TOP, check=True, stdout=subprocess.PIPE, text=True).stdout)["files"]


def read_reasons() -> list[tuple[str, str, str]]:
    lines = [line for line in REASONS.read_text().splitlines() if line and not line.startswith("#")]
    return [tuple(line.split("\t")) for line in lines]


def reason_for(name: str, code: str, reasons: list[tuple[str, str, str]]) -> str | None:
    return next((why for path, pattern, why in reasons if fnmatch(name, path) and re.search(pattern, code)), None)


def has_condition(code: str) -> bool:
    """Not so a function that is left to the compiler."""
    return "= default" not in code and CONDITION.search(TEXT_OR_COMMENT.sub("", code)) is not None


def add_file(file: dict, folder: Folder, reasons: list) -> list[Missed]:
    missed = []
    source = (TOP / file["file"]).read_text().splitlines()
    for line in file["lines"]:
        if line["gcovr/noncode"]:
            continue
        code = source[line["line_number"] - 1].strip()
        branches = [branch for branch in line["branches"] if not branch["throw"] and has_condition(code)]
        taken = sum(branch["count"] > 0 for branch in branches)
        folder.shares["lines"].add(line["count"] > 0, 1)
        folder.shares["branches"].add(taken, len(branches))
        if taken < len(branches):
            missed.append(Missed(f"{file['file']}:{line['line_number']}", len(branches) - taken, code,
                                 reason_for(file["file"], code, reasons)))
    return missed


def main(show_all: bool) -> int:
    folders = [Folder("src/", ("branches", 98)), Folder("state/", ("branches", 98)), Folder("cli/", ("lines", 90))]
    reasons = read_reasons()
    missed = []
    for file in read_counters(folders):
        folder = next(folder for folder in folders if file["file"].startswith(folder.name))
        found = add_file(file, folder, reasons)
        missed += found if folder.wanted[0] == "branches" else []
    for folder in folders:
        for what, share in folder.shares.items():
            wanted = f"; {folder.wanted[1]} % or more is wanted" if folder.wanted[0] == what else ""
            print(f"{folder.name:<7} {what:<9} {share.percent:6.2f} %, {share.reached} of {share.of}{wanted}")
    unexplained = [line for line in missed if line.reason is None]
    print(f"branches never taken: {sum(line.branches for line in missed)}, "
          f"without a reason: {sum(line.branches for line in unexplained)}")
    for line in missed if show_all else unexplained:
        print(f"{line.place}: {line.branches}: {line.code}" + (f" ({line.reason})" if line.reason else ""))
    return 0 if all(folder.is_enough() for folder in folders) and not unexplained else 1


if __name__ == "__main__":
    sys.exit(main("--list" in sys.argv[1:]))
