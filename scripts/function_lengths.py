"""Finds the length of functions in lines, from the first line of the declaration to the closing brace.

C and C++ are split by brackets: braces after a parameter list are a function's body. A function inside another
one, such as a lambda, is counted as a part of it.
"""
import ast
import collections
import re

Function = collections.namedtuple("Function", "name line lines")

# Strings, comments and preprocessor lines, which may continue after a backslash.
OPAQUE = re.compile(r"""
    //[^\n]* | /\*.*?\*/
  | (?:u8|[uUL])?R"(?P<mark>[^\s()\\]{0,16})\(.*?\)(?P=mark)"
  | (?<![\w])(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*" | (?<![\w'])(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+'
  | ^[ \t]*\#(?:[^\n\\]|\\.)*
""", re.VERBOSE | re.DOTALL | re.MULTILINE)
TOKEN = re.compile(r"[A-Za-z_]\w*|::|->|[^\s\w]|\d[\w.']*")
PAIRS = {"(": ")", "{": "}", "[": "]"}
# A declaration with one of these words contains other declarations in its braces.
SCOPES = {"namespace", "class", "struct", "union", "extern"}


def blanked(text):
    """The text with everything except code replaced by blanks. Line breaks are kept."""
    def blank(match):
        word = "0" if match.group().lstrip("u8ULR")[:1] in ("'", '"') else ""
        return word + re.sub(r"[^\n]", " ", match.group())[len(word):]
    return OPAQUE.sub(blank, text)


def closings(words):
    """{index of an opening bracket: index of its closing bracket}."""
    found = {}
    waiting = []
    for index, (word, _) in enumerate(words):
        if word in PAIRS:
            waiting.append(index)
        elif waiting and word == PAIRS[words[waiting[-1]][0]]:
            found[waiting.pop()] = index
    return found


def is_scope(head):
    """Whether a brace after these words of a declaration (without brackets' contents) contains other
    declarations."""
    if "(" not in head:
        return bool(SCOPES & set(head))
    at = next((index for index, word in enumerate(head) if word in SCOPES), len(head))
    return head[at + 1:at + 2] in (["alignas"], ["__attribute__"], ["__declspec"])


def is_body(head):
    """Whether a brace after these words starts a function's body."""
    if "(" not in head:
        return False
    if ":" not in head:
        return "=" not in head or "operator" in head
    # After a constructor's colon, a member's name may have its own braces.
    return head[-1] in (")", "}")


def name_of(words, head, body):
    """A function's name for messages; for a test, Suite.Name."""
    at = head.index("(")
    if head[0].startswith("TEST"):
        opening = body
        while words[opening][0] != "(":
            opening -= 1
        return ".".join(word for word, _ in words[opening:body] if word[0].isalpha())
    first = at
    while first > 0 and head[first - 1] in ("::", "~"):
        first -= 1
    while first > 0 and (first == at or head[first] in ("::", "~")):
        first -= 1
        while first > 0 and head[first - 1] in ("::", "~"):
            first -= 1
    return "".join(head[first:at])


def split_in_words(code):
    """(word, line) of each word and each other character."""
    words = []
    line = 1
    for word in re.findall(rf"\n|{TOKEN.pattern}", code):
        if word == "\n":
            line += 1
        else:
            words.append((word, line))
    return words


def cpp_functions(text):
    """The functions of a C or C++ source."""
    words = split_in_words(blanked(text))
    close = closings(words)
    functions = []
    head = []  # words of the current declaration so far
    start = 0
    at = 0
    while at < len(words):
        word, line = words[at]
        start = start if head else line
        label = word == ":" and head[-1:] in (["public"], ["protected"], ["private"])
        if word in (";", "}") or label or (word == "{" and is_scope(head)):
            head = []
        elif word == "{" and is_body(head):
            end = close.get(at, at)
            functions.append(Function(name_of(words, head, at), start, words[end][1] - start + 1))
            head = []
            at = end
        elif word in PAIRS and at in close:
            head += [word, PAIRS[word]]
            at = close[at]
        else:
            head.append(word)
        at += 1
    return functions


def python_functions(text):
    """The functions of a Python source. Decorators are not counted."""
    return [Function(node.name, node.lineno, node.end_lineno - node.lineno + 1)
            for node in ast.walk(ast.parse(text))
            if isinstance(node, (ast.FunctionDef, ast.AsyncFunctionDef))]


def functions_of(path, text):
    """The functions of a source file; none for other languages."""
    if path.suffix == ".py":
        return python_functions(text)
    if path.suffix in (".c", ".cpp", ".h", ".hpp"):
        return cpp_functions(text)
    return []
