from __future__ import annotations


class ModuleDocFragment:
    """What all modules that work on a machine have in common."""

    DOCUMENTATION = r"""
options:
  path:
    description:
      - Full path of the directory on the machine in which C(zelkctl.exe) and C(ZELK_NM.DLL) lie.
      - Only administrators may be able to write to it. M(velmor.zelk.install) makes such a directory.
    type: str
    default: C:\Program Files\ZELK
  reconnect_to:
    description:
      - Another address of the machine, which is tried when it does not answer at the one of the inventory. So the same play finds
        a machine whose address it has changed before.
      - M(velmor.zelk.state) confirms a change at this address.
      - Over SSH, the machine must have the same host key at both addresses.
    type: str
notes:
  - The machine needs nothing but C(zelkctl.exe) and C(ZELK_NM.DLL), no Python and no other modules.
  - The connection is C(ssh) with I(ansible_shell_type) C(powershell) or C(cmd), or it is C(winrm) or C(psrp).
  - The user of the connection must be an administrator whose sessions are elevated. C(become) has no effect.
"""
