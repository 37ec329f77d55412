#!/usr/bin/python
# The documentation of the action plugin of the same name, which does the work on the controller.
from __future__ import annotations

DOCUMENTATION = r"""
module: report
short_description: Make a page of what was read and changed on all machines
version_added: 1.0.0
description:
  - Makes one HTML page that needs nothing else, no network and no other file, of the results of M(velmor.zelk.info) and
    M(velmor.zelk.state) on all machines.
  - It is made on the controller; no machine is connected to. Use it with C(run_once).
  - The page is written anew only if it differs from the present one in more than the time at which it was made.
options:
  dest:
    description: The file, on the controller.
    type: path
    required: true
  hosts:
    description: The machines; by default, all hosts of the play, with those that failed or could not be reached.
    type: list
    elements: str
  results:
    description: Names of the variables in which the results of tasks are registered.
    type: list
    elements: str
    default: [zelk_info, zelk_state]
  machines:
    description:
      - More machines, or others, each with the key C(machine), its name, and with C(reading), C(difference), C(apply), C(trace)
        or C(error).
      - Where they are given, the hosts of the play are shown only if I(hosts) names them.
    type: list
    elements: dict
author: Velmor (@velmor)
attributes:
  check_mode:
    description: Can run in check mode and predict the changes.
    support: full
"""

EXAMPLES = r"""
- name: Read all machines
  velmor.zelk.info:
  register: zelk_info

- name: Show them on one page
  velmor.zelk.report:
    dest: fleet.html
  run_once: true
"""

RETURN = r"""
dest:
  description: The file.
  returned: success
  type: str
machines:
  description: The number of machines on the page.
  returned: success
  type: int
"""
