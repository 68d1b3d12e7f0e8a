"""Image files: Intel HEX, Motorola S-records, ELF."""
import struct

END = b":00000001FF\r\n"
HEX_FILES = {
    "data": b":0400100001020304E2\r\n" + END, "small-letters": b":02001000aabb89\n" + END,
    "linear": b":020000041234B4\r\n:01FFFE0055AD\r\n" + END,
    "linear-over-64k": b":020000040001F9\n:04FFFE0001020304F5\n" + END,
    "segment-around": b":020000021000EC\n:04FFFE0001020304F5\n" + END,
    "around-without-extension": b":04FFFE0001020304F5\n" + END,
    "last-byte": b":02000004FFFFFC\n:01FFFF00778A\n" + END,
    "beyond": b":02000004FFFFFC\n:02FFFF00778801\n" + END,
    "starts": b":0400000508000131BD\n:010000000BF4\n" + END,
    "two-starts": b":0400000508000131BD\n:0400000312340005AE\n:010000000BF4\n" + END,
    "overlap": b":0400100001020304E2\n:020012000102E9\n" + END,
    "wrong-checksum": b":0400100001020304E3\n" + END, "no-end": b":010000000BF4\n",
    "behind-the-end": b":010000000BF4\n" + END + b":010001000BF3\n",
    "mark-and-blanks": b"\xef\xbb\xbf\n:010000000BF4 \t\r\r\n" + END,
}
SRECORD_FILES = {
    "s19": b"S0030000FC\r\nS1051000AABB85\r\nS5030001FB\r\nS9030000FC\r\n",
    "s28": b"S206010203AABB8E\nS804123456" b"5F\n", "s37": b"S30708000000AABB8B\nS70512345678E6\n",
    "count-alone": b"S1051000AABB85\nS5030001FB\n", "wrong-count": b"S1051000AABB85\nS5030002FA\n",
    "long-count": b"S1051000AABB85\nS604000001FA\nS9030000FC\n",
    "behind-a-count": b"S1051000AABB85\nS5030001FB\nS1051002AABB83\n",
    "behind-the-start": b"S1051000AABB85\nS9030000FC\nS1051002AABB83\n",
    "overlap": b"S1051000AABB85\nS1051001AABB84\nS9030000FC\n", "no-end": b"S1051000AABB85\n",
    "beyond": b"S307FFFFFFFF0102F9\nS9030000FC\n", "s4": b"S4051002AABB83\n",
}


def elf_file(wide, order, segments, cut=0):
    """An ELF file with program headers: type, offset after the table, address, size, memory size."""
    header = 64 if wide else 52
    entry = 56 if wide else 32
    data = header + entry * len(segments)
    numbers = "HHIQQQIHHHHHH" if wide else "HHIIIIIHHHHHH"
    file = b"\x7fELF" + bytes([2 if wide else 1, 1 if order == "<" else 2, 1]).ljust(12, b"\0")
    file += struct.pack(order + numbers, 2, 0, 1, 0x20, header, 0, 0, header, entry, len(segments),
                        0, 0, 0)
    for kind, offset, address, size, memory in segments:
        if wide:
            file += struct.pack(order + "IIQQQQQQ", kind, 0, data + offset, 0, address, size, memory,
                                0)
        else:
            file += struct.pack(order + "IIIIIIII", kind, data + offset, 0, address, size, memory, 0,
                                0)
    file += bytes(range(16))
    return file[:len(file) - cut]


def elf_files():
    """Both sizes and orders; files that are damaged."""
    two = [(1, 0, 0x20, 4, 8), (4, 0, 0, 4, 4), (1, 4, 0x10, 4, 4)]
    files = {f"{64 if wide else 32}-{'low' if order == '<' else 'high'}": elf_file(wide, order, two)
             for wide in (False, True) for order in "<>"}
    files["overlap"] = elf_file(False, "<", [(1, 0, 0x20, 4, 8), (1, 4, 0x22, 4, 4)])
    files["beyond-4g"] = elf_file(True, "<", [(1, 0, 1 << 32, 4, 4)])
    files["cut"] = elf_file(True, ">", two, cut=10)
    files["no-segments"] = elf_file(False, ">", [])
    files["more-than-memory"] = elf_file(False, "<", [(1, 0, 0, 4, 3)])
    return files
