"""Small edits of C++ text, one at a time, similar to typical mistakes.

The text is split into tokens first, so that comments, strings, includes and static assertions are not edited.
This relies on the format of the code: a binary operator stands between blanks, a template's bracket does not.
"""
import bisect
import re
from collections import namedtuple

# kind: the type of the edit; start, end: the range of the text to replace; text: the replacement.
Mutant = namedtuple("Mutant", "kind start end text")
Token = namedtuple("Token", "kind start end text")

TOKENS = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^\s()\\]{0,16})\(.*?\)(?P=mark)")
  | (?P<literal>(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*"|(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
  | (?P<number>\d(?:[\w.]|'\d)*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator><<=|>>=|<=>|\.\.\.|->|::|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\s\w])
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

# Only between blanks. Unary operators, pointers, references and templates are written without blanks.
OPERATORS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "+=": ["-=", "="], "-=": ["+=", "="], "*=": ["/="], "/=": ["*="],
    "<<": [">>"], "&": ["|"], "|": ["&"], "&&": ["||"], "||": ["&&"],
}
# Written directly beside their operand.
STEPS = {"++": ["--"], "--": ["++"]}
WORDS = {"true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"]}
FAMILY = {**dict.fromkeys(["<", "<=", ">", ">=", "==", "!="], "relation"),
          **dict.fromkeys(["&&", "||"], "logic")}
# Words that start a statement that is not an expression.
NO_EXPRESSION = {
    "auto", "case", "catch", "class", "const", "constexpr", "default", "do", "else", "enum",
    "explicit", "for", "friend", "if", "inline", "mutable", "namespace", "private", "protected",
    "public", "return", "static", "static_assert", "struct", "switch", "template", "throw", "try",
    "typedef", "using", "virtual", "while"}
# Returned values that equal a value-initialised result, or that have their own edits.
PLAIN_RETURNS = {"", "{}", "nullptr", "std::nullopt", "true", "false", "0", "kOk", "*this"}


def tokens_of(text):
    """The tokens of `text` without blanks and comments."""
    tokens = []
    at = 0
    while at < len(text):
        match = TOKENS.match(text, at)
        if not match:
            raise ValueError(f"no token at {text[at:at + 20]!r}")
        if match.lastgroup != "skip":
            tokens.append(Token(match.lastgroup, match.start(), match.end(), match.group()))
        at = match.end()
    return tokens


def closing(tokens, index):
    """The index of the closing bracket for the one at `index`."""
    pairs = {"(": ")", "{": "}", "[": "]"}
    opened, closed = tokens[index].text, pairs[tokens[index].text]
    depth = 0
    for at in range(index, len(tokens)):
        if tokens[at].text == opened:
            depth += 1
        elif tokens[at].text == closed:
            depth -= 1
            if depth == 0:
                return at
    raise ValueError("a bracket is not closed")


def statement_end(tokens, index):
    """The index of the semicolon that ends the statement at `index`; None if a bracket ends first."""
    at = index
    while at < len(tokens):
        if tokens[at].text in "({[" and tokens[at].kind == "operator":
            at = closing(tokens, at)
        elif tokens[at].text == ";":
            return at
        elif tokens[at].text in (")", "]", "}"):
            return None
        at += 1
    return None


def between_blanks(text, token):
    """Whether a token has blanks or line ends around it."""
    return text[token.start - 1].isspace() and text[token.end:token.end + 1].isspace()


def number_edits(token):
    """The number plus and minus one, in the same base and with the same suffix."""
    match = re.fullmatch(r"(0[xX][0-9A-Fa-f]+|\d+)([uUlLzZ]*)", token.text)
    if not match:
        return
    digits, suffix = match.groups()
    hexadecimal = digits[:2].lower() == "0x"
    number = int(digits, 16 if hexadecimal else 10)
    for other in (number + 1, number - 1):
        if other >= 0:
            written = f"0x{other:0{len(digits) - 2}X}" if hexadecimal else str(other)
            yield Mutant("constant", token.start, token.end, written + suffix)


def is_declaration(tokens):
    """Whether a statement's tokens are a declaration: the end of a type directly before a name."""
    depth = 0
    for before, token in zip(tokens, tokens[1:]):
        if token.text in ("(", "=", "{") and depth == 0:
            break
        depth += (before.text == "<") - (before.text == ">")
        type_end = before.kind == "name" or before.text in (">", "&", "*")
        if token.kind == "name" and type_end and before.start != tokens[0].start:
            return True
        if token.kind == "name" and before.kind == "name":
            return True
    return False


def skipped_ranges(tokens):
    """Ranges that are not edited: static assertions and preprocessor lines."""
    ranges = []
    for index, token in enumerate(tokens):
        if token.kind == "directive":
            ranges.append((token.start, token.end))
        elif token.text == "static_assert":
            ranges.append((token.start, tokens[closing(tokens, index + 1)].end))
    return ranges


def token_edits(text, tokens, index):
    """Edits of a single token."""
    token = tokens[index]
    before = tokens[index - 1].text if index else ""
    if token.kind == "number":
        yield from number_edits(token)
    elif token.kind == "literal" and re.fullmatch(r"u?'[ -&(-\[\]-}]'", token.text):
        yield Mutant("constant", token.start, token.end,
                     token.text[:-2] + chr(ord(token.text[-2]) + 1) + "'")
    elif token.kind == "name" and token.text in WORDS and before != "numeric_limits":
        for other in WORDS[token.text]:
            yield Mutant("value", token.start, token.end, other)
    elif token.kind == "operator" and token.text in OPERATORS and between_blanks(text, token):
        if before not in ("template", "operator"):
            for other in OPERATORS[token.text]:
                yield Mutant(FAMILY.get(token.text, "arithmetic"), token.start, token.end, other)
    elif token.text in STEPS:
        for other in STEPS[token.text]:
            yield Mutant("arithmetic", token.start, token.end, other)
    elif token.text == "!" and token.kind == "operator":
        yield Mutant("condition", token.start, token.end, "")


def condition_edit(text, tokens, index):
    """Inverts the condition of an `if` or `while`."""
    opening = index + 1
    if tokens[opening].text != "(":
        return
    end = closing(tokens, opening)
    first = opening + 1
    for at in range(first, end):
        if tokens[at].text == ";":
            first = at + 1
    condition = tokens[first:end]
    if any(token.text == "=" for token in condition):
        return
    # For a single comparison or negation, the edit of its operator has the same effect.
    words = [token.text for token in condition if between_blanks(text, token)]
    if not {"&&", "||"} & set(words) and (condition[0].text == "!" or set(words) & set(FAMILY)):
        return
    start, stop = tokens[first].start, tokens[end].start
    yield Mutant("condition", start, stop, f"!({text[start:stop]})")


def statement_edits(text, tokens, index):
    """Edits of the statement at `index`: removed, or with another returned value."""
    token = tokens[index]
    end = statement_end(tokens, index)
    if end is None:
        return
    start, stop = token.start, tokens[end].end
    if token.text == "return":
        value = " ".join(text[token.end:tokens[end].start].split())
        if value not in PLAIN_RETURNS:
            yield Mutant("returned value", start, stop, "return {};")
    elif token.text in ("break", "continue"):
        yield Mutant("statement", start, stop, ";")
    elif token.text not in NO_EXPRESSION and not is_declaration(tokens[index:end]):
        inside = [part.text for part in tokens[index:end]]
        if {"(", "=", "++", "--", "+=", "-=", "*=", "/="} & set(inside):
            yield Mutant("statement", start, stop, ";")


def begins_statement(tokens, index):
    """Whether a statement of a function can begin at `index`."""
    before = tokens[index - 1].text if index else ""
    if before == ":":  # of a label, not of a conditional expression
        label = next((token.text for token in reversed(tokens[:index])
                      if token.text in ("case", "default", "?", ";", "{", "}")), "")
        return label in ("case", "default")
    return before in (";", "{", "}") and (
        tokens[index].kind == "name" or tokens[index].text in ("*", "++", "--"))


def mutants_of(text):
    """All edits of a file's text, in order."""
    tokens = tokens_of(text)
    skipped = skipped_ranges(tokens)
    found = []
    for index, token in enumerate(tokens):
        found += token_edits(text, tokens, index)
        if token.text in ("if", "while"):
            found += condition_edit(text, tokens, index)
        if begins_statement(tokens, index):
            found += statement_edits(text, tokens, index)
    kept = [mutant for mutant in found
            if not any(start <= mutant.start < end for start, end in skipped)]
    return sorted(set(kept), key=lambda mutant: (mutant.start, mutant.end, mutant.text))


def applied(text, mutant):
    """`text` with the edit applied."""
    return text[:mutant.start] + mutant.text + text[mutant.end:]


def line_number(text, at):
    """The line number of a position in the text, from 1."""
    ends = [match.start() for match in re.finditer("\n", text)]
    return bisect.bisect_left(ends, at) + 1


def line_before(text, at):
    """The previous non-empty line of a position in the text, with blanks squeezed."""
    lines = [line for line in text[:text.rfind("\n", 0, at) + 1].splitlines() if line.strip()]
    return " ".join(lines[-1].split()) if lines else ""


def line_after(text, at):
    """The next non-empty line of a position in the text, with blanks squeezed."""
    lines = [line for line in text[at:].splitlines()[1:] if line.strip()]
    return " ".join(lines[0].split()) if lines else ""


def shown(text, mutant):
    """(lines affected by the edit, the same lines after it), with blanks squeezed."""
    first = text.rfind("\n", 0, mutant.start) + 1
    last = text.find("\n", mutant.end)
    last = len(text) if last < 0 else last
    was = text[first:last]
    now = text[first:mutant.start] + mutant.text + text[mutant.end:last]
    return " ".join(was.split()), " ".join(now.split())
