#!/usr/bin/env python3
"""Checks what scripts/mutations.py edits in C++ text and what it leaves whole."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
sys.dont_write_bytecode = True
import equivalent_mutants  # pylint: disable=wrong-import-position
import mutations  # pylint: disable=wrong-import-position
import reasons  # pylint: disable=wrong-import-position


def edits(text):
    """What the edits make of a text."""
    return [mutations.applied(text, mutant) for mutant in mutations.mutants_of(text)]


class MutationsTest(unittest.TestCase):
    """Small texts, each with all that is made of it."""

    def test_relation_moves_by_one_and_turns_round(self):
        self.assertEqual(edits("bool a = b < c;"), ["bool a = b <= c;", "bool a = b >= c;"])

    def test_constant_goes_one_up_and_one_down_in_its_base(self):
        self.assertEqual(edits("int a = 10U;"), ["int a = 11U;", "int a = 9U;"])
        self.assertEqual(edits("int a = 0x0F;"), ["int a = 0x0E;", "int a = 0x10;"])
        self.assertEqual(edits("int a = 0;"), ["int a = 1;"])

    def test_comments_texts_includes_and_static_assertions_stay_whole(self):
        self.assertEqual(edits("// a < 1\n/* b && 2 */ char c[] = \"d + 3 // e\";\n"), [])
        self.assertEqual(edits("#include <a1.h>\n#if A == 1\n#endif\nstatic_assert(a == 4);\n"), [])

    def test_quote_in_a_character_does_not_open_a_text(self):
        self.assertEqual(edits("char c = '\"'; bool a = b && c;"),
                         ["char c = '#'; bool a = b && c;", "char c = '\"'; bool a = b || c;"])

    def test_brackets_of_templates_pointers_and_references_are_no_operators(self):
        self.assertEqual(edits("template <typename T> std::vector<int> f(T&& a, int* b);"), [])

    def test_condition_is_negated_as_a_whole(self):
        self.assertEqual(edits("void f() { if (a()) { return; } }"),
                         ["void f() { if (!(a())) { return; } }"])

    def test_condition_is_not_negated_where_an_operator_edit_does_it(self):
        self.assertEqual(edits("void f() { if (!a()) { return; } }"),
                         ["void f() { if (a()) { return; } }"])
        self.assertEqual(edits("void f() { if (a == b) { return; } }"),
                         ["void f() { if (a != b) { return; } }"])
        self.assertEqual(edits("void f() { if (!a || b) { return; } }"),
                         ["void f() { if (a || b) { return; } }",
                          "void f() { if (!(!a || b)) { return; } }",
                          "void f() { if (!a && b) { return; } }"])

    def test_condition_behind_an_initialiser_is_negated_alone(self):
        self.assertEqual(edits("void f() { if (auto a = b(); a) { return; } }"),
                         ["void f() { if (auto a = b(); !(a)) { return; } }"])

    def test_statements_but_no_declarations_are_left_out(self):
        self.assertEqual(edits("void f() { A a = b(); c.d(); }"), ["void f() { A a = b(); ; }"])
        self.assertEqual(edits("void f() { std::vector<A> a(b); x[a] = b; }"),
                         ["void f() { std::vector<A> a(b); ; }"])

    def test_value_behind_a_colon_is_no_statement(self):
        self.assertEqual(edits("void f() { a = b ? c : d(e); }"), ["void f() { ; }"])
        self.assertEqual(edits("void f() { switch (a) { case b: c(); } }"),
                         ["void f() { switch (a) { case b: ; } }"])

    def test_loop_header_has_no_statement_to_leave_out(self):
        self.assertEqual(edits("void f() { for (;; ++i) { } }"),
                         ["void f() { for (;; --i) { } }"])

    def test_returned_value_becomes_an_empty_one(self):
        self.assertEqual(edits("A f() { return a; }"), ["A f() { return {}; }"])
        self.assertEqual(edits("A f() { return {}; }"), [])

    def test_shown_edit_has_the_whole_lines_it_touches(self):
        text = "a;\n  b(c,\n    d);\n"
        self.assertEqual(mutations.shown(text, mutations.Mutant("", 5, 17, ";")),
                         ("b(c, d);", ";"))
        self.assertEqual(mutations.line_number(text, 5), 2)


class ReasonsTest(unittest.TestCase):
    """Lists with reasons, and what is wrong with them."""

    def entries(self, text):
        """The entries of a list with this text."""
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "list.txt"
            path.write_text(text, encoding="utf-8")
            return reasons.entries_of(path, ("file", "why"))

    def test_value_goes_on_in_lines_that_begin_with_a_blank(self):
        self.assertEqual(self.entries("# remark\n\nfile: a: b\nwhy: c\n  d\n\nfile: e\nwhy: f\n"),
                         [{"file": "a: b", "why": "c d"}, {"file": "e", "why": "f"}])

    def test_every_line_that_a_list_names_is_in_its_file(self):
        self.assertEqual(list(equivalent_mutants.Equivalents().complaints()), [])
        root = equivalent_mutants.ROOT
        for entry in reasons.entries_of(root / "scripts" / "unreached_lines.txt", ("file", "line", "why")):
            self.assertIn(entry["line"], equivalent_mutants.lines_of(entry["file"]), entry["file"])

    def test_entry_without_a_reason_or_with_an_unknown_key_is_refused(self):
        for text in ("file: a\n", "file: a\nwhy:\n", "file: a\nwhy: b\nline: c\n"):
            with self.assertRaises(SystemExit):
                self.entries(text)


if __name__ == "__main__":
    unittest.main()
