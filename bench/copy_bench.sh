#!/usr/bin/env bash
# Throughput of vindaro-copy against cp and dd bs=1M, copying one file between two folders of the same
# disk. Each run starts with the page cache dropped (when the machine lets us) and ends with sync, the same
# way for every tool; the median of several runs is printed, with the ratio vindaro/cp.
#   bench/copy_bench.sh [BUILD_DIR] [SIZE_MIB] [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build}
size_mib=${2:-1024}
runs=${3:-3}
tool="$build_dir/src/copy/vindaro-copy"
[ -x "$tool" ] || { echo "build vindaro-copy first ($tool)" >&2; exit 1; }

work=$(mktemp -d "${BENCH_DIR:-/var/tmp}/vindaro-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/from" "$work/to" "$work/state"
export XDG_STATE_HOME="$work/state"
head -c "$((size_mib * 1024 * 1024))" /dev/urandom >"$work/from/movie.dat"

cache="dropped"
drop_cache() {
  sync
  if ! (echo 3 >/proc/sys/vm/drop_caches) 2>/dev/null; then
    cache="warm (could not drop the page cache)"
    cat "$work/from/movie.dat" >/dev/null # the same warm start for every tool
  fi
}

# seconds for one run of "$@", page cache dropped before, sync included
time_run() {
  rm -f "$work/to/movie.dat"
  drop_cache
  local start end
  start=$(date +%s.%N)
  "$@" >/dev/null 2>&1
  sync
  end=$(date +%s.%N)
  cmp -s "$work/from/movie.dat" "$work/to/movie.dat" || { echo "copy differs: $*" >&2; exit 1; }
  echo "$end - $start" | bc -l
}

median() { sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }

# The tools take turns within each round, so a drift of the machine (other work, the host's own cache)
# falls on all of them alike; the median and the best run of each are printed.
tools=(vindaro vindaro-r100 cp dd)
for name in "${tools[@]}"; do : >"$work/$name.times"; done
for ((i = 0; i < runs; i++)); do
  for name in "${tools[@]}"; do
    case $name in
    vindaro) time_run "$tool" -q "$work/from/movie.dat" "$work/to/movie.dat" ;;
    vindaro-r100) time_run "$tool" -q -r 100 "$work/from/movie.dat" "$work/to/movie.dat" ;;
    cp) time_run cp "$work/from/movie.dat" "$work/to/movie.dat" ;;
    dd) time_run dd if="$work/from/movie.dat" of="$work/to/movie.dat" bs=1M ;;
    esac >>"$work/$name.times"
  done
done
declare -A seconds best
for name in "${tools[@]}"; do
  seconds[$name]=$(median <"$work/$name.times")
  best[$name]=$(sort -g "$work/$name.times" | head -1)
done

echo "file: ${size_mib} MiB, runs: $runs, load before: $(cut -d' ' -f1-3 /proc/loadavg); page cache: $cache"
printf '%-28s %10s %10s %10s\n' tool median MiB/s best
for name in "${tools[@]}"; do
  label=$name
  [ "$name" = vindaro ] && label="vindaro-copy (slider 10)"
  [ "$name" = vindaro-r100 ] && label="vindaro-copy -r 100"
  printf '%-28s %10.2f %10.1f %10.2f\n' "$label" "${seconds[$name]}" \
    "$(echo "$size_mib / ${seconds[$name]}" | bc -l)" "${best[$name]}"
done
printf 'ratio vindaro/cp (throughput, medians): %.2f  (best runs: %.2f)\n' \
  "$(echo "${seconds[cp]} / ${seconds[vindaro]}" | bc -l)" "$(echo "${best[cp]} / ${best[vindaro]}" | bc -l)"
printf 'ratio vindaro -r 100/cp:                %.2f\n' "$(echo "${seconds[cp]} / ${seconds[vindaro-r100]}" | bc -l)"
