"""Stands in for PowerShell on a host: understands the few forms of script that are sent there, and fails for others."""

import base64
import binascii
import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable
from pathlib import Path
from typing import IO, NamedTuple


class NotUnderstood(Exception):
    """The script is none of the forms."""


class Host(NamedTuple):
    """Where scripts run: drive C is in the prefix, and every program is recorded."""

    prefix: Path
    environment: dict[str, str]
    record: Path
    on_end_of_session: Callable[[Callable[[], None]], None]

    def path(self, windows: str) -> Path:
        """The file of a Windows path, whose case does not matter."""
        drive, *parts = re.split(r"[\\/]+", windows.rstrip("\\/"))
        if drive.upper() != "C:" or ".." in parts:
            raise NotUnderstood(f"'{windows}' is not a full path on drive C:")
        path = self.prefix / "drive_c"
        for part in parts:
            names = [entry for entry in path.iterdir() if entry.name.lower() == part.lower()] if path.is_dir() else []
            path = names[0] if names else path / part
        return path


class Ended(Exception):
    """The script ends with this exit code."""


TEXT = r"'((?:[^'‘’‚‛]|''|‘‘|’’|‚‚|‛‛)*)'"
TEXTS = TEXT + "(?:, " + TEXT + ")*"
WRAPPED = re.compile(r"PowerShell -NoProfile -NonInteractive -ExecutionPolicy Unrestricted -EncodedCommand (\S+)")
OVER_SSH = re.compile(r"chcp\.com 65001 (?:> ?\$null ;|> ?nul 2>&1 &&) (.*)", re.DOTALL)


def texts(source: str) -> list[str]:
    """What stands in single quotes."""
    return [re.sub(r"(['‘’‚‛])\1", r"\1", text) for text in re.findall(TEXT, source)]


def write(line: str) -> None:
    sys.stdout.write(line + "\r\n")


def run_ssh_command(host: Host, command: str) -> int:
    match = OVER_SSH.fullmatch(command)
    if not match:
        raise NotUnderstood(f"the session's command has not the form of Ansible for Windows: {command!r}")
    try:
        run_script(host, unwrapped(match[1]))
    except Ended as end:
        return end.args[0]
    except OSError as error:
        print(f"{error.strerror}: {error.filename}", file=sys.stderr)
        return 1
    return 0


def unwrapped(command: str) -> str:
    match = WRAPPED.fullmatch(command)
    if not match:
        raise NotUnderstood(f"PowerShell is not called as Ansible calls it: {command!r}")
    try:
        return base64.b64decode(match[1], validate=True).decode("utf-16-le")
    except (binascii.Error, UnicodeDecodeError) as error:
        raise NotUnderstood(f"the encoded command cannot be decoded: {error}") from error


def run_script(host: Host, script: str) -> None:
    """Every statement has to be known before the first one runs."""
    script = script.strip()
    steps = []
    state = {"LASTEXITCODE": ""}
    while script:
        for pattern, do in FORMS:
            if match := pattern.match(script):
                break
        else:
            raise NotUnderstood(f"this is none of the known forms: {script!r}")
        steps.append((do, match))
        script = script[match.end() :]
    for do, match in steps:
        do(host, match, state)


def run_program(host: Host, match: re.Match[str], state: dict[str, str]) -> None:
    path, *arguments = texts(match[0])
    for argument in arguments:
        if not argument or '"' in argument or argument.endswith("\\"):
            raise NotUnderstood(f"Windows PowerShell does not pass the argument {argument!r} on as it is")
    if not host.path(path).is_file():
        print(f"& : The term '{path}' is not recognized as the name of a cmdlet, function, script file, or program.",
              file=sys.stderr)
        return
    # Files, because a program that outlives the session would keep a pipe open, and the session with it.
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
        code = run_and_record(host, [path, *arguments], out, errors)
        for file in (out, errors):
            file.seek(0)
        for text in out.read().decode(errors="replace").splitlines():
            write(text)
        if not match["quiet"]:
            sys.stderr.write(errors.read().decode(errors="replace"))
    state["LASTEXITCODE"] = str(code)


def run_and_record(host: Host, line: list[str], out: IO[bytes], errors: IO[bytes]) -> int:
    await_release(host, line)
    begin = time.time()
    process = subprocess.Popen([host.environment["WINELOADER"], *line], stdin=subprocess.DEVNULL, stdout=out,
                               stderr=errors, env=host.environment, cwd=host.prefix / "drive_c" / "users" / "root")
    host.on_end_of_session(process.kill)
    code = process.wait()
    with host.record.open("a") as record:
        record.write(json.dumps({"line": line, "begin": begin, "end": time.time(), "code": code}) + "\n")
    return code


def await_release(host: Host, line: list[str]) -> None:
    """A test holds commands with a text back as long as the file `hold` has that text; with the session they end."""
    hold, session = host.record.parent / "hold", os.getppid()
    while hold.is_file() and hold.read_text().strip() in " ".join(line):
        time.sleep(0.05)
        if os.getppid() != session:
            raise Ended(1)


def show_exit_code(_host: Host, match: re.Match[str], state: dict[str, str]) -> None:
    write(match[1] + state["LASTEXITCODE"])


def exit_with_code(_host: Host, _match: re.Match[str], state: dict[str, str]) -> None:
    raise Ended(int(state["LASTEXITCODE"] or 0))


def show_text(_host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    write(texts(match[0])[0])


def show_hashes(host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    for name in texts(match[1]):
        file = host.path(name)
        write(hashlib.sha256(file.read_bytes()).digest().hex("-").upper() if file.is_file() else "absent")


def make_directory(host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    host.path(texts(match[1])[0]).mkdir(parents=True, exist_ok=True)


def move(host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    source, target = texts(match[0])
    host.path(source).replace(host.path(target))


def remove(host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    for name in texts(match["files"]):
        host.path(name).unlink(missing_ok=True)


def run_wrapped(host: Host, match: re.Match[str], _state: dict[str, str]) -> None:
    run_script(host, unwrapped(match[1]))


END = r"(?:; ?|\s*$)"
HASHES = (
    r"\$sha = New-Object Security\.Cryptography\.SHA256CryptoServiceProvider; foreach \(\$file in ("
    + TEXTS + r")\) \{ if \(\[IO\.File\]::Exists\(\$file\)\) "
    r"\{ \[BitConverter\]::ToString\(\$sha\.ComputeHash\(\[IO\.File\]::ReadAllBytes\(\$file\)\)\) \} "
    r"else \{ 'absent' \} \}"
)
ACCESS = r"D:P\(A;OICI;FA;;;SY\)\(A;OICI;FA;;;BA\)\(A;OICI;0x1200a9;;;BU\)"
DIRECTORY = (
    r"\$acl = New-Object Security\.AccessControl\.DirectorySecurity; \$acl\.SetSecurityDescriptorSddlForm\('" + ACCESS
    + r"'\); \$null = \[IO\.Directory\]::CreateDirectory\((" + TEXT + r"), \$acl\)"
)
Step = Callable[[Host, re.Match[str], dict[str, str]], None]
FORMS: list[tuple[re.Pattern[str], Step]] = [
    (re.compile(form + END), do)
    for form, do in (
        (r"& " + TEXT + r"(?: " + TEXT + r")*(?P<quiet> 2>\$null)?", run_program),
        (r'"([^"$`]*)\$LASTEXITCODE"', show_exit_code),
        (r"exit \$LASTEXITCODE", exit_with_code),
        (r"\$ErrorActionPreference = 'Stop'", lambda _host, _match, _state: None),
        (HASHES, show_hashes),
        (DIRECTORY, make_directory),
        (r"Move-Item -LiteralPath " + TEXT + " -Destination " + TEXT + " -Force", move),
        (r"Remove-Item -LiteralPath (?P<files>" + TEXTS + ") -Force -ErrorAction SilentlyContinue", remove),
        (r"(?:Write-Output )?" + TEXT, show_text),
        (WRAPPED.pattern, run_wrapped),
    )
]
