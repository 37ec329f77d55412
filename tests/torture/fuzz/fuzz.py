#!/usr/bin/env python3
"""fuzz.py SEED SECONDS: runs every parser under libFuzzer and prints the figures of each target.

The seconds are divided among the targets, two of which run at a time. With 0 seconds each target makes ZELK_FUZZ_RUNS
runs (100,000,000 by default), which takes hours. Inputs that reach new code are saved in build/fuzz/corpus.

fuzz.py --build: only builds the targets.

fuzz.py --keep: replaces the corpus in the repository by the smallest set of inputs, saved or already in it, that reaches
every edge, shorter inputs first, up to a limit in bytes. Inputs written by hand are called "seed" and stay.
"""

import fcntl
import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from tempfile import TemporaryDirectory

HERE = Path(__file__).resolve().parent
BUILD = HERE.parent.parent.parent / "build/fuzz"
KEPT = HERE / "corpus"
KEPT_BYTES = 8000
AT_A_TIME = 2
RUNS = int(os.environ.get("ZELK_FUZZ_RUNS", "100000000"))

# The longest input of each target, in bytes: long enough for every path, short enough for many runs a second.
TARGETS = {
    "arguments": 200,
    "command_line": 60,
    "desired_state": 2000,
    "ip_text": 80,
    "names": 80,
    "pending_change": 2000,
    "plans": 400,
    "report": 2000,
    "text_lists": 64,
    "trace_lines": 256,
}


def call(*command: str | Path) -> None:
    """Shows the command's output only if it fails."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f"fuzz: {command[0]} failed:\n{done.stdout}")


def build() -> None:
    """Waits if another process is building."""
    BUILD.mkdir(parents=True, exist_ok=True)
    with open(BUILD / ".lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        build_alone()


def build_alone() -> None:
    if not (BUILD / "build.ninja").exists():
        call("cmake", "-S", HERE, "-B", BUILD, "-G", "Ninja")
    call("ninja", "-C", BUILD, *TARGETS)


def fuzzer(target: str, *options: str) -> subprocess.CompletedProcess:
    """The last options are the corpus folders; new inputs are saved in the first one."""
    return subprocess.run([BUILD / target, f"-max_len={TARGETS[target]}", *options],
                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                          errors="replace", env={**os.environ, "ASAN_OPTIONS": "quarantine_size_mb=8:external_symbolizer_path=/usr/bin/addr2line"})


def folders_of(target: str) -> tuple[Path, Path]:
    """The folder of the inputs found on this machine, and that of the repository's."""
    folders = (BUILD / "corpus" / target, KEPT / target)
    for folder in folders:
        folder.mkdir(parents=True, exist_ok=True)
    return folders


def run(target: str, seed: int, seconds: int) -> bool:
    """Prints the target's figures, or libFuzzer's report and returns False if it found a failure."""
    effort = f"-max_total_time={seconds}" if seconds else f"-runs={RUNS}"
    done = fuzzer(target, f"-seed={seed % 2**32}", effort, "-timeout=10", "-print_final_stats=1",
                  f"-artifact_prefix={BUILD}/{target}-", *folders_of(target))
    if done.returncode != 0:
        print(f"fuzz: {target} failed:\n{done.stderr[-4000:]}\nfuzz: to repeat it, run: {BUILD / target} FILE",
              file=sys.stderr)
        return False
    runs = re.search(r"number_of_executed_units: *(\d+)", done.stderr)[1]
    speed = re.search(r"average_exec_per_sec: *(\d+)", done.stderr)[1]
    edges, inputs = re.findall(r"cov: (\d+) .*corp: (\d+)/", done.stderr)[-1]
    print(f"{target}\t{int(runs):,} runs, {int(speed):,}/s, {edges} edges, {inputs} inputs", flush=True)
    return True


def keep(target: str) -> None:
    found, kept = folders_of(target)
    with TemporaryDirectory() as fewest:
        fuzzer(target, "-set_cover_merge=1", "-use_counters=0", "-use_cmp=0", fewest, found, kept).check_returncode()
        for path in kept.glob("[!s]*"):
            path.unlink()
        room = KEPT_BYTES
        for path in sorted(Path(fewest).iterdir(), key=lambda path: path.stat().st_size):
            room -= path.stat().st_size
            if room >= 0:
                shutil.copy(path, kept)


def main() -> int:
    build()
    if sys.argv[1:] == ["--build"]:
        return 0
    if sys.argv[1:] == ["--keep"]:
        for target in TARGETS:
            keep(target)
        return 0
    seed, seconds = map(int, sys.argv[1:])
    each = max(1, seconds * AT_A_TIME // len(TARGETS)) if seconds else 0
    with ThreadPoolExecutor(AT_A_TIME) as pool:
        return 0 if all(list(pool.map(lambda target: run(target, seed, each), TARGETS))) else 1


if __name__ == "__main__":
    sys.exit(main())
