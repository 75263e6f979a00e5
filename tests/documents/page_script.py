#!/usr/bin/env python3
"""Prints a bash script that follows a page: it runs the page's blocks of commands (```sh) and compares what they print.

page_script.py PAGE [HEADING...]: the blocks below these headings are left out.

The script runs in an empty folder, which the page calls /home/you. The lines of a ```text block must be printed by the
block of commands before it, in this order; "..." allows for further lines.
"""
import re
import shlex
import sys

BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$|^## (.*?)$", re.M | re.S)

START = """set -euo pipefail
home=$PWD
trap '[ $? = 0 ] || cat "$home/.printed" >&2' EXIT
# Prints what the last commands printed, if that is not what the page shows.
expect() {
    grep -qzP -- "$1" <<<"$printed" && return
    printf 'The page shows something else:\\n%s\\n' "$2" >&2
    exit 1
}
"""


def command_block(commands):
    # In the same shell, so that cd lasts.
    return ("printf '%s\\n' " + shlex.quote(commands) + "\n"
            "{\n" + commands + "} >\"$home/.printed\" 2>&1\n"
            "printed=$(sed \"s|$home|/home/you|g\" \"$home/.printed\")\n"
            "printf '%s\\n' \"$printed\"\n")


def pattern_of(text):
    lines = [".*" if line == "..." else re.escape(line) for line in text.splitlines()]
    return r"(?s)\A" + r"\n".join(lines) + r"\n\Z"


def script_of(page, left_out):
    heading = ""
    parts = [START]
    for language, content, title in BLOCK.findall(page):
        if title:
            heading = title
        elif heading in left_out:
            continue
        elif language == "sh":
            parts.append(command_block(content))
        elif language == "text":
            parts.append(f"expect {shlex.quote(pattern_of(content))} {shlex.quote(content)}\n")
    return "".join(parts)


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as page:
        sys.stdout.write(script_of(page.read(), sys.argv[2:]))
