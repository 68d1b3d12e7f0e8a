"""Lists with a reason for each entry: blocks of `key: value` lines, separated by empty lines.

A line that begins with a blank continues the previous value. A line that begins with # is a comment.
"""
import sys


def entries_of(path, keys, optional=()):
    """The entries of a list, as dictionaries with these keys; empty if the list does not exist.

    Prints a message and ends the program if the list is invalid.
    """
    entries = []
    blocks = path.read_text("utf-8").split("\n\n") if path.exists() else []
    for block in blocks:
        fields = {}
        key = None
        for line in block.splitlines():
            if not line.strip() or line.startswith("#"):
                continue
            if line[0].isspace() and key:
                fields[key] += " " + line.strip()
                continue
            key, colon, value = line.partition(":")
            if not colon or key not in (*keys, *optional):
                sys.exit(f"{path.name}: a line begins with one of {', '.join((*keys, *optional))}: "
                         f"{line}")
            fields[key] = value.strip()
        if not fields:
            continue
        missing = [key for key in keys if not fields.get(key)]
        if missing:
            sys.exit(f"{path.name}: {', '.join(missing)} missing beside {fields}")
        entries.append({name: " ".join(value.split()) for name, value in fields.items()})
    return entries
