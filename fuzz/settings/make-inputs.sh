#!/usr/bin/env bash
# Makes the start inputs of the settings fuzz targets (fuzz/settings/inputs/):
# for each of the seven products, the settings file that its pages write when
# kelcfg imports the product's export (fuzz/kelcfg/inputs/, with the backup
# folder changed so that there is something to write) into a fresh copy of
# the demo configuration (samples/Demo), in each encoding the products read:
# UTF-16 as written, UTF-8 with its byte-order mark, and ANSI (Windows-1252)
# without one. The programs' coverage counters, if any, go elsewhere.
#   bash fuzz/settings/make-inputs.sh [windows build dir, default build/windows]
set -euo pipefail
cd "$(dirname "$0")/../.."
root=$(pwd)
build=$(cd "${1:-build/windows}" && pwd)
harness="$root/cmake/wine-harness.sh"
wine_dir="$build/settings-inputs-wine"
inputs="$root/fuzz/settings/inputs"

cmake --build "$build" --target kelcfg dictionary
"$harness" prefix "$wine_dir"
docs="$wine_dir/prefix/drive_c/users/Public/Documents/Orvantix/Brindlecove 2023"
export GCOV_PREFIX="Z:$wine_dir/counters"
"$harness" start "$wine_dir" >/dev/null
trap '"$harness" stop "$wine_dir" >/dev/null' EXIT
mkdir -p "$inputs"
for product in Plotwise Shopwise Tallywise Cutwise CutwiseComponents Ledgerline Fieldpost; do
    rm -rf "$docs/Demo"
    mkdir -p "$docs"
    cp -r samples/Demo "$docs/Demo"
    export_file="$wine_dir/$product.txt"
    sed "s|^Backup = D:/Backup/Brindlecove/|Backup = D:/Backup/$product/|" \
        "fuzz/kelcfg/inputs/$product.txt" >"$export_file"
    "$harness" run "$wine_dir" "$build/bin/kelcfg.exe" import "-app=$product" \
        '-config=C:\users\Public\Documents\Orvantix\Brindlecove 2023\Demo' \
        "Z:${export_file//\//\\}" >/dev/null 2>&1
    file=KEL.INI
    [ "$product" = Ledgerline ] && file=QUORLIN.INI
    written="$docs/Demo/$file"
    # A product whose import changed nothing leaves the demo's ANSI file.
    encoding=WINDOWS-1252
    [ "$(head -c 2 "$written" | od -An -tx1 | tr -d ' ')" = fffe ] && encoding=UTF-16
    { printf '\xFF\xFE'; iconv -f "$encoding" -t UTF-16LE "$written"; } >"$inputs/$product-utf16.ini"
    [ $encoding = UTF-16 ] && cp "$written" "$inputs/$product-utf16.ini"
    { printf '\xEF\xBB\xBF'; iconv -f "$encoding" -t UTF-8 "$written"; } >"$inputs/$product-utf8.ini"
    iconv -f "$encoding" -t WINDOWS-1252 "$written" >"$inputs/$product-ansi.ini"
done
ls -l "$inputs"
