"""One change of a machine: made, confirmed over a connection of its own, and known again after an interruption."""
from __future__ import annotations

import hashlib
import secrets
import time
from dataclasses import dataclass
from typing import Any, Optional

from ansible_collections.velmor.zelk.plugins.plugin_utils import scripts
from ansible_collections.velmor.zelk.plugins.plugin_utils.machine_action import Failed
from ansible_collections.velmor.zelk.plugins.plugin_utils.scripts import Answer
from ansible_collections.velmor.zelk.plugins.plugin_utils.target import Missing, Refused, Target, Unreachable

FAILED, NOT_VERIFIED, BUSY = 1, 6, 7
OWNER = "velmor.zelk.state"
# Between two looks at a machine that does not answer, or is not ready.
INTERVAL = 1.0


@dataclass
class Options:
    host: str                       # its name in the inventory
    timeout: int = 60               # seconds for each command and for verifying
    confirm_within: Optional[int] = None
    reconnect_to: Optional[str] = None
    wait_for: Optional[str] = None
    keep: bool = False


# Why the previous state was restored, by the cause that the machine gives.
CAUSES = {
    "notConfirmed": "because nobody confirmed the change in time",
    "interrupted": "because the process that made the change ended",
    "requested": "because somebody asked for it",
}


def who(entry: dict[str, Any]) -> str:
    label = f", \"{entry['label']}\"" if entry.get("label") else ""
    return f"{entry.get('user') or 'somebody unknown'} since {entry.get('since') or 'an unknown time'}{label}"


def because(entry: dict[str, Any]) -> str:
    """The zelkctl of another version may know more causes."""
    return CAUSES.get(entry.get("cause") or "", "for a reason that this collection does not know")


class Change:
    """A desired state on its way to one machine."""

    def __init__(self, target: Target, document: str, options: Options) -> None:
        self._target, self._document, self._options = target, document, options
        digest = hashlib.sha256(document.encode()).hexdigest()[:16]
        # The same state makes the same beginning, so that a later run knows what an interrupted one has left.
        self._kind = f"{OWNER} {digest}"
        self._label = f"{self._kind} {secrets.token_hex(4)}"
        self._home = target.address
        self._goal = options.reconnect_to or self._home
        self._placed = ""           # the file with the document
        self._files: list[str] = []  # that and others that may be left
        self._reached = False
        self._attempted = False      # to change something
        self.notes: list[str] = []

    def plan(self) -> Answer:
        """What would be changed."""
        self._reach()
        return self._apply("--check")

    def make(self) -> tuple[Answer, bool]:
        """The answer, and whether the machine was changed. It is what was planned where the answer of the change was lost.

        @raises Failed"""
        confirmed = False
        end = time.monotonic() + (self._options.confirm_within or 0) + 2 * self._options.timeout
        while True:
            answer = self._attempt()
            earlier = self._earlier(answer)
            if earlier is None:
                answer = self._finish(answer)
                return answer, confirmed or bool(answer.result.get("changed", answer.result.get("differs")))
            confirmed = self._settle(earlier, end) or confirmed

    def _attempt(self) -> Answer:
        """Plans first where the connection is likely to break, so that it is known what was changed."""
        planned = self.plan() if self._options.confirm_within else None
        if planned and (planned.error or not planned.result["differs"]):
            return planned
        self._reach()
        self._place()
        self._attempted = True
        try:
            return self._apply(*self._arguments())
        except Unreachable:
            return self._after_break(planned)

    def end(self) -> None:
        """Leaves nothing behind."""
        if self._files:
            self._target.remove(self._files)
        if self._attempted:
            self._target.leave()

    # What runs on the machine

    def _arguments(self) -> list[str]:
        arguments = ["--label", self._label]
        if self._options.keep:
            arguments.append("--keep")
        if self._options.confirm_within:
            arguments += ["--confirm-within", str(self._options.confirm_within)]
        if self._options.wait_for:
            arguments += ["--wait-for", self._options.wait_for]
        return arguments

    def _place(self) -> None:
        """Puts the document beside zelkctl: whoever can write there could replace that too."""
        if not self._placed:
            file = self._target.path_of(f"state-{secrets.token_hex(8)}.json")
            self._files.append(file)
            self._target.put_text(self._document, file)
            self._placed = file

    def _apply(self, *arguments: str) -> Answer:
        """The document goes with the command that reads it."""
        self._place()
        file, self._placed = self._placed, ""
        answer = self._target.zelkctl("apply", file, "--timeout", str(self._options.timeout), *arguments, remove=file)
        self._files.remove(file)
        return answer

    def _pending(self) -> list[dict[str, Any]]:
        answer = self._target.zelkctl("pending")
        if answer.error:
            raise Failed(answer.message)
        return answer.result or []

    def _reach(self) -> None:
        """Finds out at which address the machine is before a file is copied, which would fail slowly and with warnings."""
        if self._goal != self._home and not self._reached:
            self._target.reach(self._goal, lambda: self._target.script(scripts.NOTHING))
        self._reached = True

    # What others, or earlier runs, have left

    def _earlier(self, answer: Answer) -> Optional[dict[str, Any]]:
        """A change that is still open, so that this one could not be made, or is not the last word."""
        if answer.error and answer.code == BUSY:
            entries = self._pending()
        elif answer.result and answer.result.get("outcome") in (None, "unchanged") and not answer.result.get("differs"):
            entries = answer.result.get("pending", [])
        else:
            return None
        # What nobody watches over keeps no other change from being made.
        return next((entry for entry in entries if entry.get("watched") and entry.get("phase") != "restored"), None)

    def _settle(self, entry: dict[str, Any], end: float) -> bool:
        """Confirms what an interrupted run of the same task has left, and refuses what others have.

        Whether it was confirmed; where it was not, the next look tells more."""
        if not str(entry.get("label") or "").startswith(self._kind + " "):
            raise Failed(f"a change of {who(entry)} is not confirmed yet; nothing was changed. {entry['status']}")
        if time.monotonic() > end:
            raise Failed(f"the change of {who(entry)} does not end: {entry['status']}")
        if entry["phase"] != "waiting" or not self._confirmed_at_goal(entry["id"]):
            time.sleep(INTERVAL)
            return False
        self.notes.append(f"An earlier run of this task, of {entry.get('since')}, was interrupted before it could confirm "
                          "its change. The machine can be reached, so the change is now confirmed.")
        return True

    def _confirmed_at_goal(self, change: str) -> bool:
        self._target.connect_to(self._goal)
        try:
            return self._target.zelkctl("confirm", change).code == 0
        except Unreachable:
            self._target.connect_to(self._home)
            return False

    # After the change

    def _finish(self, answer: Answer) -> Answer:
        if answer.error:
            raise Failed(self._refusal(answer))
        if "differs" in answer.result:  # the plan of what needs nothing more
            return answer
        change = answer.result.get("pendingChange")
        if answer.code == NOT_VERIFIED:
            raise Failed(self._unverified(change), changed=not (change and self._options.confirm_within))
        if answer.code != 0:
            raise Failed(failure_of(answer.result), changed=bool(answer.result.get("changed")))
        if change and self._options.confirm_within:
            self._confirm(change)
        return answer

    def _refusal(self, answer: Answer) -> str:
        if answer.code != BUSY:
            return answer.message
        try:
            others = [entry for entry in self._pending() if entry.get("phase") != "restored"]
        except (Unreachable, Failed):
            others = []
        return "\n".join([answer.message, *(f"It was made by {who(entry)}." for entry in others if entry.get("user"))])

    def _unverified(self, change: Optional[str]) -> str:
        text = "all steps were done, but the machine does not show the whole change"
        if not (change and self._options.confirm_within):
            return f"{text}; it was not taken back"
        try:
            restored = self._target.zelkctl("restore", change, "--yes")
        except Unreachable:
            self._await(change, confirm=False)
            return text
        return f"{text}; " + ("not everything could be taken back: " + restored.message if restored.code else
                              f"{self._options.host} has restored its previous state")

    def _confirm(self, change: str) -> None:
        """Proves over a new connection that the machine can be reached."""
        if not self._await(change, confirm=True):
            self._verified("somebody else has settled the change")

    def _after_break(self, planned: Optional[Answer]) -> Answer:
        """What became of a change whose answer was lost."""
        self.notes.append("The connection broke while the change was made.")
        self._await(None, confirm=bool(self._options.confirm_within))
        answer = self._verified("the connection broke while the change was made")
        if planned:
            return planned
        answer.result["differs"] = True  # before the change
        return answer

    def _verified(self, what: str) -> Answer:
        """Looks whether the machine is as desired, where nobody has told what became of the change."""
        answer = self._apply("--check")
        if answer.error:
            raise Failed(answer.message, changed=True)
        if answer.result["differs"]:
            raise Failed(f"{what}, and the machine is not in the desired state: "
                         + ", ".join(path_of(item) for item in answer.result["items"]))
        return answer

    def _await(self, change: Optional[str], confirm: bool) -> bool:
        """Waits until the change is settled one way or the other, and confirms it where the machine answers.

        @param change  its id; None where the answer that tells it was lost
        False where it is gone although nobody here has confirmed it.
        @raises Failed where it was taken back, or nothing can be known"""
        end = time.monotonic() + (self._options.confirm_within or 0) + 2 * self._options.timeout
        last = ""
        while time.monotonic() < end:
            for address in dict.fromkeys((self._goal, self._home)):
                self._target.connect_to(address)
                try:
                    settled = self._look(change, confirm and address == self._goal)
                    if settled is not None:
                        return settled
                except (Unreachable, Refused, Missing) as reason:  # or another machine has answered
                    last = str(reason)
            time.sleep(INTERVAL)
        raise Failed(self._lost(last), changed=True, unreachable=True)

    def _look(self, change: Optional[str], confirm: bool) -> Optional[bool]:
        """True when the change is confirmed, False when it is gone, nothing while it is open."""
        if change and confirm and self._confirm_now(change):
            return True
        entries = [entry for entry in self._pending()
                   if entry.get("id") == change or entry.get("label") == self._label]
        if not entries:
            return False
        entry = entries[0]
        if entry.get("phase") == "restored":
            raise Failed(f"{self._options.host} has restored its previous state {because(entry)}")
        if entry.get("phase") == "waiting" and confirm:
            return self._confirm_now(entry["id"])
        if entry.get("phase") == "applying" and not entry.get("watched") and not entry.get("atWork"):
            raise Failed(f"the connection broke while the change was made. {entry['status']}", changed=True)
        return None

    def _confirm_now(self, change: str) -> Optional[bool]:
        answer = self._target.zelkctl("confirm", change)
        if answer.error and answer.code not in (FAILED, BUSY):
            raise Failed(answer.message, changed=True)
        return None if answer.error else True  # it may have been restored in this moment; the next look tells

    def _lost(self, last: str) -> str:
        addresses = " and ".join(dict.fromkeys((self._goal, self._home)))
        promise = (f"; unless it is confirmed, it restores its previous state {self._options.confirm_within} s after the "
                   "change" if self._options.confirm_within else "")
        return f"{self._options.host} can no longer be reached at {addresses}{promise}. {last}".rstrip()


def path_of(item: dict[str, Any]) -> str:
    adapter = item.get("adapter")
    return f"{adapter}: {item['path']}" if adapter else item["path"]


def failure_of(result: dict[str, Any]) -> str:
    """Which step failed and why, and what became of the others."""
    lines = []
    for step in result.get("steps", []):
        if step.get("outcome") in ("failed", "timedOut", "cancelled"):
            what = {"failed": "failed", "timedOut": "took too long", "cancelled": "was cancelled"}[step["outcome"]]
            reason = step.get("reason") or step.get("output") or ""
            lines.append(f"{step['adapter'] + ': ' if step.get('adapter') else ''}{step['step']}: {what}. {reason}".rstrip())
    lines += [note for note in result.get("notes", []) if note not in lines]
    undo = result.get("undo")
    if undo:
        lines.append("What was done was undone." if undo.get("complete")
                     else "Not everything that was done could be undone: "
                     + ", ".join(path_of(item) for item in undo.get("differences", [])))
    return "\n".join(lines) or f"the change ended as {result.get('outcome')}"


def diff_of(items: list[dict[str, Any]], dump: Any) -> dict[str, str]:
    """Before and after, an item a line, as Ansible shows a difference."""
    sides: dict[str, str] = {}
    for side in ("before", "after"):
        tree: dict[str, Any] = {}
        for item in items:
            tree.setdefault(item.get("adapter") or "identity", {})[item["path"]] = item.get(side)
        sides[side] = dump(tree) if tree else ""
    return sides
