#!/usr/bin/env python3
"""Writes small valid resources into DIR/ as the starting corpus of fuzz_resources."""
import os
import struct
import sys

out = sys.argv[1] if len(sys.argv) > 1 else "fuzz-corpus/resources"
os.makedirs(out, exist_ok=True)


def put(name, data):
    with open(os.path.join(out, name), "wb") as f:
        f.write(data)


def sz(text):
    return text.encode("utf-16-le") + b"\0\0"


def align(data):
    return data + bytes(-len(data) % 4)


put("menu", struct.pack("<HH", 0, 0) + struct.pack("<H", 0x10) + sz("&File") + struct.pack("<HH", 0, 100)
    + sz("Open") + struct.pack("<HH", 0x80, 0) + sz("") + struct.pack("<HH", 0x88, 300) + sz("Exit"))
menuex = struct.pack("<HHI", 1, 4, 0)
menuex = align(menuex + struct.pack("<IIIH", 0, 0, 10, 0x81) + sz("&File")) + struct.pack("<I", 0)
menuex = align(menuex + struct.pack("<IIIH", 0x800, 0, 0, 0) + sz(""))
menuex = align(menuex + struct.pack("<IIIH", 0, 8, 100, 0x80) + sz("Open"))
put("menuex", menuex)
put("strings", b"".join(struct.pack("<H", len(s)) + s.encode("utf-16-le")
                        for s in ["", "Open", "", "a\r\nb"] + [""] * 12))
put("accelerators", struct.pack("<HHHH", 9, 83, 100, 0) + struct.pack("<HHHH", 0x91, 112, 7, 0))
put("messages", struct.pack("<IIII", 1, 1, 2, 16) + struct.pack("<HH", 8, 0) + b"Hi\n\0"
    + struct.pack("<HH", 8, 1) + sz("x"))
dialog = struct.pack("<IIHhhhh", 0x80C800C0, 0, 2, 0, 0, 200, 100) + struct.pack("<HH", 0xFFFF, 7) + b"\0\0"
dialog += sz("About") + struct.pack("<H", 8) + sz("MS Shell Dlg")
dialog = align(dialog + struct.pack("<IIhhhhH", 0x50010001, 0, 140, 80, 50, 14, 1) + struct.pack("<HH", 0xFFFF, 0x80)
               + sz("OK") + struct.pack("<H", 0))
dialog += struct.pack("<IIhhhhH", 0, 0, 7, 7, 21, 20, 2) + sz("SysLink") + sz("x") + struct.pack("<HHH", 2, 1, 2)
put("dialog", dialog)
dialogex = struct.pack("<HHIIIHhhhh", 1, 0xFFFF, 0, 0, 0x80C800C0, 1, 0, 0, 200, 100) + b"\0\0\0\0" + sz("A")
dialogex += struct.pack("<HHBB", 8, 400, 0, 1) + sz("MS Shell Dlg")
dialogex = align(dialogex) + struct.pack("<IIIhhhhI", 0, 0, 0x50010001, 1, 2, 3, 4, 5) + struct.pack("<HH", 0xFFFF, 0x82)
dialogex += struct.pack("<HH", 0xFFFF, 101) + struct.pack("<H", 0)
put("dialogex", dialogex)
icon = struct.pack("<IiiHHIIiiII", 40, 2, 4, 1, 32, 0, 0, 0, 0, 0, 0) + bytes(2 * 2 * 4) + bytes(2 * 4)
put("icon", icon)
put("cursor", struct.pack("<HH", 1, 1) + icon)
put("group", struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHIH", 2, 2, 0, 0, 1, 32, len(icon), 20) + icon)
put("bitmap", struct.pack("<IiiHHIIiiII", 40, 2, 2, 1, 4, 0, 0, 0, 0, 2, 0) + bytes(8) + bytes(8))
