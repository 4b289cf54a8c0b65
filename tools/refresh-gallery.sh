#!/usr/bin/env bash
# Refreshes the README's gallery (docs/gallery/) from the screenshots that the
# end-to-end scenarios of a Windows build save under <build>/screenshots/.
# A picture is copied only when its pixels differ from the one in the gallery,
# so a run that changes nothing leaves the gallery as it is. A screenshot
# that is missing (its scenario was renamed or removed, or the scenarios did
# not run) fails with its name: update the list below.
#   bash tools/refresh-gallery.sh [build dir, default build/windows]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/windows}
shots="$build/screenshots"
gallery=docs/gallery

# gallery picture            screenshot of the scenario that shows it
pictures=(
    "picker.png                editkel-EditKel-PlotwiseDemoOpensTheTitledDialogAndOkSaves-picker.png"
    "program-paths.png         paths-ProgramPaths-BrowsedFolderSavedWithOk-Shopwise.png"
    "program-paths-marked.png  paths-ProgramPaths-MissingFolderIsMarked-marked.png"
    "plotwise-cad-options.png  cad-OptionPages-PlotwiseCadOptionsSavedWithOk-page.png"
    "cutwise-options.png       tyx-OptionPages-CutwiseTyxOptionsSavedWithOk-page.png"
    "web-links.png             weblinks-WebLinks-AddEditMoveDeleteThenOkAndTheSameListAfterARestart-page.png"
    "web-link-dialog.png       weblinks-WebLinks-AddEditMoveDeleteThenOkAndTheSameListAfterARestart-dialog.png"
    "common-options.png        common-CommonOptions-LedgerlineTabsAndChangesSavedWithOk-page.png"
    "message-prompts.png       editkel-EditKel-PlotwiseDemoOpensTheTitledDialogAndOkSaves-dialog.png"
    "common-options-de-144dpi.png  display-Display-GermanPageMovedToAMonitorOf144DpiTakesTheSuggestedSize-page.png"
    "high-contrast.png         display-Display-PagesPaintWithTheHighContrastSchemesColours-page.png"
)

command -v compare >/dev/null || { echo "gallery: ImageMagick's compare is missing (bash tools/setup.sh)" >&2; exit 1; }
mkdir -p "$gallery"
missing=0
updated=0
for row in "${pictures[@]}"; do
    read -r picture shot <<<"$row"
    if [ ! -f "$shots/$shot" ]; then
        echo "gallery: $shots/$shot is missing (for $gallery/$picture; see the list in $0)" >&2
        missing=1
        continue
    fi
    if [ -f "$gallery/$picture" ] && compare -metric AE "$shots/$shot" "$gallery/$picture" null: 2>/dev/null; then
        continue
    fi
    cp "$shots/$shot" "$gallery/$picture"
    echo "gallery: updated $gallery/$picture"
    updated=$((updated + 1))
done
[ "$missing" -eq 0 ] || exit 1
echo "gallery: ${#pictures[@]} pictures, $updated updated"
