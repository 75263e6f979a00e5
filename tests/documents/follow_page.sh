#!/usr/bin/env bash
# Follows a page of the documents in an empty folder: runs its commands, and compares what they print.
#
# follow_page.sh PROGRAM PAGE [HEADING...]: the commands below these headings are left out.
set -euo pipefail
script=$("$(dirname "${BASH_SOURCE[0]}")/page_script.py" "${@:2}")
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
PATH="$(dirname "$1"):$PATH" bash -c "$script"
