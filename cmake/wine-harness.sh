#!/usr/bin/env bash
# Wine harness for the Windows build: a private prefix inside the build tree,
# a virtual display when none is set, and a persistent wine server while the
# tests run.
#
#   wine-harness.sh prefix <dir>   make sure <dir>/prefix exists (idempotent)
#   wine-harness.sh start  <dir>   prefix + Xvfb (only when DISPLAY is unset) + wineserver -p
#   wine-harness.sh stop   <dir>   stop the wine server and the Xvfb that start launched
#   wine-harness.sh run    <dir> program [args...]   run a Windows program in the prefix
#
# The prefix's HOME is <dir>/home, because its Documents and Desktop folders
# are links into $HOME. Windows are not managed by a window manager (Managed=N),
# otherwise every top-level window takes two seconds to close.
set -u
cmd=${1:-}
dir=${2:-}
[ -n "$cmd" ] && [ -n "$dir" ] || { echo "usage: $0 prefix|start|stop|run <dir> ..." >&2; exit 2; }
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)

export WINEPREFIX="$dir/prefix"
export HOME="$dir/home"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
export LC_ALL=C.UTF-8
export LANG=C.UTF-8
mkdir -p "$HOME"

use_display() {
    if [ -z "${DISPLAY:-}" ] && [ -s "$dir/display" ]; then
        export DISPLAY=":$(cat "$dir/display")"
    fi
}

# Wine's own fonts (Marlett for the caption buttons, Tahoma and MS Sans Serif
# for dialogs; Debian's package fonts-wine, which tools/setup.sh installs) are
# not found through fontconfig on Debian: copy them into the prefix's Fonts
# folder, where Wine loads fonts from at start. Every prefix made here, the
# test prefix and the run command's demo prefix alike, gets them.
add_fonts() {
    local fonts="$WINEPREFIX/drive_c/windows/Fonts"
    if [ ! -f /usr/share/wine/fonts/marlett.ttf ]; then
        echo "wine harness: Wine's fonts are missing (package fonts-wine, see tools/setup.sh);" \
             "title-bar buttons will show as letters" >&2
        return 0
    fi
    [ -d "$fonts" ] || return 0
    cp -n /usr/share/wine/fonts/*.ttf "$fonts/" 2>/dev/null || true
}

make_prefix() {
    exec 9>"$dir/prefix.lock"
    flock 9
    if [ ! -f "$WINEPREFIX/.kel-ready" ]; then
        rm -rf "$WINEPREFIX"
        wineboot -i </dev/null >/dev/null 2>&1
        wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f >/dev/null 2>&1
        wine reg add 'HKCU\Software\Wine\X11 Driver' /v Decorated /t REG_SZ /d Y /f >/dev/null 2>&1
        wineserver -w </dev/null >/dev/null 2>&1
        touch "$WINEPREFIX/.kel-ready"
    fi
    add_fonts
    flock -u 9
}

start_display() {
    [ -n "${DISPLAY:-}" ] && return 0
    if [ -s "$dir/xvfb.pid" ] && kill -0 "$(cat "$dir/xvfb.pid")" 2>/dev/null; then
        return 0
    fi
    command -v Xvfb >/dev/null || { echo "Xvfb is not installed" >&2; return 1; }
    rm -f "$dir/display" "$dir/xvfb.pid"
    # Xvfb picks a free display number itself and writes it to the pipe.
    local fifo="$dir/displayfd"
    rm -f "$fifo"; mkfifo "$fifo"
    setsid Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$fifo" </dev/null >/dev/null 2>&1 &
    local pid=$!
    local num
    if ! read -r -t 20 num <"$fifo"; then
        echo "Xvfb did not start" >&2; kill "$pid" 2>/dev/null; rm -f "$fifo"; return 1
    fi
    rm -f "$fifo"
    echo "$pid" >"$dir/xvfb.pid"
    echo "$num" >"$dir/display"
}

case "$cmd" in
prefix)
    make_prefix
    ;;
start)
    make_prefix
    start_display || exit 1
    use_display
    # Background processes must not hold the caller's output open (ctest waits for it).
    setsid wineserver -p </dev/null >/dev/null 2>&1
    wine cmd /c exit </dev/null >/dev/null 2>&1
    echo "wine harness ready: prefix $WINEPREFIX, display ${DISPLAY:-none}"
    ;;
stop)
    wineserver -k 2>/dev/null
    if [ -s "$dir/xvfb.pid" ]; then
        kill "$(cat "$dir/xvfb.pid")" 2>/dev/null
        rm -f "$dir/xvfb.pid" "$dir/display"
    fi
    exit 0
    ;;
run)
    shift 2
    make_prefix
    use_display
    exec wine "$@"
    ;;
*)
    echo "unknown command $cmd" >&2; exit 2
    ;;
esac
