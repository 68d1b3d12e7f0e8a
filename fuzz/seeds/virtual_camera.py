"""Seeds of the virtual camera: its configuration, and transfers to its chip."""
import pathlib

from seeds.parts import word

CONFIGURATIONS = pathlib.Path(__file__).resolve().parents[2] / "virtual_camera" / "configurations"


def configurations():
    """Configuration files of virtual cameras."""
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
