#!/usr/bin/env bash
# Publishes the examples with the program for Windows under Wine and with that of this system, and compares the results
# byte for byte.
#   same_pages.sh WINE WINDOWS-PROGRAM PROGRAM SOURCE-TREE WORK-FOLDER
set -euo pipefail
wine=$1 windows=$2 program=$3 source=$4 work=$5
docbook=/usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl
failed=0

# Publishes with both programs: compare NAME DOCUMENT OPTIONS...
compare() {
    local name=$1 document=$2
    shift 2
    "$program" publish "$document" -o "$work/$name-here" --quiet "$@" || { echo "$name: status $? on this system"; failed=1; }
    "$wine" "$windows" publish "Z:$document" -o "Z:$work/$name-windows" --quiet "$@" ||
        { echo "$name: status $? on Windows"; failed=1; }
    # The manifest has the time of each file, the build log the paths of the result.
    diff -r -x '.ventrix*' -x '*.log' -x 'buildlog*' "$work/$name-here" "$work/$name-windows" || failed=1
    echo "$name: $(find "$work/$name-windows" -type f | wc -l) files"
}

rm -rf "$work"
mkdir -p "$work"
compare guide "$source/examples/pump-guide/pump-guide.ditamap" --attributes audience,product,platform --elements uicontrol \
    --xpath --source-path section
compare note "$source/examples/service-note/service-note.dita" --xslt "$source/examples/service-note/service-note.xsl" \
    --attributes audience,product --elements uicontrol --xpath
if [ -e "$docbook" ]; then
    compare docbook "$source"/examples/docbook/*.xml --xslt "$docbook" --catalog /etc/xml/catalog --attributes condition \
        --elements guilabel --xpath
fi
exit $failed
