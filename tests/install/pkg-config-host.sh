#!/bin/bash
# Compiles one source against the install tree through pkg-config, and runs it.
# usage: pkg-config-host.sh PREFIX WORK_FOLDER SOURCE "COMPILER FLAGS"
set -euo pipefail
prefix=$1 work=$2 source=$3 compiler=$4

if ! command -v pkg-config >/dev/null; then
    echo "skipped: pkg-config is not installed"
    exit 77
fi

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tarsel.pc)")
export PKG_CONFIG_PATH
pkg-config --exact-version=1.0.0 tarsel
cflags=() libs=() libdir=
# pkg-config quotes for a shell, and the folders may hold blanks.
eval "cflags=($(pkg-config --cflags tarsel)) libs=($(pkg-config --libs tarsel))"
eval "libdir=$(pkg-config --variable=libdir tarsel)"

mkdir -p "$work"
# shellcheck disable=SC2086 # a compiler and its flags
$compiler -Wall -Wextra -Wpedantic -Werror "${cflags[@]}" "$source" -o "$work/host" \
    "${libs[@]}" "-Wl,-rpath,$libdir"
cd "$work"
./host
