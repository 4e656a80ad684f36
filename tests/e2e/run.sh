#!/usr/bin/env bash
# Runs one end-to-end test file on a session bus of its own.
# usage: run.sh BINARIES PICTURES test_NAME
set -euo pipefail
export MORVANE_BIN_DIR="$1" MORVANE_E2E_PICTURES="$2"
for tool in Xvfb openbox xdotool xprop import ffmpeg dbus-run-session; do
    if ! command -v "$tool" >/dev/null; then
        echo "skipped: $tool is not installed"
        exit 77
    fi
done
if ! /usr/bin/python3 -c 'import gi; gi.require_version("Atspi", "2.0"); gi.require_version("Gtk", "3.0")' \
    2>/dev/null; then
    echo "skipped: python3-gi, gir1.2-atspi-2.0 or gir1.2-gtk-3.0 is not installed"
    exit 77
fi
unset WAYLAND_DISPLAY QT_QPA_PLATFORM
cd "$(dirname "$0")"
# The accessibility bus puts its socket there under a fixed name: two runs at once must not share it.
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR
trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
PYTHONDONTWRITEBYTECODE=1 dbus-run-session -- /usr/bin/python3 -m unittest -v "$3"
