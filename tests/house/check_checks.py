"""The house checks can fail: each is given a small project with one thing wrong in it, and has to find that thing."""
import pathlib
import sys
import tempfile
import unittest

import check_declares
import check_exports
import check_layers
import check_readme
import check_sources
import check_tests
import check_words

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(PROJECT / "tests/windows"))

import check_suite
import check_tables

PURPOSE = "// A file that is there to be looked at.\n"


class Checks(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.project = pathlib.Path(self.folder.name)

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = self.project / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def one(self, problems, part):
        self.assertEqual(len(problems), 1, problems)
        self.assertIn(part, problems[0])

    def test_include_downward_is_fine(self):
        self.write("src/edit/a.cpp", '#include "query/b.h"\n#include "platform/c.h"\n#include "tolvenar/tolvenar.h"\n')
        self.assertEqual(check_layers.problems(self.project), [])

    def test_include_upward(self):
        self.write("src/foundation/a.cpp", PURPOSE + '#include "workbook/b.h"\n')
        self.one(check_layers.problems(self.project), "src/foundation/a.cpp:2: foundation may not include workbook")

    def test_include_of_a_sibling(self):
        self.write("src/sheet/a.cpp", '#include "edit/b.h"\n')
        self.one(check_layers.problems(self.project), "sheet may not include edit")

    def test_include_of_what_one_platform_keeps_to_itself(self):
        self.write("src/platform/windows/a.cpp", '#include "platform/portable/b.h"\n')
        self.one(check_layers.problems(self.project), "platform/portable is known there alone")

    def test_include_without_a_layer(self):
        self.write("src/query/a.cpp", '#include "b.h"\n')
        self.one(check_layers.problems(self.project), "names its layer")

    def test_host_that_looks_inside(self):
        self.write("tests/host/a.c", '#include "foundation/memory_pool.h"\n')
        self.one(check_layers.problems(self.project), "public headers only")

    def test_exports_that_differ(self):
        header = "/* Result: 0. */\nTOLVENAR_API int TOLVENAR_CALL A(void);\n/* Result: 0. */\nTOLVENAR_API int B(int a,\n  int b);\n"
        self.assertEqual(check_exports.declared(header), ["A", "B"])
        def_names = check_exports.in_def_file("LIBRARY x\nEXPORTS\n  A\n  C\n")
        self.assertEqual(
            check_exports.compare("def", def_names, "header", check_exports.declared(header)),
            ["C: in def, but not in header", "B: in header, but not in def"])

    def test_export_whose_types_are_not_held_fast(self):
        text = "/* int TOLVENAR_CALL C(int); */\nint TOLVENAR_CALL A(int);\nvoid TOLVENAR_CDECL B(\n    int,\n    int);\n"
        self.assertEqual(check_exports.held_fast(text), ["A", "B"])
        self.one(check_exports.compare("held", ["A", "B"], "header", ["A", "B", "C"]), "C: in header, but not in held")

    def test_export_without_a_result(self):
        header = "/* Does. Result: 0. */\nTOLVENAR_API int A(void);\n/* Does. */\nTOLVENAR_API int B(void);\n"
        self.one(check_exports.undocumented(header), "B: no comment")

    def test_file_without_a_purpose(self):
        self.write("src/query/a.cpp", "#include <vector>\n")
        self.one(check_sources.problems(self.project), "does not begin with a comment")

    def test_file_that_is_too_long(self):
        self.write("src/query/a.cpp", PURPOSE + "\n" * check_sources.LONGEST_FILE)
        self.one(check_sources.problems(self.project), "has more than")

    def test_bytes_read_by_a_cast(self):
        self.write("src/query/a.cpp", PURPOSE + "// reinterpret_cast<int16_t*>\nauto a = *reinterpret_cast<const uint16_t*>(p);\n")
        self.one(check_sources.problems(self.project), "src/query/a.cpp:3")

    def test_export_that_decides(self):
        self.write("src/exports/a.cpp", PURPOSE + "// if\nint A(int a) { if (a) return 1; return 0; }\n")
        self.one(check_sources.problems(self.project), "src/exports/a.cpp:3: an export only forwards")

    def test_words_from_elsewhere(self):
        self.write("docs/a.md", "Line one.\nAs %s 3 says.\n" % "Part")
        self.one(check_words.problems(self.project), "docs/a.md:2")

    def test_folder_of_one_machine(self):
        self.write("scripts/a", "cd %s/x\n" % "/home")
        self.one(check_words.problems(self.project), "a folder of one machine")

    def test_test_that_is_not_run(self):
        path = self.write("tests/query/a_test.cpp", "TEST(A, Runs) {\n}\nTEST_P(B, Runs) {\n}\nTEST(A, IsForgotten) {\n}\n")
        problems = check_tests.file_problems(self.project, path, {"A.Runs", "All/B.Runs/0"})
        self.one(problems, "A.IsForgotten is not run")

    def test_test_that_is_for_windows_alone(self):
        text = "#if !defined(_WIN32)\nTEST(A, Runs) {\n}\n#else\nTEST(A, RunsThere) {\n}\n#endif\nTEST(A, RunsToo) {\n}\n"
        path = self.write("tests/query/a_test.cpp", text)
        self.assertEqual(check_tests.file_problems(self.project, path, {"A.Runs", "A.RunsToo"}), [])
        self.one(check_tests.file_problems(self.project, path, {"A.Runs", "A.RunsThere"}), "A.RunsToo is not run")

    def test_test_that_is_switched_off(self):
        path = self.write("tests/query/a_test.cpp", "TEST(A, DISABLED_Runs) {\n}\n")
        self.one(check_tests.file_problems(self.project, path, {"A.DISABLED_Runs"}), "switched off")

    def test_test_that_is_too_long(self):
        path = self.write("tests/query/a_test.cpp", "TEST(A, Runs) {\n" + "\n" * (check_tests.LONGEST_BODY + 1) + "}\n")
        self.one(check_tests.file_problems(self.project, path, {"A.Runs"}), "lines")

    def test_readme_that_shows_another_program(self):
        self.assertEqual(check_readme.sample_problems("```c\nint a;\n```\n", "int a;\n"), [])
        self.one(check_readme.sample_problems("```c\nint a;\n```\n", "int b;\n"), "does not show")

    def test_link_to_nowhere(self):
        self.write("docs/a.md", "[here](a.md) [there](b.md) [far](https://example.org/c.md)\n")
        self.one(check_readme.dead_links(self.project), "links to b.md")

    def test_declarations_that_differ(self):
        made = check_declares.generator(PROJECT)
        header = "TOLVENAR_API void TOLVENAR_CALL A(const char* path, uint32_t* type,\n  int16_t n);\n"
        module = made.expected(header)
        self.assertIn(b'Public Declare Sub A Lib "tolvenar.dll" (ByVal path As String, ByRef typeArg As Long, ByVal n As Integer)\r\n', module)
        self.assertEqual(made.differences(header, module), [])
        self.assertIn("run scripts/generate-declares", made.differences(header.replace("int16_t", "int32_t"), module)[-1])
        self.assertIn("CR LF", made.differences(header, module.replace(b"\r", b""))[0])

    def test_declaration_of_an_unknown_type(self):
        made = check_declares.generator(PROJECT)
        self.assertRaises(made.UnknownType, made.expected, "TOLVENAR_API void TOLVENAR_CALL A(FILE* file);\n")

    def test_declaration_that_passes_too_much(self):
        declares = check_tables.declared_sizes(
            'Public Declare Sub A Lib "x" (ByVal a As Double, _\r\n    ByRef b() As Any)\r\nPublic Declare Function B Lib "x" () As Long\r\n')
        self.assertEqual(declares, {"A": 12, "B": 0})
        sizes = check_tables.decorated("00000000 T _A@8\n00000000 I __imp__A@8\n00000000 T _B@0\n")
        self.one(check_tables.convention_problems(["A", "B"], sizes, declares), "passes 12 bytes and it takes 8")

    def test_export_of_the_wrong_convention(self):
        sizes = {"A": None, "XLEXTLabel": 24}
        found = check_tables.convention_problems(["A", "XLEXTLabel"], sizes, {"A": 0, "XLEXTLabel": 24})
        self.assertEqual(found, ["A: has the wrong calling convention", "XLEXTLabel: has the wrong calling convention"])

    def test_test_that_windows_leaves_out(self):
        tests = [("tests/a_test.cpp", "A.One"), ("tests/a_test.cpp", "A.Two"), ("tests/b_test.cpp", "B.One")]
        rows = check_suite.rows_of("| Test | Why |\n|---|---|\n| `tests/b_test.cpp` | why |\n| `A.Two` | |\n")
        self.assertEqual(rows, [("tests/b_test.cpp", "why"), ("A.Two", "")])
        self.assertEqual(check_suite.rows_of("| `A.B`, `C.D` | why |\n"), [("A.B", "why"), ("C.D", "why")])
        self.assertEqual(len(check_suite.compare(tests, {"A.One"}, set(), rows)), 1)
        self.one(check_suite.compare(tests, {"A.One", "B.One"}, set(), rows[1:]), "A.Two gives no reason")
        self.one(check_suite.compare(tests, {"A.One", "A.Two"}, set(), []), "B.One is not run on Windows")
        self.assertEqual(check_suite.compare(tests, {"A.One", "A.Two", "B.One"}, {"C.One/1"}, [("C.One/1", "why")]), [])
        self.one(check_suite.compare(tests, {"A.One", "A.Two", "B.One"}, set(), [("C.One/1", "why")]), "C.One/1 need not be left out")
        code = "TEST(A, B) {\n#if defined(_WIN32)\n  GTEST_SKIP() << 1;\n#endif\n}\nTEST(A, C) {\n  GTEST_SKIP() << 1;\n}\n"
        self.assertEqual(check_suite.skipped_here(code), {"A.B"})
        self.one(check_suite.compare(tests, {"A.One", "A.Two", "B.One"}, set(), rows[:1]), "tests/b_test.cpp need not be left out")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
