"""A headless Chromium that is told what to do through two pipes, by its own protocol: no library and no port is needed."""
import base64
import json
import os
import shutil
import subprocess
import tempfile
import zlib
from collections.abc import Callable
from typing import Any

CHROMIUM = shutil.which("chromium")


class Browser:
    """One process and one tab. What a page asks the network for, and what its console reports, is kept."""

    def __init__(self) -> None:
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self._commands = os.pipe()
        self._answers, from_browser = os.pipe()
        self._process = subprocess.Popen(
            [CHROMIUM or "chromium", "--headless", "--no-sandbox", "--disable-gpu", "--remote-debugging-pipe",
             f"--user-data-dir={self._profile.name}", "--window-size=1200,1600", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=lambda: self._place(to_browser, from_browser), close_fds=False)
        os.close(to_browser)
        os.close(from_browser)
        self._received = b""
        self._number = 0
        self._session: dict[str, str] = {}
        self.events: list[dict[str, Any]] = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = {"sessionId": self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]}
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")

    @staticmethod
    def _place(to_browser: int, from_browser: int) -> None:
        """Where the browser expects its pipes; through higher numbers, because one may be the other's place."""
        read, write = os.dup2(to_browser, 103), os.dup2(from_browser, 104)
        os.dup2(read, 3)
        os.dup2(write, 4)

    def close(self) -> None:
        self.call("Browser.close")
        self._process.wait(timeout=30)
        os.close(self._commands)
        os.close(self._answers)
        self._profile.cleanup()

    def _message(self) -> dict[str, Any]:
        while b"\0" not in self._received:
            piece = os.read(self._answers, 1 << 20)
            if not piece:
                raise RuntimeError("the browser has ended")
            self._received += piece
        message, self._received = self._received.split(b"\0", 1)
        return json.loads(message)

    def _take_until(self, wanted: Callable[[dict[str, Any]], bool]) -> dict[str, Any]:
        while not wanted(message := self._message()):
            self.events.append(message)
        return message

    def call(self, method: str, **parameters: Any) -> dict[str, Any]:
        self._number += 1
        number = self._number
        command = {"id": number, "method": method, "params": parameters, **self._session}
        os.write(self._commands, json.dumps(command).encode() + b"\0")
        answer = self._take_until(lambda message: message.get("id") == number)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']}")
        return answer["result"]

    def open(self, path: str) -> None:
        """Waits until the page has loaded, its own script included."""
        self.events.clear()
        self.call("Page.navigate", url=f"file://{path}")
        if not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self._take_until(lambda message: message.get("method") == "Page.loadEventFired"))

    def ask(self, expression: str) -> Any:
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"]["description"])
        return answer["result"].get("value")

    def show_as(self, medium: str, scheme: str) -> None:
        self.call("Emulation.setEmulatedMedia", media=medium,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def press(self, key: str, code: int, typed: str = "") -> None:
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=code, text=typed)

    def screenshot(self) -> bytes:
        return base64.b64decode(self.call("Page.captureScreenshot", format="png")["data"])

    def pdf(self) -> bytes:
        return base64.b64decode(self.call("Page.printToPDF", printBackground=False)["data"])

    def complaints(self) -> list[str]:
        """Errors of the page's script, what its policy has refused, and whatever was asked of the network."""
        found = []
        for event in self.events:
            details = event.get("params", {})
            if event.get("method") in ("Runtime.exceptionThrown", "Log.entryAdded"):
                found.append(json.dumps(details))
            if event.get("method") == "Network.requestWillBeSent" and not details["request"]["url"].startswith("file:"):
                found.append(details["request"]["url"])
        return found


def ink(png: bytes) -> float:
    """How much of a picture is not plain: the share of its filtered bytes, which are differences, that are not 0."""
    data, place = b"", 8
    while place < len(png):
        length = int.from_bytes(png[place:place + 4], "big")
        if png[place + 4:place + 8] == b"IDAT":
            data += png[place + 8:place + 8 + length]
        place += length + 12
    filtered = zlib.decompress(data)
    return 1 - filtered.count(0) / len(filtered)
