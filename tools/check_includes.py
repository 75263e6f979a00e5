#!/usr/bin/env python3
"""Checks every #include of src/ and desk/ against the component table in docs/architecture.md.

A table row names a folder in its first cell and, in its last, the folders that it may include. Each file belongs to the
row with the longest matching folder; files outside the table's folders are not checked. Prints each include that the table does not
allow and exits with status 1 if there is one.
"""
import re
import subprocess
import sys

TABLE = "docs/architecture.md"
FOLDER = re.compile(r"`((?:src|desk)/[a-z_/]*)`")
INCLUDE = re.compile(r'\s*#\s*include\s+"([^"]+)"')


def read_table():
    """Returns {folder: [folders it may include]}."""
    allowed = {}
    with open(TABLE, encoding="utf-8") as page:
        for line in page:
            cells = line.strip().strip("|").split("|")
            owners = FOLDER.findall(cells[0]) if line.startswith("|") and len(cells) > 2 else []
            for owner in owners:
                allowed[owner] = FOLDER.findall(cells[-1])
    return allowed


def component_of(path, allowed):
    return max((folder for folder in allowed if path.startswith(folder)), key=len, default=None)


def included_paths(path):
    with open(path, encoding="utf-8") as source:
        for number, line in enumerate(source, 1):
            match = INCLUDE.match(line)
            if match:
                name = match.group(1)
                yield number, name if name.startswith("desk/") else "src/" + name


def violations(path, allowed):
    component = component_of(path, allowed)
    for number, included in included_paths(path):
        target = component_of(included, allowed)
        permitted = target == component or any(included.startswith(folder) for folder in allowed[component])
        if not permitted:
            yield f"{path}:{number}: {component} may not include {included}"


def main():
    allowed = read_table()
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", "src/*.h", "src/*.cpp", "desk/*.h", "desk/*.cpp"],
                           check=True, capture_output=True, text=True).stdout.split()
    found = []
    for path in files:
        if component_of(path, allowed) is None:
            found.append(f"{path}: no row of the component table in {TABLE} covers this file")
        else:
            found.extend(violations(path, allowed))
    print("\n".join(found) if found else f"{len(files)} files, {len(allowed)} components: all includes are allowed")
    return 1 if found or not allowed else 0


if __name__ == "__main__":
    sys.exit(main())
