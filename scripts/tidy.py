#!/usr/bin/env python3
"""tidy.py FOLDER ...: runs clang-tidy on the sources of these folders with the options that the tree build/clang has for
them. Exit code 1 when it finds something.

Most of the time goes into the headers of other projects. So sources of one folder are analysed together, as one file that
includes them. Those that do not compile together (two of them use a name for different things) are parted.
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
TOGETHER = 48
PLACE = re.compile(r"^(/[^:]+):\d+:\d+: ", re.M)
ERROR = re.compile(r"^(?=\S+: (?:fatal )?error: )", re.M)


def options_of_sources():
    """The compiler's options for every source: what stands before the output in its command. A name of another source
    in the same file would only seem to be shadowed; the compiler looks at each alone."""
    options = {}
    for entry in json.loads((TREE / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"].split(" -o ")[0])
        first = next(i for i, word in enumerate(words) if word.startswith("-"))
        options[entry["file"]] = [*words[first:], "-Wno-error", "-Wno-shadow"]
    return options


class Batch:
    """Sources that are compiled with the same options."""

    def __init__(self, name, sources, options):
        self.name, self.sources, self.options = name, sources, options
        self.file = TREE / "tidy" / f"{name}.cpp"
        self.file.write_text("".join(f'#include "{source}"\n' for source in sources))

    def complaints(self):
        """What the compiler says of these sources as one file: nothing if they go together."""
        if len(self.sources) == 1:
            return []
        command = ["clang++-16", *self.options, "-w", "-fsyntax-only", "-ferror-limit=0", "-fno-caret-diagnostics",
                   self.file]
        run = subprocess.run(command, cwd=TREE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
        return ERROR.split(run.stderr)[1:] if run.returncode != 0 else []

    def misfits(self, complaints):
        """Sources without which the others may go together. An error and its notes name those that share a name."""
        misfits = set()
        for complaint in complaints:
            named = [path for path in PLACE.findall(complaint) if path in self.sources]
            if named and not misfits.intersection(named):
                misfits.add(named[0])
        return misfits or set(self.sources[1::2])

    def findings(self):
        command = ["clang-tidy-16", "--quiet", "--warnings-as-errors=*", "--checks=-bugprone-suspicious-include",
                   f"--config-file={TOP / '.clang-tidy'}", self.file, "--", *self.options]
        run = subprocess.run(command, cwd=TREE, capture_output=True, text=True, check=False)
        if run.returncode != 0 and not run.stdout:
            return f"{self.name}: clang-tidy ended with {run.returncode}\n{run.stderr}"
        return run.stdout


def go_together(batch):
    """The batch as far as it compiles, and the sources that are left over."""
    left = []
    while complaints := batch.complaints():
        misfits = batch.misfits(complaints)
        left += sorted(misfits)
        batch = Batch(batch.name, [source for source in batch.sources if source not in misfits], batch.options)
    return batch, left


def batches(name, sources, options, pool):
    """What is left over by all batches of the same options makes others."""
    count = -(-len(sources) // TOGETHER)
    planned = [Batch(f"{name}-{i}", sources[i::count], options) for i in range(count)]
    left = []
    for batch, more in pool.map(go_together, planned):
        yield batch
        left += more
    if left:
        yield from batches(f"{name}-rest", left, options, pool)


def all_batches(folders, pool):
    options = options_of_sources()
    for folder in folders:
        alike = {}
        for source in sorted(options):
            if source.startswith(f"{TOP / folder}/") and source.endswith(".cpp"):
                alike.setdefault(tuple(options[source]), []).append(source)
        for group, (key, sources) in enumerate(alike.items()):
            yield from batches(f"{folder.replace('/', '-')}{group}", sources, list(key), pool)


def main(folders):
    (TREE / "tidy").mkdir(exist_ok=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        work = list(all_batches(folders, pool))
        if not work:
            sys.exit("tidy: build/clang compiles nothing of these folders")
        work.sort(key=lambda batch: len(batch.sources), reverse=True) # no long one is the last
        found = "".join(pool.map(Batch.findings, work))
    # A header's findings come once from every batch.
    found = "".join(dict.fromkeys(re.split(r"(?=^/[^\n]*: (?:warning|error): )", found, flags=re.M)))
    print(found.replace(f"{TOP}/", ""), end="")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
