"""The list of edits without an observable effect: equivalent_mutants.txt."""
import pathlib

import reasons

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIST = ROOT / "scripts" / "equivalent_mutants.txt"


def lines_of(name):
    """The non-empty lines of a file, with blanks squeezed."""
    path = ROOT / name
    text = path.read_text("utf-8") if path.exists() else ""
    return [" ".join(line.split()) for line in text.splitlines() if line.strip()]


class Equivalents:
    """The list, with queries for single edits."""

    def __init__(self):
        self.entries = reasons.entries_of(LIST, ("file", "was", "now", "why"), ("below", "above"))

    def reason(self, edit):
        """Why an edit has no observable effect; None if it is not in the list."""
        for entry in self.entries:
            if (entry["file"], entry["was"], entry["now"]) == \
                    (str(edit.path.relative_to(ROOT)), edit.was, edit.now) \
                    and entry.get("below", edit.below) == edit.below \
                    and entry.get("above", edit.above) == edit.above:
                return entry["why"]
        return None

    def complaints(self):
        """A line for each entry whose line is missing in its file or occurs several times."""
        for entry in self.entries:
            lines = lines_of(entry["file"])
            if entry["was"] not in " ".join(lines):
                yield f"{entry['file']} no longer has: {entry['was']}"
            elif lines.count(entry["was"]) > 1 and not {"below", "above"} & set(entry):
                yield f"{entry['file']} has several, name a line beside: {entry['was']}"
