#!/usr/bin/env bash
# Runs every benchmark (executables named bench_*) of a bench build, then the
# start-up benchmark under Wine when a Windows build is there, and ends with
# one table of every measured ratio beside its target.
#   tools/run-benchmarks.sh [build-dir] [extra Google Benchmark arguments]
# Build first: cmake --preset bench && cmake --build --preset bench
# (and cmake --build --preset windows for the start-up benchmark).
#
# Environment:
#   KEL_BENCH_REPETITIONS  repetitions of each Google benchmark, run interleaved
#                          in random order; the medians count (default 3)
#   KEL_WINDOWS_BUILD      the Windows build whose EditKel.exe starts (default
#                          build/windows; none there: the start-up row says so)
#   KEL_STARTUP_RUNS       starts of each program after the warm-up (default 15)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
shift || true
repetitions=${KEL_BENCH_REPETITIONS:-3}
windows=${KEL_WINDOWS_BUILD:-build/windows}
runs=${KEL_STARTUP_RUNS:-15}

summary=$(mktemp)
trap 'rm -f "$summary"' EXIT
# Prints a program's output as it comes, keeping its summary rows aside.
collect() {
    while IFS= read -r line; do
        case "$line" in
        SUMMARY\|*) echo "$line" >>"$summary" ;;
        *) echo "$line" ;;
        esac
    done
}

found=0
for target in $(find "$build" -maxdepth 2 -type f -perm -u+x -name 'bench_*' ! -name '*.*' | sort); do
    found=1
    echo "=== $(basename "$target")"
    "$target" --benchmark_repetitions="$repetitions" --benchmark_enable_random_interleaving=true \
        --benchmark_display_aggregates_only=true "$@" | collect
done
[ $found -eq 1 ] || { echo "no benchmarks in $build (cmake --preset bench && cmake --build --preset bench)"; exit 1; }

echo "=== start-up under Wine ($windows)"
bash bench/startup/run-startup.sh "$windows" "$build" "$runs" | collect

echo
echo "Summary: each measure beside its target (it holds when measured <= target; rows without"
echo "one are reported for comparison)"
awk -F'|' '
    { what[NR] = $2; value[NR] = $3; target[NR] = $4; unit[NR] = $5
      if (length($2) > width) width = length($2) }
    END {
        printf "  %-*s %10s %10s  %s\n", width, "measure", "measured", "target", "holds"
        for (i = 1; i <= NR; ++i) {
            measured = value[i] ~ /^[0-9.]+$/ ? sprintf("%.2f %s", value[i], unit[i]) : value[i]
            bounded = target[i] ~ /^[0-9.]+$/
            holds = value[i] ~ /^[0-9.]+$/ && bounded ? (value[i] + 0 <= target[i] + 0 ? "yes" : "NO") : "-"
            bound = bounded ? sprintf("%.2f %s", target[i], unit[i]) : "none"
            printf "  %-*s %10s %10s  %s\n", width, what[i], measured, bound, holds
        }
    }' "$summary"
