"""A fleet of hosts that hosts.sh makes: what their kernels and registries hold, and plays that are run on them."""

import json
import os
import re
import signal
import subprocess
import time
from collections.abc import Callable
from contextlib import suppress
from dataclasses import dataclass
from pathlib import Path
from typing import Any

HERE = Path(__file__).resolve().parent
TOP = HERE.parent.parent
TREE = Path(os.environ.get("ZELK_BUILD_TREE", TOP / "build" / "release"))
PATIENCE = 60.0  # seconds for what has to happen by itself
INTERFACES = r"HKLM\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters\Interfaces"
LINKS = {"2": "lan0", "3": "lan1"}
ZELKCTL = r"C:\Program Files\ZELK\zelkctl.exe"
Json = dict[str, Any]


def output(*line: str | Path) -> str:
    return subprocess.run(line, check=True, capture_output=True, text=True, stdin=subprocess.DEVNULL).stdout


def wait_until(what: str, condition: Callable[[], bool], patience: float = PATIENCE) -> None:
    end = time.monotonic() + patience
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"{patience:.0f} s were not enough until {what}")
        time.sleep(0.1)


class Host:
    """One host, seen from inside, past everything that zelkctl and Ansible say."""

    def __init__(self, fleet: "Fleet", number: int) -> None:
        self.fleet = fleet
        self.name = f"host{number}"
        self.number = 10 + number  # the last number of its addresses
        self.folder = fleet.folder / "hosts" / self.name

    def run(self, *line: str | Path) -> str:
        return output(HERE / "hosts.sh", "in", self.name, self.fleet.folder, *line)

    def wine(self, *line: str) -> str:
        return self.run(TOP / "scripts" / "wine-run.sh", *line)

    def addresses(self, link: str) -> list[str]:
        links = json.loads(self.run("ip", "-json", "-4", "addr", "show", "dev", link))
        return [f"{info['local']}/{info['prefixlen']}" for info in links[0].get("addr_info", [])]

    def kernel(self) -> str:
        return self.run("sh", "-c", "ip -4 -o addr | sort; ip -4 route | sort; cat /etc/resolv.conf")

    def registry(self, link: str) -> dict[str, str]:
        """What Windows would configure the adapter by after a restart."""
        return self.registries()[link]

    def registries(self) -> dict[str, dict[str, str]]:
        # Adapters that another test has made up can be left in the prefix that a host is copied from.
        text = self.wine("reg", "query", INTERFACES, "/s")
        found = re.findall(r"\\{0000000([23])-0000-(.*?)(?:\n\r?\n|\Z)", text, re.DOTALL)
        return {LINKS[number]: dict(re.findall(r"^    (\w+)    REG_\w+    (.*?)\r?$", values, re.MULTILINE))
                for number, values in found}

    def standing(self) -> str:
        return f"{self.kernel()} {self.registries()}"

    def pending(self) -> list[Json]:
        """The changes that wait to be confirmed or are at work."""
        answer = self.wine(ZELKCTL, "pending", "--json")
        return [change for change in json.loads(answer)["result"] if change["phase"] != "restored"]

    def runs(self, argument: str = "") -> list[Json]:
        """The runs of zelkctl, or those with an argument."""
        record = self.folder / "runs.jsonl"
        runs = [json.loads(line) for line in record.read_text().splitlines()] if record.exists() else []
        return [run for run in runs if not argument or argument in run["line"]]

    def set_environment(self, **variables: str) -> None:
        (self.folder / "environment").write_text("".join(f"{name}={value}\n" for name, value in variables.items()))

    def hold(self, text: str) -> None:
        """Commands with that text wait; none do with an empty text."""
        if text:
            (self.folder / "hold").write_text(text)
        else:
            (self.folder / "hold").unlink()


@dataclass
class Played:
    """What a play has reported."""

    code: int
    seconds: float
    results: list[Json]
    text: str

    def of(self, host: Host | str, task: str) -> Json:
        name = host if isinstance(host, str) else host.name
        found = [entry for entry in self.results if entry["host"] == name and entry["task"] == task]
        if len(found) != 1:
            raise AssertionError(f"{len(found)} results of '{task}' on {name}:\n{self.text}")
        return found[0]


class Play:
    """A running ansible-playbook."""

    def __init__(self, fleet: "Fleet", playbook: list[Json], arguments: tuple[str, ...]) -> None:
        self.fleet = fleet
        self.results = fleet.folder / "results.jsonl"
        self.results.write_text("")
        file = fleet.folder / "playbook.yml"
        file.write_text(json.dumps(playbook))
        line = [fleet.folder / "controller", "ansible-playbook", *arguments, file]
        variables = os.environ | {"RECORD_RESULTS": str(self.results), "ANSIBLE_CALLBACKS_ENABLED": "record",
                                  "ANSIBLE_CALLBACK_PLUGINS": str(HERE / "callbacks")}
        self.begin = time.monotonic()
        self.log = fleet.folder / "play.log"
        with self.log.open("wb") as log:
            self.process = subprocess.Popen(line, stdin=subprocess.DEVNULL, stdout=log, stderr=log, env=variables)

    def end(self) -> Played:
        code = self.process.wait(timeout=600)
        seconds = time.monotonic() - self.begin
        results = [json.loads(line) for line in self.results.read_text().splitlines()]
        return Played(code, seconds, results, self.log.read_text())

    def kill(self) -> None:
        """With all its children, as when the controller loses its power: nothing else runs in its namespace."""
        while pids := output("ip", "netns", "pids", self.fleet.controller).split():
            for pid in pids:
                with suppress(ProcessLookupError):
                    os.kill(int(pid), signal.SIGKILL)
        self.process.wait()


class Fleet:
    """Hosts that exist as long as the object is entered."""

    def __init__(self, folder: Path, count: int) -> None:
        self.folder = folder.resolve()
        self.hosts = [Host(self, number) for number in range(1, count + 1)]
        self.controller = ""

    def __enter__(self) -> "Fleet":
        subprocess.run([HERE / "hosts.sh", "up", str(len(self.hosts)), self.folder], check=True)
        self.controller = (self.folder / "controller").read_text().split("netns exec ")[1].split()[0]
        return self

    def __exit__(self, *_: object) -> None:
        subprocess.run([HERE / "hosts.sh", "down", self.folder], check=True)

    def install_collection(self) -> None:
        """From the archive, as a user does."""
        archives = list((TREE / "collection").glob("velmor-zelk-*.tar.gz"))
        if len(archives) != 1:
            raise AssertionError(f"{TREE / 'collection'} holds {len(archives)} archives of the collection")
        output(self.folder / "controller", "ansible-galaxy", "collection", "install", "--offline", archives[0])

    def start(self, tasks: list[Json], *arguments: str, **keywords: Any) -> Play:
        play = {"hosts": "zelk_hosts", "gather_facts": False, "tasks": tasks} | keywords
        return Play(self, [play], (f"--forks={len(self.hosts)}", *arguments))

    def play(self, tasks: list[Json], *arguments: str, **keywords: Any) -> Played:
        return self.start(tasks, *arguments, **keywords).end()
