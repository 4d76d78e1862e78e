#!/usr/bin/env bash
# What each tool rescues from a scratched disc, and what it costs: a FUSE file system of ours
# (bench/rescue/DamagedDiscFs.cpp) serves one file whose seeded bad 2,048-byte sectors fail every read
# that touches them after a set delay (a real drive takes 2 to 30 s). Each tool copies it once, from a fresh
# mount; the file system counts the reads and failed reads, and a check compares the copy with the disc:
# bytes recovered of the readable bytes, wrong bytes (neither the disc's byte nor 0), wall time.
#   bench/rescue_bench.sh [BUILD_DIR] [SIZE_MIB] [DELAY_MS] [SEED]
# Needs the build's vindaro-copy and damaged_disc_fs (cmake --build BUILD_DIR --target vindaro-copy
# damaged_disc_fs; rescue_map_bench too for the map's own figures at the end), FUSE, and GNU ddrescue for its rows (apt-get install -y --no-install-recommends gddrescue).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build}
size_mib=${2:-64}
delay_ms=${3:-50}
seed=${4:-1}
size=$((size_mib * 1024 * 1024))
tool="$build_dir/src/copy/vindaro-copy"
fs="$build_dir/bench/rescue/damaged_disc_fs"
[ -x "$tool" ] || { echo "build vindaro-copy first ($tool)" >&2; exit 1; }
[ -x "$fs" ] || { echo "build damaged_disc_fs first ($fs; needs libfuse3-dev)" >&2; exit 1; }
command -v fusermount3 >/dev/null || { echo "fusermount3 is missing (apt-get install fuse3)" >&2; exit 1; }
ddrescue=$(command -v ddrescue || true)

work=$(mktemp -d "${BENCH_DIR:-/var/tmp}/vindaro-rescue.XXXXXX")
mnt="$work/disc"
fs_pid=
cleanup() {
  if [ -n "$fs_pid" ]; then
    fusermount3 -u "$mnt" 2>/dev/null || fusermount3 -uz "$mnt" 2>/dev/null || true
    wait "$fs_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT
mkdir -p "$mnt" "$work/out" "$work/state"
export XDG_STATE_HOME="$work/state" LANG=C.UTF-8 LC_ALL=C.UTF-8
fs_args=(--size "$size" --seed "$seed")

mount_disc() {
  "$fs" "$mnt" "${fs_args[@]}" --delay-ms "$delay_ms" &
  fs_pid=$!
  for _ in $(seq 100); do
    mountpoint -q "$mnt" && return 0
    sleep 0.1
  done
  echo "the damaged disc did not mount at $mnt (is FUSE available?)" >&2
  exit 1
}

unmount_disc() {
  fusermount3 -u "$mnt"
  wait "$fs_pid" || true
  fs_pid=
}

# One row: NAME COMMAND... (the command copies $mnt/disc.vob to $work/out/copy.vob).
rows=()
run_tool() {
  local name=$1
  shift
  rm -rf "$work/out" "$work/state"
  mkdir -p "$work/out" "$work/state"
  mount_disc
  local start end status=0
  start=$(date +%s.%N)
  "$@" >"$work/tool.log" 2>&1 || status=$?
  end=$(date +%s.%N)
  local reads failed
  reads=$(awk '$1 == "reads" {print $2}' "$mnt/stats")
  failed=$(awk '$1 == "failed_reads" {print $2}' "$mnt/stats")
  unmount_disc
  local readable=0 recovered=0 wrong=0
  if [ -e "$work/out/copy.vob" ]; then
    read -r readable recovered wrong < <("$fs" "${fs_args[@]}" --check "$work/out/copy.vob")
  else
    read -r readable _ _ < <("$fs" "${fs_args[@]}" --check /dev/null)
  fi
  rows+=("$name|$readable|$recovered|$wrong|$failed|$reads|$(echo "$end - $start" | bc -l)|$status")
}

echo "disc: $("$fs" "${fs_args[@]}" --describe)"
echo "a failed read costs ${delay_ms} ms; seed $seed; load before: $(cut -d' ' -f1-3 /proc/loadavg)"

src="$mnt/disc.vob"
dst="$work/out/copy.vob"
run_tool "vindaro-copy (default)" "$tool" -q "$src" "$dst"
# ---- vindaro-copy --refine: run once the tool offers it -------------------------------------------------
if "$tool" --help 2>&1 | grep -q -- '--refine'; then
  # the disc reads and fails in 2,048-byte sectors, as an optical disc does
  run_tool "vindaro-copy --refine" "$tool" -q --refine --sector 2048 "$src" "$dst"
else
  echo "vindaro-copy has no --refine yet: its row is left out"
fi
# ---------------------------------------------------------------------------------------------------------
if [ -n "$ddrescue" ]; then
  run_tool "ddrescue -b2048" "$ddrescue" -q -b2048 "$src" "$dst" "$work/out/copy.map"
  run_tool "ddrescue -b2048 -n" "$ddrescue" -q -b2048 -n "$src" "$dst" "$work/out/copy.map"
else
  echo "ddrescue not found: its rows are left out (apt-get install -y --no-install-recommends gddrescue)"
fi
run_tool "dd bs=2048 conv=noerror,sync" dd if="$src" of="$dst" bs=2048 conv=noerror,sync status=none

printf '\n%-30s %10s %14s %8s %8s %8s %9s %5s\n' tool recovered "bytes" wrong failed reads "wall s" exit
for row in "${rows[@]}"; do
  IFS='|' read -r name readable recovered wrong failed reads seconds status <<<"$row"
  printf '%-30s %9.3f%% %14d %8d %8d %8d %9.2f %5d\n' "$name" \
    "$(echo "100 * $recovered / $readable" | bc -l)" "$recovered" "$wrong" "$failed" "$reads" "$seconds" "$status"
done

# The refine pass against ddrescue's default, when both ran: targets 99.9 % recovered, 0 wrong bytes, at
# most 0.3 times the failed reads and 0.5 times the wall time.
refine=$(printf '%s\n' "${rows[@]}" | grep '^vindaro-copy --refine|' || true)
reference=$(printf '%s\n' "${rows[@]}" | grep '^ddrescue -b2048|' || true)
if [ -n "$refine" ] && [ -n "$reference" ]; then
  IFS='|' read -r _ _ _ _ rf _ rs _ <<<"$refine"
  IFS='|' read -r _ _ _ _ df _ ds _ <<<"$reference"
  printf '\nrefine / ddrescue -b2048: failed reads %.2f (target <= 0.3), wall time %.2f (target <= 0.5)\n' \
    "$(echo "$rf / $df" | bc -l)" "$(echo "$rs / $ds" | bc -l)"
fi

map_bench="$build_dir/bench/copy/rescue_map_bench"
[ -x "$map_bench" ] && echo && "$map_bench"
exit 0
