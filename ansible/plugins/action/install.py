from __future__ import annotations

import os
from typing import Any

from ansible_collections.velmor.zelk.plugins.plugin_utils import carried, scripts
from ansible_collections.velmor.zelk.plugins.plugin_utils.machine_action import ARGUMENTS, MachineAction
from ansible_collections.velmor.zelk.plugins.plugin_utils.target import Refused, Target, Unreachable

# What is being copied, until it has the right checksum.
NEW = ".new"


class ActionModule(MachineAction):
    """Puts the carried files where they differ."""

    def work(self, task_vars: dict[str, Any]) -> dict[str, Any]:
        given = self.validate_argument_spec(ARGUMENTS)[1]
        sums = carried.read_sums()
        target = self.target(given["path"])
        there = target.reach(given["reconnect_to"], lambda: self._sums_on(target, list(sums)))
        wrong = [name for name in sums if there[name] != sums[name]]
        result: dict[str, Any] = {"changed": bool(wrong), "path": given["path"], "files": sums}
        if self._task.diff:
            result["diff"] = {"before": self._listing(there), "after": self._listing(sums)}
        if wrong and not self._task.check_mode:
            self._put(target, {name: sums[name] for name in wrong})
        return result

    def _put(self, target: Target, sums: dict[str, str]) -> None:
        target.script(scripts.make_directory(target.path_of("Logfiles")))  # where the library's trace goes
        beside = [target.path_of(name + NEW) for name in sums]
        try:
            for name in sums:
                target.put(os.path.join(carried.FOLDER, name), target.path_of(name + NEW))
            there = self._sums_on(target, [name + NEW for name in sums])
            for name, digest in sums.items():
                if there[name + NEW] != digest:
                    raise Refused(f"{name} arrived with another checksum than it was sent with; what was installed before "
                                  "stays")
            target.script(scripts.move([target.path_of(name) for name in sums], NEW))
        except (Refused, Unreachable):
            target.remove(beside)
            raise

    @staticmethod
    def _sums_on(target: Target, names: list[str]) -> dict[str, str]:
        lines = target.script(scripts.hashes([target.path_of(name) for name in names]))
        if len(lines) != len(names):
            raise Refused("the checksums of the files could not be read: " + " ".join(lines))
        return {name: line.replace("-", "").lower() for name, line in zip(names, lines)}

    @staticmethod
    def _listing(sums: dict[str, str]) -> str:
        return "".join(f"{name}: {digest}\n" for name, digest in sums.items())
