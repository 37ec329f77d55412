"""Writes every result of a play as a line of JSON to the file that RECORD_RESULTS names."""

import json
import os

from ansible.plugins.callback import CallbackBase

DOCUMENTATION = """
name: record
type: aggregate
short_description: Results as lines of JSON
description: Writes every result of a play to a file.
"""


class CallbackModule(CallbackBase):
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "aggregate"
    CALLBACK_NAME = "record"

    def _write(self, status, result):
        line = {"host": result._host.get_name(), "task": result._task.get_name(), "status": status,
                "result": result._result}
        with open(os.environ["RECORD_RESULTS"], "a", encoding="utf-8") as file:
            file.write(json.dumps(line, default=str) + "\n")

    def v2_runner_on_ok(self, result):
        self._write("ok", result)

    def v2_runner_on_failed(self, result, ignore_errors=False):
        self._write("failed", result)

    def v2_runner_on_unreachable(self, result):
        self._write("unreachable", result)
