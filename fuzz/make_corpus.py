#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets: corpus/TARGET/NAME, each named after what it shows.

A seed is read by its target alone; how, its source says. Usage: make_corpus.py
"""
# pylint: disable=missing-function-docstring
import pathlib
import struct

CORPUS = pathlib.Path(__file__).resolve().parent / "corpus"
CONFIGURATIONS = CORPUS.parent.parent / "virtual_camera" / "configurations"


def word(number):
    return struct.pack(">I", number & 0xFFFFFFFF)


def half(number):
    return struct.pack(">H", number & 0xFFFF)


def text(content):
    """A length in one byte, and the characters."""
    content = content if isinstance(content, bytes) else content.encode()
    return bytes([len(content)]) + content


# ---- Lists, as support/lists.cpp takes them ------------------------------------------------------

def row(first, count, value=0x10):
    """`count` registers in a row from `first` on, at most 65."""
    return register(first, value) + (bytes([count - 2, value + 1]) if count > 1 else b"")


def register(address, value):
    return bytes([0x40]) + half(address) + bytes([value])


def marker(address, value):
    # The markers stand in a table of six: the kind's remainder chooses.
    table = [0xFFFF, 0xFFFD, 0xFFFE, 0xFFF8, 0xFEF0, 0xFEF1]
    kind = next(k for k in range(160, 192) if table[k % 6] == address)
    return bytes([kind, value])


def wide_marker(address, value):
    table = [0xFFFF, 0xFFFD, 0xFFFE, 0xFFF8, 0xFEF0, 0xFEF1]
    kind = next(k for k in range(192, 208) if table[k % 6] == address)
    return bytes([kind]) + word(value)


def wide_register(address, value):
    return bytes([208]) + word(address) + word(value)


def width(slave, code):
    return bytes([224, slave, code])


GAP = bytes([128, 0x33])  # the next register but one
AGAIN = bytes([240])  # the last entry once more
HEADER = marker(0xFFFD, 1) + marker(0xFFFE, 2)

REGISTER_LISTS = {
    "run-of-21": row(0x100, 21),
    "row-of-20-is-no-run": row(0x100, 20),
    "run-of-56-and-what-follows": row(0x100, 56) + row(0x138, 30),
    "row-of-130-in-a-row": row(0x100, 65) + bytes([63, 1]) + bytes([0, 9]),
    "run-broken-by-a-gap": row(0x100, 30) + GAP + bytes([24, 5]),
    "marks-inside-a-run": row(0x100, 10) + HEADER + bytes([20, 5]),
    "odd-scatter-repeats-the-last": register(1, 2) + register(9, 3) + register(5, 4),
    "scatter-of-nineteen": b"".join(register(3 * i, i) for i in range(19)),
    "same-register-twice": register(0x10, 7) + AGAIN + AGAIN,
    "pauses-everywhere": marker(0xFFFF, 10) + register(1, 2) + marker(0xFFFF, 255)
                         + wide_marker(0xFFFF, 256) + register(8, 2),
    "run-over-the-page's-end": row(0xFFF0, 40),
    "addresses-of-32-bits": wide_register(0x1FFF0, 0x1FF) + bytes([40, 0]),
    "marks-at-the-end": register(1, 2) + HEADER,
    "no-header": register(0x8000, 1) + HEADER + register(0x8002, 2),
    "register-1-after-a-run": row(0x100, 56) + register(1, 1) + bytes([30, 2]),
}

I2C_LISTS = {
    "widths-8-8": width(0x20, 1) + row(0x10, 40),
    "widths-16-8": width(0x21, 3) + row(0x3000, 60) + register(0x10, 1),
    "widths-16-16": width(0x22, 4) + row(0x3000, 40),
    "scattered-8-8": width(0x20, 0) + b"".join(register(3 * i, i) for i in range(35)),
    "scattered-16-16": width(0x22, 4) + b"".join(register(300 * i, i) for i in range(20)),
    "unknown-width-code": width(0x21, 7) + register(0x3012, 1) + row(0x3020, 30),
    "run-becomes-scatter": width(0x21, 3) + row(0x3000, 5) + GAP + bytes([9, 1]),
    "slave-changes-midway": width(0x20, 1) + register(2, 3) + marker(0xFFF8, 0x21)
                            + register(4, 5) + width(0x22, 4) + register(6, 7),
    "register-before-the-width": marker(0xFFF8, 0x20) + register(1, 2) + register(3, 4),
    "slave-of-all-ones": width(0x20, 1) + register(1, 2) + wide_marker(0xFFF8, 0xFFFFFFFF)
                         + register(3, 4),
    "pauses-between-writes": width(0x20, 1) + register(1, 2) + marker(0xFFFF, 5) + register(2, 2)
                             + wide_marker(0xFFFF, 0xFFFFFFFF) + register(3, 2)
                             + wide_marker(0xFFFF, 256) + register(4, 2),
    "passed-over": width(0x20, 1) + marker(0xFEF0, 1) + register(2, 3) + marker(0xFEF1, 2),
    "width-code-as-a-register": width(0x21, 3) + register(1, 1) + marker(0xFFFE, 4),
    "signed-neighbours": width(0x21, 3) + wide_register(0xFFFFFFFF, 1) + wide_register(0, 2)
                         + wide_register(0x7FFFFFFF, 3) + wide_register(0x80000000, 4),
}

LIST_FILES = {
    "plain-lines": b"0xfff8,0x6c,\r\n0xfffe,0x03,\r\n0x3012, 0x5a,\r\n3013,5B\r\n   0x3014 , 0x10 ,\n",
    "remarks": b"// one, two\r\n0x0a,5a // was 0x10, once\n0x0b,5a, // was 0x10, once\n//\n",
    "one-field": b"0xfff8,0x6c,\n0x3012,\n0x3013,0x5b,\n",
    "one-field-of-blanks": b"0x01,0x02,\n0x3012, \t \n",
    "dropped-address": b"0xfff2,0x01,\n0xFFF2,0x01\n0xfff2 ,0x02,\nfff2,0x03,\n0xfff2,\n0x0fff2,1,\n",
    "end-of-file-byte": b"0x01,0x02,\n\x1a0x03,\n",
    "lone-carriage-returns": b"0x01,\r0x02,\r\r\n0x03\r,0x04,\r",
    "prefix-behind-text": b"reg 0x3012,val 0x5a,\nreg 0x3012,val 0x5a\n0x0x5,0x0x6,\n",
    "signs-and-overflow": b"-1,+2,\n0x100000000,-0x100000000,\n0x123456789abcdef01,1\n--1,0x-1,\n",
    "commas-alone": b",,\n,\n,5\n5,,\n",
    "no-line-end": b"0x01,0x02,\n0x3012,0x5a",
    "zero-bytes": b"0x01\x00,0x02,\n\x000x03,0x04,\n",
    "numbers-of-eight-digits": b"0x12345678,0x9abcdef0,\r\n0x123456789,1,\r\n",
    "exposure-is-an-entry": b"Exposure, default\n0x0a,0x76,\n",
    "border-of-chunks-in-a-line": b"0x3012, 0x5a,\n   0x3013 ,  0x5b , remark, more\n0x3014,0x01,\r\n---",
    "byte-order-mark": b"\xef\xbb\xbf0x01,0x02,\n",
}

NUMBERS = {
    "prefix": b"0x1a3", "capital-prefix": b"0X1A3", "prefix-alone": b"0x", "minus": b"-12",
    "largest-32": b"ffffffff", "beyond-32": b"100000000", "minus-beyond-32": b"-ffffffffff",
    "largest-64": b"ffffffffffffffff", "beyond-64": b"10000000000000000",
    "white-space": b" \t\r\n\v\f+7fz", "leading-zeros": b"000000000000000000000012",
    "most-negative": b"-80000000", "below-most-negative": b"-80000001", "no-digit": b"xyz",
    "wide-text": b"1\x002\x00\x00\x01", "zero-byte-inside": b"12\x0034",
}

TOOL_NUMBERS = {
    "decimal": b"419", "hexadecimal": b"0x1a3", "kibi": b"256K", "mebi": b"4m", "range": b"0x1000-0x1fff",
    "first-and-size": b"0x1000+256", "whole-space": b"0x0-0xffffffff", "size-of-all": b"0+4096M",
    "backwards": b"5-4", "too-large": b"18446744073709551616", "unit-overflow": b"0xffffffffffffffffK",
    "empty-second": b"5-", "two-marks": b"1-2-3", "sign": b"-5", "blank": b" 5", "zero-size": b"5+0",
    "one-byte-at-the-end": b"0xffffffff+1", "beyond-the-end": b"0xffffffff+2",
}

COMMAND_LINES = {name: "\0".join(words).encode() for name, words in {
    "nothing": [], "version": ["--version"], "overview": ["--help"], "group's-help": ["reg", "--help"],
    "help-behind-a-value": ["flash", "word", "12g", "--help"],
    "options-in-front": ["--json", "--camera", "1", "reg", "read", "0x100"],
    "option-with-a-sign": ["reg", "read", "0x100", "--camera=usb"],
    "sign-and-nothing": ["--camera=", "list"],
    "value-of-a-flag": ["list", "--json=yes"],
    "mark-before-arguments": ["reg", "load", "--", "--json"],
    "two-marks": ["reg", "load", "--", "--"],
    "mask-of-a-byte": ["reg", "write", "0x10", "1", "--mask", "0x100"],
    "no-slave": ["i2c", "read", "1"],
    "width-mode": ["i2c", "write", "0x10000", "1", "--slave", "0x6c", "--mode", "16/8"],
    "contradiction": ["flash", "program", "a.bin", "--backup", "b.bin", "--no-backup"],
    "restore-without-backup": ["flash", "program", "a.bin", "--no-backup", "--restore-on-failure"],
    "all-and-a-camera": ["flash", "program", "a.bin", "--all", "--camera", "0"],
    "quiet-and-verbose": ["list", "--quiet", "--verbose"],
    "flag-twice": ["list", "--json", "--json"], "option-twice": ["bench", "--mode", "1", "--mode", "2"],
    "address-in-a-name": ["flash", "program", "a-0x20000-0x30000.bin", "--json"],
    "address-in-a-name-behind-a-mark": ["flash", "verify", "--", "-\n0x1000.bin"],
    "single-address": ["flash", "read", "1M", "a.bin"], "end-behind-the-last": ["flash", "erase", "0-4M"],
    "whole-flash": ["flash", "read", "all", "a.bin"],
    "nearest-command": ["flash", "porgram"], "last-word-alone": ["dump"],
    "nearest-option": ["reg", "read", "1", "--wdie"],
    "one-too-many": ["reg", "load", "a", "b"],
    "endless-rate": ["watch", "--reg", "1", "--rate", "1e999"],
    "rate-that-is-none": ["watch", "--reg", "1", "--rate", "nan"],
    "timeout-of-zero": ["list", "--timeout", "0"], "timeout-below-zero": ["list", "--timeout", "-1"],
    "empty-file-name": ["reg", "load", ""], "line-break": ["a\nb"], "escape": ["\x1b[2J"],
    "short-options-together": ["-qv", "list"], "dash-alone": ["reg", "load", "-"],
    "camera-twice": ["--camera", "0", "--camera", "1", "list"], "run": ["run", "script.txt", "--keep-going"],
    "completion": ["completion", "bash"], "unknown-shell": ["completion", "fish"], "manual": ["manual"],
}.items()} | {"not-utf-8": b"reg\0read\0\xff\xfe"}

SCRIPT_LINES = {
    "words": b"reg write 0x100 1", "quoted-blanks": b'reg load "my list.txt"', "empty-word": b'a "" b',
    "quote-inside-a-word": b'--camera="two words"', "remark": b"list # all of them",
    "hash-in-a-word": b"reg load a#b", "hash-in-quotes": b'reg load "#1"', "quote-in-a-remark": b'list # "open',
    "open-quote": b'reg load "my list.txt', "quotes-back-to-back": b'"a""b"', "tabs-and-returns": b"\ta\tb\r\n",
    "remark-behind-a-quote": b'"a"#b', "nothing": b" \t ", "zero-byte": b"a\0b",
}

TOOL_LISTS = {
    name: b"\6" + content for name, content in LIST_FILES.items()} | {
    "register-list": b"\6// gains\r\n0xfffd, 0x00,\r\n0xfffe, 0x00,\r\n0x0100, 0x5a, // was 1\n",
    "pause-too-long": b"\0000xfffd,0,\n0xffff,0x100,\n0x100,1,\n",
    "delay-inside-a-row": b"\0000xfffd,0,\n0xfffe,0,\n" + b"".join(
        b"0x%04x,1,\n%s" % (0x100 + i, b"0xfffd,1,\n" if i == 9 else b"") for i in range(30)),
    "i2c-list": b"\0000xfff8,0x6c,\n0xfffe,0x03,\n0x300a,0x56,\n0xffff,10,\n0x300b,1,\n",
    "opened-from-outside": b"\0010x300a,0x56,\n0x300b,0x40,\n",
    "entry-by-entry": b"\0050x12345678,0x9abcdef0,\n",
    "slave-in-a-list-sent-by-entries": b"\0050xfff8,0x6c,\n0x1,2,\n",
    "lone-width": b"\0010xfffe,1,\n0x10,1,\n", "capital-prefix": b"\0060X10,0X20,\n0xFFF2,1,\n",
    "third-field": b"\0060x10,0x20,0x30\n", "remark-behind-a-value": b"\0060x10,20 // not 0x30\n",
    "remark-read-as-a-value": b"\0060x10,20 // 0x30,\n", "utf-16": b"\6\xff\xfe0\0",
}

IMAGE_FILES = {
    "hex-data": b":0400100001020304E2\r\n:00000001FF\r\n", "hex-upper-address": b":020000040002F8\n",
    "hex-small-letters": b":0400100001020304e2", "hex-wrong-checksum": b":0400100001020304E3\n",
    "hex-behind-a-remark": b"; made by a tool\n\n:00000001FF  \n", "hex-too-short": b":0000",
    "hex-behind-a-mark": b"\xef\xbb\xbf:00000001FF", "hex-in-the-ninth-line": b"x\n" * 8 + b":00000001FF\n",
    "s-header": b"S00600004844521B\r\n", "s1": b"S1051000AABB85\n", "s2": b"S206010203AABB8E\n",
    "s3": b"S30708000000AABB8B\n", "s4": b"S4030000FC\n", "s9": b"S9030000FC",
    "dump": b"00001008h: 00 01 02 03 04 05 06 07;\r\n", "dump-without-its-end": b"00001008h: 00 01 02 03 04 05 06 07",
    "elf": b"\x7fELF\1\1\1".ljust(52, b"\0"), "elf-cut": b"\x7fELF\1\1\1",
    "uf2": b"UF2\n\x57\x51\x5d\x9e".ljust(508, b"\0") + b"\x30\x6f\xb1\x0a",
    "uf2-without-its-end": b"UF2\n\x57\x51\x5d\x9e".ljust(512, b"\0"),
    "vectors": b"\0\0\2\x20\x41\1\0\x08", "blank": b"\xff" * 64,
}


def blocks():
    """An operation's number, then its own."""
    address = word(0x12345678)
    return {
        "wide-register": b"\0" + address + b"\0" + word(0xCAFEBABE) + b"\0" + address + b"\1",
        "byte-register": b"\1" + address + b"\0" + word(0x5A) + b"\1" + address + b"\1"
                         + b"\0" + address + b"\1",
        "register-block": b"\1" + word(0x10005) + b"\0" + word(7) + b"\2" + word(0x1FFFF) + half(0),
        "i2c-every-mode": b"".join(
            b"\3" + bytes([mode]) + word(0) + address + b"\5" + bytes([read]) + word(0xCAFEBABE)[:4 * (1 - read)]
            for mode in range(6) for read in (0, 1)),
        "i2c-unknown-mode": b"\3\x80" + word(0x77) + word(0) + address + b"\0\0" + word(0x55),
        "i2c-lists": b"".join(b"\4" + bytes([mode]) + address for mode in range(6)),
        "flash-word": b"\5" + word(0x100) + b"\0" + word(0x11223344) + b"\5" + word(0x100) + b"\2",
        "flash-erase": b"\5" + word(0x1003) + b"\0" + word(0) + b"\5" + word(0x1FFF) + b"\1",
        "flash-packet-over-a-page": b"\5" + word(0xE0) + b"\3" + bytes(range(60)) + b"\5" + word(0xE0) + b"\4",
        "flash-wraps": b"\5" + word(0xFFFE) + b"\0" + word(0) + b"\5" + word(0x2FFF0) + b"\4",
    }


def replies():
    """Operation, fast paths or not, its numbers, then the device's answers."""
    single = word(0x1A3) + word(0x6C000042)
    well = b"\0"  # usual length, or success
    byte_reply = b"\3\x04\x24\x5a\0\x28"
    return {
        "byte-register": b"\0\0" + single + b"\0" + well * 3 + byte_reply,
        "wide-register": b"\0\0" + single + b"\1" + well * 3 + b"\4\x04\x81\x12\x34\x11" + b"\5\x04\x81\x56\x78\x21",
        "foreign-tag": b"\0\0" + single + b"\0" + well * 3 + b"\1\x04\x24\x5a\0\x77",
        "length-0": b"\0\0" + single + b"\0" + b"\4\0" + well * 2 + byte_reply,
        "length-beyond-usb": b"\0\0" + single + b"\0" + b"\5" + word(0x10000),
        "length-of-64-kib": b"\4\0" + single + b"\0" + b"\5" + word(0xFFFF) + well + byte_reply,
        "query-answers-success": b"\0\0" + single + b"\0" + b"\6" + word(9) + b"\0",
        "query-fails": b"\5\0" + single + b"\0" + b"\7" + word(0x8007001F),
        "second-command-fails": b"\0\0" + single + b"\1" + well * 2 + b"\3" + word(0x80004005),
        "first-command-fails": b"\1\0" + single + b"\1" + well + b"\3" + word(0x80004005),
        "i2c-read-of-32-bits": b"\2\0" + single + b"\5" + well * 2 + b"\1\x0c" + bytes(range(12)),
        "i2c-mode-that-is-none": b"\2\0" + single + b"\6" + well * 2 + b"\1\x0c" + bytes(range(12)),
        "i2c-write": b"\3\0" + single + b"\2",
        "flash-read": b"\4\0" + single + b"\0" + well * 2 + b"\3\x0b" + bytes(range(11)),
        "flash-read-retries": b"\4\0" + single + b"\0" + well * 2 + b"\6" + word(0x8007001F)
                              + (well + b"\6" + word(0x8007001F)) * 3,
        "flash-write": b"\5\0" + single + b"\1",
        "register-run": b"\6\0" + word(0x10100) + half(102) + well * 2 + b"\5\x40" + bytes(range(64)),
        "register-run-that-fails": b"\6\0" + word(0x100) + half(102) + well * 2 + b"\6" + word(0x80004005),
        "i2c-run-in-blocks": b"\7\1" + word(0x3000) + half(120) + b"\x6c\1" + well * 2 + b"\1\x40" + bytes(range(64)),
        "i2c-run-in-steps": b"\7\0" + word(0x3000) + half(12) + b"\x6c\1" + well * 3 + b"\1\4\0\x77\0\0",
        "i2c-run-without-a-length": b"\7\1" + word(0x3000) + half(12) + b"\x6c\5" + b"\7" + word(0x80004005),
        "flash-dump": b"\x08\0" + word(0x1000) + half(130) + well * 3 + b"\5\x40" + bytes(range(64)),
        "flash-dump-repeats": b"\x08\0" + word(0x1000) + half(100) + well * 3 + b"\6" + word(0x80004005)
                              + well + b"\6" + word(1),
        "flash-dump-of-five-bytes": b"\x08\0" + word(0) + half(6) + well * 3 + b"\6" + word(0x80004005),
        "flash-dump-backwards": b"\x08\0" + word(0x1000) + half(0),
        "image": b"\x09\0" + word(0x1000) + half(100) + bytes(range(100)) + half(200),
        "image-retried": b"\x09\0" + word(0) + half(3) + b"abc" + half(0) + well * 2 + well
                         + (b"\3" + word(1)) * 2,
        "erase-fails": b"\x09\0" + word(0) + half(3) + b"abc" + half(0) + well + b"\3" + word(0x80004005),
        "register-list": b"\x0a\0" + half(40) + HEADER + row(0x100, 30) + register(1, 2),
        "i2c-list-in-packets": b"\x0b\1\5" + half(12) + width(0x20, 1) + row(0x10, 40),
        "i2c-list-in-steps": b"\x0b\0\5" + half(12) + width(0x21, 3) + row(0x10, 4),
    }


def flash_images():
    start = word(0x40000)
    return {
        "one-byte": start + b"\0\x5a",
        "exactly-one-piece": start + bytes([59]) + bytes(range(60)),
        "blank-middle": start + b"\3abcd" + b"\xbf\0" + b"\3efgh",
        "blank-all": start + b"\xa0\0",
        "zeros": start + b"\xff\0",
        "one-sector-and-a-byte": start + b"\xf0\0" * 5 + b"\xd0\1",
        "addresses-wrap": word(0xFFFFFFF0) + b"\x3f" + bytes(range(64)),
        "unaligned-start": word(0x1003) + b"\x3f" + bytes(range(64)) + b"\x9f\x33" + b"\1zz",
        "empty": start,
    }


def dumps():
    head = word(0x1000) + word(0xFFFFFFFF) + b"\0" + text("dump.txt")
    return {
        "two-lines": head + bytes(range(16)),
        "last-line-not-full": head + bytes(range(11)),
        "end-before-the-offset": word(0) + word(8) + b"\0" + text("a.TXT") + bytes(range(64)),
        "addresses-wrap": word(0xFFFFFFFC) + word(3) + b"\0" + text("txt") + bytes(range(8)),
        "register-lines": head + HEADER + row(0x100, 30),
        "i2c-lines-with-words": word(0) + word(0) + b"\2" + text("") + wide_register(0x12345, 0x6789) + row(1, 3),
        "no-text-for-32-bits": word(0) + word(0) + b"\4" + text("a.b.txt") + row(1, 3),
        "address-that-lists-drop": head + register(0xFFF2, 1) + register(0xFFF3, 1),
    }


def enumerations():
    def device(kind, path, name):
        return bytes([kind, 0]) + text(path) + b"\0" + text(name)
    return {
        "one-camera": b"\x0a" + device(4, "1234&PID_5678&mi_00#7&1&0", "Camera"),
        "no-usb": b"\x0a" + device(0, "pci#vid_1234&pid_5678", "Card") + device(0, "USB#VID_1", "short"),
        "no-path": b"\x0a" + bytes([1, 0]) + text("Name"),
        "no-name": b"\x0a" + bytes([2, 0]) + text("usb#vid_1234&pid_5678"),
        "no-markers": b"\x0a" + device(0, "xyz1234usb#", "Camera"),
        "negative-ids": b"\x0a" + device(4, "-123&pid_+00f", "Camera"),
        "texts-longer-than-their-fields": b"\x0a" + device(4, "1234&pid_5678" + "p" * 200, "n" * 250),
        "old-system": b"\5" + device(4, "1234&pid_5678", "unreliable"),
        "other-letters": b"\x0a" + bytes([4, 3]) + text("1234") + bytes([3]) + text("\x41\xc4"),
        "marker-at-the-end": b"\x0a" + device(0, "usb#pid_", "Camera"),
    }


def hosts():
    """Calls: below 0x40 of the instance, 0x80 accesses, 0xc0 jobs, 0xe0 a thread's turn, else stop.

    The first answers belong to the feature read of the selection.
    """
    selected = b"\0\0\0" + b"\3\4\x24\x20\0\x28"  # with fast paths
    turn = b"\xc0"
    stop = b"\xe0"
    list_file = b"0xfffd,0,\n0xfffe,0,\n0x8000,1,\n"
    i2c_file = b"0xfff8,0x6c,\n0xfffe,3,\n0x3012,0x5a,\n0xffff,20,\n0x3013,1,\n"

    def job(kind, file_name, start, rest=b""):
        return bytes([next(k for k in range(0x80, 0xC0) if k % 6 == kind)]) + file_name + word(start) + rest

    def access(kind, flag=0):
        return bytes([next(k for k in range(0x40, 0x80) if k % 7 == kind)]) + word(0x100) + word(0x20) + bytes([flag])

    read, to_text, to_bytes = b"\x08", b"\4", b"\6"
    return {
        "accesses": selected + b"".join(access(kind) for kind in range(7)),
        "no-instance": selected + b"\3" + b"".join(access(kind) for kind in range(7)) + job(5, read + text("x"), 0),
        "cameras-come-and-go": selected + b"\2\x0f\3\x10\4\x21\5\x07\6" + b"\1\4\5\0\5\1\5\2\5\x80",
        "camera-refuses": selected + b"\2\x0f\1\x04\1" + b"\1\5\0" + access(0),
        "list-can't-be-had": selected + b"\2\0" + word(0x80040154) + b"\0\1\4",
        "image": selected + job(0, read + text("firmware" * 20), 0x1000) + turn * 2,
        "dump-as-text": selected + job(1, to_text, 0x1000, half(130)) + turn,
        "dump-stopped": selected + job(1, to_bytes, 0x1000, half(130)) + turn + b"\0\0\0\0\x0f" + stop,
        "register-dump": selected + job(2, to_text, 0x10100, half(80)) + turn,
        "register-list": selected + job(3, read + text(list_file), 0) + turn * 2,
        "list-without-header": selected + job(3, read + text(b"0x8000,1,\n"), 0) + turn,
        "i2c-dump": selected + job(4, to_text, 0x3000, half(80) + word(0x6C) + b"\1") + turn,
        "i2c-list": selected + job(5, read + text(i2c_file), 3) + turn * 2,
        "second-job-beside-the-first": selected + job(5, read + text(i2c_file), 3) + job(0, read + text("ab"), 0)
                                       + turn * 3,
        "instance-ends-during-a-job": selected + job(1, to_bytes, 0, half(200)) + turn + b"\0\x0f\3",
        "new-instance-during-a-job": selected + job(1, to_bytes, 0, half(200)) + turn + b"\0\x0f\0" + turn * 2,
        "files-that-are-none": selected + b"".join(
            job(kind, bytes([name]), 0) for kind in range(6) for name in range(4)) + turn * 9,
    }


def configurations():
    camera = b'{"path": "p"%s}'
    seeds = {
        "smallest": b'{"cameras": [{"path": "p"}]}',
        "no-camera": b'{"cameras": []}',
        "not-json": b"cameras:",
        "number-beyond-a-double": b'{"cameras": [{"path": "p", "seed": 1e999}]}',
        "line-break-in-a-key": b'{"cameras": [{"path": "p", "a\\nb": 1}]}',
        "not-utf-8": b'{"cameras": [{"path": "\xff"}]}',
        "surrogate-alone": b'{"cameras": [{"path": "\\ud800"}]}',
        "deep": b"[" * 200 + b"]" * 200,
        "two-alike": b'{"cameras": [' + camera % b"" + b"," + camera % b"" + b"]}",
        "registers-twice": b'{"cameras": [{"path": "p", "registers": {"0x10": 1, "16": 2}}]}',
        "flash-sizes": b'{"cameras": [{"path": "p", "flash": {"size": "64K", "erase_ms": 60000}}]}',
        "flash-size-odd": b'{"cameras": [{"path": "p", "flash": {"size": 65537}}]}',
        "negative-result": b'{"cameras": [{"path": "p", "faults": [{"result": -2147483648}]}]}',
        "fault-that-does-nothing": b'{"cameras": [{"path": "p", "faults": [{"at": 1}]}]}',
        "sensors": b'{"cameras": [{"path": "p", "sensors": [{"slave": "0x6c", "mode": 2, '
                   b'"registers": {"0x300a": "0xffff"}}]}]}',
        "lengths": b'{"cameras": [{"path": "p", "lengths": {"1": 0, "7": "0xffffffff"}}]}',
        "zero-byte-in-a-name": b'{"cameras": [{"path": "p", "state": "a\\u0000b"}]}',
    }
    for name in ("demo", "faults"):
        seeds[name] = (CONFIGURATIONS / f"{name}.json").read_bytes()
    return seeds


def transfers():
    """Configuration; then head bytes: kind, selector * 4, length kind * 32."""
    def send(selector, block):
        return bytes([0 | selector << 2, len(block) - 1]) + block

    def get(selector):
        return bytes([2 | selector << 2])

    def query(selector):
        return bytes([3 | selector << 2])

    def whole(selector, block):
        return bytes([0 | selector << 2 | 4 << 5]) + block
    return {
        "lengths": b"\0" + b"".join(query(selector) for selector in range(8)),
        "byte-register": b"\0" + send(1, b"\x24\xa3\x01\x18") + send(1, b"\x24\0\0\x58") + get(1),
        "wide-register": b"\0" + send(1, b"\x41\xff\xff\0") + send(1, b"\x81\xff\xff\0") + get(1) * 3,
        "i2c-single": b"\0" + send(2, b"\0\x41\0\1\0\0\0\1\0\0\0\x5a") + send(2, b"\1\x41\0\1\0\0\0\1") + get(2),
        "i2c-steps": b"\0" + send(2, b"\x14\x42\2\1") + send(2, b"\x14\1\0\2") + get(2),
        "flash-word": b"\0" + send(3, b"\x38\0\0\1\0\1\2\3\4") + send(3, b"\x34\0\0\1\0") + get(3),
        "flash-erase": b"\0" + send(3, b"\x32\0\0\x10\0"),
        "fast-write-and-read": b"\0" + whole(4, word(0xE0) + bytes(60)) + whole(5, word(0xE0) + bytes(60)) + get(5),
        "fast-write-beyond-the-end": b"\x08" + whole(4, word(0xFFFFFFF0) + bytes(60)) + get(4),
        "i2c-run": b"\0" + whole(6, b"\0\x40\0\x38\0\0\0\1" + bytes(range(56))),
        "i2c-run-too-long": b"\0" + whole(6, b"\0\x40\0\x39\0\0\0\1" + bytes(range(56))),
        "i2c-block-read": b"\0" + whole(6, b"\x10\x45\5\x38" + word(1) + bytes(56)) + get(6),
        "register-run": b"\4" + whole(7, b"\0\0\1\x38\1\2\xff\xf0" + bytes(range(56))),
        "register-scatter": b"\0" + whole(7, b"\0\1\0\2\xff\xfd\1\xff\xfe\2" + bytes(54)),
        "two-objects-write-in-turn": b"\0" + b"".join(
            whole(7, b"\0\1\0\1\xff\xfd\0\xff\xfe\0\x12\x34" + bytes([value]) + bytes(51)) for value in (1, 2, 3))
                                     + whole(7, b"\1\0\0\x38\0\0\x12\x34" + bytes(56)) + get(7),
        "odd-lengths": b"\x10\0\x40\xff\0\1\2\3" + b"".join(get(s) + query(s) for s in range(1, 8)),
        "short-block": b"\0" + bytes([0 | 7 << 2 | 6 << 5, 5]) + b"\0\0\1\x38\1",
        "unknown-selector": b"\0" + bytes([2 | 7 << 5]) + word(8) + b"\x40",
    }


def with_option(lists):
    return {name: b"\5" + content for name, content in lists.items()}


SEEDS = {
    "list_file": LIST_FILES,
    "register_plan": {name: HEADER + content for name, content in REGISTER_LISTS.items()
                      if name != "no-header"} | {"no-header": REGISTER_LISTS["no-header"]},
    "i2c_plan": with_option(I2C_LISTS),
    "blocks": blocks(),
    "replies": replies(),
    "flash_image": flash_images(),
    "dump_lines": dumps(),
    "number_text": NUMBERS,
    "enumeration": enumerations(),
    "host": hosts(),
    "camera_configuration": configurations(),
    "camera_transfers": transfers(),
    "tool_numbers": TOOL_NUMBERS,
    "command_line": COMMAND_LINES,
    "script_line": SCRIPT_LINES,
    "image_format": IMAGE_FILES,
    "tool_lists": TOOL_LISTS,
}


def main():
    for target, seeds in SEEDS.items():
        folder = CORPUS / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, content in seeds.items():
            (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
