#!/usr/bin/env -S python3 -B
"""session.py HOST_FOLDER: what a session with a host runs, in place of the shell that OpenSSH for Windows starts.

The command is SSH_ORIGINAL_COMMAND, as Ansible wraps it for PowerShell, or the SFTP subsystem. Anything else fails."""

import ctypes
import os
import signal
import sys
from collections.abc import Callable
from pathlib import Path

import powershell

HERE = Path(__file__).resolve().parent
TOP = HERE.parent.parent
WINE_HOME = os.environ.get("ZELK_WINE_HOME", "/usr/lib/wine")


def environment(prefix: Path) -> dict[str, str]:
    """The variables of the host's programs, with those that a test has added."""
    commands = "netsh.exe,route.exe,ipconfig.exe=n"
    variables = {
        "PATH": "/usr/sbin:/usr/bin:/sbin:/bin",
        "HOME": os.environ.get("HOME", "/root"),
        "LC_ALL": "C.UTF-8",
        "WINEPREFIX": str(prefix),
        "WINEDEBUG": "-all",
        "WINEARCH": "win64",
        "WINELOADER": f"{WINE_HOME}/wine64",
        "WINESERVER": f"{WINE_HOME}/wineserver64",
        "WINEDLLOVERRIDES": f"mscoree,mshtml=;winemenubuilder.exe=d;{commands}",
        "ZELK_UNIX_FOLDER": str(prefix),
    }
    for line in (prefix.parent / "environment").read_text().splitlines():
        name, _, value = line.partition("=")
        variables[name] = value
    return variables


def on_end_of_session(end: Callable[[], None]) -> None:
    """Windows ends what a session has started together with the session."""

    def end_all(_signal: int, _frame: object) -> None:
        end()
        os._exit(1)

    parent_death_signal = 1
    signal.signal(signal.SIGHUP, end_all)
    ctypes.CDLL(None).prctl(parent_death_signal, signal.SIGHUP)


def main() -> int:
    prefix = Path(sys.argv[1]) / "prefix"
    command = os.environ.get("SSH_ORIGINAL_COMMAND", "")
    if command == "sftp":
        os.execv(HERE / "sftp.sh", ["sftp.sh", str(prefix)])
    variables = environment(prefix)
    keep = variables.get("SESSION_ENDS", "keep") == "keep"
    host = powershell.Host(prefix, variables, prefix.parent / "runs.jsonl",
                           (lambda _end: None) if keep else on_end_of_session)
    try:
        return powershell.run_ssh_command(host, command)
    except powershell.NotUnderstood as fault:
        print(f"powershell: {fault}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
