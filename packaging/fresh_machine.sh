#!/usr/bin/env bash
# The proof that a fresh machine is enough: copies the committed tree to a bare Debian 12 root and runs
# the two commands of the README there. Takes its time: everything is installed and built from nothing.
# usage: packaging/fresh_machine.sh
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/bare_root.sh"

bare_root_possible || exit 77
work=$(mktemp -d)
trap 'remove_bare_root "$work"' EXIT
make_bare_root "$work/root"
mkdir "$work/root/morvane"
git -C "$here/.." archive HEAD | tar -x -C "$work/root/morvane"
in_bare_root "$work/root" bash -c 'cd /morvane && ./run && ./test'
