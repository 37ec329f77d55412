#!/usr/bin/env python3
"""Runs the steps of ./torture and prints their figures.

A step is a program. Its arguments are the seed of its random choices and its time limit in seconds (0 for none: it then
runs every case). It prints each figure as a line "name<TAB>value" on standard output and reports failures on standard
error. Its exit code is 0 only if it found no failure.
"""

import argparse
import datetime
import os
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOP = HERE.parent.parent
FUZZ_PART = 5 / 9  # of the minutes: 20 seconds for each parser in three minutes


@dataclass(frozen=True)
class Step:
    command: tuple[str, ...]
    share: int  # of the minutes, in parts
    about: str


def windows_program(name: str, *arguments: str) -> tuple[str, ...]:
    return (str(HERE / "in-prefix.sh"), str(TOP / "build/release/tests/torture" / f"zelk_torture_{name}.exe"), *arguments)


STEPS: dict[str, Step] = {
    "apply": Step((str(HERE / "apply.py"),), 5, "changes whose steps fail in every possible way, and random walks between states"),
    "hammer": Step(windows_program("hammer"), 2, "one trace file, written by 8 processes of 4 threads each"),
    "soak": Step(windows_program("endurance", "soak"), 3, "what thousands of calls leave behind"),
    "threads": Step(windows_program("endurance", "threads"), 2, "8 threads that call every operation at once"),
    "loads": Step(windows_program("endurance", "loads"), 1, "what 1,000 loads leave behind"),
    "faults": Step(windows_program("faults", "faults"), 3, "every operation, with each of its platform calls failing"),
    "load": Step(windows_program("faults", "load"), 1, "loading and unloading, with each platform call failing"),
    "state": Step(windows_program("faults", "state"), 2, "the functions of ZELK_STATE.DLL, with each platform call failing"),
    "fuzz": Step((str(HERE / "fuzz/fuzz.py"),), 2,
                 "the parsers under libFuzzer with sanitizers, on the build machine"),
}


def start(name: str, seed: int, seconds: int, *before: str) -> subprocess.Popen:
    return subprocess.Popen([*before, *STEPS[name].command, str(seed), str(seconds)], stdout=subprocess.PIPE, text=True,
                            start_new_session=True)


def stop(process: subprocess.Popen) -> None:
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGTERM)


def show(name: str, process: subprocess.Popen, begin: float, seed: int) -> bool:
    """Prints the step's figures as they arrive. Returns False if the step found a failure."""
    print(f"{name}: {STEPS[name].about}", flush=True)
    for line in process.stdout:
        figure, tab, value = line.rstrip().partition("\t")
        print(f"  {figure:<60} {value}" if tab else f"  {line.rstrip()}", flush=True)
    if process.wait() != 0:
        print(f"torture: {name} found a failure; to repeat it, run: ./torture {name} --seed {seed}",
              file=sys.stderr)
        return False
    print(f"  {'time':<60} {time.monotonic() - begin:.0f} s", flush=True)
    return True


def arguments() -> argparse.Namespace:
    steps = "\n".join(f"  {name:<10} {step.about}" for name, step in STEPS.items())
    parser = argparse.ArgumentParser(prog="torture", formatter_class=argparse.RawDescriptionHelpFormatter,
                                     description="Tests the library and the engine under failing calls, load and random input.",
                                     epilog=f"steps:\n{steps}")
    parser.add_argument("steps", nargs="*", metavar="STEP", choices=[*STEPS, []], help="the steps to run (default: all)")
    parser.add_argument("--seed", type=int, default=int(datetime.date.today().strftime("%Y%m%d")),
                        help="seed of the random choices (default: today's date)")
    parser.add_argument("--minutes", type=float, default=0,
                        help="time limit for all steps together; fuzz runs beside the others "
                             "(default: none, each step runs every case)")
    return parser.parse_args()


def run_steps(names: list[str], args: argparse.Namespace) -> bool:
    """Stops at the first step that finds a failure, and returns False."""
    parts = sum(STEPS[name].share for name in names)
    for name in names:
        seconds = max(1, round(args.minutes * 60 * STEPS[name].share / parts)) if args.minutes else 0
        begin = time.monotonic()
        with start(name, args.seed, seconds) as process:
            try:
                if not show(name, process, begin, args.seed):
                    return False
            finally:
                stop(process)
    return True


def run_all(names: list[str], args: argparse.Namespace) -> bool:
    """With a time limit, fuzz runs beside the other steps, which spend most of their time waiting. Without one it takes
    hours, so that only its targets are built beside the other steps, and it runs last."""
    others = [name for name in names if name != "fuzz"]
    if "fuzz" not in names or not others:
        return run_steps(names, args)
    if not args.minutes:
        with subprocess.Popen(["nice", HERE / "fuzz/fuzz.py", "--build"]):
            return run_steps([*others, "fuzz"], args)
    begin = time.monotonic()
    with start("fuzz", args.seed, max(1, round(args.minutes * 60 * FUZZ_PART)), "nice") as parsers:
        try:
            return run_steps(others, args) and show("fuzz", parsers, begin, args.seed)
        finally:
            stop(parsers)


def main() -> int:
    args = arguments()
    names = args.steps or list(STEPS)
    print(f"seed {args.seed}", flush=True)
    if subprocess.run([TOP / "scripts/build.sh", "release", "zelk_torture"], check=False).returncode != 0:
        return 1
    return 0 if run_all(names, args) else 1


if __name__ == "__main__":
    sys.exit(main())
