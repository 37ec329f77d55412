#!/usr/bin/env -S python3 -B
"""run.py [--table] HOSTS FOLDER [SCENARIO ...]: has Ansible change a fleet that is made for it. Prints a line for each
scenario, or for those named, and with --table how long plays take. The first failure ends it with exit code 1; 77 says
that the machine does not allow such hosts."""

import signal
import subprocess
import sys
import time
from pathlib import Path

from fleet import Fleet
from scenarios import SCENARIOS
from timing import print_table

SKIPPED = 77


def run_scenarios(fleet: Fleet, names: list[str]) -> None:
    for scenario in SCENARIOS:
        if names and scenario.__name__ not in names and scenario is not SCENARIOS[0]:  # it installs zelkctl
            continue
        begin = time.monotonic()
        scenario(fleet)
        print(f"{scenario.__name__.replace('_', ' '):60} {time.monotonic() - begin:5.1f} s", flush=True)


def main() -> int:
    arguments = [argument for argument in sys.argv[1:] if argument != "--table"]
    count, folder, names = int(arguments[0]), Path(arguments[1]), arguments[2:]
    try:
        with Fleet(folder, count) as fleet:
            fleet.install_collection()
            run_scenarios(fleet, names)
            if "--table" in sys.argv:
                print_table(fleet)
    except AssertionError as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        return 1
    except subprocess.CalledProcessError as failure:
        if failure.returncode == SKIPPED:
            return SKIPPED
        print(f"FAILED: {failure}\n{failure.stdout or ''}{failure.stderr or ''}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    sys.exit(main())
