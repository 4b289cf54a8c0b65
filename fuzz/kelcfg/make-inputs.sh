#!/usr/bin/env bash
# Makes the start inputs of fuzz_kelcfg (fuzz/kelcfg/inputs/): kelcfg's export
# of the demo configuration (samples/Demo), installed where the run command
# installs it, for each of the seven products, in a Wine prefix of its own.
#   bash fuzz/kelcfg/make-inputs.sh [windows build dir, default build/windows]
set -euo pipefail
cd "$(dirname "$0")/../.."
root=$(pwd)
build=$(cd "${1:-build/windows}" && pwd)
harness="$root/cmake/wine-harness.sh"
wine_dir="$build/kelcfg-inputs-wine"
inputs="$root/fuzz/kelcfg/inputs"

cmake --build "$build" --target kelcfg dictionary
"$harness" prefix "$wine_dir"
docs="$wine_dir/prefix/drive_c/users/Public/Documents/Orvantix/Brindlecove 2023"
rm -rf "$docs/Demo"
mkdir -p "$docs"
cp -r samples/Demo "$docs/Demo"

"$harness" start "$wine_dir" >/dev/null
trap '"$harness" stop "$wine_dir" >/dev/null' EXIT
mkdir -p "$inputs"
for product in Plotwise Shopwise Tallywise Cutwise CutwiseComponents Ledgerline Fieldpost; do
    out="$inputs/$product.txt"
    "$harness" run "$wine_dir" "$build/bin/kelcfg.exe" export "-app=$product" \
        '-config=C:\users\Public\Documents\Orvantix\Brindlecove 2023\Demo' "Z:${out//\//\\}"
done
ls -l "$inputs"
