#!/usr/bin/env bash
# Runs every fuzz target (executables named fuzz_*) of a fuzz build for a while each.
#   tools/run-fuzzers.sh [build-dir] [seconds-per-target]
set -uo pipefail
build=${1:-build/fuzz}
seconds=${2:-30}
status=0
targets=$(find "$build" -type f -perm -u+x -name 'fuzz_*' ! -name '*.*' | sort)
[ -n "$targets" ] || { echo "no fuzz targets built"; exit 0; }
for target in $targets; do
    name=$(basename "$target")
    corpus="$build/corpus/$name"
    log="$build/corpus/$name.log"
    mkdir -p "$corpus"
    if "$target" -max_total_time="$seconds" -print_final_stats=1 "$corpus" >"$log" 2>&1; then
        runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$')
        echo "$name: ${seconds}s, ${runs:-?} runs, no finding"
    else
        echo "$name: FOUND A PROBLEM (log: $log)"
        grep -E 'ERROR|SUMMARY|Test unit written' "$log" | head -20
        status=1
    fi
done
exit $status
