#!/usr/bin/env bash
# Runs every benchmark (executables named bench_*) of a bench build.
#   tools/run-benchmarks.sh [build-dir] [extra Google Benchmark arguments]
# Build first: cmake --preset bench && cmake --build --preset bench
set -euo pipefail
build=${1:-build/bench}
shift || true
found=0
for target in $(find "$build" -type f -perm -u+x -name 'bench_*' ! -name '*.*' | sort); do
    found=1
    echo "=== $(basename "$target")"
    "$target" "$@"
done
[ $found -eq 1 ] || { echo "no benchmarks in $build (cmake --preset bench && cmake --build --preset bench)"; exit 1; }
