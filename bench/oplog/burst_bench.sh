#!/bin/sh
# A burst of file changes through the operation log: 100,000 files (in folders of 1,000) are removed as an
# `rm -rf` would, under the real inotify monitor, with the log window shown, then again with it hidden (as
# it is most of a run). Prints how long until every change is in the log, the longest the window's thread
# went without handling its events (and how much of that it spent on the CPU: the machine may be shared),
# and the peak memory (RSS).
# Usage: bench/oplog/burst_bench.sh [build dir] [files] [files per folder]
set -eu
here=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$here/build-bench}
files=${2:-100000}
per=${3:-1000}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVINDARO_ONLY_TESTS=oplog >/dev/null
fi
ninja -C "$build" -j2 oplog_burst_bench >/dev/null
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
for window in shown hidden; do
  echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
  QT_QPA_PLATFORM=offscreen "$build/bench/oplog/oplog_burst_bench" "$tree" "$files" "$per" "$window" 2>/dev/null
  echo
done
