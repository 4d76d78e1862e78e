#!/usr/bin/env bash
# Batch copy: files per second and MB/s of `vindaro-copy --to-folder` against `cp -r`, in one run, for
# (1) 10,000 small files and (2) a mix of a few large files and many small ones. The page cache is dropped
# before each run where the machine lets us (else every tool starts warm), and each run ends with sync.
#   bench/batch_bench.sh [BUILD_DIR] [SMALL_FILES] [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build}
small=${2:-10000}
runs=${3:-3}
tool="$build_dir/src/copy/vindaro-copy"
[ -x "$tool" ] || { echo "build vindaro-copy first ($tool)" >&2; exit 1; }

work=$(mktemp -d "${BENCH_DIR:-/var/tmp}/vindaro-batch.XXXXXX")
trap 'rm -rf "$work"' EXIT
export XDG_STATE_HOME="$work/state"

make_set() { # folder, number of small files, number of 100 MiB files
  local dir=$1 n=$2 big=$3
  mkdir -p "$dir"
  python3 - "$dir" "$n" "$big" <<'PY'
import os, random, sys
folder, n, big = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = random.Random(7)
for i in range(n):
    with open(os.path.join(folder, f"s{i:05d}.dat"), "wb") as f:
        f.write(os.urandom(rng.randint(1024, 65536)))
for i in range(big):
    with open(os.path.join(folder, f"big{i}.vob"), "wb") as f:
        for _ in range(100):
            f.write(os.urandom(1 << 20))
PY
}

cache="dropped"
drop_cache() {
  sync
  if ! (echo 3 >/proc/sys/vm/drop_caches) 2>/dev/null; then
    cache="warm"
  fi
}

median() { sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }

bench_set() { # name, source folder
  local name=$1 src=$2
  local count bytes
  count=$(find "$src" -type f | wc -l)
  bytes=$(du -sb "$src" | cut -f1)
  mapfile -t files < <(find "$src" -type f | sort)
  for t in vindaro cp; do
    for ((i = 0; i < runs; i++)); do
      rm -rf "$work/out" "$work/state"
      drop_cache
      start=$(date +%s.%N)
      if [ $t = vindaro ]; then
        "$tool" -q -t "$work/out" "${files[@]}" >/dev/null
      else
        cp -r "$src" "$work/out"
      fi
      sync
      end=$(date +%s.%N)
      echo "$end - $start" | bc -l
    done | median >"$work/median.$t"
    diff -rq "$src" "$work/out" >/dev/null || { echo "copies differ ($t, $name)" >&2; exit 1; }
  done
  for t in vindaro cp; do
    s=$(cat "$work/median.$t")
    printf '%-8s %-10s %8d files %9.1f MiB %8.2f s %10.0f files/s %8.1f MiB/s\n' "$name" "$t" "$count" \
      "$(echo "$bytes / 1048576" | bc -l)" "$s" "$(echo "$count / $s" | bc -l)" "$(echo "$bytes / 1048576 / $s" | bc -l)"
  done
}

make_set "$work/small" "$small" 0
make_set "$work/mixed" 2000 3
echo "batch copy, median of $runs runs, page cache: $cache"
bench_set small "$work/small"
bench_set mixed "$work/mixed"
