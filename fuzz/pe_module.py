"""Writes small Windows modules (PE32 or PE32+) with a resource section, for fuzz seeds and benchmarks."""
import struct


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


