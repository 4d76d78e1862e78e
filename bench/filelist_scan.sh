#!/bin/sh
# Times the file list's add-folder scan on a generated tree (default 100,000 files, 4 in 5 matching *.DAT)
# and reports how long the UI thread went without handling its events.
# Usage: bench/filelist_scan.sh [build dir] [files] [files per folder]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build-bench}
files=${2:-100000}
per=${3:-500}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVINDARO_ONLY_TESTS=files_list >/dev/null
fi
ninja -C "$build" -j2 filelist_scan_bench >/dev/null
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
QT_QPA_PLATFORM=offscreen "$build/bench/files_list/filelist_scan_bench" "$tree" "$files" "$per"
