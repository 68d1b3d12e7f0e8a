"""The types that a C or C++ source defines for the whole program: those that other files can collide with.

Two files of one program that define two types of the same name compile, but their inline functions,
constructors and destructors among them, become one: one file then handles the other's objects. Types
of an anonymous namespace and types inside a function are of their file alone and are not listed.
"""
import collections

import function_lengths

Type = collections.namedtuple("Type", "name line")

KEYWORDS = {"class", "struct", "union", "enum"}


def without_template(head):
    """The words of a declaration behind its template parameters."""
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
    """The name of the type that these words in front of a brace define; None when it is no type.

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
    """Whether a brace behind these words opens a namespace or a type."""
    return function_lengths.is_scope(head) or ("enum" in head and "(" not in head)


def defined_types(text):
    """The types that a source defines for the whole program, with namespaces and enclosing types."""
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
                inner = None  # of this file alone, or without names
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
                # Behind a type a variable may follow.
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
