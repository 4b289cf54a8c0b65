#!/usr/bin/env bash
# The fuzz targets' rates beside their floor: every target of the checked fuzz
# build (AddressSanitizer and UndefinedBehaviorSanitizer) and the same target
# built with libFuzzer alone run one after the other, each from a fresh copy
# of its starting inputs with its own options, for SECONDS each. Prints the
# inputs a second of both, the checked build's share of its floor, and the
# target rate of the target's kind.
#   bench/fuzz/run-fuzz-rates.sh [SECONDS] [ROUNDS]
# SECONDS defaults to 60; ROUNDS (default 1) repeats the pair, alternating
# which build runs first, and the medians count. Builds both presets first.
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-60}
rounds=${2:-1}

for preset in fuzz fuzz-floor; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" >/dev/null
done

# The rate each kind of target is held to, in inputs a second.
target_rate() {
    case "$1" in
    *_parse) echo 10000 ;;
    fuzz_settings | fuzz_dictionary) echo 2000 ;;
    *) echo - ;;
    esac
}

# rate BUILD TARGET: inputs a second of one run from the starting inputs.
rate() {
    local program=$1/fuzz/$2 inputs log runs
    inputs=$(mktemp -d)
    log=$(mktemp)
    cp -r "$1/corpus/$2/." "$inputs/"
    local options=(-max_total_time="$seconds" -print_final_stats=1 -dict="$program.dict")
    while IFS= read -r option; do
        [ -n "$option" ] && options+=("$option")
    done <"$program.options"
    "$program" "${options[@]}" "$inputs" >"$log" 2>&1 || true
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$')
    rm -rf "$inputs" "$log"
    echo $((${runs:-0} / seconds))
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : int((v[NR / 2] + v[NR / 2 + 1]) / 2) }'; }

printf '%-22s %10s %10s %8s %10s  %s\n' target checked floor share target holds
for program in $(find build/fuzz/fuzz -maxdepth 1 -type f -perm -u+x -name 'fuzz_*' ! -name '*.*' | sort); do
    name=$(basename "$program")
    checked=() floor=()
    for ((round = 0; round < rounds; ++round)); do
        if ((round % 2 == 0)); then
            checked+=("$(rate build/fuzz "$name")")
            floor+=("$(rate build/fuzz-floor "$name")")
        else
            floor+=("$(rate build/fuzz-floor "$name")")
            checked+=("$(rate build/fuzz "$name")")
        fi
    done
    c=$(printf '%s\n' "${checked[@]}" | median)
    f=$(printf '%s\n' "${floor[@]}" | median)
    wanted=$(target_rate "$name")
    holds=-
    [ "$wanted" != - ] && holds=$([ "$c" -ge "$wanted" ] && echo yes || echo NO)
    printf '%-22s %10d %10d %7.2fx %10s  %s\n' "$name" "$c" "$f" \
        "$(awk -v c="$c" -v f="$f" 'BEGIN { print f ? c / f : 0 }')" "$wanted" "$holds"
done
