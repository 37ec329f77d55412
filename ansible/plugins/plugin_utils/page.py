"""Fills the page that shows the machines."""
from __future__ import annotations

import json
import os
from datetime import datetime, timezone
from typing import Any, Mapping, Optional

TEMPLATE = os.path.join(os.path.dirname(__file__), "page.html")
PLACEHOLDER = "@DATA@"
PARTS = ("reading", "difference", "apply", "trace", "error")
# What could end the script element that the data stands in, or a line of a script.
_ESCAPED = {ord(character): f"\\u{ord(character):04x}" for character in "<>&\u2028\u2029"}


def machine_of(name: str, results: Mapping[str, Any]) -> Optional[dict[str, Any]]:
    """What the results of tasks tell of one machine; nothing where they tell nothing."""
    machine: dict[str, Any] = {}
    for result in results.values():
        if not isinstance(result, Mapping):
            continue
        machine.update({part: result[part] for part in PARTS if result.get(part)})
        if result.get("failed") or result.get("unreachable"):
            machine["error"] = "\n".join(filter(None, (machine.get("error"), str(result.get("msg", "the task failed")))))
    return {"machine": name, **machine} if machine else None


def fill(template: str, machines: list[dict[str, Any]], tool: str, generated: str) -> str:
    data = json.dumps({"schemaVersion": 1, "generated": generated, "tool": tool, "machines": machines},
                      ensure_ascii=False, separators=(",", ":"))
    before, mark, after = template.partition(PLACEHOLDER)
    if not mark:
        raise ValueError(f"the template of the page lacks {PLACEHOLDER}")
    return before + data.translate(_ESCAPED) + after


def now() -> str:
    return datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def without_time(page: str) -> str:
    """Pages are compared without the moment at which they were made."""
    begin = page.find('"generated":"')
    end = page.find('"', begin + len('"generated":"')) if begin >= 0 else -1
    return page[:begin] + page[end:] if end >= 0 else page
