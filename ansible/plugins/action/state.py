from __future__ import annotations

from typing import Any

import yaml

from ansible_collections.velmor.zelk.plugins.plugin_utils import desired_state
from ansible_collections.velmor.zelk.plugins.plugin_utils.change import Change, Options, diff_of
from ansible_collections.velmor.zelk.plugins.plugin_utils.machine_action import ARGUMENTS as COMMON, Failed, MachineAction
from ansible_collections.velmor.zelk.plugins.plugin_utils.scripts import Answer
from ansible_collections.velmor.zelk.plugins.plugin_utils.target import Refused

LONGEST = 86400
ARGUMENTS = {
    "adapters": {"type": "list", "elements": "dict"},
    "identity": {"type": "dict"},
    "confirm_within": {"type": "int"},
    "wait_for": {"type": "str"},
    "timeout": {"type": "int", "default": 60},
    "keep": {"type": "bool", "default": False},
    **COMMON,
}


def faults_of(given: dict[str, Any]) -> list[str]:
    """What is wrong with the options beside the state."""
    faults = []
    for name in ("confirm_within", "timeout"):
        if given.get(name) is not None and not 1 <= given[name] <= LONGEST:
            faults.append(f"{name}: must be a number of seconds from 1 to {LONGEST}")
    if given.get("wait_for") and not given.get("confirm_within"):
        faults.append("wait_for: needs confirm_within, which says for how long")
    if given.get("wait_for") and not desired_state.is_address(given["wait_for"]):
        faults.append(f"wait_for: \"{given['wait_for']}\" is not an address")
    return faults


class ActionModule(MachineAction):
    """Everything is checked before a connection is opened."""

    def work(self, task_vars: dict[str, Any]) -> dict[str, Any]:
        given = self.validate_argument_spec(ARGUMENTS, required_one_of=[("adapters", "identity")])[1]
        state, faults = desired_state.checked({key: given[key] for key in ("adapters", "identity") if given.get(key)})
        faults = faults_of(given) + faults
        if faults:
            raise Refused("this cannot be applied:\n  " + "\n  ".join(faults))
        target = self.target(given["path"])
        target.watch_closely()
        names = ("timeout", "confirm_within", "reconnect_to", "wait_for", "keep")
        change = Change(target, desired_state.text_of(state),
                        Options(host=task_vars.get("inventory_hostname", target.address),
                                **{name: given.get(name) for name in names}))
        try:
            result = self._check(change) if self._task.check_mode else self._make(change)
        finally:
            change.end()
        result["notes"] = change.notes + result["notes"]
        return result

    def _check(self, change: Change) -> dict[str, Any]:
        answer = change.plan()
        if answer.error:
            raise Failed(answer.message)
        return self._result(answer, "difference", answer.result["differs"])

    def _make(self, change: Change) -> dict[str, Any]:
        answer, changed = change.make()
        return self._result(answer, "difference" if "differs" in answer.result else "apply", changed)

    def _result(self, answer: Answer, name: str, changed: bool) -> dict[str, Any]:
        told = {key: value for key, value in answer.result.items() if key not in ("adapters", "pending")}
        result = {"changed": changed, name: told, "notes": answer.result.get("notes", [])}
        if self._task.diff:
            result["diff"] = diff_of(answer.result["items"], lambda tree: yaml.safe_dump(tree, allow_unicode=True))
        return result
