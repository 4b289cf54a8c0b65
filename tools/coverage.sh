#!/usr/bin/env bash
# Line and branch coverage of every layer of the product (platform/, text/,
# settings/, framework/, app/) from all of its tests:
# - the Windows tree built with MinGW gcc's --coverage (preset "coverage",
#   build/coverage): the core, in-process and end-to-end tests run under
#   Wine, and each program writes its counters (.gcda) beside its objects
#   through Wine's drive Z: (GCOV_PREFIX);
# - the native build (preset "native", which counts too): the core tests
#   under ASan and UBSan, the only run of the portable implementations
#   (FileSystemPosix, CodePagePosix).
# gcovr reads both (each with its own gcov) and adds them up. Prints a table
# per folder and writes the HTML report to build/coverage-report/index.html.
#   tools/coverage.sh                build, run the tests, report
#   tools/coverage.sh --native-ran   the native tests have just run (CI): build
#                                    and run the Windows tests only, then report
#   tools/coverage.sh --report       only report what the last test runs counted
# Branches: those of exception handling (throw and unwind paths that gcc
# counts for every call) and those gcc proves unreachable are left out.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${KEL_JOBS:-$(nproc)}
windows=build/coverage
native=build/native
report=build/coverage-report
layers='(platform|text|settings|framework|app)/'

mode=${1:-}
if [ "$mode" != --report ]; then
    cmake --preset coverage >/dev/null
    cmake --build --preset coverage -j "$jobs"
    find "$windows" -name '*.gcda' -delete
    # In this build's prefix a program that crashes ends at once instead of
    # starting the debugger, which would wait until the test's time-out. (An
    # unoptimised build shows faults that the release's optimiser can hide:
    # this one found the text heap destroyed before the last static text.)
    harness=cmake/wine-harness.sh
    "$harness" prefix "$windows/wine" >/dev/null
    "$harness" run "$windows/wine" reg add \
        'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
        /v Debugger /t REG_SZ /d '' /f >/dev/null
    # The counters go to the objects' Linux paths, on Wine's drive Z:. The
    # verdict on the tests is the release build's run: here a failure (say a
    # timing test slowed down by the counters) is listed, and the counters of
    # every program are counted all the same.
    if ! GCOV_PREFIX=Z: ctest --preset coverage -j "$jobs" >"$windows/coverage-tests.log" 2>&1; then
        echo "coverage build: not every test passed (they count all the same):"
        grep -E '^\s+[0-9]+ - ' "$windows/coverage-tests.log" || true
    fi
fi
if [ -z "$mode" ]; then
    cmake --preset native >/dev/null
    cmake --build --preset native -j "$jobs"
    find "$native" -name '*.gcda' -delete
    ctest --preset native -j "$jobs"
fi

mkdir -p "$report"
options=(--root . --filter "$layers" --exclude-throw-branches --exclude-unreachable-branches)
gcovr "${options[@]}" --gcov-executable x86_64-w64-mingw32-gcov-posix \
      --json "$report/windows.json" "$windows"
gcovr "${options[@]}" --gcov-executable gcov --json "$report/native.json" "$native"
gcovr "${options[@]}" --add-tracefile "$report/windows.json" --add-tracefile "$report/native.json" \
      --html-details "$report/index.html" --json-summary "$report/summary.json"
python3 tools/coverage-table.py "$report/summary.json"
echo "HTML report: $report/index.html"
