#!/usr/bin/env bash
# Runs clang-tidy (the checks in .clang-tidy) over every translation unit of
# the project, in parallel, and fails on any finding.
#   tools/run-clang-tidy.sh [--fix] [--jobs N] [REGEX]
# REGEX limits the run to the sources whose path matches it (for example
# 'app/deploy/' or 'ConfigPicker'); --fix applies clang-tidy's own fixes
# where a check has one (look at each before committing it).
#
# Each source is checked once, with the compile command that builds it:
#   - everything the Windows build compiles (the portable layers, framework/,
#     app/, tools/, the tests), from the clang preset's compile_commands.json
#     (clang parsing the MinGW-w64 headers, --target=x86_64-w64-mingw32);
#   - what only native builds compile (the *Posix.cpp sources, the fuzz
#     targets, the benchmarks), from a native clang configure of its own;
#   - the start-up benchmark's Windows programs, which bench/ builds with a
#     custom command, with the flags of the Windows build.
# Both configures are cheap and need no build; third-party sources (GoogleTest)
# are left out.
set -euo pipefail
cd "$(dirname "$0")/.."

fix=""
jobs=${KEL_JOBS:-$(nproc)}
filter=""
while [ $# -gt 0 ]; do
    case "$1" in
    --fix) fix="-fix" ;;
    --jobs) jobs=$2; shift ;;
    -h | --help) sed -n '2,8p' "$0"; exit 0 ;;
    *) filter=$1 ;;
    esac
    shift
done

root=$(pwd)
out=build/clang-tidy
mkdir -p "$out"

# The Windows translation units: the clang preset's compile commands (configured
# every time, so that sources added since are in them).
cmake --preset clang >/dev/null
# The native-only ones.
cmake -S . -B "$out/native" -G "Unix Makefiles" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
    -DKEL_TESTS=OFF -DKEL_FUZZ=ON -DKEL_BENCH=ON >/dev/null

mkdir -p "$out/include"
ln -sfn "$(ls -d /usr/lib/llvm-14/lib/clang/*/include/fuzzer | tail -1)" "$out/include/fuzzer"

python3 - "$root" "$out" <<'EOF'
import json, os, re, sys
root, out = sys.argv[1], sys.argv[2]
windows = json.load(open(os.path.join(root, "build/clang/compile_commands.json")))
native = json.load(open(os.path.join(root, out, "native/compile_commands.json")))

def ours(entry):
    path = os.path.normpath(os.path.join(entry["directory"], entry["file"]))
    return path.startswith(root + os.sep) and not path.startswith(os.path.join(root, "build") + os.sep)

# The fuzz targets include libFuzzer's FuzzedDataProvider.h from clang-14's
# own headers, which clang-tidy 22 does not search: it finds it here.
fuzzer = os.path.join(root, out, "include")
for entry in native:
    entry["command"] += " -isystem " + fuzzer

merged, seen = [], set()
for entry in windows + native:
    path = os.path.normpath(os.path.join(entry["directory"], entry["file"]))
    if ours(entry) and path not in seen:
        seen.add(path)
        merged.append(entry)

# The start-up benchmark's Windows programs: the flags of a Windows program.
model = next(e for e in windows if e["file"].endswith("/app/EditKelMain.cpp"))
startup = os.path.join(root, "bench/startup")
for name in sorted(os.listdir(startup)):
    if name.endswith(".cpp"):
        path = os.path.join(startup, name)
        command = re.sub(r" -o \S+ -c \S+$", " -o /dev/null -c " + path, model["command"])
        merged.append({"directory": model["directory"], "file": path, "command": command})

json.dump(merged, open(os.path.join(root, out, "compile_commands.json"), "w"), indent=1)
EOF

count=$(python3 -c "import json,re,sys; print(sum(1 for e in json.load(open('$out/compile_commands.json')) if re.search(sys.argv[1], e['file'])))" "$filter")
echo "clang-tidy: $count translation units, $jobs jobs"
log="$out/clang-tidy.log"
status=0
# -quiet keeps the per-file command lines out; the findings and their notes stay.
# Compiler warnings are the clang build's business (tools/clang-compile.sh,
# with the project's -Werror); clang-tidy's newer clang would otherwise stop
# on warnings its own front end raises inside libstdc++.
run-clang-tidy-22 -clang-tidy-binary clang-tidy-22 -extra-arg=-Wno-error \
    -clang-apply-replacements-binary /usr/lib/llvm-22/bin/clang-apply-replacements \
    -p "$out" -j "$jobs" -quiet -hide-progress -use-color=false $fix "$root/.*${filter}" \
    >"$log" 2>&1 || status=$?
# Each finding once (a header's finding shows in every source that includes it).
findings=$(grep -E '^/.*: (warning|error): ' "$log" | sed 's/,-warnings-as-errors\]$/]/' | sort -u || true)
if [ -n "$findings" ]; then
    echo "$findings"
    echo
    echo "clang-tidy: $(echo "$findings" | wc -l) findings, by check:"
    echo "$findings" | sed -n 's/.*\[\([^]]*\)\]$/\1/p' | sort | uniq -c | sort -rn
    echo "(full output with notes: $log)"
    exit 1
fi
if [ "$status" -ne 0 ]; then
    cat "$log"
    echo "clang-tidy: failed (see above)"
    exit 1
fi
echo "clang-tidy: no findings"
