#!/usr/bin/env bash
# Builds the Debian package; prints its path on the last line.
# usage: packaging/make_deb.sh [OUTPUT_FOLDER]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
output=${1:-$root/build-package}
build=$root/build-package/tree
umask 022
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
    -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON \
    -DCMAKE_CXX_FLAGS="-fstack-protector-strong -Wformat -Werror=format-security" \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG -D_FORTIFY_SOURCE=2" >&2
cmake --build "$build" --target morvane morvanectl morvane-media morvane_packaging >&2
mkdir -p "$output"
(cd "$build" && cpack -G DEB -D CPACK_CMAKE_GENERATOR=Ninja -B "$output") >&2
rm -rf "$output/_CPack_Packages"
ls -t "$output"/morvane_*.deb | head -1
