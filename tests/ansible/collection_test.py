#!/usr/bin/env python3
"""The collection's plugins on machines that exist only in memory. ANSIBLE_COLLECTIONS_PATH says where they lie, ZELKCTL how the
tool is run."""

import json
import os
import subprocess
import tempfile
import unittest
from types import SimpleNamespace
from unittest import mock

import yaml
from fake_machine import HOME, Connection, Machine, error
from ansible_collections.velmor.zelk.plugins.action import info, install, report, state
from ansible_collections.velmor.zelk.plugins.modules import state as documentation
from ansible_collections.velmor.zelk.plugins.plugin_utils import carried, change, desired_state, page, scripts

STATE = {"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.20/24"]}}]}
MOVED = "192.0.2.20"


class Base(unittest.TestCase):
    def setUp(self):
        self.machine = Machine()
        clock = mock.patch.multiple(change.time, monotonic=self.machine.clock.monotonic, sleep=self.machine.clock.sleep)
        clock.start()
        self.addCleanup(clock.stop)

    def run_action(self, plugin, args, check=False, connection=None, task_vars=None):
        self.connection = connection or Connection(self.machine)
        task = SimpleNamespace(args=args, async_val=0, check_mode=check, diff=True, action="velmor.zelk.x", delegate_to=None)
        action = plugin.ActionModule(task, self.connection, SimpleNamespace(remote_user="admin", remote_addr=HOME), None, None,
                                     None)
        action._load_name = "x"
        return action.run(task_vars={"inventory_hostname": "station1", **(task_vars or {})})

    def verbs(self):
        return [command[0] for command in self.machine.commands]


def adapter(**members):
    return {"adapters": [{"adapter": "lo", **members}]}


# What is wrong, and where.
FAULTY = [
    ({"adapters": [{"ipv4": {}}]}, "/adapters/0"),
    (adapter(ipv4={"address": "192.0.2.1/24"}), "/adapters/0/ipv4/address"),
    (adapter(ipv4={"addresses": "192.0.2.1/24"}), "/adapters/0/ipv4/addresses"),
    (adapter(ipv4={"addresses": ["192.0.2.1"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["192.0.2.300/24"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["2001:db8::1/64"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["192.0.2.0/24"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["192.0.2.255/24"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["224.0.0.1/4"]}), "/adapters/0/ipv4/addresses/0"),
    (adapter(ipv4={"addresses": ["192.0.2.1/24", "192.0.2.1/25"]}), "/adapters/0/ipv4/addresses/1"),
    (adapter(ipv4={"addresses": ["192.0.2.1/24"], "dhcp": True}), "/adapters/0/ipv4/addresses"),
    (adapter(ipv4={"addresses": ["192.0.2.1/24"], "gateways": ["198.51.100.1"]}), "/adapters/0/ipv4/gateways/0"),
    (adapter(ipv4={"addresses": ["192.0.2.1/24"], "gateways": [{"address": "192.0.2.1"}]}), "/adapters/0/ipv4/gateways/0"),
    (adapter(ipv4={"addresses": ["192.0.2.1/24"], "gateways": [{"address": "192.0.2.9", "metric": 0}]}),
     "/adapters/0/ipv4/gateways/0"),
    (adapter(ipv4={"dnsServers": ["224.0.0.251"]}), "/adapters/0/ipv4/dnsServers/0"),
    (adapter(ipv4={"dnsServers": "auto"}), "/adapters/0/ipv4/dnsServers"),
    (adapter(ipv4={"mtu": 500}), "/adapters/0/ipv4/mtu"),
    (adapter(ipv4={"dnsSuffix": "-x"}), "/adapters/0/ipv4/dnsSuffix"),
    (adapter(routes=[{"destination": "10.0.0.1/8"}]), "/adapters/0/routes/0/destination"),
    (adapter(routes=[{"destination": "0.0.0.0/0"}]), "/adapters/0/routes/0/destination"),
    (adapter(hardwareAddress="01-00-00-00-00-01"), "/adapters/0/hardwareAddress"),
    ({"adapters": [{"adapter": "lo"}, {"adapter": "LO"}]}, "/adapters/1/adapter"),
    ({"identity": {"computerName": "two words"}}, "/identity/computerName"),
]


class BeforeAnyConnection(Base):
    def test_a_wrong_state_is_refused(self):
        for document, place in FAULTY:
            with self.subTest(document):
                result = self.run_action(state, document)
                self.assertTrue(result["failed"])
                self.assertIn(f"\n  {place}", result["msg"])
                self.assertEqual(0, self.connection.opened)

    def test_wrong_options_are_refused(self):
        for args, text in [({}, "one of the following is required: adapters, identity"),
                           ({**STATE, "confirm_within": 0}, "confirm_within: must be"),
                           ({**STATE, "confirm_within": 9, "wait_for": "gateway"}, "wait_for: \"gateway\""),
                           ({**STATE, "path": "ZELK"}, "path: \"ZELK\" is not the full path"),
                           ({**STATE, "path": r"C:\ZELK\..\x"}, "is not the full path"),
                           ({**STATE, "adapter": "lan0"}, "adapter. Supported parameters include")]:
            with self.subTest(args):
                self.assertIn(text, self.run_action(state, args)["msg"])
                self.assertEqual(0, self.connection.opened)
        posix = Connection(self.machine, windows=False)
        self.assertIn("ansible_shell_type", self.run_action(state, STATE, connection=posix)["msg"])
        self.assertEqual(0, posix.opened)

    def test_the_tool_refuses_what_is_refused_here(self):
        with tempfile.TemporaryDirectory() as folder:
            for document, place in FAULTY:
                with self.subTest(document):
                    file = os.path.join(folder, "state.json")
                    with open(file, "w", encoding="utf-8") as out:
                        out.write(desired_state.text_of(document))
                    run = subprocess.run([*os.environ["ZELKCTL"].split(), "apply", f"Z:{file}", "--check", "--json"],
                                         stdin=subprocess.DEVNULL, capture_output=True, check=False)
                    self.assertEqual(2, run.returncode, run.stderr)
                    self.assertIn(place, json.loads(run.stdout)["error"]["reason"])

    def test_what_templates_make_of_numbers_is_understood(self):
        given, faults = desired_state.checked(adapter(enabled="yes", ipv4={"mtu": "1400", "metric": "20"}))
        self.assertEqual(([], adapter(enabled=True, ipv4={"mtu": 1400, "metric": 20})), (faults, given))

    def test_the_documentation_has_the_keys_of_the_schema(self):
        def keys(schema):
            members = schema.get("properties") or schema.get("items", {}).get("properties") or {}
            return {name: keys(member) for name, member in members.items()}

        def options(told):
            return {name: options(option) for name, option in (told.get("suboptions") or {}).items()}
        told = yaml.safe_load(documentation.DOCUMENTATION)["options"]
        for name in ("adapters", "identity"):
            self.assertEqual(keys(desired_state.load_schema()["properties"][name]), options(told[name]))


class Changes(Base):
    def test_are_told_honestly(self):
        checked = self.run_action(state, STATE, check=True)
        self.assertTrue(checked["changed"])
        self.assertEqual({"before": "lan0:\n  ipv4.addresses:\n  - a\n", "after": "lan0:\n  ipv4.addresses:\n  - b\n"},
                         checked["diff"])
        self.assertIsNone(self.machine.state)
        self.assertTrue(self.run_action(state, STATE)["changed"])
        for check in (False, True):
            again = self.run_action(state, STATE, check=check)
            self.assertEqual((False, {"before": "", "after": ""}), (again["changed"], again["diff"]))
        self.assertEqual({}, self.machine.files)

    def test_find_a_machine_that_has_its_new_address_already(self):
        self.machine.files = {rf"C:\Program Files\ZELK\{name}": b"older" for name in carried.FILES}
        self.machine.reachable = {MOVED}
        for plugin, args in ((install, {}), (state, STATE), (info, {})):
            for check in (True, False):
                result = self.run_action(plugin, {**args, "reconnect_to": MOVED}, check)
                self.assertEqual(plugin is not info, result.get("changed"), result)
        result = self.run_action(info, {"reconnect_to": "192.0.2.99"})
        self.assertTrue(result["unreachable"], result)

    def test_failures_say_what_the_tool_said(self):
        step = {"adapter": "lan0", "step": "Sets it", "outcome": "failed", "reason": "Access is denied", "output": None}
        failed = {"changed": False, "outcome": "failed", "items": [], "steps": [step], "notes": [], "pendingChange": None,
                  "undo": {"complete": True, "differences": []}}
        for answer, texts in [
                ((4, "error", error("this requires elevation", 4, hint="Run it elevated.")), ["this requires elevation", "Run it"]),
                ((3, "error", error("there is no adapter \"x\"", 3, operation="Find")), ["Find failed: there is no adapter"]),
                ((1, "result", failed), ["lan0: Sets it: failed. Access is denied", "What was done was undone."]),
                ((6, "result", {**failed, "changed": True}), ["does not show the whole change; it was not taken back"])]:
            with self.subTest(answer):
                self.machine.answers["apply"] = answer
                result = self.run_action(state, STATE)
                self.assertTrue(result["failed"])
                self.assertEqual(answer[0] == 6, result["changed"])
                for text in texts:
                    self.assertIn(text, result["msg"])
                self.assertEqual({}, self.machine.files)

    def test_answers_that_are_cut_off_are_none(self):
        for output in ("", "{", '{"result": {}}', '{"result": {}}\nzelk: exit c'):
            self.assertRaises(scripts.CutOff, scripts.answer_of, output, "")
        self.assertRaises(scripts.NoAnswer, scripts.answer_of, "zelk: exit code ", "not recognized")
        self.assertEqual("'it''s ‘‘x'", scripts.quote("it's ‘x"))


class Confirmation(Base):
    def change(self, **options):
        return self.run_action(state, {**STATE, "confirm_within": 30, "timeout": 10, **options})

    def test_is_of_this_change_at_the_new_address(self):
        for breaks in (False, True):
            with self.subTest(breaks=breaks):
                self.machine.__init__()
                self.machine.breaks, self.machine.moves_to = breaks, {MOVED}
                other = self.machine.add_pending("of somebody else", "2222222222222222", within=10**6)
                self.machine.changes[0]["phase"] = "restoring"
                result = self.change(reconnect_to=MOVED)
                self.assertTrue(result["changed"], result)
                self.assertEqual("lan0:\n  ipv4.addresses:\n  - b\n", result["diff"]["after"])
                self.assertEqual({}, self.machine.files)
                self.assertIn(["confirm", "1111111111111111"], self.machine.commands)
                self.assertEqual([other], [entry["id"] for entry in self.machine.changes])
                *during, restored, reset = self.connection.ssh_args
                self.assertTrue(all("ControlPath=none" in options for options in during))
                self.assertIn(f"HostKeyAlias={HOME}", during[-1])
                self.assertEqual(("-C", "reset", HOME), (restored, reset, self.connection.get_option("host")))

    def test_is_not_given_where_the_machine_is_cut_off(self):
        self.machine.breaks, self.machine.moves_to = True, set()
        result = self.change(reconnect_to=MOVED)
        self.assertEqual("station1 has restored its previous state because nobody confirmed the change in time", result["msg"])
        self.assertFalse(result["changed"])
        self.assertNotIn("confirm", self.verbs())

    def test_is_not_given_at_the_old_address_when_a_new_one_is_named(self):
        self.assertIn("has restored its previous state", self.change(reconnect_to=MOVED)["msg"])
        self.assertNotIn("confirm", self.verbs())

    def test_a_machine_that_stays_away_is_unreachable(self):
        self.machine.breaks, self.machine.moves_to = True, set()
        self.machine.look = mock.Mock(wraps=self.machine.look)
        look = self.machine.look

        def never_again(address):
            if self.machine.state is not None:
                look.side_effect = ConnectionError("no route")
            return look(address)
        self.machine.look = never_again
        result = self.change()
        self.assertTrue(result["unreachable"])
        self.assertIn(f"station1 can no longer be reached at {HOME}; unless it is confirmed", result["msg"])

    def test_is_given_to_what_an_interrupted_run_has_left(self):
        with mock.patch.object(change.Change, "_confirm", side_effect=KeyboardInterrupt):
            self.assertRaises(KeyboardInterrupt, self.change)
        self.assertEqual(["waiting"], [entry["phase"] for entry in self.machine.changes])
        result = self.change()
        self.assertTrue(result["changed"])
        self.assertIn("An earlier run of this task, of T0, was interrupted", result["notes"][0])
        self.assertEqual([], self.machine.changes)
        self.assertFalse(self.change()["changed"])

    def test_is_not_given_to_what_others_have_made(self):
        for label in (None, "velmor.zelk.state 0123456789abcdef 00000000"):
            with self.subTest(label):
                self.machine.__init__()
                self.machine.add_pending(label, "2222222222222222", within=10**6)
                for options in ({}, {"confirm_within": None}):
                    result = self.change(**options)
                    self.assertIn("a change of station\\admin since T0", result["msg"])
                    self.assertFalse(result["changed"])
                self.assertNotIn("confirm", self.verbs())
                self.assertIsNone(self.machine.state)

    def test_is_not_given_to_what_the_machine_does_not_show(self):
        self.machine.answers["apply"] = None
        apply = self.machine.apply

        def not_verified(file, *arguments):
            code, member, value = apply(file, *arguments)
            return (code, member, value) if "--check" in arguments else (6, member, {**value, "outcome": "notVerified"})
        self.machine.apply = not_verified
        del self.machine.answers["apply"]
        result = self.change()
        self.assertIn("station1 has restored its previous state", result["msg"])
        self.assertFalse(result["changed"])
        self.assertEqual(["restore", "1111111111111111", "--yes"], self.machine.commands[-1])


class Installation(Base):
    def setUp(self):
        super().setUp()
        self.there = {rf"C:\Program Files\ZELK\{name}": name for name in carried.FILES}

    def content(self, name):
        with open(os.path.join(carried.FOLDER, name), "rb") as file:
            return file.read()

    def test_copies_only_what_differs(self):
        library, program = self.there
        self.assertTrue(self.run_action(install, {}, check=True)["changed"])
        self.assertEqual({}, self.machine.files)
        self.machine.files = {library: self.content("ZELK_NM.DLL"), program: b"older"}
        with mock.patch.object(Machine, "put", autospec=True, side_effect=Machine.put) as put:
            self.assertTrue(self.run_action(install, {})["changed"])
            self.assertEqual([program + ".new"], [call.args[2] for call in put.call_args_list])
            self.assertFalse(self.run_action(install, {})["changed"])
            self.assertEqual(1, put.call_count)
        self.assertEqual({path: self.content(name) for path, name in self.there.items()}, self.machine.files)

    def test_leaves_what_is_there_when_a_copy_is_damaged(self):
        self.machine.files = before = {path: b"older" for path in self.there}
        self.machine.damage = "ZELK_NM.DLL"
        self.assertIn("ZELK_NM.DLL arrived with another checksum", self.run_action(install, {})["msg"])
        self.assertEqual({path: b"older" for path in self.there}, before)

    def test_carries_nothing_but_what_was_built(self):
        with mock.patch.object(carried, "sum_of", return_value="0" * 64):
            self.assertIn("of this collection is damaged", self.run_action(install, {})["msg"])
        self.assertEqual(0, self.connection.opened)


class Reports(Base):
    EVIL = "</script><script>alert(1)</script>&\u2028сеть"

    def test_hold_what_machines_said_and_run_none_of_it(self):
        self.machine.show = lambda: (0, "result", {"adapters": [{"name": self.EVIL}]})
        reading = self.run_action(info, {})
        self.assertEqual(self.EVIL, reading["reading"]["adapters"][0]["name"])
        failed = {"failed": True, "msg": "station2 has restored its previous state"}
        hosts = {"hostvars": {"station1": {"zelk_info": reading}, "station2": {"zelk_state": failed}, "station3": {}},
                 "ansible_play_hosts_all": ["station1", "station2", "station3"]}
        with tempfile.TemporaryDirectory() as folder:
            args = {"dest": os.path.join(folder, "fleet.html")}
            with mock.patch.object(page, "now", side_effect="1234"):
                results = [self.run_action(report, args, check, task_vars=hosts)["changed"]
                           for check in (True, False, False, True)]
            self.assertEqual([True, True, False, False], results)
            self.assertEqual(["fleet.html"], os.listdir(folder))
            with open(args["dest"], encoding="utf-8") as file:
                text = file.read()
            with open(page.TEMPLATE, encoding="utf-8") as file:
                before, after = file.read().split(page.PLACEHOLDER)
        data = text[len(before):-len(after)]
        self.assertFalse(set("<>&\u2028\u2029") & set(data))
        told = json.loads(data)["machines"]
        self.assertEqual(self.EVIL, told[0]["reading"]["adapters"][0]["name"])
        self.assertEqual([None, failed["msg"], "no task has told anything of this machine"],
                         [machine.get("error") for machine in told])

    def test_say_why_they_cannot_be_written(self):
        result = self.run_action(report, {"dest": "/proc/none/fleet.html", "machines": [{"machine": "a", "error": "b"}]})
        self.assertIn("No such file", result["msg"])
        self.assertIn("machines[0]: needs", self.run_action(report, {"dest": "x", "machines": [{"machine": "a"}]})["msg"])


if __name__ == "__main__":
    unittest.main()
