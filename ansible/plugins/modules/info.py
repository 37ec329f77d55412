#!/usr/bin/python
# The documentation of the action plugin of the same name, which does the work on the controller.
from __future__ import annotations

DOCUMENTATION = r"""
module: info
short_description: Read the whole network configuration of a Windows machine
version_added: 1.0.0
description:
  - Reads system, names, adapters, addresses, gateways, DNS servers and routes in one pass, as in use and as configured.
  - Nothing is changed.
extends_documentation_fragment: velmor.zelk.target
author: Velmor (@velmor)
attributes:
  check_mode:
    description: Runs in check mode like otherwise.
    support: full
"""

EXAMPLES = r"""
- name: Read the machine
  velmor.zelk.info:
  register: zelk_info

- name: Show the names of its adapters
  ansible.builtin.debug:
    msg: "{{ zelk_info.reading.adapters | map(attribute='name') }}"
"""

RETURN = r"""
reading:
  description: The machine, as C(zelkctl show --json) tells it. C(zelkctl schema) describes every member.
  returned: success
  type: dict
  contains:
    environment:
      description: The system.
      type: dict
    identity:
      description: The names of the machine.
      type: dict
    adapters:
      description: All adapters.
      type: list
      elements: dict
    unassignedRoutes:
      description: Routes of no adapter that is known.
      type: list
      elements: dict
    problems:
      description: What could not be read, and why.
      type: list
      elements: dict
ansible_facts:
  description: The same as the fact C(zelk).
  returned: success
  type: dict
  contains:
    zelk:
      description: The machine.
      type: dict
"""
