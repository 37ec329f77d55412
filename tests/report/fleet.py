"""Readings of machines that do not exist, as documents that `zelkctl report` takes."""
from typing import Any

HOSTILE = ["<script>window.ran = 1</script>", "</script><script>window.ran = 1</script>", "<img src=x onerror=window.ran=1>",
           "<!--<script>", "]]>&lt;b&amp;", "javascript:window.ran=1", "\u2028\u2029\u202e\"'`${window.ran=1}"]


def settings(address: str, prefix: int, gateway: str, servers: list[str]) -> dict[str, Any]:
    return {"enabled": True, "dhcp": False, "mtu": 1500, "dnsServers": servers, "gateways": [{"address": gateway, "metric": 5}],
            "addresses": [{"address": address, "prefixLength": prefix, "origin": "manual", "dadState": "preferred"}]}


def reading(number: int, connection: str = "Ethernet") -> dict[str, Any]:
    high, low = divmod(number, 250)
    adapter = {"name": connection, "status": "up", "hidden": False, "hardwareAddress": f"02-00-00-00-{high:02X}-{low:02X}",
               "transmitSpeed": 10 ** 9, "mtu": 1500, "problems": [],
               "ipv4": settings(f"10.0.{high}.{low + 2}", 16, "10.0.0.1", ["192.0.2.53", "192.0.2.54"]),
               "ipv6": settings(f"2001:db8::{number + 16:x}", 64, "fe80::1", ["2001:db8::53"]),
               "routes": [{"destination": "198.51.100.0/24", "nextHop": "10.0.0.9", "metric": 7, "store": "both"}]}
    unplugged = {"name": "Spare", "status": "unplugged", "hidden": False, "ipv4": {}, "ipv6": {}, "problems": []}
    return {"schemaVersion": 1, "environment": {"product": "Windows 10", "windowsVersion": "10.0", "windowsBuild": 19045},
            "identity": {"computerName": f"HOST-{number}", "workgroup": "LAB"}, "adapters": [adapter, unplugged],
            "unassignedRoutes": [], "problems": []}


def plan(text: str = "lan0") -> dict[str, Any]:
    step = {"adapter": text, "step": f"Sets the DNS server of {text}", "means": "netsh.exe", "command": f"netsh.exe set {text}"}
    return {"differs": True, "notes": [], "steps": [step],
            "items": [{"adapter": text, "path": "ipv4.dnsServers", "after": ["192.0.2.54"],
                       "before": {"inUse": ["192.0.2.53"], "configured": "automatic"}}]}


def change(text: str = "lan0") -> dict[str, Any]:
    done = {"adapter": text, "step": "Sets the static address", "means": "netsh.exe", "command": "netsh.exe set address",
            "outcome": "done", "durationMs": 212, "reason": None, "output": None}
    failed = {**done, "step": "Sets the DNS server", "outcome": "failed", "durationMs": 1840,
              "reason": f"It ended with exit code 1: {text}", "output": text}
    return {"changed": False, "outcome": "failed", "items": plan(text)["items"], "steps": [done, failed], "differences": [],
            "undo": {"complete": True, "steps": [done], "differences": []}, "notes": [], "adapters": []}


def trace(lines: int, text: str = "done") -> list[dict[str, Any]]:
    levels = ["Information", "Verbose", "Warning", "Verbose", "Error"]
    return [{"time": f"2026-11-22 09:00:{number // 50 % 60:02}.{number % 50 * 20:03}", "level": levels[number % 5],
             "operation": "TOLVA::SetDnsServers", "message": f"{text} {number}", "thread": 1} for number in range(lines)]


def fleet(count: int) -> dict[str, Any]:
    """Every seventh differs, every tenth has failed, and one in fifty was not reached."""
    machines = []
    for number in range(count):
        machine: dict[str, Any] = {"machine": f"host-{number}", "reading": reading(number), "trace": trace(20)}
        if number % 7 == 3:
            machine["difference"] = plan()
        if number % 10 == 4:
            machine["apply"] = change()
        if number % 50 == 25:
            machine = {"machine": f"host-{number}", "error": "the host cannot be reached"}
        machines.append(machine)
    return {"schemaVersion": 1, "machines": machines}
