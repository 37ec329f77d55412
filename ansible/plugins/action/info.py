from __future__ import annotations

from typing import Any

from ansible_collections.velmor.zelk.plugins.plugin_utils.machine_action import ARGUMENTS, Failed, MachineAction


class ActionModule(MachineAction):
    """Reads the machine and changes nothing."""

    def work(self, task_vars: dict[str, Any]) -> dict[str, Any]:
        given = self.validate_argument_spec(ARGUMENTS)[1]
        target = self.target(given["path"])
        answer = target.reach(given["reconnect_to"], lambda: target.zelkctl("show"))
        if answer.error:
            raise Failed(answer.message)
        return {"changed": False, "reading": answer.result, "ansible_facts": {"zelk": answer.result}}
