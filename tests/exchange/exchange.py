"""What the Windows build writes, the native build and independent programs read, and the other way round; with equal streams.

Both builds' exchange_tool does the same to copies of the same files, side by side, and the results are compared.

    exchange.py [-v]      TOLVENAR_NATIVE_TOOL: the native exchange_tool; TOLVENAR_WINDOWS_TOOL: the Windows one, with what it takes to
                          run it in front; TOLVENAR_SAMPLES: workbooks of the project; TOLVENAR_CORPUS: a folder of real ones, if there is
"""
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "interop"))

import corpus  # noqa: E402
import olefile  # noqa: E402
import xlrd  # noqa: E402

SIDES = ("native", "windows")
TOOLS = {"native": [os.environ["TOLVENAR_NATIVE_TOOL"]], "windows": shlex.split(os.environ["TOLVENAR_WINDOWS_TOOL"])}


def tool(side, command, *files, cwd):
    """What the tool of that side prints; files are named relative to the folder `cwd`, so that both sides print the same."""
    done = subprocess.run(TOOLS[side] + [command, *files], cwd=cwd, capture_output=True, timeout=300, check=False)
    text = done.stdout.decode("ascii", "replace").replace("\r\n", "\n")
    if done.returncode != 0:
        raise AssertionError("%s %s: %s%s" % (side, command, text[-1000:], done.stderr.decode(errors="replace")[-1000:]))
    return text


def streams(path):
    """Name in capitals: the bytes, of every stream."""
    with olefile.OleFileIO(str(path)) as file:
        return {"/".join(name).upper(): file.openstream(name).read() for name in file.listdir()}


def listed_by_gsf(path):
    """Name: size, as gsf lists the streams."""
    text = subprocess.run(["gsf", "list", str(path)], check=True, capture_output=True, text=True).stdout
    found = {}
    for line in text.splitlines():
        words = line.split(None, 2)
        if len(words) == 3 and words[0] == "f":
            found[words[2]] = int(words[1])
    return found


def cells(path):
    with open(os.devnull, "w", encoding="utf-8") as log:
        book = xlrd.open_workbook(str(path), logfile=log)
    return repr([(sheet.name, [sheet.row_values(row) for row in range(sheet.nrows)]) for sheet in book.sheets()])


class Exchange(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        # Beside the tool, since a program under Wine sees the build folder.
        folder = tempfile.TemporaryDirectory(dir=os.environ["TOLVENAR_EXCHANGE_FOLDER"])
        self.addCleanup(folder.cleanup)
        self.folder = {side: pathlib.Path(folder.name) / side for side in SIDES}
        for path in self.folder.values():
            path.mkdir()

    def on_both(self, command, *files):
        """Both sides do the same in their own folders and say the same."""
        said = {side: tool(side, command, *files, cwd=self.folder[side]) for side in SIDES}
        self.assertEqual(said["native"], said["windows"])
        return said["native"]

    def same_streams(self, name):
        native, windows = (streams(self.folder[side] / name) for side in SIDES)
        self.assertEqual(sorted(native), sorted(windows), name)
        different = [stream for stream in native if native[stream] != windows[stream]]
        self.assertEqual(different, [], name)
        return native

    def across(self, command, name):
        """Each side does it with the file of the other."""
        tool("native", command, name, cwd=self.folder["windows"])
        tool("windows", command, name, cwd=self.folder["native"])

    def copies(self, files):
        for side in SIDES:
            for file in files:
                shutil.copyfile(file, self.folder[side] / pathlib.Path(file).name)
        return [pathlib.Path(file).name for file in files]

    def workbooks(self):
        files = sorted(pathlib.Path(os.environ["TOLVENAR_SAMPLES"]).glob("*.xls"))
        self.assertGreater(len(files), 1)
        if os.path.isfile(os.path.join(corpus.FOLDER, "INDEX.tsv")):
            sound = [entry for entry in corpus.entries() if entry["damaged"] == "no" and corpus.is_compound(entry)]
            self.assertGreater(len(sound), 30)
            files += [pathlib.Path(corpus.FOLDER) / entry["file"] for entry in sound]
        else:
            print("no folder of real workbooks: the project's own are exchanged")
        return files

    def test_compound_files(self):
        self.on_both("write", "a.bin")
        written = self.same_streams("a.bin")
        self.assertEqual(len(written), 12)
        for side in SIDES:
            sizes = listed_by_gsf(self.folder[side] / "a.bin")
            self.assertEqual({name.upper(): size for name, size in sizes.items()}, {name: len(data) for name, data in written.items()})
        self.across("check", "a.bin")

    def test_compound_files_that_the_other_wrote_on(self):
        self.on_both("write", "a.bin")
        self.across("replace", "a.bin")
        replaced = self.same_streams("a.bin")
        self.assertEqual(len(replaced), 12)
        self.on_both("check-replaced", "a.bin")
        self.across("check-replaced", "a.bin")

    def test_workbooks_tell_the_same(self):
        files = self.copies(self.workbooks())
        said = self.on_both("dump", *files)
        self.assertEqual(said.count(" list 0: "), len(files))

    def test_workbooks_saved_to_a_new_file(self):
        files = self.copies(self.workbooks())
        new = ["new-" + name for name in files]
        said = self.on_both("save", *(name for pair in zip(files, new) for name in pair))
        self.assertEqual(said.count("save 0\n"), len(files))
        for name in new:
            self.assertEqual(len(self.same_streams(name)), 1)
        self.dumps_across(new)

    def test_workbooks_edited_in_place(self):
        files = self.copies(self.workbooks())
        said = self.on_both("edit", *files)
        self.assertGreater(said.count("number 0 text 0"), len(files) // 2)
        self.assertEqual(said.count("save 0\n"), len(files))
        for name in files:
            self.same_streams(name)
        self.dumps_across(files)

    def test_an_independent_reader_finds_the_same_cells(self):
        files = self.copies(sorted(pathlib.Path(os.environ["TOLVENAR_SAMPLES"]).glob("*.xls")))
        self.on_both("edit", *files)
        for name in files:
            native, windows = (cells(self.folder[side] / name) for side in SIDES)
            self.assertEqual(native, windows)
            self.assertIn("[1.1, ", native)

    def dumps_across(self, files):
        """Each side tells the same of the other's files as the other does."""
        native = tool("native", "dump", *files, cwd=self.folder["windows"])
        self.assertEqual(native, tool("windows", "dump", *files, cwd=self.folder["native"]))
        self.assertIn(" list 0: ", native)


if __name__ == "__main__":
    unittest.main()
