"""A machine that exists only in memory, with the scripts that the collection runs on it, and a clock that only waiting moves."""

import hashlib
import importlib
import json
import re
from types import SimpleNamespace

from ansible.errors import AnsibleConnectionFailure

importlib.import_module("ansible.plugins.loader")  # from here on collections can be imported
HOME = "192.0.2.11"
TEXT = r"'((?:[^']|'')*)'"


class Clock:
    def __init__(self):
        self.now = 1000.0

    def monotonic(self):
        return self.now

    def sleep(self, seconds):
        self.now += seconds


class Machine:
    """Remembers every command. `reachable` are its addresses; `moves_to` is what a change makes of them."""

    def __init__(self):
        self.clock = Clock()
        self.reachable = {HOME}
        self.moves_to = None
        self.breaks = False          # the connection, in the middle of a change
        self.state = None
        self.changes = []
        self.files = {}
        self.commands = []
        self.answers = {}            # a verb: what it answers instead, (exit code, member, value)
        self.damage = ""             # a file that arrives damaged
        self._restore_at = {}

    # What the connection asks for

    def execute(self, address, script):
        self.look(address)
        if script.startswith("& "):
            command, _, rest = script.partition(" 2>$null; ")
            code, output = self.zelkctl(re.findall(TEXT, command)[1:])
            for file in re.findall(TEXT, rest):
                self.files.pop(file, None)
            return f"{output}\r\nzelk: exit code {code}\r\n"
        lines = []
        if "ComputeHash" in script:
            names = script[script.index("foreach"):script.index(")")]
            lines = [self.sum(name) for name in re.findall(TEXT, names)]
        for source, target in re.findall(f"Move-Item -LiteralPath {TEXT} -Destination {TEXT}", script):
            self.files[target] = self.files.pop(source)
        for file in re.findall(f"Remove-Item -LiteralPath {TEXT}", script):
            self.files.pop(file, None)
        return "\r\n".join([*lines, "zelk: done\r\n"])

    def look(self, address):
        """Does what is due by now."""
        for entry in self.changes:
            if entry["phase"] == "waiting" and self.clock.now >= self._restore_at.get(entry["id"], float("inf")):
                entry.update(phase="restored", watched=False, cause="notConfirmed", status="The previous state was restored.")
                self.state, self.reachable = None, {HOME}
        if address not in self.reachable:
            raise AnsibleConnectionFailure(f"{address} does not answer")

    def sum(self, name):
        if name not in self.files:
            return "absent"
        return hashlib.sha256(self.files[name]).digest().hex("-").upper()

    def put(self, local, remote, address):
        self.look(address)
        with open(local, "rb") as file:
            self.files[remote] = file.read() + (b"?" if self.damage and self.damage in remote else b"")

    # The tool

    def zelkctl(self, words):
        verb, *arguments = words[:-2]
        assert words[-2:] == ["--json", "--ascii"]
        self.commands.append([verb, *arguments])
        if verb in self.answers:
            code, member, value = self.answers[verb]
        else:
            code, member, value = getattr(self, verb)(*arguments)
        if verb == "apply" and self.breaks and "--check" not in arguments:
            self.breaks = False
            raise AnsibleConnectionFailure("the connection broke")
        return code, json.dumps({"schemaVersion": 2, "command": verb, member: value})

    def apply(self, file, *arguments):
        wanted = json.loads(self.files[file])
        differs = wanted != self.state
        items = [{"adapter": "lan0", "path": "ipv4.addresses", "before": ["a"], "after": ["b"]}] if differs else []
        if "--check" in arguments:
            return 10 if differs else 0, "result", {"differs": differs, "items": items, "steps": [], "notes": [],
                                                    "pending": self.changes}
        if differs and any(entry["phase"] == "waiting" for entry in self.changes):
            return 7, "error", error("a change waits to be confirmed; nothing was changed", 7)
        own = None
        if differs:
            self.state = wanted
            own = self.wait(arguments) if "--confirm-within" in arguments else None
            self.reachable = self.moves_to if self.moves_to is not None else self.reachable
        return 0, "result", {"changed": differs, "outcome": "changed" if differs else "unchanged", "items": items,
                             "steps": [], "notes": [], "pendingChange": own, "pending": self.changes}

    def pending(self):
        return 0, "result", self.changes

    def wait(self, arguments):
        within, label = (arguments[arguments.index(name) + 1] for name in ("--confirm-within", "--label"))
        return self.add_pending(label, "1111111111111111", int(within))

    def add_pending(self, label, change, within=60, user="station\\admin"):
        self.changes.append({"id": change, "phase": "waiting", "label": label, "user": user, "since": "T0", "watched": True,
                             "status": "It is done and waits."})
        self._restore_at[change] = self.clock.now + within
        return change

    def confirm(self, change):
        before = len(self.changes)
        self.changes = [entry for entry in self.changes if entry["id"] != change or entry["phase"] != "waiting"]
        if len(self.changes) == before:
            return 1, "error", error("nothing is pending", 1)
        return 0, "result", {"confirmed": [change]}

    def restore(self, change, _yes):
        self.state = None
        self.changes = [entry for entry in self.changes if entry["id"] != change]
        return 0, "result", {"restored": True, "changes": [change], "undo": []}

    def show(self):
        return 0, "result", {"adapters": [{"name": "сеть"}]}


def error(reason, code, hint=None, operation=None):
    return {"kind": "failed", "exitCode": code, "operation": operation, "adapter": None, "reason": reason, "hint": hint}


class Connection:
    """As much of a connection plugin as the collection uses."""

    transport, become, allow_executable = "fake", None, False

    def __init__(self, machine, windows=True):
        self.machine, self.opened = machine, 0
        self._shell = SimpleNamespace(_IS_WINDOWS=windows, tmpdir=None)
        self._options = {"host": HOME, "ssh_args": "-C", "remote_user": "admin", "port": None}
        self._connected = False
        self.ssh_args = []

    def get_option(self, name):
        return self._options[name]

    def set_option(self, name, value):
        self._options[name] = value
        if name == "ssh_args":
            self.ssh_args.append(value)

    def reset(self):
        self.ssh_args.append("reset")

    def exec_command(self, script, in_data=None, sudoable=True):
        self.opened += 1
        return 0, self.machine.execute(self._options["host"], script).encode(), b""

    def put_file(self, local, remote):
        self.opened += 1
        self.machine.put(local, remote, self._options["host"])
