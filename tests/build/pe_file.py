"""Reads what the checks need from a 64-bit Windows file: sections, imports, exports, version."""
import struct

SECTION_CODE = 0x00000020
SECTION_EXECUTABLE = 0x20000000
SECTION_WRITABLE = 0x80000000

CHARACTERISTIC_HIGH_ENTROPY = 0x0020
CHARACTERISTIC_DYNAMIC_BASE = 0x0040
CHARACTERISTIC_NX_COMPATIBLE = 0x0100

DIRECTORY_EXPORT = 0
DIRECTORY_IMPORT = 1
DIRECTORY_RESOURCE = 2
DIRECTORY_EXCEPTION = 3
DIRECTORY_RELOCATIONS = 5
DIRECTORY_DELAY_IMPORT = 13

RESOURCE_TYPE_VERSION = 16
# Flags of a function's unwind information.
UNWIND_HANDLERS = 0x1 | 0x2
UNWIND_CHAINED = 0x4
FIXED_VERSION_SIGNATURE = 0xFEEF04BD


class PeError(Exception):
    """The file is no 64-bit Windows file, or a table points outside it."""


class Section:
    """One section: where it lies in memory and in the file, and what may be done with it."""

    def __init__(self, name, address, size, file_offset, file_size, characteristics):
        self.name = name
        self.address = address
        self.size = size
        self.file_offset = file_offset
        self.file_size = file_size
        self.characteristics = characteristics


class PeFile:
    """A 64-bit DLL or program, read whole."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        self.path = str(path)
        if self.data[:2] != b"MZ":
            raise PeError(f"{path}: not a Windows file (no MZ at its start)")
        header = self._u32(0x3C)
        if self.data[header:header + 4] != b"PE\0\0":
            raise PeError(f"{path}: no PE header")
        machine, section_count = self._unpack("<HH", header + 4)
        if machine != 0x8664:
            raise PeError(f"{path}: made for machine {machine:#x}, not for x86-64 (0x8664)")
        self.time_stamp = self._u32(header + 8)
        optional_size = self._unpack("<H", header + 20)[0]
        self._symbol_table = self._u32(header + 12), self._u32(header + 16)
        optional = header + 24
        if self._unpack("<H", optional)[0] != 0x20B:
            raise PeError(f"{path}: not a PE32+ file")
        self.dll_characteristics = self._unpack("<H", optional + 70)[0]
        self._directories = [self._unpack("<II", optional + 112 + 8 * index)
                             for index in range(self._u32(optional + 108))]
        table = optional + optional_size
        self.sections = [self._section(table + 40 * index) for index in range(section_count)]

    def _unpack(self, layout, offset):
        try:
            return struct.unpack_from(layout, self.data, offset)
        except struct.error as error:
            raise PeError(f"{self.path}: offset {offset:#x} is outside the file") from error

    def _u32(self, offset):
        return self._unpack("<I", offset)[0]

    def _text(self, offset):
        end = self.data.find(b"\0", offset)
        if end < 0:
            raise PeError(f"{self.path}: text at {offset:#x} has no end")
        return self.data[offset:end].decode("ascii")

    def _section(self, offset):
        name = self.data[offset:offset + 8].rstrip(b"\0").decode("ascii")
        if name.startswith("/"):
            # A name of more than 8 characters stands in the table behind the symbols.
            start, count = self._symbol_table
            name = self._text(start + 18 * count + int(name[1:]))
        size, address, file_size, file_offset = self._unpack("<IIII", offset + 8)
        return Section(name, address, size, file_offset, file_size, self._u32(offset + 36))

    def directory(self, index):
        """(address, size) of one of the optional header's directories; (0, 0) without it."""
        return self._directories[index] if index < len(self._directories) else (0, 0)

    def file_offset(self, address):
        """Where the byte at relative virtual address `address` lies in the file."""
        for section in self.sections:
            if section.address <= address < section.address + section.file_size:
                return address - section.address + section.file_offset
        raise PeError(f"{self.path}: address {address:#x} is in no section")

    def imported_libraries(self):
        """Names of the DLLs that the loader binds, those bound at first use included."""
        names = []
        tables = ((DIRECTORY_IMPORT, 20, 12), (DIRECTORY_DELAY_IMPORT, 32, 4))
        for index, row_size, name_at in tables:
            address, _ = self.directory(index)
            if address == 0:
                continue
            row = self.file_offset(address)
            while self._u32(row + name_at) != 0:
                names.append(self._text(self.file_offset(self._u32(row + name_at))))
                row += row_size
        return names

    def export_time_stamp(self):
        """Time stamp of the export table; None without exports."""
        address, _ = self.directory(DIRECTORY_EXPORT)
        return self._u32(self.file_offset(address) + 4) if address else None

    def exports(self):
        """(name, ordinal) of every export; one by number alone has name None."""
        address, _ = self.directory(DIRECTORY_EXPORT)
        if address == 0:
            return []
        (base, function_count, name_count, functions, names,
         ordinals) = self._unpack("<IIIIII", self.file_offset(address) + 16)
        slots = {index for index in range(function_count)
                 if self._u32(self.file_offset(functions) + 4 * index) != 0}
        rows = []
        for index in range(name_count):
            name = self._text(self.file_offset(self._u32(self.file_offset(names) + 4 * index)))
            slot = self._unpack("<H", self.file_offset(ordinals) + 2 * index)[0]
            slots.discard(slot)
            rows.append((name, base + slot))
        return rows + [(None, base + slot) for slot in sorted(slots)]

    def export_addresses(self):
        """{name: relative virtual address} of the exports that have a name."""
        address, _ = self.directory(DIRECTORY_EXPORT)
        base, _, _, functions, _, _ = self._unpack("<IIIIII", self.file_offset(address) + 16)
        return {name: self._u32(self.file_offset(functions) + 4 * (ordinal - base))
                for name, ordinal in self.exports() if name is not None}

    def has_handler(self, address):
        """Whether the function at this address has a handler that an unwinding exception runs."""
        table, size = self.directory(DIRECTORY_EXCEPTION)
        for row in range(self.file_offset(table), self.file_offset(table) + size, 12):
            start, end, unwind = self._unpack("<III", row)
            if start <= address < end:
                return self._has_handler(unwind)
        raise PeError(f"{self.path}: no unwind information for {address:#x}")

    def _has_handler(self, unwind):
        offset = self.file_offset(unwind)
        flags, _, code_count = self._unpack("<BBB", offset)
        flags >>= 3
        if flags & UNWIND_CHAINED:
            return self._has_handler(self._u32(offset + 4 + (code_count + 1) // 2 * 4 + 8))
        return bool(flags & UNWIND_HANDLERS)

    def version(self):
        """(four numbers of the file's version, the resource's texts by name)."""
        address, _ = self.directory(DIRECTORY_RESOURCE)
        if address == 0:
            raise PeError(f"{self.path}: no resources")
        root = self.file_offset(address)
        # Three levels of directories: type, name, language.
        entry = self._resource_entry(root, root, RESOURCE_TYPE_VERSION)
        entry = self._resource_entry(root, entry, None)
        leaf = self._resource_entry(root, entry, None)
        data_address, size = self._unpack("<II", leaf)
        start = self.file_offset(data_address)
        block = self.data[start:start + size]
        signature_at = block.find(struct.pack("<I", FIXED_VERSION_SIGNATURE))
        if signature_at < 0:
            raise PeError(f"{self.path}: version resource without its fixed part")
        high, low = struct.unpack_from("<II", block, signature_at + 8)
        numbers = (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF)
        return numbers, _version_texts(block)

    def _resource_entry(self, root, directory, identifier):
        named, numbered = self._unpack("<HH", directory + 12)
        for index in range(named + numbered):
            name, offset = self._unpack("<II", directory + 16 + 8 * index)
            if identifier is None or name == identifier:
                return root + (offset & 0x7FFFFFFF)
        raise PeError(f"{self.path}: no resource of type {identifier}")

    def debug_link(self):
        """(file name, CRC-32) of the file that holds the debug information; None without."""
        for section in self.sections:
            if section.name == ".gnu_debuglink":
                name = self._text(section.file_offset)
                crc_at = section.file_offset + (len(name) // 4 + 1) * 4
                return name, self._u32(crc_at)
        return None


def _version_texts(block):
    """Name and value of each String record of a version resource.

    A record: length, value length (in characters), type 1, the name, padding to 4, the value.
    """
    texts = {}
    for offset in range(0, len(block) - 6, 4):
        length, value_length, kind = struct.unpack_from("<HHH", block, offset)
        if kind != 1 or length < 8 or value_length == 0 or offset + length > len(block):
            continue
        name = _wide_text(block, offset + 6)
        value_at = offset + (6 + 2 * (len(name) + 1) + 3) // 4 * 4
        if name and value_at + 2 * (value_length - 1) <= offset + length:
            texts[name] = _wide_text(block, value_at)
    return texts


def _wide_text(block, offset):
    end = offset
    while end + 2 <= len(block) and block[end:end + 2] != b"\0\0":
        end += 2
    return block[offset:end].decode("utf-16-le")
