#!/usr/bin/env bash
# Sets everything up and runs every test of EditKel:
#   1. installs the packages (tools/setup.sh),
#   2. builds the Windows cross build with its installer (build/dist/: the
#      MSI, the portable zip, SHA256SUMS) and runs its tests under Wine (core
#      tests, in-process Windows tests, end-to-end scenarios, the installer
#      in a prefix of its own), checks the release folder's sums and
#      refreshes the README's gallery (docs/gallery/) from the scenarios'
#      screenshots,
#   3. builds the portable layers natively and runs their tests under
#      AddressSanitizer and UndefinedBehaviorSanitizer,
#   4. compiles every source of the Windows build with clang as well and runs
#      clang-tidy over every source (fails on any finding),
#   5. measures coverage (tools/coverage.sh): the Windows tree built again
#      with gcc's coverage counters, its tests run under Wine, and the
#      counters of both runs printed as a table per folder,
#   6. builds the fuzz targets with clang and runs each one briefly, printing
#      its inputs per second,
#   7. builds the benchmarks (run them with tools/run-benchmarks.sh).
# Exits non-zero on the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$(date +%s)

fuzz_seconds=${KEL_FUZZ_SECONDS:-20}
jobs=${KEL_JOBS:-$(nproc)}

step() { printf '\n=== %s (%ss)\n' "$*" "$(( $(date +%s) - start ))"; }

step "setup"
bash tools/setup.sh

step "Windows build (MinGW-w64)"
cmake --preset windows >/dev/null
cmake --build --preset windows -j "$jobs"

step "Windows tests under Wine"
ctest --preset windows -j "$jobs"

step "release folder and gallery"
(cd build/dist && sha256sum --check --strict SHA256SUMS)
bash tools/refresh-gallery.sh build/windows

step "reproducible release (second build in another folder) and signing"
repro=$(mktemp -d /tmp/editkel-repro.XXXXXX)
bash tools/check-reproducible.sh build/windows "$repro"
bash tools/check-signing.sh "$repro/build/windows"
# The second build ran its tools under Wine in a prefix of its own: stop that
# wine server (and any display it started) before the folder goes, or the
# server may still be writing its registry files into it.
bash cmake/wine-harness.sh stop "$repro/build/windows/wine" || true
WINEPREFIX="$repro/build/windows/wine/prefix" wineserver -w 2>/dev/null || true
rm -rf "$repro" || { sleep 2; rm -rf "$repro"; }

step "native build (ASan + UBSan)"
cmake --preset native >/dev/null
cmake --build --preset native -j "$jobs"

step "native tests (ASan + UBSan)"
ctest --preset native -j "$jobs"

step "clang build (compile only)"
bash tools/clang-compile.sh --jobs "$jobs"

step "clang-tidy"
bash tools/run-clang-tidy.sh --jobs "$jobs"

step "coverage (gcc --coverage, Windows tests under Wine and native tests)"
bash tools/coverage.sh --native-ran

step "fuzz targets (clang-14, libFuzzer)"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$jobs"
bash tools/run-fuzzers.sh build/fuzz "$fuzz_seconds"

step "benchmarks build"
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$jobs"

step "all tests passed"
