from __future__ import annotations

import json
import os
import tempfile
from typing import Any, Mapping, Optional

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

from ansible_collections.velmor.zelk.plugins.plugin_utils import page

ARGUMENTS = {
    "dest": {"type": "path", "required": True},
    "hosts": {"type": "list", "elements": "str"},
    "results": {"type": "list", "elements": "str", "default": ["zelk_info", "zelk_state"]},
    "machines": {"type": "list", "elements": "dict"},
}
READABLE_BY_ALL = 0o644


def version() -> str:
    """Of the collection, which is that of the tool."""
    manifest = os.path.join(os.path.dirname(__file__), "..", "..", "MANIFEST.json")
    try:
        with open(manifest, encoding="utf-8") as file:
            return str(json.load(file)["collection_info"]["version"])
    except (OSError, KeyError, ValueError):
        return ""


class ActionModule(ActionBase):
    """Works on the controller alone; no machine is connected to."""

    _supports_check_mode = True

    def run(self, tmp: Any = None, task_vars: Any = None) -> dict[str, Any]:
        result = super().run(tmp, task_vars)
        try:
            result.update(self._make(self.validate_argument_spec(ARGUMENTS)[1], task_vars or {}))
        except (AnsibleActionFail, OSError, ValueError) as reason:
            result.update({"failed": True, "changed": False, "msg": str(reason)})
        return result

    def _make(self, given: dict[str, Any], task_vars: Mapping[str, Any]) -> dict[str, Any]:
        machines = self._machines(given, task_vars)
        with open(page.TEMPLATE, encoding="utf-8") as file:
            text = page.fill(file.read(), machines, version(), page.now())
        before = self._read(given["dest"])
        changed = before is None or page.without_time(before) != page.without_time(text)
        if changed and not self._task.check_mode:
            self._write(given["dest"], text)
        return {"changed": changed, "dest": given["dest"], "machines": len(machines)}

    def _machines(self, given: dict[str, Any], task_vars: Mapping[str, Any]) -> list[dict[str, Any]]:
        machines = list(given.get("machines") or [])
        for i, machine in enumerate(machines):
            if not isinstance(machine.get("machine"), str) or not any(machine.get(part) for part in page.PARTS):
                raise ValueError(f"machines[{i}]: needs \"machine\", its name, and one of {', '.join(page.PARTS)}")
        hosts = given.get("hosts")
        if hosts is None:
            hosts = [] if machines else task_vars.get("ansible_play_hosts_all", [])
        hostvars = task_vars.get("hostvars", {})
        for host in hosts:
            told = hostvars[host] if host in hostvars else {}
            machine = page.machine_of(host, {name: told.get(name) for name in given["results"]})
            machines.append(machine or {"machine": host, "error": "no task has told anything of this machine"})
        return machines

    @staticmethod
    def _read(path: str) -> Optional[str]:
        try:
            with open(path, encoding="utf-8") as file:
                return file.read()
        except FileNotFoundError:
            return None

    @staticmethod
    def _write(path: str, text: str) -> None:
        """The file is either the old page or the whole new one."""
        folder = os.path.dirname(os.path.abspath(path))
        handle, beside = tempfile.mkstemp(dir=folder, prefix=".zelk-report-")
        try:
            with os.fdopen(handle, "w", encoding="utf-8", newline="\n") as file:
                file.write(text)
                file.flush()
                os.fsync(file.fileno())
            os.chmod(beside, READABLE_BY_ALL)
            os.replace(beside, path)
        except BaseException:
            os.unlink(beside)
            raise
