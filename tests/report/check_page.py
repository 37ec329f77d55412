#!/usr/bin/env python3
"""check_page.py FOLDER RUNNER ZELKCTL: opens pages that the real zelkctl makes in a browser, and holds what is shown there
against what the machines say. Exit code 77 where there is no browser."""
import json
import pathlib
import subprocess
import sys
import time
import unittest
from typing import Any

import fleet
from browser import CHROMIUM, Browser, ink

FOLDER, TOOL = pathlib.Path(sys.argv[1]), sys.argv[2:4]


def run_tool(*arguments: str) -> str:
    result = subprocess.run([*TOOL, *arguments], cwd=FOLDER, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if result.returncode != 0:
        raise RuntimeError(f"zelkctl {' '.join(arguments)}: {result.stderr.decode()}")
    return result.stdout.decode()


def make_page(name: str, document: Any = None) -> str:
    """A page of this machine, or of those in the document."""
    readings = [] if document is None else [f"{name}.json"]
    for file in readings:
        (FOLDER / file).write_text(json.dumps(document), encoding="utf-8")
    run_tool("report", f"{name}.html", *readings)
    return str(FOLDER / f"{name}.html")


PROBES = (pathlib.Path(__file__).parent / "probes.js").read_text(encoding="utf-8")


class Page(unittest.TestCase):
    browser: Browser

    @classmethod
    def setUpClass(cls) -> None:
        FOLDER.mkdir(parents=True, exist_ok=True)
        cls.browser = Browser()

    @classmethod
    def tearDownClass(cls) -> None:
        cls.browser.close()

    def setUp(self) -> None:
        self.browser.show_as("screen", "light")

    def open(self, path: str) -> str:
        """The text that is seen."""
        self.browser.open(path)
        self.assertEqual([], self.browser.complaints())
        self.browser.ask(PROBES)
        return self.browser.ask("document.body.innerText")

    def test_this_machine_is_drawn(self) -> None:
        adapters = json.loads(run_tool("show", "--json"))["result"]["adapters"]
        self.open(make_page("this"))
        drawing = self.browser.ask("textsOf('svg.drawing')")
        shown = [adapter for adapter in adapters if not adapter["hidden"]]
        self.assertTrue(shown)
        for adapter in shown:
            families = [adapter["ipv4"], adapter["ipv6"]]
            facts = [adapter["name"]]
            facts += [f"{one['address']}/{one['prefixLength']}" for family in families for one in family["addresses"] or []]
            facts += [one["address"] for family in families for one in family["gateways"] or []]
            facts += [one for family in families for one in family["dnsServers"] or []]
            for fact in facts:
                self.assertIn(fact, drawing)
        self.assertGreater(ink(self.browser.screenshot()), 0.01)

    def test_texts_of_machines_are_shown_and_not_run(self) -> None:
        machines = [{"machine": text, "error": text, "reading": fleet.reading(0, text), "difference": fleet.plan(text),
                     "apply": fleet.change(text), "trace": fleet.trace(10, text)} for text in fleet.HOSTILE]
        odd = {"adapters": [{"name": "odd", "status": "constructor", "ipv4": {"addresses": [{"address": "192.0.2.1", "origin": "__proto__"}]}}]}
        machines.append({"machine": "__proto__", "reading": {"environment": {}, **odd}, "trace": [{"time": "", "level": "toString"}],
                         "apply": {"outcome": "valueOf", "steps": [{"step": "odd", "outcome": "constructor"}]}})
        self.open(make_page("hostile", {"machines": machines}))
        self.browser.ask("document.querySelectorAll('details').forEach(open)")
        self.assertEqual([], self.browser.complaints())
        self.assertIsNone(self.browser.ask("window.ran"))
        self.assertNotRegex(self.browser.ask("document.body.innerText"), "cannot be shown|native code")
        # The heading, the drawing, a difference, the steps of a plan, the output of a step, the trace, a failure.
        for place in ("h2", "svg .name", "td", "ol.steps code", "p.mono", "td.mono", "p.wrong"):
            texts = self.browser.ask(f"textsOf({place!r})")
            for text in fleet.HOSTILE:
                self.assertIn(text, texts, place)

    def test_errors_come_first_and_bars_are_durations(self) -> None:
        machine = {"machine": "one", "reading": fleet.reading(1), "apply": fleet.change(), "trace": fleet.trace(500)}
        text = self.open(make_page("one", machine))
        self.assertEqual(["Error"] * 50, self.browser.ask("textsOf('td.bad, td.watch')").splitlines()[1:])
        self.assertIn("1.8 s", text)
        widths = self.browser.ask("[...document.querySelectorAll('.bars rect')].map((bar) => Number(bar.getAttribute('width')))")
        self.assertAlmostEqual(212 / 1840, widths[0] / widths[1], places=3)

    def test_nothing_is_lost_in_the_dark_or_on_paper(self) -> None:
        light = self.open(make_page("five", fleet.fleet(5)))
        pictures = {self.browser.screenshot()}
        self.assertEqual([], self.browser.ask("faintTexts()"))
        self.browser.show_as("screen", "dark")
        self.assertEqual(light, self.browser.ask("document.body.innerText"))
        self.assertEqual([], self.browser.ask("faintTexts()"))
        pictures.add(self.browser.screenshot())
        self.assertEqual(2, len([picture for picture in pictures if ink(picture) > 0.01]))

        self.browser.ask("dispatchEvent(new Event('beforeprint'))")
        self.browser.show_as("print", "dark")
        paper = self.browser.ask("document.body.innerText")
        for number in range(5):
            for fact in (f"host-{number}", f"10.0.0.{number + 2}/16", f"02-00-00-00-00-{number:02X}", "198.51.100.0/24"):
                self.assertIn(fact, paper)
        self.assertEqual("rgb(255, 255, 255)", self.browser.ask("getComputedStyle(document.body).backgroundColor"))
        self.assertEqual([], self.browser.ask("faintTexts()"))

    def test_five_hundred_machines(self) -> None:
        path = make_page("many", fleet.fleet(500))
        begin = time.monotonic()
        self.open(path)
        loaded = time.monotonic() - begin
        print(f"500 machines, {pathlib.Path(path).stat().st_size / 1e6:.1f} MB: shown after {loaded * 1000:.0f} ms", flush=True)
        self.assertLess(loaded, 10)
        self.assertEqual(500, len(self.browser.ask("machinesSeen()")))
        self.assertEqual(0, self.browser.ask("document.querySelectorAll('svg').length"), "what is folded costs nothing")
        for query, found in (("HOST-499", ["host-499"]), ("10.0.1.249 02-00-00-00-01-f7", ["host-497"]), ("nobody", [])):
            self.browser.ask(f"searchFor({query!r})")
            self.assertEqual(found, self.browser.ask("machinesSeen()"))
        self.browser.ask("searchFor(''); filter.value = 2; filter.dispatchEvent(new Event('change'))")
        self.assertEqual(60, len(self.browser.ask("machinesSeen()")))

    def test_it_is_used_by_keyboard_and_screen_reader(self) -> None:
        self.open(make_page("some", fleet.fleet(30)))
        self.assertEqual([], self.browser.ask("missingForReaders()"))
        self.browser.press("Tab", 9)
        self.assertEqual("Skip to the machines", self.browser.ask("document.activeElement.textContent"))
        self.assertGreaterEqual(self.browser.ask("document.activeElement.getBoundingClientRect().left"), 0)
        self.browser.ask("document.querySelector('a[href=\"#machine-0\"]').focus()")
        self.browser.ask("opened = new Promise((done) => document.getElementById('machine-0').addEventListener('toggle', done)); 0")
        self.browser.press("Enter", 13, "\r")
        self.browser.ask("opened.then(() => 0)")
        self.browser.ask("document.querySelectorAll('details').forEach(open)")
        described = "textsOf('#machine-0[open] svg[role=img] > desc')"
        self.assertIn("Ethernet (up): 10.0.0.2/16, 2001:db8::10/64", self.browser.ask(described))
        self.assertEqual([], self.browser.ask("missingForReaders()"))

    def test_it_says_what_is_missing_without_scripts(self) -> None:
        path = make_page("two", fleet.fleet(2))
        self.browser.call("Emulation.setScriptExecutionDisabled", value=True)
        self.addCleanup(self.browser.call, "Emulation.setScriptExecutionDisabled", value=False)
        self.browser.open(path)
        self.assertIn("JavaScript is turned off", self.browser.ask("document.querySelector('noscript p').innerText"))
        self.assertGreater(ink(self.browser.screenshot()), 0.001)


if __name__ == "__main__":
    if CHROMIUM is None:
        print("skipped: there is no chromium")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
