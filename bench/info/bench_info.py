#!/usr/bin/env python3
"""Times vindaro-info on large inputs and reports wall time and peak memory.

Builds, sparsely, in a temporary folder that is removed afterwards:
  * a ZIP of 100,000 stored 16-byte entries plus one stored entry of 2 GiB of zeros (the file is
    just over 2 GiB and takes a few MB of disk);
  * an MP3 of 4 GiB + 4 KiB with a frame header at the front and an ID3v1 tag at the end;
  * the same size with no 0xFF byte before the tag, so the header search scans the whole file.

Usage: bench_info.py [path/to/vindaro-info]   (default: the first build*/src/info/vindaro-info found)
"""
import glob
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib

SMALL_ENTRIES = 100_000
BIG_ENTRY_BYTES = 2 * 1024**3
MP3_BYTES = 4 * 1024**3 + 4096


def find_tool():
    if len(sys.argv) > 1:
        return os.path.abspath(sys.argv[1])
    here = os.path.dirname(os.path.abspath(__file__))
    root = os.path.dirname(os.path.dirname(here))
    found = sorted(glob.glob(os.path.join(root, "build*", "src", "info", "vindaro-info")))
    if not found:
        sys.exit("vindaro-info not found: build it or pass its path")
    return found[0]


def zeros_crc(length):
    chunk = bytes(1 << 20)
    crc = 0
    while length > 0:
        take = min(length, len(chunk))
        crc = zlib.crc32(chunk[:take] if take < len(chunk) else chunk, crc)
        length -= take
    return crc


def make_zip(path):
    central = []
    with open(path, "wb") as f:
        def entry(name, size, crc, data=None):
            offset = f.tell()
            f.write(struct.pack("<4sHHHHHIIIHH", b"PK\x03\x04", 10, 0, 0, 0x6000, 0x2E21, crc, size, size,
                                len(name), 0))
            f.write(name)
            if data is not None:
                f.write(data)
            else:
                f.seek(size, os.SEEK_CUR)  # a hole: reads back as zeros
            central.append(struct.pack("<4sHHHHHHIIIHHHHHII", b"PK\x01\x02", 20, 10, 0, 0, 0x6000, 0x2E21,
                                       crc, size, size, len(name), 0, 0, 0, 0, 0, offset) + name)

        for i in range(SMALL_ENTRIES):
            data = b"entry %09d\n" % i
            data = data[:16].ljust(16, b".")
            entry(b"files/%06d.txt" % i, len(data), zlib.crc32(data), data)
        entry(b"big/zeros.bin", BIG_ENTRY_BYTES, zeros_crc(BIG_ENTRY_BYTES))
        start = f.tell()
        for record in central:
            f.write(record)
        count = len(central)
        f.write(struct.pack("<4sHHHHIIH", b"PK\x05\x06", 0, 0, min(count, 0xFFFF), min(count, 0xFFFF),
                            f.tell() - start, min(start, 0xFFFFFFFF), 0))


def make_mp3(path, with_header):
    tag = (b"TAG" + b"Bench".ljust(30, b"\0") + b"Artist".ljust(30, b"\0") + bytes(30) + b"2024"
           + bytes(29) + bytes([1, 17]))
    with open(path, "wb") as f:
        if with_header:
            f.write(b"\xff\xfb\x90\x64")
        f.truncate(MP3_BYTES - 128)
        f.seek(MP3_BYTES - 128)
        f.write(tag)


def disk_usage_mb(path):
    return os.stat(path).st_blocks * 512 / 1e6


def run(tool, path):
    """Returns (seconds, peak KiB, stdout)."""
    out_path = path + ".out"
    with open(out_path, "wb") as out:
        if os.path.exists("/usr/bin/time"):
            start = time.monotonic()
            proc = subprocess.run(["/usr/bin/time", "-v", tool, path], stdout=out, stderr=subprocess.PIPE)
            elapsed = time.monotonic() - start
            match = re.search(rb"Maximum resident set size \(kbytes\): (\d+)", proc.stderr)
            peak = int(match.group(1)) if match else -1
        else:
            # A helper process runs the tool as its only child, so its children's peak is the tool's.
            helper = ("import resource,subprocess,sys,time;s=time.monotonic();"
                      "subprocess.run(sys.argv[1:],stdout=sys.stdout);e=time.monotonic()-s;"
                      "sys.stderr.write('%f %d' % (e, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss))")
            proc = subprocess.run([sys.executable, "-c", helper, tool, path], stdout=out, stderr=subprocess.PIPE)
            elapsed_text, peak_text = proc.stderr.split()[-2:]
            elapsed, peak = float(elapsed_text), int(peak_text)
    with open(out_path, "rb") as f:
        text = f.read()
    os.remove(out_path)
    return elapsed, peak, proc.returncode, text


def main():
    tool = find_tool()
    work = tempfile.mkdtemp(prefix="vindaro-bench-")
    try:
        cases = []
        zip_path = os.path.join(work, "big.zip")
        start = time.monotonic()
        make_zip(zip_path)
        print("built %s: %d bytes (%.1f MB on disk) in %.1f s" % (os.path.basename(zip_path),
              os.path.getsize(zip_path), disk_usage_mb(zip_path), time.monotonic() - start))
        cases.append(("ZIP, 100,001 entries, 2 GiB", zip_path,
                      ["文 件 数：%d 个" % (SMALL_ENTRIES + 1), "总计大小：%s KB" % format(
                          (SMALL_ENTRIES * 16 + BIG_ENTRY_BYTES) // 1024, ",")]))
        mp3_path = os.path.join(work, "big.mp3")
        make_mp3(mp3_path, True)
        cases.append(("MP3, 4 GiB, header at 0", mp3_path, ["标头创建于：0字节", "曲名：Bench"]))
        scan_path = os.path.join(work, "scan.mp3")
        make_mp3(scan_path, False)
        cases.append(("MP3, 4 GiB, no header (full scan)", scan_path, ["标头创建于：未找到"]))

        print("%-36s %10s %14s  %s" % ("input", "wall s", "peak RSS MiB", "check"))
        failed = False
        for label, path, expected in cases:
            elapsed, peak, code, text = run(tool, path)
            out = text.decode("utf-8", "replace")
            missing = [e for e in expected if e not in out]
            ok = code == 0 and not missing
            failed = failed or not ok
            print("%-36s %10.2f %14.1f  %s" % (label, elapsed, peak / 1024.0,
                                               "ok" if ok else "FAILED exit %d, missing %s" % (code, missing)))
        return 1 if failed else 0
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
