#!/bin/sh
# The file search on a generated tree (default 500,000 files, 500 a folder, 4 in 5 named *.dat): entries
# examined per second by our walker and by find -name in the same run with the page cache warm, then a
# search through the real file list and its box, with the longest time the window's thread went without
# handling its events, and how soon a stop ends the search. The tree is deleted afterwards.
# Usage: bench/search_bench.sh [build dir] [files] [files per folder] [runs]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build-bench}
files=${2:-500000}
per=${3:-500}
runs=${4:-3}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVINDARO_ONLY_TESTS=search >/dev/null
fi
ninja -C "$build" -j2 search_bench >/dev/null
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT INT TERM
QT_QPA_PLATFORM=offscreen "$build/bench/search/search_bench" "$tree" "$files" "$per" "$runs"
