"""What the action plugins that work on a machine have in common."""
from __future__ import annotations

from abc import abstractmethod
from typing import Any

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

from ansible_collections.velmor.zelk.plugins.plugin_utils.target import (DIRECTORY, Missing, Refused, Target, Unreachable,
                                                                         directory_fault)

ARGUMENTS = {"path": {"type": "str", "default": DIRECTORY}, "reconnect_to": {"type": "str"}}


class Failed(Exception):
    """The task failed. `changed` is whether the machine is no longer as it was."""

    def __init__(self, message: str, changed: bool = False, unreachable: bool = False) -> None:
        super().__init__(message)
        self.changed, self.unreachable = changed, unreachable


class MachineAction(ActionBase):
    """Turns what goes wrong into results: a person reads the message alone, without a traceback."""

    _supports_check_mode = True

    def run(self, tmp: Any = None, task_vars: Any = None) -> dict[str, Any]:
        result = super().run(tmp, task_vars)
        try:
            result.update(self.work(task_vars or {}))
        except Failed as failure:
            kind = "unreachable" if failure.unreachable else "failed"
            result.update({kind: True, "changed": failure.changed, "msg": str(failure)})
        except Unreachable as reason:
            result.update({"unreachable": True, "changed": False, "msg": str(reason)})
        except Missing as reason:
            how = "skipped" if self._task.check_mode else "failed"
            result.update({how: True, "changed": False, "msg": str(reason)})
        except (Refused, AnsibleActionFail) as reason:
            result.update({"failed": True, "changed": False, "msg": str(reason)})
        return result

    @abstractmethod
    def work(self, task_vars: dict[str, Any]) -> dict[str, Any]:
        """Does what the task says.

        @returns the result
        @raises Failed, Unreachable, Refused"""

    def target(self, directory: str) -> Target:
        """The machine, which is not connected yet."""
        if fault := directory_fault(directory):
            raise Refused(fault)
        return Target(self, directory)
