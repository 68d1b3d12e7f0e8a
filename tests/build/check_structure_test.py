#!/usr/bin/env python3
"""Checks that scripts/check_structure.py finds what it is there to find, and nothing else."""
import pathlib
import shutil
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
sys.dont_write_bytecode = True
import check_structure  # pylint: disable=wrong-import-position
import structure_rules  # pylint: disable=wrong-import-position


def complaints(files):
    """What the check says of a tree with these files (path: content)."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for path, content in files.items():
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(content, encoding="utf-8")
        return check_structure.check(root)


class OneComplaint(unittest.TestCase):
    """A test in which one thing is to be found."""

    def assert_one(self, found, *words):
        """That there is one complaint, with these words in it."""
        self.assertEqual(len(found), 1, found)
        for word in words:
            self.assertIn(word, found[0])


class RoomsTest(OneComplaint):
    """Small trees, each with one include to find."""

    def assert_refused(self, includer, target, spelled=None):
        """That `includer` may not include `target`, which it spells as given."""
        spelled = spelled or target.removeprefix("src/").removeprefix("tools/borvanusb/")
        self.assert_one(complaints({target: "", includer: f'#include "{spelled}"\n'}),
                        includer, "must not include", target)

    def test_the_order_of_the_library_passes(self):
        self.assertEqual(complaints({
            "include/borvan_usb.h": "",
            "src/base/bytes.h": "#include <vector>\n",
            "src/device/base.h": '#include <borvan_usb.h>\n#include "base/bytes.h"\n',
            "src/files/list.h": '#include "base/bytes.h"\n',
            "src/protocol/chip.h": '#include "device/base.h"\n#include "base/bytes.h"\n',
            "src/jobs/job.h": '#include "files/list.h"\n#include "device/base.h"\n',
            "src/api/exports.cpp": '#include "jobs/job.h"\n#include "protocol/chip.h"\n',
        }), [])

    def test_the_order_of_the_tool_passes(self):
        self.assertEqual(complaints({
            "include/borvan_usb.h": "",
            "tools/borvanusb/base/numbers.h": "",
            "tools/borvanusb/base/version.h.in": "",
            "tools/borvanusb/camera/camera.h": '#include "base/numbers.h"\n',
            "tools/borvanusb/output/output.h": '#include "base/version.h"\n',
            "tools/borvanusb/command/context.h":
                '#include "camera/camera.h"\n#include "output/output.h"\n',
            "tools/borvanusb/flash/engine/plan.h": '#include "camera/camera.h"\n',
            "tools/borvanusb/flash/program.cpp":
                '#include "flash/engine/plan.h"\n#include "command/context.h"\n',
            "tools/borvanusb/station/info.cpp": '#include "flash/engine/plan.h"\n',
            "tools/borvanusb/dll/job.h": '#include <borvan_usb.h>\n#include "camera/camera.h"\n',
            "tools/borvanusb/windows/host.h": '#include "dll/job.h"\n',
            "tools/borvanusb/main.cpp": '#include "windows/host.h"\n#include "command/context.h"\n',
        }), [])

    def test_every_room_of_the_library_refuses_those_above_it(self):
        for room, others in {"base": ["device", "files", "protocol", "jobs", "api"],
                             "device": ["files", "protocol", "jobs", "api"],
                             "files": ["protocol", "jobs", "api"],
                             "protocol": ["files", "jobs", "api"],
                             "jobs": ["protocol", "api"]}.items():
            for other in others:
                with self.subTest(room=room, other=other):
                    self.assert_refused(f"src/{room}/a.cpp", f"src/{other}/b.h")

    def test_base_of_the_library_refuses_the_public_header(self):
        self.assert_refused("src/base/a.h", "include/borvan_usb.h", "borvan_usb.h")

    def test_exports_refuse_files(self):
        self.assert_refused("src/api/a.cpp", "src/files/b.h")

    def test_every_room_of_the_tool_refuses_those_above_it(self):
        for room, others in {"base": ["camera", "output", "command", "dll"],
                             "camera": ["output", "command", "dll", "flash"],
                             "output": ["camera", "command"],
                             "command": ["registers", "i2c", "flash", "flash/engine", "station",
                                         "dll", "windows"],
                             "registers": ["i2c", "flash", "station", "dll"],
                             "i2c": ["flash", "station", "dll"],
                             "flash/engine": ["command", "flash", "dll", "registers", "station"],
                             "flash": ["registers", "i2c", "station", "dll", "windows"],
                             "station": ["flash", "dll", "windows"],
                             "dll": ["command", "output", "flash", "windows"],
                             "windows": ["flash", "station", "registers"],
                             "workbench": ["flash", "names", "registers", "station", "windows"],
                             "profile": ["names", "registers", "flash", "station"],
                             "names": ["registers", "i2c", "flash", "station"],
                             "images": ["camera", "command", "flash"]}.items():
            for other in others:
                with self.subTest(room=room, other=other):
                    self.assert_refused(f"tools/borvanusb/{room}/a.cpp",
                                        f"tools/borvanusb/{other}/b.h")

    def test_the_tool_refuses_the_library_and_the_virtual_camera(self):
        self.assert_refused("tools/borvanusb/dll/a.cpp", "src/jobs/b.h")
        self.assert_refused("tools/borvanusb/camera/a.cpp", "virtual_camera/core/b.h")

    def test_the_library_refuses_the_virtual_camera_and_the_tool(self):
        for name in ("core/camera.h", "virtual_camera/core/camera.h",
                     "../../virtual_camera/core/camera.h"):
            self.assert_refused("src/device/a.cpp", "virtual_camera/core/camera.h", name)
        self.assert_refused("src/api/a.cpp", "tools/borvanusb/camera/camera.h")

    def test_the_virtual_camera_refuses_everything_else(self):
        self.assert_refused("virtual_camera/core/a.cpp", "src/device/b.h")
        self.assert_refused("virtual_camera/core/a.cpp", "virtual_camera/com/b.h", "com/b.h")
        self.assert_refused("virtual_camera/com/a.cpp", "virtual_camera/control/b.h", "control/b.h")
        self.assert_refused("virtual_camera/core/a.cpp", "include/borvan_usb.h", "borvan_usb.h")

    def test_examples_benchmarks_and_fuzz_targets_refuse_what_is_not_theirs(self):
        self.assert_refused("examples/one/a.cpp", "src/device/b.h")
        self.assert_refused("examples/one/a.cpp", "examples/two/b.h", "two/b.h")
        self.assert_refused("bench/a.cpp", "tests/api/b.h", "api/b.h")
        self.assert_refused("fuzz/a.cpp", "virtual_camera/com/b.h", "com/b.h")
        self.assert_refused("fuzz/support/a.cpp", "fuzz/b.h", "../b.h")

    def test_an_unknown_room_is_refused(self):
        self.assert_one(complaints({"src/misc/all.cpp": ""}), "src/misc/all.cpp", "no room")
        self.assert_one(complaints({"tools/borvanusb/misc/all.cpp": ""}), "no room")
        self.assert_one(complaints({"tools/other/all.cpp": ""}), "no room")

    def test_a_file_of_the_same_name_is_that_of_ones_own_product(self):
        self.assert_one(complaints({
            "src/base/numbers.h": "",
            "tools/borvanusb/base/numbers.h": '#include "camera/camera.h"\n',
            "tools/borvanusb/camera/camera.h": "",
            "tools/borvanusb/command/a.cpp": '#include "base/numbers.h"\n',
        }), "tools/borvanusb/base/numbers.h", "tools/borvanusb/camera/camera.h")


class GraphTest(OneComplaint):
    """Includes that lead nowhere or round."""

    def test_finds_an_include_that_leads_nowhere(self):
        for path, name in (("src/device/a.cpp", "device/gone.h"),
                           ("tools/borvanusb/flash/a.cpp", "flash/engine/gone.h"),
                           ("virtual_camera/core/a.cpp", "core/gone.h")):
            self.assert_one(complaints({path: f'#include "{name}"\n'}), path, "gone.h")

    def test_finds_a_circle_of_the_page(self):
        page = "tools/borvanusb/workbench/page/src"
        files = {"src/base/one.h": "#pragma once\n", f"{page}/views/one.tsx": "import { two } from '../two';\n",
                 f"{page}/two.ts": "import type { One } from './views/one';\n"}
        self.assert_one(complaints(files), "circle", "views/one.tsx", "two.ts")
        files[f"{page}/two.ts"] = "import { h } from 'preact';\n"
        self.assertEqual(complaints(files), [])

    def test_finds_a_circle_anywhere(self):
        self.assert_one(complaints({
            "tests/one.h": '#include "two.h"\n',
            "tests/two.h": '#include "three.h"\n',
            "tests/three.h": '#include "one.h"\n',
        }), "circle", "tests/one.h", "tests/two.h", "tests/three.h")

    def test_an_empty_tree_is_no_success(self):
        self.assert_one(complaints({}), "no sources")


FUNCTION = "int F() {\n%s  return 0;\n}\n"


class LengthsTest(OneComplaint):
    """Files and functions of just the right length, and of one line more."""

    def test_a_file_has_400_lines(self):
        for path in ("tests/a.cpp", "scripts/a.py", "cmake/a.cmake", "fuzz/a.cpp"):
            self.assertEqual(complaints({path: "\n" * 400}), [])
            self.assert_one(complaints({path: "\n" * 401}), path, "401")

    def test_the_public_header_has_500(self):
        self.assertEqual(complaints({"include/borvan_usb.h": "\n" * 500}), [])
        self.assert_one(complaints({"include/borvan_usb.h": "\n" * 501}), "501")

    def test_a_function_has_60_lines(self):
        for head in ("int F()", "int F(int a = 0) noexcept", "auto F() -> A", "A::A() : a_{1}, b_(2)",
                     "bool operator==(const A& a) const", "TEST_F(Suite, Name)",
                     "template <typename T>\nint F(T a)", 'extern "C" int F(void)', "struct A F()"):
            for lines, count in ((58, 0), (59, 1)):
                text = "namespace a {\nclass B {\n public:\n" + head + " {\n"
                lines -= head.count("\n")
                text += "  if (a) { b('{', \"}\", R\"({)\"); }  // {\n" * lines + "}\n};\n}\n"
                with self.subTest(head=head, lines=lines):
                    found = complaints({"tests/a.cpp": text})
                    self.assertEqual(len(found), count, found)
                    if count:
                        self.assertIn(" 61 lines", found[0])

    def test_what_is_no_function_may_be_longer(self):
        rows = "  {1, 2},\n" * 100
        for text in ("const int kTable[] = {\n" + rows + "};\n",
                     "struct A {\n" + "  int a = 0;\n" * 100 + "};\n",
                     "enum class A : int {\n" + "  kA,\n" * 100 + "};\n",
                     "namespace a {\n" + FUNCTION % "" * 50 + "}\n",
                     "struct alignas(4) A {\n" + "  int a = 0;\n" * 100 + "};\n"):
            self.assertEqual(complaints({"tests/a.cpp": text}), [])

    def test_a_function_in_python_has_60_lines_too(self):
        self.assertEqual(complaints({"scripts/a.py": "def f():\n" + "    a()\n" * 59}), [])
        self.assert_one(complaints({"scripts/a.py": "def f():\n" + "    a()\n" * 60}), "f has 61")


def in_namespace(content, name="borvanusb"):
    """A source with this content in a namespace."""
    return f"namespace {name} {{\n{content}\n}}  // namespace {name}\n"


class TypesTest(OneComplaint):
    """Two sources of a product, each of which compiles, with types that the linker may take for one."""

    ONE = "tools/borvanusb/flash/one.cpp"
    OTHER = "tools/borvanusb/station/other.h"

    def found(self, first, second):
        """The complaints about two sources in the tool's namespace."""
        return complaints({self.ONE: in_namespace(first), self.OTHER: in_namespace(second)})

    def test_two_types_of_one_name_are_refused(self):
        for product in ("src/device", "tools/borvanusb/flash", "virtual_camera/core"):
            found = complaints({f"{product}/a.cpp": in_namespace("struct A {\n  int a = 0;\n};"),
                                f"{product}/b.h": in_namespace("\nclass A {\n  long b;\n};")})
            self.assert_one(found, f"{product}/b.h:3: borvanusb::A", f"{product}/a.cpp:2")

    def test_every_form_of_a_type_is_seen(self):
        for form in ("class A final : public B<int> {};", "struct A : B { int c{0}; };",
                     "union A { int b; };", "enum A { kB };", "enum class A : int { kB };",
                     "struct alignas(4) A {};",
                     "struct [[nodiscard]] A {};", "template <typename T, int N = 1>\nstruct A {};",
                     "struct A {} kA;", "void F() {}\nint b = 1;\nconst int kC[] = {1};\nstruct A {};",
                     'extern "C" {\nstruct A {};\n}', "inline int F(int a) { return a; }\nstruct A {};"):
            with self.subTest(form=form):
                self.assert_one(self.found(form, "struct A {};"), "borvanusb::A")

    def test_a_type_inside_another_and_one_in_a_nested_namespace_are_seen(self):
        self.assert_one(self.found("struct A {\n private:\n  struct Part {};\n};", "struct A::Part {};"),
                        "borvanusb::A::Part")
        self.assert_one(complaints({self.ONE: "namespace a { namespace b {\nstruct C {};\n} }\n",
                                    self.OTHER: "namespace a::b {\nstruct C {};\n}\n"}), "a::b::C")

    def test_types_that_cannot_meet_pass(self):
        for other in ("namespace {\nstruct A {};\n}", "namespace b {\nstruct A {};\n}",
                      "struct B {\n  struct A {};\n};", "void F() {\n  struct A {};\n}", "class A;",
                      "struct A F() { return {}; }", "const A a = {};", "using B = A;", "enum class A : int;",
                      "// struct A {};", 'const char* const kText = "struct A {}";', "friend struct A;",
                      "template <>\nstruct A<int> {};", "template <class A>\nstruct B {};"):
            with self.subTest(other=other):
                self.assertEqual(self.found("struct A {};", other), [])

    def test_products_may_have_types_of_one_name(self):
        content = in_namespace("struct A {};", "a")
        self.assertEqual(complaints({"src/device/a.h": content, "tools/borvanusb/flash/a.h": content,
                                     "virtual_camera/core/a.h": content, "tests/a.h": content,
                                     "tests/b.h": content}), [])

    def test_branches_of_the_preprocessor_in_one_file_pass(self):
        self.assertEqual(complaints({self.ONE: "#ifdef B\nstruct A {};\n#else\nstruct A {};\n#endif\n"}), [])


class ExceptionsTest(OneComplaint):
    """What breaks a rule for now."""

    LIST = str(check_structure.EXCEPTIONS)

    def test_an_exception_excuses_an_include_of_its_file_alone(self):
        files = {"src/base/a.h": '#include "device/b.h"\n', "src/device/b.h": "",
                 self.LIST: "# why\ninclude src/base/a.h src/device\n"}
        self.assertEqual(complaints(files), [])
        files["src/base/c.h"] = '#include "device/b.h"\n'
        self.assert_one(complaints(files), "src/base/c.h")

    def test_an_exception_lets_nothing_grow(self):
        for lines, count in ((410, 0), (411, 1)):
            self.assertEqual(len(complaints({"tests/a.cpp": "\n" * lines,
                                             self.LIST: "file tests/a.cpp 410\n"})), count)
        for lines, count in ((78, 0), (79, 1)):
            self.assertEqual(len(complaints({"tests/a.cpp": FUNCTION % ("  a();\n" * (lines - 3)),
                                             self.LIST: "function tests/a.cpp F 78\n"})), count)

    def test_an_exception_that_nothing_needs_is_an_error(self):
        for line in ("include src/base/a.h src/device", "file src/base/a.h 410",
                     "function src/base/a.h F 70"):
            self.assert_one(complaints({"src/base/a.h": "", self.LIST: line + "\n"}),
                            "no longer needed", line.rsplit(" ", 1)[0])


class ThisTreeTest(OneComplaint):
    """The real tree, with something broken on purpose in a copy of it."""

    def test_an_include_put_in_is_refused(self):
        broken = [("src/device/device_path.cpp", "protocol/borvan_usb_q7.h"),
                  ("tools/borvanusb/base/numbers.cpp", "camera/camera.h"),
                  ("virtual_camera/core/chip.cpp", "device/device_path.h")]
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path in check_structure.our_files(ROOT) + [check_structure.EXCEPTIONS]:
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / path, root / path)
            for path, name in broken:
                text = (root / path).read_text(encoding="utf-8")
                (root / path).write_text(f'#include "{name}"\n{text}', encoding="utf-8")
            found = check_structure.check(root)
        for path, name in broken:
            self.assert_one([line for line in found if line.startswith(path)], name)
        self.assertEqual(len(found), len(broken), found)

    def test_every_room_of_the_table_exists(self):
        rooms = {check_structure.room_of(path) for path in check_structure.our_files(ROOT)}
        missing = [room for room in structure_rules.ALLOWED
                   if not any(check_structure.matches(other, [room]) for other in rooms)]
        self.assertEqual([room for room in missing if room != "src/base"], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
