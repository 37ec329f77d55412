from __future__ import annotations

from typing import Any

from ansible_collections.velmor.zelk.plugins.plugin_utils.machine_action import PATH_ARGUMENT, Failed, MachineAction


class ActionModule(MachineAction):
    """Reads the machine and changes nothing."""

    def work(self, task_vars: dict[str, Any]) -> dict[str, Any]:
        given = self.validate_argument_spec(PATH_ARGUMENT)[1]
        answer = self.target(given["path"]).zelkctl("show")
        if answer.error:
            raise Failed(answer.message)
        return {"changed": False, "reading": answer.result, "ansible_facts": {"zelk": answer.result}}
