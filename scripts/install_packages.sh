#!/usr/bin/env bash
# Installs the Debian/Ubuntu packages that mediasplit is built and tested with.
#   install_packages.sh build   what the program itself needs
#   install_packages.sh package what the Debian package is built and tried with
#   install_packages.sh test    that of `build`, and what the tests, fuzzers and benchmarks need
# Safe to run again: packages that are there are left alone. Works as root or through sudo.
set -euo pipefail

build_packages=(g++ cmake ninja-build make libcurl4-openssl-dev libmbedtls-dev
                nlohmann-json3-dev)
package_packages=(dpkg-dev file git mmdebstrap)
test_packages=(ca-certificates libgtest-dev libgmock-dev libbenchmark-dev clang clang-tidy clang-format
               llvm ffmpeg mediainfo nginx-light openssl iso-codes python3 python3-jsonschema python3-yaml
               dpkg-dev file jq mandoc parallel shellcheck yamllint zsh)

wanted=("${build_packages[@]}")
case "${1:-build}" in
    build) ;;
    package) wanted+=("${package_packages[@]}") ;;
    test) wanted+=("${test_packages[@]}") ;;
    *) echo "usage: $0 [build|package|test]" >&2; exit 2 ;;
esac

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

missing_of() {
    local package
    for package in "$@"; do
        is_installed "$package" || echo "$package"
    done
}

mapfile -t missing < <(missing_of "${wanted[@]}")
# The sanitizer and fuzzer runtime of clang is a package of its own on some releases.
need_runtime=no
if [ "${1:-build}" = test ] && ! ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-* >/dev/null 2>&1; then
    need_runtime=yes
fi
if [ "${#missing[@]}" -eq 0 ] && [ "$need_runtime" = no ]; then
    echo "install_packages: nothing to install"
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "install_packages: run as root, or install sudo; missing: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

export DEBIAN_FRONTEND=noninteractive
echo "install_packages: installing ${missing[*]:-the clang runtime}"
"${as_root[@]}" apt-get update -q
if [ "${#missing[@]}" -gt 0 ]; then
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
if [ "$need_runtime" = yes ]; then
    version=$(clang --version | sed -n 's/.*clang version \([0-9]*\).*/\1/p' | head -1)
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "libclang-rt-${version}-dev" ||
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends libclang-rt-dev
fi
