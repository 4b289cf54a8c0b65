#!/usr/bin/env bash
# Checks that a release build is reproducible: builds the shipped files a
# second time, from a fresh clone of the same commit in another folder (so
# every path differs) and at another time, and compares them byte for byte
# with a first build.
#
#   tools/check-reproducible.sh [<first-build>] [<second-source-folder>]
#
# <first-build> defaults to build/windows (made with the windows preset, as
# the CI does). The second build makes only what ships (no tests). Every
# shipped file must be identical, the zip included; the MSI is compared and
# reported, but wixl writes a new package code and the creation time into
# every MSI, so it may differ (see the README). Exits non-zero when a file
# that must be identical differs.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
first=$(realpath "${1:-build/windows}")
second_src=${2:-$(mktemp -d /tmp/editkel-repro.XXXXXX)}

if [ -n "$(git status --porcelain --untracked-files=no)" ]; then
    echo "check-reproducible: the working tree has changes; the second build uses the last commit" >&2
fi
# The first build's package, for the last commit (its time goes into the zip).
cmake "$first" >/dev/null
cmake --build "$first" --target package >/dev/null

rm -rf "$second_src"
git clone -q --no-hardlinks "$root" "$second_src"
second="$second_src/build/windows"

# Only the shipped programs, the dictionary, the templates and the packages.
(cd "$second_src" &&
    cmake --preset windows -DKEL_TESTS=OFF >/dev/null &&
    cmake --build --preset windows --target package -j "${KEL_JOBS:-$(nproc)}" >/dev/null)

status=0
compare() { # <label> <first file> <second file> <must match>
    if cmp -s "$2" "$3"; then
        echo "identical  $1"
    elif [ "$4" = yes ]; then
        echo "DIFFERS    $1"
        status=1
    else
        echo "differs    $1 (expected, see the README)"
    fi
}
stage=$(cd "$first/installer" && ls -d EditKel-*-x64 | grep -v '\.wix$' | head -1)
while IFS= read -r file; do
    compare "$file" "$first/installer/$stage/$file" "$second/installer/$stage/$file" yes
done < <(cd "$first/installer/$stage" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)
compare "$stage.zip" "$first/installer/$stage.zip" "$second/installer/$stage.zip" yes
compare "$stage.msi" "$first/installer/$stage.msi" "$second/installer/$stage.msi" no
exit $status
