#!/usr/bin/env bash
# Runs every fuzz target (executables named fuzz_*) of a fuzz build for a while
# each, one after the other, with its libFuzzer dictionary (<target>.dict
# beside it) and its corpus (<build>/corpus/<target>, started from the
# committed starting inputs) and its options (<target>.options), and prints how
# many inputs a second each one ran.
#   tools/run-fuzzers.sh [build-dir] [seconds-per-target]
#       the short run of CI: new inputs go straight into the corpus.
#   tools/run-fuzzers.sh --long SECONDS [build-dir]
#       a long (nightly) run: each target runs SECONDS from its corpus, and
#       what it found is merged back into the corpus (-merge=1 keeps only the
#       inputs that reach something new), so that the corpus grows from night
#       to night. Give a build whose corpus you keep.
# Exits non-zero when a target finds a problem; the log names the input.
set -uo pipefail
long=0
if [ "${1:-}" = --long ]; then
    long=1
    seconds=${2:?"--long needs a number of seconds"}
    build=${3:-build/fuzz}
else
    build=${1:-build/fuzz}
    seconds=${2:-30}
fi
status=0
targets=$(find "$build" -type f -perm -u+x -name 'fuzz_*' ! -name '*.*' | sort)
[ -n "$targets" ] || { echo "no fuzz targets built"; exit 0; }
for target in $targets; do
    name=$(basename "$target")
    corpus="$build/corpus/$name"
    log="$build/corpus/$name.log"
    mkdir -p "$corpus"
    options=(-max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$build/corpus/$name.")
    [ -f "$target.dict" ] && options+=(-dict="$target.dict")
    # The target's own options (<target>.options, one per line), such as the
    # largest input it is given.
    own=()
    if [ -f "$target.options" ]; then
        while IFS= read -r option; do
            [ -n "$option" ] && own+=("$option")
        done <"$target.options"
    fi
    options+=("${own[@]}")
    dirs=("$corpus")
    if [ $long = 1 ]; then
        # New finds land in a folder of their own and are merged afterwards.
        finds=$(mktemp -d "$build/corpus/$name.finds.XXXXXX")
        dirs=("$finds" "$corpus")
    fi
    before=$(find "$corpus" -type f | wc -l)
    started=$(date +%s.%N)
    if "$target" "${options[@]}" "${dirs[@]}" >"$log" 2>&1; then
        runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$')
        rate=$(awk -v runs="${runs:-0}" -v start="$started" -v end="$(date +%s.%N)" \
                   'BEGIN { printf "%d", runs / (end - start) }')
        summary="$name: ${seconds}s, ${runs:-?} runs, ${rate} inputs/s, no finding"
        if [ $long = 1 ]; then
            "$target" -merge=1 "${own[@]}" "$corpus" "$finds" >>"$log" 2>&1 || status=1
            rm -rf "$finds"
            summary+=", corpus $before -> $(find "$corpus" -type f | wc -l) inputs"
        fi
        echo "$summary"
    else
        echo "$name: FOUND A PROBLEM (log: $log)"
        grep -E 'ERROR|SUMMARY|check failed|Test unit written' "$log" | head -20
        echo "  (run the target on the input written with ASAN_OPTIONS=malloc_context_size=30"
        echo "   to see where its memory was allocated and freed)"
        [ $long = 1 ] && rm -rf "$finds"
        status=1
    fi
done
exit $status
