#!/usr/bin/env python3
"""apply.py SEED SECONDS: applies changes to a kernel's network and a registry while commands are refused, are killed, hang,
are late or print without end, writes are refused, and another program changes the machine as well; then moves from one
random state to the next. Without a time limit it also kills the processes of a change at every point."""

import os
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent.parent
PROGRAM = TOP / "build/release/tests/zelk_nm_apply_tests/zelk_nm_apply_tests.exe"
CASES = ["Apply.IsWhollyDoneOrUndoneOrSaysSoWhateverStepFails", "Apply.ReachesWhateverIsWantedAndTheWayBack"]
SKIPPED = 77


def main(seed: int, seconds: int) -> int:
    if subprocess.run([TOP / "scripts/build.sh", "release", "zelk_nm_apply_tests"], check=False).returncode != 0:
        return 1
    cases = CASES if seconds else [*CASES, "Interrupted.*"]
    environment = {**os.environ, "ZELK_TORTURE": f"{seed} {max(1, seconds // 2) if seconds else 0}",
                   "ZELK_WINE_TIMEOUT": "36000"}
    command = [TOP / "tests/apply/in-namespace.sh", PROGRAM, "--gtest_filter=" + ":".join(cases)]
    done = subprocess.run(command, env=environment, cwd=PROGRAM.parent, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, errors="replace", check=False)
    if done.returncode == SKIPPED:
        print(f"skipped\t{(done.stdout + done.stderr).strip()}")
        return 0
    for line in done.stdout.splitlines():
        if line.startswith("figure: "):
            print(line.removeprefix("figure: "), flush=True)
    if done.returncode != 0:
        print(done.stdout[-6000:] + done.stderr[-2000:], file=sys.stderr)
    return done.returncode


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1]), int(sys.argv[2])))
