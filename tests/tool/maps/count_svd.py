#!/usr/bin/env python3
"""Counts the elements of a CMSIS-SVD file, independently of the tool's reader. Tests compare the tool's counts
with these.

Usage: count_svd.py FILE.svd
Prints "PERIPHERALS REGISTERS FIELDS VALUES", with arrays and derivations expanded.
"""
import sys
from xml.etree import ElementTree

LISTS = {"peripheral": ("registers",), "cluster": (), "register": ("fields",), "field": (),
         "device": ("peripherals",)}
KINDS = {"device": ("peripheral",), "peripheral": ("register", "cluster"),
         "cluster": ("register", "cluster"), "register": ("field",), "field": ("enumeratedValues",),
         "enumeratedValues": ()}
SHIFTS = {"k": 10, "m": 20, "g": 30, "t": 40}


def number(text):
    """A number in the notations of SVD."""
    text = text.strip().lstrip("+").lower()
    shift = SHIFTS.get(text[-1], 0)
    text = text[:-1] if shift else text
    if text.startswith("0x"):
        return int(text, 16) << shift
    if text.startswith(("#", "0b")):
        return int(text.lstrip("#").removeprefix("0b"), 2) << shift
    return int(text, 10) << shift


def plain(name):
    """A name without its index placeholder."""
    return name.replace("[%s]", "").replace("%s", "")


class Counter:
    """The counts of one file."""

    def __init__(self, path):
        self.root = ElementTree.parse(path).getroot()
        self.parents = {child: parent for parent in self.root.iter() for child in parent}

    def above(self, element):
        """The parent element; lists such as <registers> are skipped."""
        parent = self.parents.get(element)
        while parent is not None and parent.tag not in KINDS:
            parent = self.parents.get(parent)
        return parent

    def path(self, element):
        """All elements from the device to this one."""
        path = []
        while element is not None:
            path.insert(0, element)
            element = self.above(element)
        return path

    def base(self, element):
        """The element that this one is derived from."""
        wanted = element.get("derivedFrom")
        if wanted is None:
            return None
        names = [plain(name) for name in wanted.strip().split(".")]
        own = self.path(element)
        best, best_shared = None, 0
        for other in self.root.iter(element.tag):
            path = self.path(other)
            if other is element or [plain(self.name(one)) for one in path[-len(names):]] != names:
                continue
            shared = sum(1 for left, right in zip(own, path) if left is right)
            if shared > best_shared:
                best, best_shared = other, shared
        return best

    @staticmethod
    def name(element):
        """Its name; may be empty."""
        return (element.findtext("name") or "").strip()

    def text(self, element, tag):
        """The text of a simple element; the inherited one if it has none itself."""
        while element is not None:
            if element.find(tag) is not None:
                return element.findtext(tag).strip()
            element = self.base(element)
        return None

    def children(self, element):
        """Its own children, and those inherited ones whose names it does not have itself."""
        kinds = KINDS[element.tag]
        own = []
        for holder in [element] + [one for tag in LISTS.get(element.tag, ()) for one in element.findall(tag)]:
            own += [child for child in holder if child.tag in kinds]
        base = self.base(element)
        if base is None:
            return own
        names = {self.name(child) for child in own}
        inherited = [child for child in self.children(base) if self.name(child) not in names]
        if element.tag == "field":
            return own or inherited
        return inherited + own

    def times(self, element):
        """The number of times an element is expanded."""
        if element.find("dim") is not None or "%s" in self.name(element):
            dim = self.text(element, "dim")
            return 1 if dim is None else number(dim)
        return 1

    def values(self, element):
        """The enumerated values of one <enumeratedValues>."""
        while element is not None:
            found = element.findall("enumeratedValue")
            if found:
                return len(found)
            element = self.base(element)
        return 0

    def count(self, element):
        """[peripherals, registers, fields, values] of an element and everything in it."""
        if element.tag == "enumeratedValues":
            return [0, 0, 0, self.values(element)]
        total = [int(element.tag == kind) for kind in ("peripheral", "register", "field")] + [0]
        for child in self.children(element):
            total = [left + right for left, right in zip(total, self.count(child))]
        return [one * self.times(element) for one in total]


def main():
    """Counts the file on the command line."""
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    counter = Counter(sys.argv[1])
    print(*counter.count(counter.root))


if __name__ == "__main__":
    main()
