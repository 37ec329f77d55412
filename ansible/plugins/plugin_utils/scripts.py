"""The PowerShell that runs on a target, and what it answers.

Every script is one line and ends by writing a mark, so that a complete answer can be told from one that was cut off. The
exit code of zelkctl travels in the mark: remote PowerShell reports exit codes differently over each kind of connection.
"""
from __future__ import annotations

import json
import re
from dataclasses import dataclass
from typing import Any, Optional, Sequence

PROGRAM = "zelkctl.exe"
LIBRARY = "ZELK_NM.DLL"
DONE = "zelk: done"
NOTHING = f"'{DONE}'"
# What cmd.exe takes at most is 8191 characters; a script becomes 8/3 times as long before it gets there.
LONGEST_SCRIPT = 2800

_STOP = "$ErrorActionPreference = 'Stop'; "
_EXIT_MARK = re.compile(r"^zelk: exit code (-?[0-9]*)\s*$", re.MULTILINE)
# For SYSTEM and administrators everything, for users reading and running.
_ACCESS = "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"


class CutOff(Exception):
    """An answer without its mark: the connection or the script ended early."""


class NoAnswer(Exception):
    """The script ran, but zelkctl wrote nothing that can be understood."""


def quote(text: str) -> str:
    """A text as PowerShell takes it literally. Typographic quotation marks count as plain ones there."""
    return "'" + re.sub("(['\u2018\u2019\u201a\u201b])", r"\1\1", text) + "'"


def join(directory: str, name: str) -> str:
    return directory.rstrip("\\/") + "\\" + name


def run(directory: str, arguments: Sequence[str], remove: Optional[str] = None) -> str:
    """Runs zelkctl; `remove` is a file that is removed afterwards. Its error output says nothing that JSON does not."""
    words = [join(directory, PROGRAM), *arguments, "--json", "--ascii"]
    script = "& " + " ".join(quote(word) for word in words) + ' 2>$null; "zelk: exit code $LASTEXITCODE"'
    if remove:
        script += f"; Remove-Item -LiteralPath {quote(remove)} -Force -ErrorAction SilentlyContinue"
    return script


def hashes(files: Sequence[str]) -> str:
    listed = ", ".join(quote(file) for file in files)
    return (_STOP + "$sha = New-Object Security.Cryptography.SHA256CryptoServiceProvider; "
            f"foreach ($file in {listed}) {{ if ([IO.File]::Exists($file)) "
            "{ [BitConverter]::ToString($sha.ComputeHash([IO.File]::ReadAllBytes($file))) } else { 'absent' } }; "
            f"'{DONE}'")


def make_directory(directory: str) -> str:
    """Makes a directory that only administrators can write to. One that is there stays as it is."""
    return (_STOP + "$acl = New-Object Security.AccessControl.DirectorySecurity; "
            f"$acl.SetSecurityDescriptorSddlForm('{_ACCESS}'); "
            f"$null = [IO.Directory]::CreateDirectory({quote(directory)}, $acl); '{DONE}'")


def move(files: Sequence[str], ending: str) -> str:
    """Puts FILE + ending in the place of each FILE."""
    moves = "".join(f"Move-Item -LiteralPath {quote(file + ending)} -Destination {quote(file)} -Force; "
                    for file in files)
    return _STOP + moves + f"'{DONE}'"


def remove(files: Sequence[str]) -> str:
    removals = "".join(f"Remove-Item -LiteralPath {quote(file)} -Force -ErrorAction SilentlyContinue; " for file in files)
    return f"{removals}'{DONE}'"


def lines_of(output: str, errors: str) -> list[str]:
    """What a script wrote before its mark."""
    lines = [line.rstrip() for line in output.splitlines() if line.strip()]
    if not lines or lines[-1] != DONE:
        raise CutOff(errors.strip() or output.strip() or "there was no answer")
    return lines[:-1]


@dataclass
class Answer:
    """What zelkctl answered: its exit code, and either a result or an error."""

    code: int
    result: Any
    error: Optional[dict[str, Any]]

    @property
    def message(self) -> str:
        """What went wrong, with the hint that the tool gives."""
        if not self.error:
            return ""
        where = self.error.get("operation")
        text = (f"{where} failed: " if where else "") + str(self.error.get("reason") or "it gave no reason")
        hint = self.error.get("hint")
        return f"{text}\n{hint}" if hint else text


def answer_of(output: str, errors: str) -> Answer:
    marks = list(_EXIT_MARK.finditer(output))
    if not marks:
        raise CutOff(errors.strip() or "the answer is incomplete")
    code, text = marks[-1].group(1), output[:marks[-1].start()]
    try:
        envelope = json.loads(text[text.index("{"):])
    except ValueError:
        ended = f"zelkctl ended with exit code {code} and no answer" if code else "zelkctl could not be started"
        raise NoAnswer(": ".join(filter(None, (ended, errors.strip() or text.strip())))) from None
    return Answer(int(code or 0), envelope.get("result"), envelope.get("error"))
