"""Seeds of what a host sees: the cameras the system lists, and calls of the exports."""
from seeds.parts import half, text, word


def enumerations():
    """Lists of cameras as the system gives them."""
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
