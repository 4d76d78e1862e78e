#!/usr/bin/env bash
# Work per file and per MiB of `vindaro-copy` against `cp`, counted rather than timed, so the figures do not
# move with the machine's load: system calls (strace -c -f) and, for vindaro-copy, user-space instructions
# (valgrind --tool=callgrind). Start-up is taken out by counting two sizes and dividing the difference.
#   bench/copy_counts.sh [BUILD_DIR] [SMALL_FILES] [SIZE_MIB]
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build}
small=${2:-1000}
size_mib=${3:-128}
tool="$(realpath "$build_dir/src/copy/vindaro-copy")"
[ -x "$tool" ] || { echo "build vindaro-copy first ($tool)" >&2; exit 1; }
command -v strace >/dev/null || { echo "needs strace (apt-get install strace)" >&2; exit 1; }

work=$(mktemp -d "${BENCH_DIR:-/var/tmp}/vindaro-counts.XXXXXX")
trap 'rm -rf "$work"' EXIT
export XDG_STATE_HOME="$work/state" LANG=C.UTF-8 LC_ALL=C.UTF-8
half=$((small / 2))
mkdir -p "$work/a" "$work/b"
python3 - "$work" "$small" "$half" <<'PY'
import os, random, sys
work, n, half = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = random.Random(7)
for i in range(n):
    data = os.urandom(rng.randint(1024, 65536))
    for folder in (["a"] if i < half else []) + ["b"]:
        with open(os.path.join(work, folder, f"s{i:05d}.dat"), "wb") as f:
            f.write(data)
PY
head -c "$((size_mib * 1024 * 1024))" /dev/urandom >"$work/big.dat"
head -c "$((size_mib * 512 * 1024))" "$work/big.dat" >"$work/half.dat"

syscalls() { # total system calls of "$@"
  strace -f -c -o "$work/strace" "$@" >/dev/null 2>&1
  awk '/ total$/ {print $4}' "$work/strace"
}
instructions() { # user-space instructions of "$@"
  valgrind --tool=callgrind --callgrind-out-file="$work/callgrind" "$@" >/dev/null 2>"$work/valgrind"
  grep -o 'Collected : [0-9]*' "$work/valgrind" | grep -o '[0-9]*$'
}
clean() { rm -rf "$work/out" "$work/out.dat" "$work/state"; }
per() { echo "($2 - $1) / $3" | bc -l; }

clean; vs_b=$(syscalls "$tool" -q -t "$work/out" "$work"/b/*.dat)
clean; vs_a=$(syscalls "$tool" -q -t "$work/out" "$work"/a/*.dat)
clean; cs_b=$(syscalls cp -r "$work/b" "$work/out")
clean; cs_a=$(syscalls cp -r "$work/a" "$work/out")
clean; vb_b=$(syscalls "$tool" -q "$work/big.dat" "$work/out.dat")
clean; vb_a=$(syscalls "$tool" -q "$work/half.dat" "$work/out.dat")
clean; cb_b=$(syscalls cp "$work/big.dat" "$work/out.dat")
clean; cb_a=$(syscalls cp "$work/half.dat" "$work/out.dat")
vi_s="-"
vi_b="-"
if command -v valgrind >/dev/null; then
  clean; b=$(instructions "$tool" -q -t "$work/out" "$work"/b/*.dat)
  clean; a=$(instructions "$tool" -q -t "$work/out" "$work"/a/*.dat)
  vi_s=$(printf '%.0f' "$(per "$a" "$b" $((small - half)))")
  clean; b=$(instructions "$tool" -q "$work/big.dat" "$work/out.dat")
  clean; a=$(instructions "$tool" -q "$work/half.dat" "$work/out.dat")
  vi_b=$(printf '%.0f' "$(per "$a" "$b" $((size_mib - size_mib / 2)))")
fi
clean

echo "counted: batches of $half and $small small files, single files of $((size_mib / 2)) and $size_mib MiB"
printf '%-34s %12s %12s\n' figure vindaro-copy cp
printf '%-34s %12.1f %12.1f\n' "system calls per small file" "$(per "$vs_a" "$vs_b" $((small - half)))" \
  "$(per "$cs_a" "$cs_b" $((small - half)))"
printf '%-34s %12.1f %12.1f\n' "system calls per MiB (one file)" "$(per "$vb_a" "$vb_b" $((size_mib - size_mib / 2)))" \
  "$(per "$cb_a" "$cb_b" $((size_mib - size_mib / 2)))"
printf '%-34s %12s %12s\n' "user instructions per small file" "$vi_s" "-"
printf '%-34s %12s %12s\n' "user instructions per MiB" "$vi_b" "-"
