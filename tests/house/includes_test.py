#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds the #include lines, the file names and the libraries of src/ against the plan of the house,
prints its floors and the arrows between its rooms, and tries each rule on a small tree that breaks
it. `includes_test.py --print` prints only."""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SRC = pathlib.Path(__file__).resolve().parents[2] / "src"

# A room knows the rooms of the floors under its own, and no other of its own floor.
FLOORS = [
    ["app", "batch"],
    ["testing", "retrieval", "files"],
    ["curves"],
    ["reports", "ui"],
    ["records", "analysis", "link"],
    ["common"],
]
FLOOR_OF = {room: floor for floor, rooms in enumerate(FLOORS) for room in rooms}
SUBFOLDERS = {"reports/calc", "reports/excel", "reports/page", "reports/xlsx"}
WITHOUT_WINDOWS = {"batch", "reports", *FLOORS[4], *FLOORS[5]}

SPDX = "// SPDX-License-Identifier: GPL-3.0-or-later"
MOST_LINES_OF_CODE = 500
PLATFORM = re.compile(r"_(windows|linux)$")


def qt_widget_headers():
    """The names of the headers of Qt Widgets and of what draws on widgets."""
    folder = pathlib.Path(subprocess.run(["qmake6", "-query", "QT_INSTALL_HEADERS"], check=True,
                                         capture_output=True, text=True).stdout.strip())
    names = {path.name for module in ("QtWidgets", "QtPrintSupport")
             for path in (folder / module).iterdir()}
    if "QWidget" not in names:
        raise RuntimeError(f"no headers of Qt Widgets in {folder}")
    return names | {"qcustomplot.h"}


def room_of(path):
    return path.split("/")[0]


def subfolder_of(path):
    folder = os.path.dirname(path)
    return folder if "/" in folder else None


def unit_of(path):
    """A header, its source and what each platform makes of it are one."""
    return PLATFORM.sub("", os.path.splitext(path)[0])


class House:
    """What is read of the sources under a folder; problems() tells what breaks the plan."""

    def __init__(self, root, widgets):
        self.root = pathlib.Path(root)
        self.widgets = widgets
        self.lines = {}
        for path in sorted(self.root.rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = path.relative_to(self.root).as_posix()
                self.lines[name] = path.read_text(encoding="utf-8").splitlines()
        own = re.compile(r'\s*#\s*include\s*"([^"]+)"')
        system = re.compile(r"\s*#\s*include\s*<(?:[^>]*/)?([^>/]+)>")
        self.includes = {name: [m[1] for m in map(own.match, lines) if m]
                         for name, lines in self.lines.items()}
        self.system = {name: [m[1] for m in map(system.match, lines) if m]
                       for name, lines in self.lines.items()}
        self.library_of = {}  # of a source
        self.links = collections.defaultdict(set)
        self.trouble = []
        top = (self.root.parent / "CMakeLists.txt").read_text(encoding="utf-8")
        self.built = re.findall(r"add_subdirectory\(src/(\w+)\)", top)
        for path in sorted(self.root.rglob("CMakeLists.txt")):
            self.read_libraries(path)

    def read_libraries(self, path):
        folder = path.parent.relative_to(self.root).as_posix()
        text = re.sub(r"#.*", "", path.read_text(encoding="utf-8"))
        command = re.compile(r"(davo_library|add_library|add_executable|target_sources|"
                             r"target_link_libraries)\s*\(\s*([\w-]+)([^)]*)\)")
        for what, library, rest in command.findall(text):
            mode = "SOURCES"
            for word in rest.split():
                if word in ("SOURCES", "PLATFORM", "LINKS"):
                    mode = word
                elif word.startswith("davo_") and not word.endswith(".cpp"):
                    self.links[library].add(word)
                elif mode == "PLATFORM":
                    for platform in ("windows", "linux"):
                        self.library_of[f"{folder}/{word}_{platform}.cpp"] = library
                elif word.endswith(".cpp"):
                    self.library_of[f"{folder}/{word}"] = library
                    if what == "davo_library" and PLATFORM.search(word[:-4]):
                        self.trouble.append(f"{library}: {word} is built on every platform")

    def arrows(self):
        """Per pair of rooms the #include lines from one into the other, as (file, included)."""
        found = collections.defaultdict(list)
        for name, included in self.includes.items():
            for other in included:
                if room_of(name) != room_of(other):
                    found[room_of(name), room_of(other)].append((name, other))
        return found

    def problems(self):
        found = list(self.trouble)
        for check in (self.arrow_problems, self.circle_problems, self.name_problems,
                      self.window_problems, self.library_problems):
            found += check()
        return found

    def arrow_problems(self):
        for name, included in self.includes.items():
            if room_of(name) not in FLOOR_OF:
                yield f"{name}: {room_of(name)} is no room of the house"
                continue
            folder = subfolder_of(name)
            if folder and folder not in SUBFOLDERS:
                yield f"{name}: {folder} is no folder of the house"
            for other in included:
                if other not in self.lines:
                    yield f"{name} includes {other}, which is not there"
                elif not self.may_know(name, other):
                    yield f"{name} includes {other}: {room_of(name)} does not know " \
                          f"{subfolder_of(other) or room_of(other)}"
                elif (PLATFORM.search(other[:-2]) and
                      not name.rsplit(".", 1)[0].endswith(PLATFORM.search(other[:-2])[0])):
                    yield f"{name} includes {other}, which one platform has"

    @staticmethod
    def may_know(name, other):
        here, there = room_of(name), room_of(other)
        if here == there:
            mine, its = subfolder_of(name), subfolder_of(other)
            return mine is None or its is None or mine == its
        if there == "ui" and here in WITHOUT_WINDOWS:
            return False
        return FLOOR_OF[here] < FLOOR_OF.get(there, -1)

    def circle_problems(self):
        rooms, units = collections.defaultdict(set), collections.defaultdict(set)
        for name, included in self.includes.items():
            for other in included:
                if room_of(name) != room_of(other):
                    rooms[room_of(name)].add(room_of(other))
                if unit_of(name) != unit_of(other):
                    units[unit_of(name)].add(unit_of(other))
        for kind, graph in (("folders", rooms), ("files", units)):
            for circle in circles(graph):
                yield f"circle of {kind}: {', '.join(circle)}"

    def name_problems(self):
        stems = {name[:-2] for name in self.lines if name.endswith(".h")}
        for name, lines in self.lines.items():
            base = os.path.basename(name)
            if base.startswith("test_"):
                yield f"{name}: a name that begins with test_ is a test's"
            if lines[:1] != [SPDX]:
                yield f"{name}: the first line does not name the licence"
            if lines_of_code(lines) >= MOST_LINES_OF_CODE:
                yield f"{name}: {lines_of_code(lines)} lines of code"
            if name.endswith(".cpp") and base != "main.cpp":
                if name[:-4] not in stems and unit_of(name) not in stems:
                    yield f"{name}: no header of its name"
            if re.search(r"_(windows|linux)_|^(windows|linux)\b", base):
                yield f"{name}: a platform is the end of a name"

    def window_problems(self):
        """A library without _ui knows no window, not by way of a header either."""
        for name, library in sorted(self.library_of.items()):
            if name not in self.lines:
                if not (PLATFORM.search(name[:-4]) and self.is_on_another_platform(name)):
                    yield f"{library}: {name} is not there"
            elif not library.endswith("_ui") and os.path.basename(name) != "main.cpp":
                yield from self.windows_known_to(name, library)

    def is_on_another_platform(self, name):
        return any(f"{unit_of(name)}_{platform}.cpp" in self.lines
                   for platform in ("windows", "linux"))

    def windows_known_to(self, name, library):
        seen, waiting = set(), [name]
        while waiting:
            here = waiting.pop()
            if here in seen or here not in self.lines:
                continue
            seen.add(here)
            waiting += self.includes[here]
            by_way = "" if here == name else f" by way of {here}"
            for header in self.system[here]:
                if header in self.widgets:
                    yield f"{name} of {library} includes <{header}>{by_way}"
            if room_of(here) == "ui":
                yield f"{name} of {library} includes {here}, a window's"

    def library_problems(self):
        libraries_of_unit = collections.defaultdict(set)
        rooms_of_library = collections.defaultdict(set)
        for name, library in self.library_of.items():
            libraries_of_unit[unit_of(name)].add(library)
            rooms_of_library[library].add(room_of(name))
        known = collections.defaultdict(set)  # libraries, and rooms of headers without a source
        for name in self.includes:
            if name.endswith(".cpp") and name not in self.library_of:
                yield f"{name}: in no library"
        for name, library in self.library_of.items():
            for other in self.known_outside(name, libraries_of_unit):
                known[library] |= libraries_of_unit[unit_of(other)] or {room_of(other)}
        for library, linked in sorted(self.links.items()):
            for other in sorted(linked):
                if (other in rooms_of_library and library in rooms_of_library and
                        not known[library] & ({other} | rooms_of_library[other])):
                    yield f"{library} links {other} and includes nothing of it"
        for above, below in zip(self.built[1:], self.built):
            if FLOOR_OF.get(above, 0) > FLOOR_OF.get(below, len(FLOORS)):
                yield f"{above} is built after {below}, which is above it"
        for room in FLOOR_OF:
            made = {library for library, rooms in rooms_of_library.items() if room in rooms}
            usual = {f"davo_{room}", f"davo_{room}_ui", "davo_reports_calc", "davo_reports_page", "davo", "davo-report"}
            for library in sorted(made - usual):
                yield f"{library}: {room} has the libraries davo_{room} and davo_{room}_ui"

    def known_outside(self, name, libraries_of_unit):
        """What a source includes, itself or by way of headers that no source belongs to."""
        found, waiting = set(), [name, os.path.splitext(name)[0] + ".h", unit_of(name) + ".h"]
        while waiting:
            for other in self.includes.get(waiting.pop(), ()):
                if other not in found:
                    found.add(other)
                    if room_of(other) == room_of(name) and not libraries_of_unit[unit_of(other)]:
                        waiting.append(other)
        return found

    def picture(self):
        """The floors, and the arrows of each room with their #include lines."""
        arrows = self.arrows()
        text = []
        for number, rooms in enumerate(FLOORS):
            text.append(f"floor {len(FLOORS) - number}: {', '.join(rooms)}")
            for room in rooms:
                known = [f"{there} {len(lines)}" for (here, there), lines in sorted(arrows.items())
                         if here == room]
                text.append(f"    {room} -> {', '.join(known) or 'nothing'}")
        return "\n".join(text)


def lines_of_code(lines):
    return sum(1 for line in lines if line.strip() and not line.strip().startswith("//"))


def circles(graph):
    """The sets of nodes that reach each other, each sorted."""
    def reached_from(start):
        seen, waiting = set(), [start]
        while waiting:
            for node in graph.get(waiting.pop(), ()):
                if node not in seen:
                    seen.add(node)
                    waiting.append(node)
        return seen

    reach = {node: reached_from(node) for node in list(graph)}
    found = {tuple(sorted(other for other in reach[node] if node in reach.get(other, ())))
             for node in reach if node in reach[node]}
    return sorted(found)


class TheHouse(unittest.TestCase):
    def test_keeps_to_its_plan(self):
        house = House(SRC, qt_widget_headers())
        self.assertGreater(len(house.lines), 200, "the sources were not found")
        self.assertLessEqual(len(FLOORS), 6)
        print(house.picture(), flush=True)
        problems = house.problems()
        self.assertFalse(problems, "\n" + "\n".join(problems))


def sources_of_no_program(tests):
    """The sources below the folder tests that no CMakeLists.txt beside or above them names."""
    texts = {path.parent: path.read_text(encoding="utf-8")
             for path in tests.rglob("CMakeLists.txt")}

    def is_named(path):
        stem = PLATFORM.sub("", path.stem.removesuffix("_test"))
        name = re.compile(rf"\b{re.escape(stem)}(_test|_linux|_windows|\b)")
        return any(name.search(texts.get(folder, "")) for folder in path.parents)

    return sorted(str(path.relative_to(tests)) for path in tests.rglob("*.cpp")
                  if not is_named(path))


class TheTests(unittest.TestCase):
    def test_are_all_built(self):
        self.assertEqual(sources_of_no_program(SRC.parent / "tests"), [])

    def test_that_nobody_builds_are_found(self):
        with tempfile.TemporaryDirectory() as folder:
            tests = pathlib.Path(folder)
            (tests / "link").mkdir()
            (tests / "link/CMakeLists.txt").write_text("davo_test(link_test SOURCES line_test.cpp)")
            for name in ("line", "line_linux", "read_on"):
                (tests / f"link/{name}_test.cpp").touch()
            self.assertEqual(sources_of_no_program(tests), ["link/read_on_test.cpp"])


# A tree that keeps to the plan, and what is put into it or changed in it to break one rule each.
SOUND = {
    "../CMakeLists.txt": "".join(f"add_subdirectory(src/{room})\n" for room in
                                 ("common", "records", "ui", "reports", "curves", "files")),
    "common/files.h": "",
    "common/files.cpp": '#include "common/files.h"\n',
    "common/places.h": "",
    "common/places_linux.cpp": '#include "common/places.h"\n',
    "common/places_windows.cpp": '#include "common/places.h"\n#include <windows.h>\n',
    "common/CMakeLists.txt": "davo_library(davo_common SOURCES files.cpp PLATFORM places)\n",
    "records/record.h": '#include "common/files.h"\n',
    "records/record.cpp": '#include "records/record.h"\n#include <QString>\n',
    "records/CMakeLists.txt": "davo_library(davo_records SOURCES record.cpp LINKS davo_common)\n",
    "ui/button.h": '#include <QtWidgets/QWidget>\n#include "common/files.h"\n',
    "ui/button.cpp": '#include "ui/button.h"\n',
    "ui/CMakeLists.txt":
        "davo_library(davo_ui SOURCES button.cpp LINKS davo_common Qt6::Widgets)\n",
    "reports/maker.h": '#include "records/record.h"\n',
    "reports/maker.cpp": '#include "reports/maker.h"\n',
    "reports/xlsx/sheet.h": "",
    "reports/xlsx/sheet.cpp": '#include "reports/xlsx/sheet.h"\n#include "reports/maker.h"\n',
    "reports/excel/cells.h": "",
    "reports/CMakeLists.txt":
        "davo_library(davo_reports SOURCES maker.cpp xlsx/sheet.cpp LINKS davo_records)\n",
    "files/copying.h": '#include "records/record.h"\n',
    "files/copying.cpp": '#include "files/copying.h"\n',
    "files/frmCopy.h": '#include <QDialog>\n#include "ui/button.h"\n',
    "files/frmCopy.cpp": '#include "files/frmCopy.h"\n#include "files/copying.h"\n',
    "files/CMakeLists.txt":
        "davo_library(davo_files SOURCES copying.cpp LINKS davo_records)\n"
        "davo_library(davo_files_ui SOURCES frmCopy.cpp LINKS davo_files davo_ui)\n",
    "curves/chart.h": "",
}
BROKEN = {
    "a room built too late": ({"../CMakeLists.txt": "add_subdirectory(src/ui)\n"
                                                    "add_subdirectory(src/records)\n"},
                              "records is built after ui"),
    "an arrow up": ({"records/record.h": '#include "files/copying.h"\n'},
                    "records does not know files"),
    "rooms of one floor": ({"ui/button.h": '#include "reports/maker.h"\n'},
                           "ui does not know reports"),
    "a renderer that knows another":
        ({"reports/xlsx/sheet.h": '#include "reports/excel/cells.h"\n'},
         "does not know reports/excel"),
    "a window from reports": ({"reports/maker.h": '#include "ui/button.h"\n'},
                              "reports does not know ui"),
    "a window from a library without": ({"files/copying.h": '#include "ui/button.h"\n'},
                                        "copying.cpp of davo_files includes ui/button.h"),
    "a widget": ({"records/record.h": "#include <QLabel>\n"},
                 "record.cpp of davo_records includes <QLabel> by way of records/record.h"),
    "a circle of files": ({"common/files.h": '#include "common/places.h"\n',
                           "common/places_linux.cpp": '#include "common/files.h"\n'},
                          "circle of files: common/files, common/places"),
    "a circle of folders": ({"common/files.h": '#include "records/record.h"\n'},
                            "circle of folders: common, records"),
    "a room that is none": ({"extra/thing.h": ""}, "extra is no room"),
    "a folder that is none": ({"files/inner/thing.h": ""}, "files/inner is no folder"),
    "a header that is none": ({"curves/chart.h": '#include "curves/gone.h"\n'}, "is not there"),
    "a test's name": ({"files/test_it.h": ""}, "begins with test_"),
    "a source without a header": ({"common/files.h": None, "records/record.h": "",
                                   "common/files.cpp": "", "ui/button.h": ""},
                                  "common/files.cpp: no header of its name"),
    "a platform in a name": ({"files/copy_windows_form.h": ""}, "is the end of a name"),
    "a platform file for all": ({"files/CMakeLists.txt":
                                 "davo_library(davo_files SOURCES copying.cpp frmCopy.cpp "
                                 "list_windows.cpp)\n",
                                 "files/list_windows.cpp": "", "files/list.h": ""},
                                "list_windows.cpp is built on every platform"),
    "a platform's header": ({"common/keys_windows.h": "",
                             "common/files.cpp": '#include "common/keys_windows.h"\n'},
                            "which one platform has"),
    "no licence": ({"curves/chart.h": None, "curves/bare.h": "bare"}, "name the licence"),
    "a long file": ({"curves/chart.h": "int line;\n" * 500}, "lines of code"),
    "a source of no library": ({"files/more.h": "", "files/more.cpp": ""}, "in no library"),
    "a source that is gone": ({"files/frmCopy.cpp": None}, "files/frmCopy.cpp is not there"),
    "a needless link": ({"curves/chart.cpp": "", "curves/CMakeLists.txt":
                         "davo_library(davo_curves SOURCES chart.cpp LINKS davo_records)\n"},
                        "davo_curves links davo_records and includes nothing of it"),
    "a third library": ({"curves/chart.cpp": "", "curves/CMakeLists.txt":
                         "davo_library(davo_charts SOURCES chart.cpp)\n"},
                        "davo_charts: curves has the libraries"),
}


class EachRule(unittest.TestCase):
    def problems_of(self, changes):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "src").mkdir()
            for name, text in {**SOUND, **changes}.items():
                if text is None:
                    continue
                path = pathlib.Path(folder, "src", name)
                path.parent.mkdir(parents=True, exist_ok=True)
                head = "" if name.endswith(".txt") or text == "bare" else SPDX + "\n"
                path.write_text(head + text, encoding="utf-8")
            return House(pathlib.Path(folder, "src"), qt_widget_headers()).problems()

    def test_is_kept_by_a_sound_tree(self):
        self.assertEqual(self.problems_of({}), [])

    def test_is_broken_by_a_tree_that_breaks_it(self):
        for what, (changes, told) in BROKEN.items():
            with self.subTest(what):
                self.assertIn(told, "\n".join(self.problems_of(changes)))


if __name__ == "__main__":
    if "--print" in sys.argv:
        print(House(SRC, qt_widget_headers()).picture())
        sys.exit()
    unittest.main()
