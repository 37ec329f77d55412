#!/usr/bin/env python3
"""Runs the steps of ./torture and prints their figures.

A step is a program. It is called with the seed of its random choices and the seconds that it may take (0: it does all of
its work), prints each figure as a line "name<TAB>value" on standard output, says on standard error what should not be,
and ends with another exit code than 0 where there is such a thing.
"""

import argparse
import datetime
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOP = HERE.parent.parent


@dataclass(frozen=True)
class Step:
    command: tuple[str, ...]
    share: int  # of the minutes, in parts
    about: str


def windows_program(name: str, *arguments: str) -> tuple[str, ...]:
    return (str(HERE / "in-prefix.sh"), str(TOP / "build/release/tests/torture" / f"zelk_torture_{name}.exe"), *arguments)


STEPS: dict[str, Step] = {
    "apply": Step((str(HERE / "apply.py"),), 5, "changes whose steps fail in every way, and random walks of states"),
    "hammer": Step(windows_program("hammer"), 2, "the trace under 8 processes of 4 threads"),
    "soak": Step(windows_program("endurance", "soak"), 3, "what thousands of calls leave behind"),
    "threads": Step(windows_program("endurance", "threads"), 2, "8 threads that use everything at once"),
    "loads": Step(windows_program("endurance", "loads"), 1, "what a thousand loads leave behind"),
    "faults": Step(windows_program("faults", "faults"), 3, "every operation, while the platform fails it"),
    "load": Step(windows_program("faults", "load"), 1, "loading and unloading, while the platform fails it"),
    "state": Step(windows_program("faults", "state"), 2, "the functions of ZELK_STATE.DLL, while the platform fails them"),
    "fuzz": Step((str(HERE / "fuzz/fuzz.py"),), 2,
                 "texts that libFuzzer makes up for the parsers, with sanitizers, on the machine that builds"),
}


def run_step(step: Step, seed: int, seconds: int) -> bool:
    """Prints the step's figures as they come. False when something should not be."""
    with subprocess.Popen([*step.command, str(seed), str(seconds)], stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            name, tab, value = line.rstrip().partition("\t")
            print(f"  {name:<60} {value}" if tab else f"  {line.rstrip()}", flush=True)
    return process.returncode == 0


def arguments() -> argparse.Namespace:
    steps = "\n".join(f"  {name:<10} {step.about}" for name, step in STEPS.items())
    parser = argparse.ArgumentParser(prog="torture", formatter_class=argparse.RawDescriptionHelpFormatter,
                                     description="Tries what the library and the engine survive.",
                                     epilog=f"steps:\n{steps}")
    parser.add_argument("steps", nargs="*", metavar="STEP", choices=[*STEPS, []], help="the steps to run (all)")
    parser.add_argument("--seed", type=int, default=int(datetime.date.today().strftime("%Y%m%d")),
                        help="of the random choices (today's date)")
    parser.add_argument("--minutes", type=float, default=0, help="shared among the steps (each does all of its work)")
    return parser.parse_args()


def run_steps(names: list[str], args: argparse.Namespace) -> bool:
    """False after the first one that finds something."""
    parts = sum(STEPS[name].share for name in names)
    for name in names:
        print(f"{name}: {STEPS[name].about}", flush=True)
        begin = time.monotonic()
        seconds = max(1, round(args.minutes * 60 * STEPS[name].share / parts)) if args.minutes else 0
        if not run_step(STEPS[name], args.seed, seconds):
            print(f"torture: {name} found what should not be; repeat it with: ./torture {name} --seed {args.seed}",
                  file=sys.stderr)
            return False
        print(f"  {'time':<60} {time.monotonic() - begin:.0f} s", flush=True)
    return True


def main() -> int:
    args = arguments()
    names = args.steps or list(STEPS)
    print(f"seed {args.seed}", flush=True)
    if subprocess.run([TOP / "scripts/build.sh", "release", "zelk_torture"], check=False).returncode != 0:
        return 1
    if "fuzz" not in names:
        return 0 if run_steps(names, args) else 1
    # Its programs take minutes to compile. They do so while the steps before it, which mostly wait, run.
    with subprocess.Popen(["nice", HERE / "fuzz/fuzz.py", "--build"]):
        return 0 if run_steps(names, args) else 1


if __name__ == "__main__":
    sys.exit(main())
