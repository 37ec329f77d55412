#!/usr/bin/env python3
"""tidy.py FOLDER ...: runs clang-tidy on the sources of these folders with the options that the tree build/clang has for
them. Exit code 1 when it finds something.

Most of the time goes into the headers of other projects. So sources of one folder are analysed together, as one file that
includes them, a dozen at a time. Those that do not compile together (two of them use a name for different things) are
parted until they do.
"""

import json
import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
TREE = TOP / "build/clang"
TOGETHER = 32


def options_of_sources():
    """The compiler's options for every source: what stands before the output in its command."""
    options = {}
    for entry in json.loads((TREE / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"].split(" -o ")[0])
        first = next(i for i, word in enumerate(words) if word.startswith("-"))
        options[entry["file"]] = [*words[first:], "-Wno-error"]
    return options


class Batch:
    """Sources that are compiled with the same options."""

    def __init__(self, name, sources, options):
        self.name, self.sources, self.options = name, sources, options
        self.file = TREE / "tidy" / f"{name}.cpp"
        self.file.write_text("".join(f'#include "{source}"\n' for source in sources))

    def compiles(self):
        command = ["clang++-16", *self.options, "-w", "-fsyntax-only", self.file]
        return subprocess.run(command, cwd=TREE, capture_output=True, check=False).returncode == 0

    def parts(self):
        """Neighbours are the likeliest to share a name, so every second source goes into the other part."""
        return [Batch(f"{self.name}.{i}", self.sources[i::2], self.options) for i in (0, 1)]

    def findings(self):
        if len(self.sources) > 1 and not self.compiles():
            return "".join(part.findings() for part in self.parts())
        command = ["clang-tidy-16", "--quiet", "--warnings-as-errors=*", "--checks=-bugprone-suspicious-include",
                   f"--config-file={TOP / '.clang-tidy'}", self.file, "--", *self.options]
        run = subprocess.run(command, cwd=TREE, capture_output=True, text=True, check=False)
        if run.returncode != 0 and not run.stdout:
            return f"{self.name}: clang-tidy ended with {run.returncode}\n{run.stderr}"
        return run.stdout


def batches(folder, options):
    alike = {}
    for source in sorted(options):
        if source.startswith(f"{TOP / folder}/") and source.endswith(".cpp"):
            alike.setdefault(tuple(options[source]), []).append(source)
    for group, (key, sources) in enumerate(alike.items()):
        count = -(-len(sources) // TOGETHER)
        for i in range(count):
            yield Batch(f"{folder.replace('/', '-')}{group}-{i}", sources[i::count], list(key))


def main(folders):
    (TREE / "tidy").mkdir(exist_ok=True)
    options = options_of_sources()
    work = [batch for folder in folders for batch in batches(folder, options)]
    if not work:
        sys.exit("tidy: build/clang compiles nothing of these folders")
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        found = "".join(pool.map(Batch.findings, work))
    # A header's findings come once from every batch.
    found = "".join(dict.fromkeys(re.split(r"(?=^/[^\n]*: (?:warning|error): )", found, flags=re.M)))
    print(found.replace(f"{TOP}/", ""), end="")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
