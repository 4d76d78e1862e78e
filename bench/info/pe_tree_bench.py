#!/usr/bin/env python3
"""Times reading the resource tree of a module with 10,000 resources.

Builds, in a temporary folder that is removed afterwards, a DLL with 10,000 resources (integer and named
types and names, 16 to 64 bytes each, and a version resource) and an EXE without resources, and runs
vindaro-info on each several times. vindaro-info reads the headers and the whole directory, lists every
type and name, looks each resource up for its size as the resource browser does, and reads the version
text; the run of the empty module is the start-up cost. Prints the median wall times; the target for the
whole tree is under 0.2 s.

Usage: pe_tree_bench.py [path/to/vindaro-info] [RUNS]   (default: the first build*/src/info/vindaro-info)
"""
import glob
import os
import statistics
import subprocess
import sys
import tempfile
import time

here = os.path.dirname(os.path.abspath(__file__))
root = os.path.dirname(os.path.dirname(here))
sys.path.insert(0, os.path.join(root, "fuzz"))
from pe_module import pe_module, version_resource  # noqa: E402

RESOURCES = 10_000


def find_tool():
    if len(sys.argv) > 1:
        return os.path.abspath(sys.argv[1])
    found = sorted(glob.glob(os.path.join(root, "build*", "src", "info", "vindaro-info")))
    if not found:
        sys.exit("vindaro-info not found: build it or pass its path")
    return found[0]


def module_with_resources():
    tree = {"PNG": {f"PICTURE{i:04}": {0x0804: bytes(16 + i % 48)} for i in range(2000)}}
    tree[3] = {i: {0x0409: bytes(40)} for i in range(1, 2000)}
    tree[6] = {i: {0x0804: bytes(32)} for i in range(1, 2001)}
    tree[10] = {i: {0x0804: bytes(64), 0x0409: bytes(64)} for i in range(1, 2001)}
    tree[16] = {1: {0x0804: version_resource([("ProductName", "Bench"), ("FileVersion", "1.0")])}}
    assert sum(len(langs) for names in tree.values() for langs in names.values()) == RESOURCES
    # named entries come first in a directory, integer ones ascending after them
    return pe_module({key: tree[key] for key in ["PNG", 3, 6, 10, 16]}), sum(len(names) for names in tree.values())


def median_seconds(tool, path, runs):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        result = subprocess.run([tool, path], capture_output=True, check=True)
        times.append(time.perf_counter() - start)
    return statistics.median(times), result.stdout.decode("utf-8")


def main():
    tool = find_tool()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory() as work:
        big = os.path.join(work, "many.dll")
        empty = os.path.join(work, "empty.exe")
        with open(big, "wb") as f:
            module, names = module_with_resources()
            f.write(module)
        with open(empty, "wb") as f:
            f.write(pe_module({16: {1: {0: version_resource([("ProductName", "Empty")])}}}))
        base, _ = median_seconds(tool, empty, runs)
        whole, out = median_seconds(tool, big, runs)
    listed = sum(1 for line in out.splitlines() if line.startswith("\t") and line.endswith(" 字节"))
    if listed != names:  # one line per name; type 10 has two languages per name
        sys.exit(f"vindaro-info listed {listed} names, expected {names}")
    print(f"module of {RESOURCES} resources ({os.path.basename(tool)}, median of {runs} runs):")
    print(f"  start-up with a one-resource module: {base:.3f} s")
    print(f"  whole tree read, listed and sized:    {whole:.3f} s")
    print(f"  the tree's own part:                  {whole - base:.3f} s (target under 0.2 s)")


main()
