#!/usr/bin/env python3
"""seal-page.py: writes the hashes of the report page's script and style into the page's Content-Security-Policy, by which
a browser uses these and no others. To be run after every change of the page."""
import base64
import hashlib
import pathlib
import re

PAGE = pathlib.Path(__file__).resolve().parent.parent / "cli/report/page.html"


def hash_of(element: str, page: str) -> str:
    content = re.search(rf"<{element}>(.*?)</{element}>", page, re.DOTALL)[1]
    return base64.b64encode(hashlib.sha256(content.encode()).digest()).decode()


def main() -> None:
    page = PAGE.read_text(encoding="utf-8")
    sealed = page
    for element in ("script", "style"):
        value = hash_of(element, page)
        sealed = re.sub(rf"({element}-src 'sha256-)[^']*'", lambda found: f"{found[1]}{value}'", sealed, count=1)
    PAGE.write_text(sealed, encoding="utf-8")


if __name__ == "__main__":
    main()
