#!/usr/bin/python
# The documentation of the action plugin of the same name, which does the work on the controller.
from __future__ import annotations

DOCUMENTATION = r"""
module: install
short_description: Put zelkctl on a Windows machine
version_added: 1.0.0
description:
  - Copies the C(zelkctl.exe) and C(ZELK_NM.DLL) that the collection carries to the machine, where they are missing or differ.
  - The SHA-256 sums of the copies are compared before they take the place of what was there.
extends_documentation_fragment: velmor.zelk.target
author: Velmor (@velmor)
attributes:
  check_mode:
    description: Can run in check mode and predict the changes.
    support: full
  diff_mode:
    description: Shows the checksums before and after.
    support: full
"""

EXAMPLES = r"""
- name: Put zelkctl on the machine
  velmor.zelk.install:

- name: Put it into another directory
  velmor.zelk.install:
    path: D:\Tools\ZELK
"""

RETURN = r"""
files:
  description: The carried files with their SHA-256 sums.
  returned: success
  type: dict
path:
  description: The directory on the machine.
  returned: success
  type: str
"""
