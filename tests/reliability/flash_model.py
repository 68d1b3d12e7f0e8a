"""What is known of the flashes of the cameras in flash_sequences.py, and where it is kept."""
import dataclasses
import hashlib
import json

from station import SECTOR

FLASH = 64 << 10
PAGE = 256
PACKET = 60
BLANK_WORD = 0xFFFFFFFF


def sector_of(place):
    """The first address of the sector that holds a place."""
    return place // SECTOR * SECTOR


def pieces(content, size):
    """The parts of this size."""
    return (content[start:start + size] for start in range(0, len(content), size))


def has_bits_of(found, wanted):
    """Whether each bit that is set in `wanted` is set in `found`."""
    number = int.from_bytes(wanted, "big")
    return int.from_bytes(found, "big") & number == number


def may_become(found, words):
    """Whether a word of the flash can be one of these, or on its way from one to another by an erase."""
    return found in words or BLANK_WORD in words and any(found & word == word for word in words)


class Module:
    """A camera module: wherever it is plugged in, it has this flash."""

    def __init__(self, name, flash):
        self.name = name
        self.truth = bytearray(flash)  # what each byte must be
        self.unknown = bytearray(FLASH)  # 1: a command that failed named it, it may be anything


@dataclasses.dataclass
class Journal:
    """A journal's open sector, if it has one, and its backup."""
    file: str
    camera: str
    address: int
    original: bytes
    planned: list
    seen: list
    landmarks: list
    backup: dict

    @staticmethod
    def read(path):
        """The journal in a file."""
        fields = json.loads(path.read_text(encoding="utf-8"))
        sector = fields.get("open_sector", {})
        return Journal(path.name, fields["camera"], sector.get("address", -1),
                       bytes.fromhex(sector.get("original", "")),
                       [bytes.fromhex(planned) for planned in sector.get("planned", [])],
                       sector.get("seen", []), fields["landmarks"], fields.get("backup", {}))

    def keeps(self, place, byte):
        """Whether it holds this byte for this place."""
        return bool(self.original) and 0 <= place - self.address < SECTOR and \
            self.original[place - self.address] == byte

    def looks_like(self, flash):
        """Whether nothing tells this flash from the one that the journal is of, and its sector is as a
        cut can leave it."""
        return bool(self.original) and \
            all(may_become(int.from_bytes(flash[address:address + 4], "big"), words)
                for address, words in self.landmarks) and \
            self.cut_can_leave(flash[self.address:self.address + SECTOR])

    def cut_can_leave(self, found):
        """Whether a cut can leave this in the sector."""
        return hashlib.sha256(found).hexdigest()[:16] in self.seen or \
            half_erased(found, self.original) or \
            any(half_erased(found, planned) or half_programmed(found, planned)
                for planned in self.planned)


def half_erased(found, content):
    """Whether an erase can have begun: bits were set, and no written page stayed as it was."""
    return has_bits_of(found, content) and not any(
        before == now and before.strip(b"\xff")
        for before, now in zip(pieces(content, PAGE), pieces(found, PAGE)))


def half_programmed(found, content):
    """Whether programming of an erased sector can have come so far: the packets in front are
    written, one is in part, those behind are blank."""
    done = next((i for i, byte in enumerate(found) if byte != content[i]), len(found))
    return has_bits_of(found[done:done + PACKET], content[done:done + PACKET]) and \
        not found[done + PACKET:].strip(b"\xff")


@dataclasses.dataclass
class Run:
    """A command that has ended: where it was to put which bytes, and what it did."""
    module: Module
    address: int
    content: bytes
    code: int  # -1: killed
    restored: bool
    before: bytes
    after: bytes
    alike: list  # sectors in which the module can't be told from another one with a journal

    @property
    def end(self):
        """Behind the last byte that the command names."""
        return self.address + len(self.content)

    def names(self, place):
        """Whether the command names the byte there."""
        return self.address <= place < self.end

    def reaches(self, place):
        """Whether it may write the sector that holds the place."""
        return sector_of(self.address) <= place < sector_of(self.end - 1) + SECTOR

    def learn(self):
        """What the model knows after the command."""
        named = range(self.address, self.end)
        if self.code == 0:
            self.module.truth[self.address:self.end] = self.content
            self.module.unknown[self.address:self.end] = bytes(len(self.content))
        elif not self.restored:
            for place, new in zip(named, self.content):
                sector = slice(sector_of(place), sector_of(place) + SECTOR)
                truth = self.module.truth[place]
                if (self.after[place] != truth or new != truth) and \
                        self.before[sector] != self.after[sector]:
                    self.module.unknown[place] = 1

    def judge(self, journals):
        """What was lost, or nothing; and how many bytes another module's journal gave to a module
        that looks alike."""
        module = self.module
        self.learn()
        outside = next((place for place in range(FLASH) if self.after[place] != self.before[place]
                        and not self.reaches(place)), None)
        if outside is not None:
            return f"byte {outside:#x} changed, far from all that the command names", 0
        alike = 0
        for place, byte in enumerate(self.after):
            wanted = module.truth[place]
            if byte == wanted or module.unknown[place]:
                continue
            lost = self.code == 0 and self.reaches(place)
            if not lost and any(journal.keeps(place, wanted) for journal in journals):
                continue
            if sector_of(place) in self.alike:
                alike += 1
                module.truth[place] = byte
                continue
            return (f"byte {place:#x} is {byte:#04x}, must be {wanted:#04x}, "
                    + ("exit code 0" if self.code == 0 else "and no journal of this module has it"),
                    alike)
        return "", alike
