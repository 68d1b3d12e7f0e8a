"""What seeds are made of: numbers, texts, and entries of lists as support/lists.cpp takes them."""
import struct


def word(number):
    """Four bytes, the highest first."""
    return struct.pack(">I", number & 0xFFFFFFFF)


def half(number):
    """Two bytes, the higher first."""
    return struct.pack(">H", number & 0xFFFF)


def text(content):
    """A length in one byte, and the characters."""
    content = content if isinstance(content, bytes) else content.encode()
    return bytes([len(content)]) + content


def row(first, count, value=0x10):
    """`count` registers in a row from `first` on, at most 65."""
    return register(first, value) + (bytes([count - 2, value + 1]) if count > 1 else b"")


def register(address, value):
    """An entry that names its register."""
    return bytes([0x40]) + half(address) + bytes([value])


def marker(address, value):
    """An entry of a marker with a value of one byte."""
    # The markers stand in a table of six: the kind's remainder chooses.
    table = [0xFFFF, 0xFFFD, 0xFFFE, 0xFFF8, 0xFEF0, 0xFEF1]
    kind = next(k for k in range(160, 192) if table[k % 6] == address)
    return bytes([kind, value])


def wide_marker(address, value):
    """An entry of a marker with a value of four bytes."""
    table = [0xFFFF, 0xFFFD, 0xFFFE, 0xFFF8, 0xFEF0, 0xFEF1]
    kind = next(k for k in range(192, 208) if table[k % 6] == address)
    return bytes([kind]) + word(value)


def wide_register(address, value):
    """An entry of a register beyond 16 bits."""
    return bytes([208]) + word(address) + word(value)


def width(slave, code):
    """An entry that chooses a slave and its width."""
    return bytes([224, slave, code])


GAP = bytes([128, 0x33])  # the next register but one
AGAIN = bytes([240])  # the last entry once more
HEADER = marker(0xFFFD, 1) + marker(0xFFFE, 2)
