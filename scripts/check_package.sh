#!/usr/bin/env bash
# Builds the package in two folders at two times and compares the bytes; then installs it in a bare system (a folder
# that mmdebstrap fills from the sources of this machine's apt) and splits the demo clip there. Needs root for chroot.
#   check_package.sh          all of it
#   check_package.sh FILE     only the trial of this package
set -euo pipefail
cd "$(dirname "$0")/.."

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

build_copy() { # folder
    mkdir -p "$scratch/$1"
    git ls-files -z | xargs -0 cp --parents -t "$scratch/$1"
    CCACHE_DISABLE=1 "$scratch/$1/scripts/package.sh" >/dev/null # or both would be copies of one
}

package=${1:-}
if [ -z "$package" ]; then
    if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
        SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
    fi
    export SOURCE_DATE_EPOCH
    build_copy first
    TZ=Asia/Tokyo build_copy a/second/folder
    first=("$scratch"/first/build/package/*.deb)
    second=("$scratch"/a/second/folder/build/package/*.deb)
    cmp "${first[0]}" "${second[0]}"
    echo "check_package: two builds, same bytes: $(sha256sum <"${first[0]}")"
    package=${first[0]}
fi

root=$scratch/root
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
sources=()
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources; do
    [ ! -s "$file" ] || sources+=("$file")
done
# The lists of packages stay, so that apt finds there what the package depends on.
mmdebstrap --quiet --variant=apt --skip=cleanup/apt/lists "$release" "$root" "${sources[@]}"
cp "$package" "$root/root/mediasplit.deb"
chroot "$root" apt-get install -y -q --no-install-recommends /root/mediasplit.deb >"$scratch/install.log" 2>&1 ||
    { cat "$scratch/install.log" >&2; exit 1; }
echo "check_package: installed in a bare system"
# shellcheck disable=SC2016
chroot "$root" sh -euc '
    cd /root
    mediasplit -v
    mediasplit -i /usr/share/doc/mediasplit/examples/clip.mp4 -o out
    ls -l out
    test -s out/clip_track_id_1.out.264
    test -s out/clip_track_id_2.out.aac
    for program in /usr/bin/mediasplit*; do
        ! ldd "$program" | grep "not found"
    done'
chroot "$root" dpkg --purge mediasplit >/dev/null
left=$(find "$root/usr" -name '*mediasplit*')
[ -z "$left" ] || { echo "check_package: left behind: $left" >&2; exit 1; }
echo "check_package: removed without a trace"
