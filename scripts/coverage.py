#!/usr/bin/env python3
"""coverage.py [--list]: sums up the counters of build/coverage, and of build/coverage-fuzz those of the parsers.

A branch is one side of a condition that stands in the source. Every branch of src/ and state/ that is never taken needs a
reason in scripts/branches-never-taken.txt. --list shows also those that have one.
"""

import json
import re
import subprocess
import sys
from collections import Counter
from dataclasses import dataclass, field
from fnmatch import fnmatch
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
REASONS = TOP / "scripts/branches-never-taken.txt"
FUZZERS = sorted(path.name for path in (TOP / "tests/torture/fuzz/corpus").iterdir())


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
    """A branch that is never taken."""
    place: str
    code: str  # which side of which condition
    reason: str | None


def read_counters(tree: Path, *modules: str) -> dict[str, dict]:
    """By the name of the source. The modules are patterns for the programs and libraries that were run."""
    merged = tree / "all.profdata"
    subprocess.run(["llvm-profdata-16", "merge", "--sparse", "--failure-mode=all", "-o", merged,
                    *sorted(tree.glob("profiles/*.profraw"))], check=True)
    first, *others = [path for pattern in modules for path in sorted(tree.glob(pattern)) if path.is_file()]
    command = ["llvm-cov-16", "export", "--skip-functions", "--skip-expansions", f"--instr-profile={merged}", first,
               *(f"--object={module}" for module in others)]
    exported = subprocess.run(command, cwd=TOP, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    # The compiler knows a source by "./" and the folder that it ran in.
    start = f"{tree.relative_to(TOP)}/"
    return {file["filename"].removeprefix(start): file for file in json.loads(exported.stdout)["data"][0]["files"]}


def read_reasons() -> list[tuple[str, str, str]]:
    lines = [line for line in REASONS.read_text().splitlines() if line and not line.startswith("#")]
    return [tuple(line.split("\t")) for line in lines]


def is_decided_by_compiler(line: str, condition: str) -> bool:
    # A switch has a case for each word of its enumeration, which the compiler checks, and counts one for all others.
    # frame.Succeed() is always true and frame.Fail() always false: they trace the end of an operation.
    return ("if constexpr" in line or condition == "true" or line.strip() == f"switch ({condition})" or
            condition.startswith(("frame.Succeed(", "frame.Fail(")))


def text_between(source: list[str], region: tuple[int, int, int, int]) -> str:
    first, start, last, end = region
    lines = source[first - 1:last]
    lines[-1] = lines[-1][:end - 1]
    lines[0] = lines[0][start - 1:]
    return " ".join(line.strip() for line in lines)


def branches_of(file: dict) -> Counter:
    """How often each side of each condition was taken. A template has its conditions once for each use."""
    counts = Counter()
    for *region, true_count, false_count, _, _, _ in file["branches"]:
        counts[(*region, "true")] += true_count
        counts[(*region, "false")] += false_count
    return counts


def add_file(name: str, file: dict, parser: dict | None, folder: Folder, reasons: list) -> list[Missed]:
    source = (TOP / name).read_text().splitlines()
    parsed = branches_of(parser) if parser else {}
    counts = {branch: count + parsed.get(branch, 0) for branch, count in branches_of(file).items()
              if not is_decided_by_compiler(source[branch[0] - 1], text_between(source, branch[:4]))}
    lines = file["summary"]["lines"]
    folder.shares["lines"].add(lines["covered"], lines["count"])
    folder.shares["branches"].add(sum(count > 0 for count in counts.values()), len(counts))
    missed = []
    for (*region, side), count in sorted(counts.items()):
        if count == 0:
            code = f"never {side}: {text_between(source, region)}"
            reason = next((why for path, pattern, why in reasons if fnmatch(name, path) and re.search(pattern, code)), None)
            missed.append(Missed(f"{name}:{region[0]}", code, reason))
    return missed


def main(show_all: bool) -> int:
    folders = [Folder("src/", ("branches", 98)), Folder("state/", ("branches", 98)), Folder("cli/", ("lines", 90))]
    reasons = read_reasons()
    missed = []
    parsers = read_counters(TOP / "build/coverage-fuzz", *FUZZERS)
    for name, file in read_counters(TOP / "build/coverage", "bin/*.exe", "bin/*.DLL", "tests/*/*.exe").items():
        folder = next((folder for folder in folders if name.startswith(folder.name)), None)
        if folder:
            found = add_file(name, file, parsers.get(name), folder, reasons)
            missed += found if folder.wanted[0] == "branches" else []
    for folder in folders:
        for what, share in folder.shares.items():
            wanted = f"; {folder.wanted[1]} % or more is wanted" if folder.wanted[0] == what else ""
            print(f"{folder.name:<7} {what:<9} {share.percent:6.2f} %, {share.reached} of {share.of}{wanted}")
    unexplained = [branch for branch in missed if branch.reason is None]
    print(f"branches never taken: {len(missed)}, without a reason: {len(unexplained)}")
    for branch in missed if show_all else unexplained:
        print(f"{branch.place}: {branch.code}" + (f" ({branch.reason})" if branch.reason else ""))
    return 0 if all(folder.is_enough() for folder in folders) and not unexplained else 1


if __name__ == "__main__":
    sys.exit(main("--list" in sys.argv[1:]))
