#!/usr/bin/env bash
# Builds the Debian package and proves it: validators, content, and where this machine permits, installing,
# starting and removing it on a bare Debian 12 root.
# usage: packaging/check_package.sh [--no-root] [PACKAGE.deb]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/bare_root.sh"

work=$(mktemp -d)
trap 'remove_bare_root "$work"' EXIT
with_root=yes
package=
for argument in "$@"; do
    case $argument in
        --no-root) with_root=no ;;
        *) package=$(realpath "$argument") ;;
    esac
done
[ -n "$package" ] || package=$("$here/make_deb.sh" | tail -1)

failures=0
check() {
    local title=$1
    shift
    if "$@"; then
        echo "OK    $title"
    else
        echo "FAIL  $title"
        failures=$((failures + 1))
    fi
}

holds_every_file() {
    local content
    content=$(dpkg-deb --contents "$package" | awk '{print $6}')
    for path in usr/bin/morvane usr/bin/morvanectl usr/lib/morvane/morvane-media \
        usr/share/applications/com.morvane.assistant.desktop \
        usr/share/metainfo/com.morvane.assistant.metainfo.xml \
        usr/share/icons/hicolor/scalable/apps/com.morvane.assistant.svg \
        usr/share/icons/hicolor/16x16/apps/com.morvane.assistant.png \
        usr/share/icons/hicolor/512x512/apps/com.morvane.assistant.png \
        usr/share/man/man1/morvane.1.gz usr/share/man/man1/morvanectl.1.gz \
        usr/share/man/zh_CN/man1/morvane.1.gz usr/share/man/zh_CN/man1/morvanectl.1.gz \
        usr/share/doc/morvane/copyright usr/share/doc/morvane/changelog.gz \
        usr/share/doc/morvane/changelog.Debian.gz; do
        grep -qx "./$path" <<<"$content" || { echo "missing: $path"; return 1; }
    done
    ! grep -iE '\.(dtd|hpp|h|a)$' <<<"$content"
}

depends_on() {
    dpkg-deb --field "$package" Depends | grep -qE "(^|, )$1( |,|$)" || { echo "no dependency on $1"; return 1; }
}

check "the package holds every file" holds_every_file
for library in libqt6widgets6 libmpv2 libvips42 libsqlite3-0 fonts-noto-cjk libxml2-utils; do
    check "it depends on $library" depends_on "$library"
done
check "the desktop entry is valid" desktop-file-validate "$here/com.morvane.assistant.desktop"
check "the metainfo is valid" appstreamcli validate --no-net "$here/com.morvane.assistant.metainfo.xml"
# The one tag left out asks for the number of a request to package, which only Debian's own archive has.
check "lintian finds nothing" lintian --fail-on error,warning --allow-root \
    --suppress-tags initial-upload-closes-no-bugs "$package"

proves_itself_on_a_bare_root() {
    local root=$work/root
    make_bare_root "$root" || return 1
    cp "$package" "$root/package.deb"
    in_bare_root "$root" bash -c '
        set -e
        apt-get -q update
        apt-get -q install -y --no-install-recommends /package.deb
        dpkg -L morvane > /installed
        morvanectl --version
        mkdir -p /media/day1
        echo x > /media/day1/a.wav
        morvanectl library add /media --json | tee /added.json
        grep -q "\"assetCount\": 1" /added.json
        morvane --ui-smoke-test /smoke
        ls /smoke
        test -s /smoke/ui-smoke-results.json
        test ! -e /smoke/ui-smoke-error.txt
        if morvane; then echo "started without a display"; exit 1; fi
        apt-get -q purge -y morvane
        while read -r path; do
            if [ -f "$path" ]; then echo "left behind: $path"; exit 1; fi
        done < /installed
    '
}

if [ "$with_root" = yes ] && bare_root_possible; then
    check "it installs, starts and goes on a bare Debian 12" proves_itself_on_a_bare_root
fi

[ "$failures" -eq 0 ]
