#!/usr/bin/env bash
# Builds the Debian package into build/package. The same sources give the same bytes, wherever the folder lies:
# the time they carry is SOURCE_DATE_EPOCH, and without it that of the last commit.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
fi
export SOURCE_DATE_EPOCH
umask 022

# Debian's own flags: hardening, and no path of this machine in the program.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all DEB_CXXFLAGS_MAINT_STRIP=-g
CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)"
LDFLAGS=$(dpkg-buildflags --get LDFLAGS)
export CXXFLAGS LDFLAGS

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
rm -rf build/package
cmake --preset package "${launcher[@]}" >/dev/null
cmake --build --preset package -j "$(nproc)" -- --quiet
(cd build/package && cpack >cpack.log) || { cat build/package/cpack.log >&2; exit 1; }
ls build/package/*.deb
