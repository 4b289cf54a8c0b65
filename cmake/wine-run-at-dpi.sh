#!/usr/bin/env bash
# Runs a Windows program of this build under Wine with screens of another
# resolution (dots per inch), beside the tests of the shared prefix.
#
#   wine-run-at-dpi.sh <shared dir> <dpi> program [args...]
#
# Wine takes the resolution from the registry when a process starts, so it
# cannot change in the shared prefix while other tests run there. The program
# runs in a prefix of its own, <shared dir>-dpi<dpi>: a copy of the shared
# prefix's registry with the resolution set, sharing its drive C and display.
set -eu
shared=$(cd "$1" && pwd)
dpi=$2
shift 2
own="$shared-dpi$dpi"
harness="$(cd "$(dirname "$0")" && pwd)/wine-harness.sh"
mkdir -p "$own/prefix/dosdevices" "$own/home"
(
    flock 9
    for file in system.reg user.reg userdef.reg .update-timestamp .kel-ready; do
        cp "$shared/prefix/$file" "$own/prefix/$file"
    done
    ln -sfn "$shared/prefix/drive_c" "$own/prefix/drive_c"
    ln -sfn ../drive_c "$own/prefix/dosdevices/c:"
    ln -sfn / "$own/prefix/dosdevices/z:"
    [ -s "$shared/display" ] && cp "$shared/display" "$own/display"
    "$harness" run "$own" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD \
        /d "$dpi" /f >/dev/null 2>&1
) 9>"$own/copy.lock"
"$harness" run "$own" "$@"
