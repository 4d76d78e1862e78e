#!/usr/bin/env python3
"""Writes small valid inputs for each fuzz target into DIR/<target>/ as starting corpora."""
import os
import struct
import sys
import zlib

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
def utf16z(text):
    return text.encode("utf-16-le") + b"\0\0"


def ver_block(key, value=b"", value_length=0, kind=1, children=()):
    body = utf16z(key)
    body += bytes(-(6 + len(body)) % 4) + value
    for child in children:
        body += bytes(-(6 + len(body)) % 4) + child
    return struct.pack("<HHH", 6 + len(body), value_length, kind) + body


def version_resource(strings):
    table = ver_block("080404B0", children=[ver_block(k, utf16z(v), len(v) + 1) for k, v in strings])
    fixed = struct.pack("<13I", 0xFEEF04BD, 0x10000, 0x10002, 0x30004, 0x10002, 0x30004, *([0] * 7))
    return ver_block("VS_VERSION_INFO", fixed, 52, 0, [
        ver_block("StringFileInfo", children=[table]),
        ver_block("VarFileInfo", children=[ver_block("Translation", struct.pack("<HH", 0x0804, 0x04B0), 4, 0)])])


def resource_section(resources, rva):
    """resources: {type: {name: {lang: bytes}}}; keys are ints or strs, in directory order."""
    dirs, strings, entries, data = bytearray(), bytearray(), [], bytearray()
    # sizes first: every directory, then the data entries, then the names, then the data
    dir_bytes = 16 + 8 * len(resources) + sum(16 + 8 * len(names) + sum(16 + 8 * len(langs) for langs in names.values())
                                              for names in resources.values())
    leaves = sum(len(langs) for names in resources.values() for langs in names.values())
    strings_at = dir_bytes + 16 * leaves
    names_text = [k for k in resources if isinstance(k, str)] + [
        k for names in resources.values() for k in names if isinstance(k, str)]
    strings_len = sum(2 + 2 * len(n) for n in names_text)
    data_at = (strings_at + strings_len + 7) // 8 * 8
    out = bytearray(data_at)
    state = {"dir": 0, "entry": dir_bytes, "string": strings_at}

    def name_field(key):
        if isinstance(key, int):
            return key
        at = state["string"]
        encoded = struct.pack("<H", len(key)) + key.encode("utf-16-le")
        out[at:at + len(encoded)] = encoded
        state["string"] += len(encoded)
        return 0x80000000 | at

    def directory(items, child):
        at = state["dir"]
        named = sum(1 for k in items if isinstance(k, str))
        out[at:at + 16] = struct.pack("<IIHHHH", 0, 0, 4, 0, named, len(items) - named)
        state["dir"] += 16 + 8 * len(items)
        for i, (key, value) in enumerate(items.items()):
            struct.pack_into("<II", out, at + 16 + 8 * i, name_field(key), child(value))
        return at

    def leaf(payload):
        at = state["entry"]
        state["entry"] += 16
        data.extend(bytes(-len(data) % 8))
        struct.pack_into("<IIII", out, at, rva + data_at + len(data), len(payload), 0, 0)
        data.extend(payload)
        return at

    directory(resources, lambda names: 0x80000000 | directory(
        names, lambda langs: 0x80000000 | directory(langs, leaf)))
    return bytes(out + data)


def pe_module(resources, pe32_plus=False):
    rsrc = resource_section(resources, 0x2000)
    raw = (len(rsrc) + 0x1FF) // 0x200 * 0x200
    out = bytearray(0x400 + raw)
    struct.pack_into("<HI", out, 0, 0x5A4D, 0)
    struct.pack_into("<I", out, 0x3C, 0x80)
    optional_size = 240 if pe32_plus else 224
    struct.pack_into("<4sHHIIIHH", out, 0x80, b"PE\0\0", 0x8664 if pe32_plus else 0x14C, 2, 0, 0, 0,
                     optional_size, 0x2102)
    opt = 0x98
    struct.pack_into("<H", out, opt, 0x20B if pe32_plus else 0x10B)
    struct.pack_into("<II", out, opt + 32, 0x1000, 0x200)
    struct.pack_into("<II", out, opt + 56, 0x3000 + raw, 0x200)
    count = opt + (108 if pe32_plus else 92)
    struct.pack_into("<I", out, count, 16)
    struct.pack_into("<II", out, count + 4 + 16, 0x2000, len(rsrc))
    table = opt + optional_size
    struct.pack_into("<8sIIII", out, table, b".text", 0x10, 0x1000, 0x200, 0x200)
    struct.pack_into("<8sIIII", out, table + 40, b".rsrc", len(rsrc), 0x2000, raw, 0x400)
    out[0x400:0x400 + len(rsrc)] = rsrc
    return bytes(out)


icon = struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHIH", 16, 16, 0, 0, 1, 32, 40, 1)
strings = b"".join(struct.pack("<H", len(s)) + s.encode("utf-16-le") for s in ["", "Open", "", "保存"] + [""] * 12)
version = version_resource([("OriginalFilename", "demo.exe"), ("FileVersion", "1.0"), ("CompanyName", "维达罗")])
put("pe", "pe32", pe_module({"AVI": {"INTRO": {0x804: b"RIFF"}}, 6: {1: {0x804: strings}},
                             14: {1: {0x409: icon, 0x804: icon}}, 16: {1: {0x804: version}}}))
put("pe", "pe32plus", pe_module({"PNG": {"LOGO": {0: b"\x89PNG"}}, 9: {"MAIN": {0x409: bytes(8)}},
                                 16: {1: {0x409: version}}}, True))
put("pe", "version", version)
