"""Takes the first program out of a document. Usage: page_program.py PAGE LANGUAGE FILE

The program is the first block of that language. It has at most 30 lines.
"""
import pathlib
import re
import sys

LONGEST = 30


def programs(page, language):
    """The texts of all blocks of a language. The first one is short."""
    texts = re.findall(rf"^```{language}\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    if not texts:
        sys.exit(f"no block of {language}")
    if texts[0].count("\n") > LONGEST:
        sys.exit(f"the program has more than {LONGEST} lines")
    return texts


def program(page, language):
    """The text of the first block of a language."""
    return programs(page, language)[0]


if __name__ == "__main__":
    pathlib.Path(sys.argv[3]).write_text(
        program(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), sys.argv[2]), encoding="utf-8")
