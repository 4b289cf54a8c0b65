#!/usr/bin/env bash
# Installs what building, running and testing EditKel needs on Debian 12:
# the MinGW-w64 cross compilers, Wine with its own fonts (Marlett draws the
# title-bar buttons, Tahoma the dialogs), a virtual display, wixl (msitools'
# MSI builder, for the installer), CMake, GoogleTest,
# Google Benchmark, inih (the benchmark's reference parser), clang for the
# fuzzers and the second compiler's build, clang-tidy 22 (Debian 12 ships
# several; 22 is the first that does not match its checks inside system
# headers, which makes a run over every source several times faster);
# gcovr for the coverage report; xmllint, osslsigncode, openssl, git and zip
# for the Group Policy templates' check, the release signing, the
# reproducibility check and the zip.
# Packages already present are left alone.
set -euo pipefail

packages=(
    cmake make g++ pkg-config
    g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 mingw-w64-x86-64-dev
    wine wine64 fonts-wine
    xvfb xauth x11-utils imagemagick
    wixl
    googletest libbenchmark-dev libinih-dev
    clang-14 libclang-rt-14-dev clang-tidy-22
    libxml2-utils osslsigncode openssl git zip
    gcovr
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all packages present"
    exit 0
fi

echo "setup: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "setup: done"
