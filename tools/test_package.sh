#!/usr/bin/env bash
# Tests a Debian package and "./dev install" on a bare Debian, in a folder of its own: follows the tutorial word by word,
# which begins with the installation, publishes the example, compares the result with that of the program in
# build/release, removes the package again, and compares the files with those before. Runs as root.
#
# test_package.sh PACKAGE
set -euo pipefail
package=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

BARE=build/bare-debian
ROOT=build/bare-debian-test

say() { printf '%s\n' "-- $*" >&2; }

# Runs a command in the tested system. Its processes and its /proc end with the command.
inside() {
    unshare --mount --pid --fork --mount-proc="$ROOT/proc" chroot "$ROOT" \
        env -i HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
}

# The files of the tested system, without what packages and programs may leave by their nature.
files() {
    find "$ROOT" -xdev \( -path "$ROOT/proc" -o -path "$ROOT/var/lib/dpkg" -o -path "$ROOT/var/lib/apt" -o \
        -path "$ROOT/var/cache" -o -path "$ROOT/var/log" -o -path "$ROOT/root" \) -prune -o -print | sort
}

expect_files() {
    files | diff "$1" - >&2 || { say "$2 left or removed these files"; return 1; }
}

OPTIONS=(--attributes audience,product --elements uicontrol --xpath --viewer --map)

# The log of the transformation and the manifest differ between runs.
publish_example() {
    inside ventrix publish "$1/share/doc/ventrix/examples/pump-guide/pump-guide.ditamap" -o /root/out "${OPTIONS[@]}"
    rm -rf build/package-expected build/package-expected.log
    build/release/desk/ventrix publish examples/pump-guide/pump-guide.ditamap -o build/package-expected "${OPTIONS[@]}" >/dev/null
    grep -rqF 'audienceQL_SEP' build/package-expected --include '*.html'
    diff -r --exclude buildlog-xhtml.txt --exclude .ventrix-result build/package-expected "$ROOT/root/out" >&2 ||
        { say "the result of the installed program in $1 is another one"; return 1; }
    inside rm -rf /root/out /root/out.log
}

if [ ! -e "$BARE/.complete" ]; then
    say "creating a bare Debian"
    rm -rf "$BARE"
    debootstrap --variant=minbase bookworm "$BARE" >build/debootstrap.txt
    touch "$BARE/.complete"
fi
rm -rf "$ROOT"
cp -a "$BARE" "$ROOT"
cp /etc/resolv.conf "$ROOT/etc/resolv.conf"
files >build/files-bare.txt

# The tutorial begins with the installation.
say "following the tutorial"
mkdir "$ROOT/home/you"
cp "$package" "$ROOT/home/you/"
tests/documents/page_script.py docs/tutorial.md >"$ROOT/root/tutorial.sh"
inside bash -c 'cd /home/you && bash /root/tutorial.sh' >build/package-tutorial.txt
rm -rf "$ROOT/home/you"
say "publishing the example"
publish_example /usr
say "removing the package"
inside apt-get purge -y -qq --autoremove ventrix >build/package-remove.txt
expect_files build/files-bare.txt "the package"

say "installing without the package"
inside apt-get install -y -qq --no-install-recommends libxml2 libxslt1.1 libicu72 libmimalloc2.0 \
    >build/package-install.txt
files >build/files-before.txt
./dev install "$ROOT/usr/local"
publish_example /usr/local
./dev uninstall "$ROOT/usr/local"
expect_files build/files-before.txt "the installation"
rm -rf "$ROOT"
