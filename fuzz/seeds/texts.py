"""Seeds of what else is read as text or file: numbers, command lines, scripts, images."""

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
