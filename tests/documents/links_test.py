"""Checks that the links between the documents, and the files that they name, exist.

Argument: the folder of the sources.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1])
LINK = re.compile(r"\]\(([^):#]+)\)")
NAMED = re.compile(r"`((?:docs|desk|src|tests|tools|resources|examples)/[\w./-]+|[\w-]+\.md)`")


def missing(page):
    text = page.read_text(encoding="utf-8")
    links = [page.parent / link for link in LINK.findall(text)]
    links += [ROOT / path if "/" in path else ROOT / "docs" / path for path in NAMED.findall(text)]
    return [f"{page.relative_to(ROOT)}: {link} does not exist" for link in links if not link.exists()]


pages = [ROOT / "README.md", *sorted(ROOT.glob("docs/**/*.md"))]
found = [line for page in pages for line in missing(page)]
print("\n".join(found) or f"{len(pages)} pages: all links lead to a file")
sys.exit(1 if found else 0)
