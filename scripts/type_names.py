"""Finds the types that a C or C++ source defines for the whole program, which can conflict with other files.

If two files of a program define different types with the same name, they compile, but the linker merges their
inline functions, including constructors and destructors: one file then uses the other's functions on its
objects. Types in anonymous namespaces or functions are local to their file and are not listed.
"""
import collections

import function_lengths

Type = collections.namedtuple("Type", "name line")

KEYWORDS = {"class", "struct", "union", "enum"}


def without_template(head):
    """The words of a declaration after its template parameters."""
    while head[:1] == ["template"]:
        depth = 0
        for index, word in enumerate(head):
            depth += (word == "<") - (word == ">")
            if word == ">" and depth == 0:
                break
        else:
            return []
        head = head[index + 1:]
    return head


def type_name(head):
    """The name of the type that these words before a brace define; None if they define no type.

    It is empty for a type without a name.
    """
    head = without_template(head)
    at = next((index for index, word in enumerate(head) if word in KEYWORDS), None)
    if at is None or "=" in head:
        return None
    name = ""
    skip = KEYWORDS | {"alignas", "__attribute__", "__declspec", "(", ")", "[", "]"}
    for word in head[at:]:
        if word in (":", "final"):
            break
        if word not in skip:
            name += word
    return name


def opens_scope(head):
    """Whether a brace after these words opens a namespace or a type."""
    return function_lengths.is_scope(head) or ("enum" in head and "(" not in head)


def defined_types(text):
    """The types that a source defines for the whole program, including namespaces and enclosing types."""
    words = function_lengths.split_in_words(function_lengths.blanked(text))
    close = function_lengths.closings(words)
    found = []

    def walk(at, end, scope):
        head = []
        start = 0
        while at < end:
            word, line = words[at]
            start = start if head else line
            label = word == ":" and head[-1:] in (["public"], ["protected"], ["private"])
            if word in (";", "}") or label:
                head = []
            elif word not in function_lengths.PAIRS or at not in close:
                head.append(word)
            elif word == "{" and opens_scope(head):
                inner = None  # local to this file, or unnamed
                if "namespace" in head:
                    name = "".join(head[head.index("namespace") + 1:])
                    inner = scope + name + "::" if name else None
                elif type_name(head):
                    found.append(Type(scope + type_name(head), start))
                    inner = scope + type_name(head) + "::" if "enum" not in head else None
                elif head[:1] == ["extern"]:
                    inner = scope
                if inner is not None:
                    walk(at + 1, close[at], inner)
                # A variable may follow after a type.
                head = [] if "namespace" in head or head[:1] == ["extern"] else ["{", "}"]
                at = close[at]
            else:
                if word == "{" and function_lengths.is_body(head):
                    head = []
                else:
                    head += [word, function_lengths.PAIRS[word]]
                at = close[at]
            at += 1

    walk(0, len(words), "")
    return found
