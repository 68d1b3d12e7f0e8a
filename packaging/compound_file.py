"""Replaces the times and the package code of an MSI by fixed values.

An MSI is a compound file: chains of sectors, a directory of streams, and a stream that contains the small streams.
Its times are in the directory's entries and in the summary stream.
"""
import struct

SUMMARY = "\x05SummaryInformation"
SMALL_STREAM = 4096
SMALL_SECTOR = 64
END_OF_CHAIN = 0xFFFFFFFA  # or above: no next sector
ROOT = 5
# Properties of the summary.
PACKAGE_CODE = 9
TIMES = (11, 12, 13)  # printed, created, saved
KIND_TIME = 64
KIND_TEXT = 30
# Seconds from 1601, the start of Windows' time, to 1970.
EPOCH_1601 = 11644473600


class CompoundFile:
    """The bytes of a compound file, with access to its streams."""

    def __init__(self, data):
        self.data = bytearray(data)
        if self.data[:8] != bytes.fromhex("d0cf11e0a1b11ae1"):
            raise ValueError("not a compound file")
        self.sector = 1 << struct.unpack_from("<H", self.data, 30)[0]
        self.fat = []
        for number in self._fat_sectors():
            self.fat += struct.unpack_from(f"<{self.sector // 4}I", self.data, self._offset(number))
        small_first, small_count = struct.unpack_from("<II", self.data, 60)
        self.small_fat = []
        for number in self._chain(small_first, self.fat)[:small_count]:
            self.small_fat += struct.unpack_from(f"<{self.sector // 4}I", self.data, self._offset(number))
        directory = self._chain(struct.unpack_from("<I", self.data, 48)[0], self.fat)
        self.entries = [self._offset(number) + at for number in directory for at in range(0, self.sector, 128)]

    def _fat_sectors(self):
        count = struct.unpack_from("<I", self.data, 44)[0]
        numbers = list(struct.unpack_from("<109I", self.data, 76))
        further = struct.unpack_from("<I", self.data, 68)[0]
        while further < END_OF_CHAIN:
            row = struct.unpack_from(f"<{self.sector // 4}I", self.data, self._offset(further))
            numbers += row[:-1]
            further = row[-1]
        return numbers[:count]

    def _offset(self, number):
        return (number + 1) * self.sector

    @staticmethod
    def _chain(first, table):
        numbers = []
        while first < END_OF_CHAIN:
            numbers.append(first)
            first = table[first]
        return numbers

    def name(self, entry):
        """An entry's name; empty for an unused one."""
        length = struct.unpack_from("<H", self.data, entry + 64)[0]
        return self.data[entry:entry + max(length - 2, 0)].decode("utf-16-le")

    def places(self, entry):
        """(offset, length) of each piece of a stream in the file."""
        first, size = struct.unpack_from("<IQ", self.data, entry + 116)
        if size >= SMALL_STREAM or self.data[entry + 66] == ROOT:
            return [(self._offset(number), self.sector) for number in self._chain(first, self.fat)]
        root = next(other for other in self.entries if self.data[other + 66] == ROOT)
        room = [offset + at for offset, length in self.places(root) for at in range(0, length, SMALL_SECTOR)]
        return [(room[number], SMALL_SECTOR) for number in self._chain(first, self.small_fat)]

    def read(self, entry):
        """A stream's bytes, up to the end of its last sector."""
        return b"".join(self.data[offset:offset + length] for offset, length in self.places(entry))

    def write(self, entry, content):
        """Replaces the bytes of a stream by others of the same length."""
        for offset, length in self.places(entry):
            self.data[offset:offset + length] = content[:length]
            content = content[length:]


def settled_summary(stream, package_code, epoch):
    """The summary stream with this package code and time."""
    stream = bytearray(stream)
    start = struct.unpack_from("<I", stream, 44)[0]
    count = struct.unpack_from("<I", stream, start + 4)[0]
    coded = False
    for number, at in struct.iter_unpack("<II", bytes(stream[start + 8:start + 8 + 8 * count])):
        kind, length = struct.unpack_from("<II", stream, start + at)
        if number in TIMES and kind == KIND_TIME:
            struct.pack_into("<Q", stream, start + at + 4, (epoch + EPOCH_1601) * 10_000_000)
        elif number == PACKAGE_CODE and kind == KIND_TEXT and length == len(package_code) + 1:
            stream[start + at + 8:start + at + 8 + len(package_code)] = package_code.encode()
            coded = True
    if not coded:
        raise ValueError("the summary has no package code of the usual length")
    return bytes(stream)


def settle(path, package_code, epoch):
    """Sets fixed times and a package code in the MSI `path`."""
    file = CompoundFile(path.read_bytes())
    for entry in file.entries:
        file.data[entry + 100:entry + 116] = bytes(16)
        if file.name(entry) == SUMMARY:
            file.write(entry, settled_summary(file.read(entry), package_code, epoch))
    path.write_bytes(file.data)
