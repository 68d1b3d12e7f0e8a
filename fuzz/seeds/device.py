"""Seeds of what the library exchanges with a camera: operations, replies, flash contents, dumps."""
from seeds.parts import HEADER, half, register, row, text, wide_register, width, word


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
    """Images and where they go."""
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
    """Dumps of flash and of registers."""
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
