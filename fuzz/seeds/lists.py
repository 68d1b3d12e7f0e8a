"""Seeds of the lists of registers and their files, the library's and the tool's."""
from seeds.parts import (AGAIN, GAP, HEADER, marker, register, row, wide_marker, wide_register, width)

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


def with_option(lists):
    """The same lists after one byte of options."""
    return {name: b"\5" + content for name, content in lists.items()}
