"""A machine at the other end of a connection of Ansible's, whichever it is."""
from __future__ import annotations

import os
import re
import tempfile
from contextlib import suppress
from typing import Any, Callable, Iterable, Optional, TypeVar

from ansible import constants
from ansible.errors import AnsibleConnectionFailure

from ansible_collections.velmor.zelk.plugins.plugin_utils import scripts

_Result = TypeVar("_Result")
DIRECTORY = r"C:\Program Files\ZELK"
_ABSOLUTE = re.compile(r"^[A-Za-z]:[\\/][^*?\"<>|]*$|^\\\\[^*?\"<>|]+$")
# A connection that has died shows within seconds, and none is shared with tasks that came before.
_SSH_OPTIONS = "-o ControlMaster=no -o ControlPath=none -o ServerAliveInterval=3 -o ServerAliveCountMax=2"
_SSH_PORT = 22


class Unreachable(Exception):
    """The machine does not answer, or the connection broke."""


class Refused(Exception):
    """This cannot be done; nothing was changed."""


class Missing(Exception):
    """There is no zelkctl on the machine."""


def directory_fault(directory: str) -> str:
    if _ABSOLUTE.match(directory) and ".." not in re.split(r"[\\/]", directory):
        return ""
    return f"path: \"{directory}\" is not the full path of a directory of Windows, such as {DIRECTORY}"


class Target:
    """Runs zelkctl on a machine. Nothing is connected before the first use."""

    def __init__(self, action: Any, directory: str) -> None:
        self._action = action
        self._connection = action._connection
        self._directory = directory
        self._watched = False
        if not getattr(self._connection._shell, "_IS_WINDOWS", False):
            raise Refused("this needs a machine with Windows: ansible_connection is winrm or psrp, or it is ssh and "
                          "ansible_shell_type is powershell or cmd")
        self._home = self.address
        self._ssh_args = self._option("ssh_args")

    def path_of(self, name: str) -> str:
        return scripts.join(self._directory, name)

    @property
    def address(self) -> str:
        return self._option("host") or self._option("remote_addr") or self._action._play_context.remote_addr

    def watch_closely(self) -> None:
        """From now on a broken connection shows soon, and is not silently opened again."""
        self._watched = True
        self._set_ssh("")
        for name, value in (("reconnection_retries", 0), ("connection_timeout", 10), ("operation_timeout", 8),
                            ("read_timeout", 10)):
            if self._option(name) is not None or name == "connection_timeout":
                self._set(name, value)

    def connect_to(self, address: str) -> None:
        """The next use opens a new connection, to this address. The old one is left alone: its peer may be gone.

        Over SSH it has to be the same machine at every address: it must have the same host key."""
        port = self._option("port") or _SSH_PORT
        alias = self._home if int(port) == _SSH_PORT else f"[{self._home}]:{port}"
        self._set_ssh("-o ConnectTimeout=5" + (f" -o HostKeyAlias={alias}" if address != self._home else ""))
        for name in ("host", "remote_addr"):
            self._set(name, address)
        for name in ("protocol", "shell_id", "runspace"):
            if hasattr(self._connection, name):
                setattr(self._connection, name, None)
        self._connection._connected = False

    def reach(self, other: Optional[str], work: Callable[[], _Result]) -> _Result:
        """Does the first work, where the machine is: at its address, or at the other one if it has that already."""
        try:
            return work()
        except Unreachable:
            if not other or other == self.address:
                raise
            self.connect_to(other)
            try:
                return work()
            except Unreachable:
                self.connect_to(self._home)
                raise

    def leave(self) -> None:
        """Later tasks go on as if nothing had been, but over new connections: those of before may lead nowhere."""
        for name in ("host", "remote_addr"):
            self._set(name, self._home)
        if self._ssh_args is not None:
            self._set("ssh_args", self._ssh_args)
            with suppress(Exception):
                self._connection.reset()  # ends what ControlPersist has kept

    def zelkctl(self, *arguments: str, remove: Optional[str] = None) -> scripts.Answer:
        """@raises Unreachable; Missing or Refused where zelkctl does not answer"""
        output, errors = self._execute(scripts.run(self._directory, arguments, remove))
        try:
            return scripts.answer_of(output, errors)
        except scripts.CutOff as reason:
            raise Unreachable(str(reason)) from None
        except scripts.NoAnswer as reason:
            self._require_zelkctl()
            raise Refused(str(reason)) from None

    def script(self, script: str) -> list[str]:
        """The lines that it wrote."""
        output, errors = self._execute(script)
        try:
            return scripts.lines_of(output, errors)
        except scripts.CutOff as reason:
            raise Refused(f"{self._directory}: {reason}") from None

    def put(self, local: str, remote: str) -> None:
        try:
            self._connection.put_file(local, remote)
        except AnsibleConnectionFailure as error:
            raise Unreachable(str(error)) from error
        except Exception as error:  # each kind of connection has its own
            self._require_zelkctl()
            raise Refused(f"{remote} could not be written: {error}") from error

    def put_text(self, text: str, remote: str) -> None:
        handle, local = tempfile.mkstemp(dir=constants.DEFAULT_LOCAL_TMP)
        try:
            with os.fdopen(handle, "w", encoding="utf-8") as file:
                file.write(text)
            self.put(local, remote)
        finally:
            os.unlink(local)

    def remove(self, files: Iterable[str]) -> None:
        """As well as it can be done."""
        with suppress(Unreachable, Refused):
            self.script(scripts.remove(list(files)))

    def _require_zelkctl(self) -> None:
        if self.script(scripts.hashes([self.path_of(scripts.PROGRAM)])) == ["absent"]:
            raise Missing(f"there is no zelkctl in {self._directory} on this machine. velmor.zelk.install puts it there; the "
                          "option path names another directory.")

    def _execute(self, script: str) -> tuple[str, str]:
        if len(script) > scripts.LONGEST_SCRIPT:
            raise Refused("the paths are too long for a command line of Windows")
        try:
            done = self._action._low_level_execute_command(script, sudoable=False)
        except Exception as error:  # each kind of connection has its own
            raise Unreachable(str(error)) from error
        return done["stdout"], done["stderr"]

    def _set_ssh(self, more: str) -> None:
        if self._ssh_args is not None:
            options = (_SSH_OPTIONS if self._watched else "", more, self._ssh_args)
            self._set("ssh_args", " ".join(filter(None, options)))

    def _option(self, name: str) -> Any:
        try:
            return self._connection.get_option(name)
        except (AttributeError, KeyError):
            return None

    def _set(self, name: str, value: Any) -> None:
        with suppress(AttributeError, KeyError):
            self._connection.set_option(name, value)
