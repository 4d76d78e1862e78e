#!/bin/sh
# Times the resource tree of a module with 10,000 resources (goal: under 0.2 s) and the opening of the
# property window for a DLL, a 10,000-entry ZIP, an MP3, an SWF and a plain file (goal: under 0.5 s each).
# Usage: bench/info/property_window.sh [build dir] [resources]
set -eu
here=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$here/build-bench}
resources=${2:-10000}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVINDARO_ONLY_TESTS=info_ui >/dev/null
fi
ninja -C "$build" -j2 property_window_bench >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
QT_QPA_PLATFORM=offscreen "$build/bench/info/property_window_bench" "$work" "$resources"
