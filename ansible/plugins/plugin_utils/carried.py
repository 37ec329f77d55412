"""The files that the collection carries to machines: made when the collection is built, and held against their sums."""
from __future__ import annotations

import hashlib
import os

from ansible_collections.velmor.zelk.plugins.plugin_utils.scripts import LIBRARY, PROGRAM
from ansible_collections.velmor.zelk.plugins.plugin_utils.target import Refused

FOLDER = os.path.normpath(os.path.join(os.path.dirname(__file__), "..", "..", "bin"))
SUMS = "SHA256SUMS"
# The library first: a new program never stands beside an old library for longer than the moment between two moves.
FILES = (LIBRARY, PROGRAM)


def sum_of(path: str) -> str:
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def read_sums(folder: str = FOLDER) -> dict[str, str]:
    """The SHA-256 sum of each carried file.

    @raises Refused where one is missing or is not what was built"""
    try:
        with open(os.path.join(folder, SUMS), encoding="ascii") as file:
            sums = {name: digest for digest, name in (line.split() for line in file if line.strip())}
        for name in FILES:
            if sum_of(os.path.join(folder, name)) != sums[name]:
                raise Refused(f"{name} of this collection is damaged: it has another checksum than it was built with")
    except (OSError, KeyError, ValueError) as error:
        raise Refused("this collection carries no zelkctl; install it from the archive that \"ansible-galaxy collection "
                      f"build\" has made: {error}") from error
    return {name: sums[name] for name in FILES}
