#!/usr/bin/env bash
# Runs a Windows program in a Wine prefix of its own, made fresh for the run:
# <dir> is removed first, the harness makes the prefix there (and a virtual
# display when DISPLAY is unset), and its wine server and display are stopped
# at the end, also when the program fails.
#   run-in-own-prefix.sh <wine-harness.sh> <dir> <program> [args...]
set -u
harness=$1
dir=$2
shift 2
rm -rf "$dir"
trap '"$harness" stop "$dir" >/dev/null 2>&1' EXIT
"$harness" start "$dir" || exit 1
"$harness" run "$dir" "$@"
