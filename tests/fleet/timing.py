"""How long plays take: hosts against seconds, and what of them is zelkctl's own."""

import itertools
import resource
import time
from statistics import mean, median
from typing import NamedTuple

from fleet import Fleet, Host
from scenarios import STATE, expect, second_adapter, state

ROUNDS = 3


class Timed(NamedTuple):
    """One play."""

    seconds: float
    own: float  # seconds in which zelkctl ran on a host, on average
    work: float  # seconds of processor time that a host cost the controller


def processor_time() -> float:
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def timed(fleet: Fleet, hosts: list[Host], forks: int, server: str, *, changed: bool) -> Timed:
    names = ",".join(host.name for host in hosts)
    begin, work = time.time(), processor_time()
    played = fleet.play([state(second_adapter(server))], f"--limit={names}", f"--forks={forks}")
    work = processor_time() - work
    expect("a timed play failed", played.code == 0, played)
    for host in hosts:
        expect(f"{host.name}: changed", played.of(host, STATE)["result"]["changed"] == changed, played)
    own = [sum(run["end"] - run["begin"] for run in host.runs() if run["begin"] >= begin) for host in hosts]
    return Timed(played.seconds, mean(own), work / len(hosts))


def cells(plays: list[Timed], hosts_of_a_fork: float) -> str:
    seconds, own, work = (median(column) for column in zip(*plays))
    return f"{seconds:8.2f} {own:8.2f} {own * hosts_of_a_fork / seconds:6.0%} {work:10.2f}"


def print_table(fleet: Fleet) -> None:
    """With as many forks as hosts, and the largest fleet also with fewer."""
    most = len(fleet.hosts)
    counts = [count for count in (1, 2, 4, 8, 16, 32, 64, 128) if count < most] + [most]
    rows = [(count, count) for count in counts] + [(most, forks) for forks in (1, most // 2) if 0 < forks < most]
    heads = f"{'play':>8} {'zelkctl':>8} {'share':>6} {'controller':>10}"
    print(f"\nSeconds: of the play, of zelkctl on each host, of the controller's processors for each host. Medians of "
          f"{ROUNDS}.\n{'':15} {'a changing run':^35} {'a run without change':^35}\n"
          f"{'hosts':>7} {'forks':>7} {heads} {heads}")
    servers = itertools.count(100)  # each is new to every host
    for count, forks in dict.fromkeys(rows):
        changing, same = [], []
        for _ in range(ROUNDS):
            server = f"192.0.2.{next(servers)}"
            changing.append(timed(fleet, fleet.hosts[:count], forks, server, changed=True))
            same.append(timed(fleet, fleet.hosts[:count], forks, server, changed=False))
        print(f"{count:7} {forks:7} {cells(changing, count / forks)} {cells(same, count / forks)}", flush=True)
