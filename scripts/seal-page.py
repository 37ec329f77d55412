#!/usr/bin/env python3
"""seal-page.py [--check]: writes the hashes of the report page's script and style into its Content-Security-Policy, so that
a browser runs these and nothing else; with --check it only says whether they are right."""
import base64
import hashlib
import pathlib
import re
import sys

PAGE = pathlib.Path(__file__).resolve().parent.parent / "cli/report/page.html"


def hash_of(element: str, page: str) -> str:
    content = re.search(rf"<{element}>(.*?)</{element}>", page, re.DOTALL)[1]
    return base64.b64encode(hashlib.sha256(content.encode()).digest()).decode()


def main(arguments: list[str]) -> int:
    page = PAGE.read_text(encoding="utf-8")
    sealed = page
    for element in ("script", "style"):
        sealed = re.sub(rf"({element}-src 'sha256-)[^']*'", lambda found: f"{found[1]}{hash_of(element, page)}'", sealed, count=1)
    if sealed == page:
        return 0
    if "--check" in arguments:
        print(f"{PAGE.name} was changed: run scripts/seal-page.py")
        return 1
    PAGE.write_text(sealed, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
