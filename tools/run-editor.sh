#!/usr/bin/env bash
# Sets everything up and opens EditKel on the demo configuration.
#
#   bash tools/run-editor.sh [Product] [more EditKel arguments, e.g. /l=Deutsch]
#
# Product is one of Plotwise (the default), Shopwise, Tallywise, Cutwise,
# CutwiseComponents, Ledgerline, Fieldpost. On a fresh Debian 12 machine this
# installs the packages, builds the Windows preset, and prepares a Wine prefix
# of its own (build/windows/demo-wine) in which samples/Demo is the folder
# "Orvantix/Brindlecove 2023/Demo" of the shared documents and is registered
# as the configuration "Demo" of every product.
#
# With a display (DISPLAY set) the editor opens on it. Without one it runs on
# a virtual display, picks the demo in the configuration picker, opens the
# dialog, saves a screenshot of the picker and of the dialog under
# build/windows/screenshots/ and says where; then it cancels the dialog.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
product=${1:-Plotwise}
shift || true

bash tools/setup.sh
cmake --preset windows >/dev/null
cmake --build --preset windows --target EditKel uidriver_cli dictionary

harness="$root/cmake/wine-harness.sh"
wine_dir="$root/build/windows/demo-wine"
bin="$root/build/windows/bin"
"$harness" prefix "$wine_dir"

# The demo configuration in the prefix's shared documents folder. An existing
# copy is kept, so that what was changed in an earlier run stays.
docs="$wine_dir/prefix/drive_c/users/Public/Documents/Orvantix/Brindlecove 2023"
mkdir -p "$docs"
if [ ! -d "$docs/Demo" ]; then
    cp -r samples/Demo "$docs/Demo"
    echo "demo configuration copied to $docs/Demo"
fi

# Register it for every product (HKCU\Software\Orvantix\Brindlecove 2023\<product>\Configurations).
reg="$wine_dir/demo.reg"
{
    printf 'Windows Registry Editor Version 5.00\r\n\r\n'
    for p in Plotwise Shopwise Tallywise Cutwise CutwiseComponents Ledgerline Fieldpost; do
        printf '[HKEY_CURRENT_USER\\Software\\Orvantix\\Brindlecove 2023\\%s\\Configurations]\r\n' "$p"
        printf '"Demo"="C:\\\\users\\\\Public\\\\Documents\\\\Orvantix\\\\Brindlecove 2023\\\\Demo\\\\"\r\n\r\n'
    done
} >"$reg"
"$harness" run "$wine_dir" regedit /S "Z:${reg//\//\\}"

if [ -n "${DISPLAY:-}" ]; then
    echo "opening EditKel -app=$product on $DISPLAY"
    "$harness" run "$wine_dir" "$bin/EditKel.exe" "-app=$product" "$@"
    exit 0
fi

# No display: run on Xvfb, drive the editor and take screenshots.
shots="$root/build/windows/screenshots"
mkdir -p "$shots"
"$harness" start "$wine_dir" >/dev/null
trap '"$harness" stop "$wine_dir" >/dev/null' EXIT
driver() { "$harness" run "$wine_dir" "$root/build/windows/tools/uidriver/uidriver.exe" "$@"; }
winpath() { echo "Z:${1//\//\\}"; }

"$harness" run "$wine_dir" "$bin/EditKel.exe" "-app=$product" "$@" &
editor=$!
driver wait "Select Configuration" 30
row=$(driver list "Select Configuration" 602 | awk -F'\t' '$1=="Demo"{print NR-1; exit}')
driver select "Select Configuration" 602 "${row:-0}"
driver screenshot "$(winpath "$shots/run-picker.png")"
driver press "Select Configuration" 1
title="$product Config Editor"
driver wait "$title" 30
sleep 1
driver screenshot "$(winpath "$shots/run-dialog.png")"
driver press "$title" 2
wait "$editor" || true
echo "No display: EditKel ran on a virtual display. Screenshots:"
echo "  $shots/run-picker.png   (the configuration picker)"
echo "  $shots/run-dialog.png   (the $product configuration dialog)"
