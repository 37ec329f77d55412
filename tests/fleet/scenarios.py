"""What has to hold when Ansible changes a fleet. Kernels and registries are the judges, not what is reported."""

import json
import re
from collections.abc import Callable

from fleet import ZELKCTL, Fleet, Host, Json, Played, wait_until

STATE = "set the state"
INSTALL = "install zelkctl"
# Every host has a number, the last one of its addresses.
REACHABLE = "192.0.2.{{ host_number + 100 }}"
CUT_OFF = "10.20.30.{{ host_number }}"


def state(*adapters: Json, **options: object) -> Json:
    return {"name": STATE, "velmor.zelk.state": {"adapters": list(adapters)} | options}


def second_adapter(server: str) -> Json:
    """A state of the adapter that the controller does not need."""
    addresses = ["198.51.100.{{ host_number }}/24", "203.0.113.{{ host_number }}/24"]
    return {"adapter": "lan1", "ipv4": {"addresses": addresses, "dnsServers": [server]}}


def first_adapter(address: str) -> Json:
    return {"adapter": "lan0", "ipv4": {"addresses": [f"{address}/24"]}}


def expect(what: str, condition: object, played: Played | None = None) -> None:
    if not condition:
        raise AssertionError(what + ("" if played is None else f"\n{played.text}"))


def expect_second(host: Host, server: str) -> None:
    """In the kernel and, for the time after a restart, in the registry."""
    wanted = [f"198.51.100.{host.number}/24", f"203.0.113.{host.number}/24"]
    expect(f"{host.name}: lan1 has {host.addresses('lan1')}", sorted(host.addresses("lan1")) == wanted)
    registry = host.registry("lan1")
    stored = sorted(registry["IPAddress"].split("\\0"))
    expect(f"{host.name}: {registry}", stored == [f"198.51.100.{host.number}", f"203.0.113.{host.number}"])
    expect(f"{host.name}: {registry}", registry["NameServer"] == server)
    expect(f"{host.name}: the resolver", f"nameserver {server}\n" in host.run("cat", "/etc/resolv.conf"))


def first_run_changes_all_second_none(fleet: Fleet) -> None:
    tasks = [{"name": INSTALL, "velmor.zelk.install": {}}, state(second_adapter("192.0.2.53"))]
    for changed in (True, False):
        before = [host.standing() for host in fleet.hosts]
        played = fleet.play(tasks)
        expect("the play failed", played.code == 0, played)
        for host, standing in zip(fleet.hosts, before):
            for task in (INSTALL, STATE):
                expect(f"{host.name}: {task}", played.of(host, task)["result"]["changed"] == changed, played)
            expect_second(host, "192.0.2.53")
            expect(f"{host.name} is not as the results say", (host.standing() != standing) == changed)


def check_mode_changes_none_and_shows_the_difference(fleet: Fleet) -> None:
    before = [host.standing() for host in fleet.hosts]
    played = fleet.play([state(second_adapter("192.0.2.54"))], "--check", "--diff")
    expect("the play failed", played.code == 0, played)
    for host, standing in zip(fleet.hosts, before):
        result = played.of(host, STATE)["result"]
        expect(f"{host.name}: would not change", result["changed"], played)
        expect(f"{host.name}: {result['diff']}",
               "192.0.2.53" in result["diff"]["before"] and "192.0.2.54" in result["diff"]["after"])
        expect(f"{host.name} was changed", host.standing() == standing)


def one_that_refuses_holds_no_other(fleet: Fleet) -> None:
    refusing = fleet.hosts[-1]
    refusing.set_environment(ZELK_REFUSED="192.0.2.55")
    before = refusing.standing()
    played = fleet.play([state(second_adapter("192.0.2.55"))])
    refusing.set_environment()
    expect("the play passed", played.code == 2, played)
    result = played.of(refusing, STATE)
    expect("the refusal is not reported",
           result["status"] == "failed" and "netsh.exe ended with exit code 1" in result["result"]["msg"], played)
    expect(f"{refusing.name} was changed", refusing.standing() == before)
    for host in fleet.hosts[:-1]:
        expect_second(host, "192.0.2.55")


def a_rolling_change_stops_when_half_of_a_batch_fails(fleet: Fleet) -> None:
    batch = len(fleet.hosts) // 2
    refusing, later = fleet.hosts[: (batch + 1) // 2], fleet.hosts[batch:]
    for host in refusing:
        host.set_environment(ZELK_REFUSED="192.0.2.58")
    before = [host.standing() for host in later]
    played = fleet.play([state(second_adapter("192.0.2.58"))], serial=batch, max_fail_percentage=49)
    for host in refusing:
        host.set_environment()
        expect(f"{host.name} did not refuse", played.of(host, STATE)["status"] == "failed", played)
    expect("the play passed", played.code == 2, played)
    for host, standing in zip(later, before):
        expect(f"{host.name} was changed", host.standing() == standing, played)


def one_page_shows_all(fleet: Fleet) -> None:
    page = fleet.folder / "fleet.html"
    played = fleet.play([
        {"name": "read", "velmor.zelk.info": {}, "register": "zelk_info"},
        {"name": "show", "velmor.zelk.report": {"dest": str(page)}, "run_once": True},
    ])
    expect("the play failed", played.code == 0, played)
    data = re.search(r'<script[^>]* id="data">(.*?)</script>', page.read_text(), re.DOTALL)
    machines = {machine["machine"]: machine["reading"] for machine in json.loads(data[1])["machines"]} if data else {}
    expect(f"the page shows {list(machines)}", set(machines) == {host.name for host in fleet.hosts})
    for host in fleet.hosts:
        shown = {adapter["name"]: [f"{entry['address']}/{entry['prefixLength']}"
                                   for entry in adapter["ipv4"]["addresses"]]
                 for adapter in machines[host.name]["adapters"]}
        for link in ("lan0", "lan1"):
            expect(f"{host.name}: {shown}", sorted(shown[link]) == sorted(host.addresses(link)))


def a_change_that_keeps_the_host_reachable_is_confirmed(fleet: Fleet) -> None:
    """Where the session takes zelkctl with it when its connection breaks, in two steps: the first adds the new address,
    the second comes in by it and removes the old one."""
    last = fleet.hosts[-1]
    last.set_environment(SESSION_ENDS="kill")
    both = {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.{{ host_number }}/24", f"{REACHABLE}/24"]}}
    options = {"confirm_within": 60, "reconnect_to": REACHABLE}
    number = f"{{{{ host_number + (100 if inventory_hostname == '{last.name}' else 0) }}}}"
    played = fleet.play([
        state(both, **options) | {"name": "add", "when": f"inventory_hostname == '{last.name}'"},
        state(first_adapter(REACHABLE), **options) | {"vars": {"ansible_host": f"192.0.2.{number}"}},
    ])
    last.set_environment()
    expect("the play failed", played.code == 0, played)
    for host in fleet.hosts:
        expect_moved(host)


def expect_moved(host: Host) -> None:
    """It has the new address, now and after a restart, and nothing takes it back. Then it gets the old one again."""
    address = f"192.0.2.{host.number + 100}"
    expect(f"{host.name}: {host.addresses('lan0')}", host.addresses("lan0") == [f"{address}/24"])
    expect(f"{host.name}: {host.registry('lan0')}", host.registry("lan0")["IPAddress"] == address)
    expect(f"{host.name}: is not confirmed", host.pending() == [])
    host.wine(ZELKCTL, "address", "set", "lan0", f"192.0.2.{host.number}/24", "--gateway", "192.0.2.1", "--yes")


def a_change_that_cuts_the_host_off_is_restored(fleet: Fleet) -> None:
    """Also where the session takes zelkctl with it when its connection breaks."""
    fleet.hosts[-1].set_environment(SESSION_ENDS="kill")
    before = [host.standing() for host in fleet.hosts]
    options = {"confirm_within": 5, "reconnect_to": CUT_OFF, "timeout": 20}
    played = fleet.play([state(first_adapter(CUT_OFF), **options)])
    expect("the play passed", played.code == 2, played)
    for host, standing in zip(fleet.hosts, before):
        result = played.of(host, STATE)
        expect(f"{host.name}: the sentence is missing", result["status"] == "failed" and
               f"{host.name} has restored its previous state" in result["result"]["msg"], played)
        expect(f"{host.name} is not as before", host.standing() == standing)
    fleet.hosts[-1].set_environment()
    expect_reachable(fleet)


def expect_reachable(fleet: Fleet) -> None:
    played = fleet.play([{"name": "reach", "raw": "'here'"}])
    expect("the hosts cannot be reached", played.code == 0, played)


def a_controller_that_dies_leaves_no_change(fleet: Fleet) -> None:
    """It is killed when every host has changed and none has been confirmed."""
    before = [host.standing() for host in fleet.hosts]
    task = state(second_adapter("192.0.2.56"), confirm_within=8 + 2 * len(fleet.hosts))
    for host in fleet.hosts:
        host.hold("zelkctl.exe confirm")
    applied = [len(host.runs("--confirm-within")) for host in fleet.hosts]
    play = fleet.start([task])
    for host, earlier in zip(fleet.hosts, applied):
        wait_until(f"{host.name} has changed", lambda: len(host.runs("--confirm-within")) > earlier)
    play.kill()
    for host in fleet.hosts:
        expect(f"{host.name} was not changed: {host.kernel()}", "nameserver 192.0.2.56\n" in host.kernel())
    for host, standing in zip(fleet.hosts, before):
        wait_until(f"{host.name} is as before", lambda: host.standing() == standing)
        host.hold("")
    expect_reachable(fleet)
    played = fleet.play([task])
    expect("the next run failed", played.code == 0, played)
    for host in fleet.hosts:
        expect(f"{host.name}: was not changed", played.of(host, STATE)["result"]["changed"], played)
        expect_second(host, "192.0.2.56")
        expect(f"{host.name}: is not confirmed", host.pending() == [])


SCENARIOS: tuple[Callable[[Fleet], None], ...] = (
    first_run_changes_all_second_none,
    check_mode_changes_none_and_shows_the_difference,
    one_that_refuses_holds_no_other,
    a_rolling_change_stops_when_half_of_a_batch_fails,
    one_page_shows_all,
    a_change_that_keeps_the_host_reachable_is_confirmed,
    a_change_that_cuts_the_host_off_is_restored,
    a_controller_that_dies_leaves_no_change,
)
