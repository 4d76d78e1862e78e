#!/usr/bin/env python3
"""Writes small valid inputs for each fuzz target into DIR/<target>/ as starting corpora."""
import os
import struct
import sys
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from pe_module import pe_module, version_resource  # noqa: E402

out = sys.argv[1] if len(sys.argv) > 1 else "fuzz-corpus"


def put(target, name, data):
    os.makedirs(os.path.join(out, target), exist_ok=True)
    with open(os.path.join(out, target, name), "wb") as f:
        f.write(data)


tag = (b"TAG" + b"Song".ljust(30, b"\0") + "中文".encode("gb18030").ljust(30, b" ")
       + b"Album".ljust(30, b"\0") + b"2003" + b"Ripped by X".ljust(29, b"\0") + bytes([7, 17]))
put("mp3", "mpeg1", b"\xff\xfb\x90\x64" + bytes(600))
put("mp3", "offset", b"ID3" + bytes(20) + b"\xff\xf3\x92\xc4" + bytes(100))
put("id3v1", "tagged", b"\xff\xfb\x90\x64" + bytes(100) + tag)
put("id3v1", "utf8", bytes(10) + tag[:3] + "歌曲名".encode("utf-8").ljust(30, b"\0") + tag[33:])

rect_bits = "01111" + "0" * 15 + format(11000, "015b") + "0" * 15 + format(8000, "015b")
rect_bits += "0" * (-len(rect_bits) % 8)
rect = int(rect_bits, 2).to_bytes(len(rect_bits) // 8, "big")
put("swf", "movie", b"FWS\x06" + struct.pack("<I", 1000) + rect + b"\x00\x0c" + struct.pack("<H", 120)
    + b"\x43\x02\x11\x22\x33")


def entry(name, data, method=0, flags=0, extra=b""):
    body = zlib.compress(data)[2:-4] if method == 8 else data
    return (struct.pack("<4sHHHHHIIIHH", b"PK\x03\x04", 20, flags, method, 0x6000, 0x2E21,
                        zlib.crc32(data), len(body), len(data), len(name), len(extra)) + name + extra + body)


zip64 = struct.pack("<HHQQ", 1, 16, 5, 5)
put("zip", "archive", entry(b"docs/", b"") + entry(b"docs/a.txt", b"hello " * 50, 8)
    + entry("中文.txt".encode("gb18030"), b"x") + entry(b"z64", b"12345", extra=zip64)[:-5] + b"12345"
    + b"PK\x01\x02" + bytes(42))


# PE modules with a resource section: a directory of integer and named types and names, a version resource.
icon = struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHIH", 16, 16, 0, 0, 1, 32, 40, 1)
strings = b"".join(struct.pack("<H", len(s)) + s.encode("utf-16-le") for s in ["", "Open", "", "保存"] + [""] * 12)
version = version_resource([("OriginalFilename", "demo.exe"), ("FileVersion", "1.0"), ("CompanyName", "维达罗")])
put("pe", "pe32", pe_module({"AVI": {"INTRO": {0x804: b"RIFF"}}, 6: {1: {0x804: strings}},
                             14: {1: {0x409: icon, 0x804: icon}}, 16: {1: {0x804: version}}}))
put("pe", "pe32plus", pe_module({"PNG": {"LOGO": {0: b"\x89PNG"}}, 9: {"MAIN": {0x409: bytes(8)}},
                                 16: {1: {0x409: version}}}, True))
put("pe", "version", version)
