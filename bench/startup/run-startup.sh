#!/usr/bin/env bash
# Start-up of EditKel.exe to its configuration picker beside a minimal dialog
# program, under the project's Wine harness: a prefix of its own in the bench
# build (<bench-build>/startup-wine), a virtual display (Xvfb) and one wine
# server for all starts. Prints the medians, their ratio and a summary row.
#   bench/startup/run-startup.sh <windows-build-dir> <bench-build-dir> [runs]
# The Windows build must hold bin/EditKel.exe and bin/diction.ary (or its
# release folder installer/EditKel-<version>-x64/, used first); the bench
# build makes the reference programs and StartupBench.exe (bench/startup.cmake).
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
windows=$(cd "$1" 2>/dev/null && pwd || echo "$1")
bench=$(cd "$2" && pwd)
runs=${3:-15}
what="start-up under Wine: EditKel to the picker / minimal dialog with EditKel's manifest"

editor="$windows/bin/EditKel.exe"
# The program as it ships (the release folder's, without debugging
# information) when the build made one: that is the program users start.
for shipped in "$windows"/installer/EditKel-*-x64/EditKel.exe; do
    [ -f "$shipped" ] && editor=$shipped
done
echo "EditKel: $editor"
programs="$bench/bench/startup"
if [ ! -f "$editor" ] || [ ! -f "$programs/StartupBench.exe" ]; then
    echo "start-up benchmark: needs $editor and $programs/StartupBench.exe" >&2
    echo "SUMMARY|$what|not measured|1.10|x"
    exit 0
fi

harness="$root/cmake/wine-harness.sh"
dir="$bench/startup-wine"
winpath() { echo "Z:${1//\//\\}"; }

# A display of its own, whatever the caller's is: the same for every run.
unset DISPLAY
"$harness" start "$dir" >/dev/null
trap '"$harness" stop "$dir" >/dev/null' EXIT
# The demo configuration, fresh for every run (the picker only looks at it).
rm -rf "$dir/demo"
cp -r "$root/samples/Demo" "$dir/demo"

"$harness" run "$dir" "$programs/StartupBench.exe" "$(winpath "$editor")" \
    "$(winpath "$dir/demo")" "$runs" "$(winpath "$programs/MinimalDialog.exe")" \
    "$(winpath "$programs/ManifestDialog.exe")" "$(winpath "$programs/EditKelLibraries.exe")" \
    "$(winpath "$programs/PropertyDialog.exe")" "$(winpath "$programs/PageControlsDialog.exe")" \
    "$(winpath "$programs/PickerControlsDialog.exe")" 2>&1 |
    tr -d '\r'
