"""The zips, their checksums, the version in everything, and the symbols: read as files, nothing is run."""

import hashlib
import os
import pathlib
import re
import struct
import subprocess
import tempfile
import time
import unittest
import zipfile
import zlib

import pe_file
import settings


def read_zip(path):
    """Name to bytes; refuses a zip that names a file twice."""
    with zipfile.ZipFile(path) as archive:
        names = archive.namelist()
        if len(names) != len(set(names)):
            raise ValueError(f"{path} names a file twice")
        return {name: archive.read(name) for name in names}


def programs():
    """Every program and library of the package, by file name."""
    return {
        name.removeprefix(settings.TOP): data for name, data in read_zip(settings.PACKAGE).items() if data[:2] == b"MZ"
    }


class ZipTest(unittest.TestCase):
    def test_holds_exactly_the_release_files(self):
        files = [settings.PLUGIN, *settings.TEXTS] + ([settings.TOOL] if settings.HAS_TOOL else [])
        self.assertEqual(sorted(read_zip(settings.PACKAGE)), sorted(settings.TOP + name for name in files))

    def test_folder_holds_exactly_the_packages_and_their_checksums(self):
        names = [path.name for path in settings.PUBLISHED]
        texts = [path.name for path in (settings.CYCLONEDX, settings.SPDX, settings.PROVENANCE)]
        expected = sorted(names + [name + ".sha256" for name in names] + texts)
        self.assertEqual(sorted(path.name for path in settings.PACKAGES.iterdir() if path.is_file()), expected)

    def test_checksums_are_those_of_the_packages(self):
        for package in settings.PUBLISHED:
            digest = hashlib.sha256(package.read_bytes()).hexdigest()
            line = package.with_name(package.name + ".sha256").read_text()
            self.assertEqual(line, f"{digest}  {package.name}\n")

    def test_no_program_is_the_codec_library(self):
        codec = (settings.BUILD_DIR / "standin" / settings.CODEC).read_bytes()
        # Proof that the search would find it.
        self.assertIn("orvantis_open", pe_file.PeFile(codec).exports())
        for name, data in programs().items():
            exported = [each for each in pe_file.PeFile(data).exports() if each.startswith("orvantis_")]
            self.assertEqual(exported, [], name)
        for path in (settings.PACKAGE, settings.SYMBOLS):
            self.assertEqual([name for name in read_zip(path) if settings.CODEC in name], [])

    def test_plugin_is_a_64_bit_library_without_symbols_and_time_stamp(self):
        plugin = pe_file.PeFile(programs()[settings.PLUGIN])
        self.assertEqual(plugin.machine, 0x8664)
        # In the place of the time: nothing, or with lld a number made of the contents, which it says in a debug record.
        self.assertTrue(plugin.timestamp == 0 or pe_file.REPRODUCIBLE in plugin.debug_kinds())
        self.assertEqual(plugin.symbol_count, 0)
        self.assertEqual([name for name in plugin.sections if name.startswith((".debug", ".stab"))], [])
        self.assertEqual(list(plugin.exports()), ["xImportEntry"])

    def test_plugin_keeps_the_hosts_registration(self):
        data = programs()[settings.PLUGIN]
        self.assertIn("IMPT".encode("utf-16-le"), pe_file.PeFile(data).section(".rsrc"))

    def test_plugin_takes_no_crash_from_the_host(self):
        """The tool does: what is to be seen is there to be found. (The thread library in both watches for the exception by which
        debuggers learn the names of threads, and leaves every other one alone.)"""
        for name, expected in ((settings.PLUGIN, set()), (settings.TOOL, {"SetUnhandledExceptionFilter"})):
            if name not in programs():
                continue
            with tempfile.NamedTemporaryFile() as file:
                file.write(programs()[name])
                file.flush()
                said = subprocess.run(["llvm-readobj", "--coff-imports", file.name], check=True, capture_output=True, text=True).stdout
            imported = set(re.findall(r"Symbol: (\w+)", said))
            self.assertIn("GetProcAddress", imported)
            self.assertEqual(imported & {"SetUnhandledExceptionFilter", "UnhandledExceptionFilter", "MiniDumpWriteDump"}, expected, name)

    def test_no_program_tells_where_it_was_built(self):
        folders = [settings.SOURCE_DIR, settings.BUILD_DIR, pathlib.Path.home()]
        for name, data in programs().items():
            for folder in folders:
                for encoding in ("utf-8", "utf-16-le"):
                    self.assertNotIn(str(folder).encode(encoding), data, f"{folder} in {name}")

    def test_texts_end_their_lines_as_windows_does(self):
        files = read_zip(settings.PACKAGE)
        for name in settings.TEXTS:
            data = files[settings.TOP + name]
            self.assertGreater(data.count(b"\n"), 10, name)
            self.assertEqual(data.count(b"\n"), data.count(b"\r\n"), name)

    def test_texts_are_filled_in(self):
        files = read_zip(settings.PACKAGE)
        for name in settings.TEXTS:
            self.assertIsNone(re.search(rb"@\w+@", files[settings.TOP + name]), name)
        self.assertIn(b"GCC Runtime Library Exception", files[settings.TOP + "THIRD_PARTY_NOTICES.txt"])
        self.assertIn(b"mingw-w64", files[settings.TOP + "THIRD_PARTY_NOTICES.txt"])

    def test_every_file_has_the_date_that_packaging_was_given(self):
        expected = time.localtime(int(os.environ["SOURCE_DATE_EPOCH"]) & ~1)[:6]  # zips count in steps of two seconds
        for package in (each for each in settings.PUBLISHED if each.suffix == ".zip"):
            with zipfile.ZipFile(package) as archive:
                for entry in archive.infolist():
                    self.assertEqual(entry.date_time, expected, entry.filename)


class ValidatorTest(unittest.TestCase):
    """The zip for authors of other importers, who build against it in test_host_test.py."""

    def setUp(self):
        self.files = {name.removeprefix(settings.VALIDATOR_TOP): data for name, data in read_zip(settings.VALIDATOR).items()
                      if not name.endswith("/")}

    def test_holds_the_tool_the_package_and_the_texts_and_no_plugin(self):
        top = sorted({name.split("/")[0] for name in self.files})
        self.assertEqual(top, ["LICENSE.txt", "README.txt", "THIRD_PARTY_NOTICES.txt", "bin", "include", "lib", "share"])
        self.assertEqual([name for name in self.files if name.startswith("bin/")], ["bin/importer_host.exe"])
        for name in ("lib/liborvantis_simhost.a", "lib/cmake/ImporterTestHost/ImporterTestHostConfig.cmake",
                     "include/importer-test-host/host/records.h", "include/importer-test-host/simhost/session.h",
                     "share/importer-test-host/sample/sample_importer.cpp", "share/importer-test-host/host-rules.md"):
            self.assertIn(name, self.files)
        self.assertEqual([name for name in self.files if name.endswith((".prm", ".dll", ".pyc"))], [])

    def test_headers_are_those_of_the_sources_and_all_that_they_include(self):
        headers = {name.removeprefix("include/importer-test-host/"): data.decode() for name, data in self.files.items()
                   if name.endswith(".h") and name.startswith("include/")}
        self.assertGreater(len(headers), 30)
        for name, text in headers.items():
            source = settings.SOURCE_DIR / ("" if name.startswith("host/") else "testbed") / name
            self.assertEqual(text, source.read_text(), name)
            for included in re.findall(r'^#include "(.+)"', text, re.MULTILINE):
                self.assertIn(included, headers, name)

    def test_tool_is_the_one_of_the_other_package(self):
        self.assertEqual(self.files["bin/importer_host.exe"], programs()[settings.TOOL])

    def test_readme_carries_the_version_and_ends_its_lines_as_windows_does(self):
        readme = self.files["README.txt"]
        self.assertEqual(readme.decode().splitlines()[0], f"importer-validator {settings.VERSION}")
        self.assertEqual(readme.count(b"\n"), readme.count(b"\r\n"))
        self.assertIsNone(re.search(rb"@\w+@", readme))

    def test_nothing_tells_where_it_was_built(self):
        for name, data in self.files.items():
            for folder in (settings.SOURCE_DIR, settings.BUILD_DIR, pathlib.Path.home()):
                self.assertNotIn(str(folder).encode(), data, f"{folder} in {name}")


class VersionTest(unittest.TestCase):
    """The number is typed once, in CMakeLists.txt (and in the heading of the changelog)."""

    def setUp(self):
        text = (settings.SOURCE_DIR / "CMakeLists.txt").read_text()
        self.version = re.search(r"^\s+VERSION (\d+\.\d+\.\d+)$", text, re.MULTILINE).group(1)
        self.numbers = tuple(int(part) for part in self.version.split(".")) + (0,)

    def check_resource(self, data):
        file = pe_file.PeFile(data)
        self.assertEqual(file.version_strings()["FileVersion"], self.version)
        self.assertEqual(file.version_strings()["ProductVersion"], self.version)
        self.assertEqual(file.version_numbers(), (self.numbers, self.numbers))

    def test_plugin_carries_it(self):
        self.check_resource(programs()[settings.PLUGIN])

    def test_installer_carries_it(self):
        self.check_resource(settings.SETUP.read_bytes())

    def test_file_names_carry_it(self):
        self.assertEqual(self.version, settings.VERSION)  # the paths in settings.py are made of it, and they exist
        for package in settings.PUBLISHED:
            self.assertTrue(package.is_file(), package)

    def test_readme_carries_it(self):
        readme = read_zip(settings.PACKAGE)[settings.TOP + "README.txt"].decode()
        self.assertEqual(readme.splitlines()[0], f"Orvantis importer {self.version}")
        self.assertIn(settings.SETUP.name, readme)

    def test_newest_heading_of_the_changelog_is_it(self):
        text = (settings.SOURCE_DIR / "CHANGELOG.md").read_text()
        headings = re.findall(r"^## \[(\d+\.\d+\.\d+)\] - (Unreleased|\d{4}-\d{2}-\d{2})$", text, re.MULTILINE)
        self.assertEqual(headings[0][0], self.version)


class DwarfSymbolsTest(unittest.TestCase):
    def setUp(self):
        self.symbols = read_zip(settings.SYMBOLS)
        self.programs = programs()

    def test_zip_holds_one_file_for_each_program(self):
        expected = sorted(f"{settings.TOP}{name}.debug" for name in self.programs)
        self.assertEqual(sorted(self.symbols), expected)

    def test_each_program_names_its_symbols_with_their_checksum(self):
        for name, data in self.programs.items():
            symbols = self.symbols[f"{settings.TOP}{name}.debug"]
            self.assertEqual(pe_file.PeFile(data).debug_link(), (f"{name}.debug", zlib.crc32(symbols)))

    def test_address_of_the_entry_point_resolves_to_its_source_line(self):
        address = pe_file.PeFile(self.programs[settings.PLUGIN]).exports()["xImportEntry"]
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "symbols.debug"
            file.write_bytes(self.symbols[f"{settings.TOP}{settings.PLUGIN}.debug"])
            output = subprocess.run([settings.ADDR2LINE, "-f", "-e", file, hex(address)],
                                    check=True, capture_output=True, text=True).stdout
        function, place = output.splitlines()
        self.assertEqual(function, "xImportEntry")
        self.assertRegex(place, r"entry/import_entry\.cpp:\d+")

    def test_symbols_do_not_tell_where_they_were_built(self):
        for name, data in self.symbols.items():
            for folder in (settings.SOURCE_DIR, settings.BUILD_DIR):
                self.assertNotIn(str(folder).encode(), data, f"{folder} in {name}")


class PdbSymbolsTest(unittest.TestCase):
    """The zip is a symbol store: debuggers that get it as their symbol path find what they look for."""

    def setUp(self):
        self.symbols = {name.removeprefix(settings.SYMBOLS_TOP): data for name, data in read_zip(settings.SYMBOLS).items()
                        if not name.endswith("/")}
        self.programs = programs()

    def test_each_program_and_its_symbols_lie_where_debuggers_look(self):
        expected = {}
        for name, data in self.programs.items():
            file = pe_file.PeFile(data)
            guid, age, pdb = file.code_view()
            first, second, third = struct.unpack("<IHH", guid[:8])
            key = f"{first:08X}{second:04X}{third:04X}{guid[8:].hex().upper()}{age:X}"
            self.assertEqual(pdb, f"{pathlib.Path(name).stem}.pdb")
            expected[f"{pdb}/{key}/{pdb}"] = guid
            expected[f"{name}/{file.timestamp:08X}{file.image_size():x}/{name}"] = data
        self.assertEqual(sorted(self.symbols), sorted(expected))
        for name, what in expected.items():
            data = self.symbols[name]
            self.assertEqual(pe_file.pdb_identity(data) if name.endswith(".pdb") else data, what, name)

    def test_address_of_the_entry_point_resolves_to_its_source_line(self):
        plugin = pe_file.PeFile(self.programs[settings.PLUGIN])
        place = f"{settings.PLUGIN}+{plugin.exports()['xImportEntry'] - plugin.image_base():#x}"
        result = subprocess.run([settings.SOURCE_DIR / "scripts/symbolize.sh", "--symbols", settings.SYMBOLS, place],
                                check=True, capture_output=True, text=True)
        self.assertRegex(result.stdout, r"^xImportEntry  plugin/entry/import_entry\.cpp:\d+  \[")

    def test_symbols_do_not_tell_where_they_were_built(self):
        for name, data in self.symbols.items():
            for folder in (settings.SOURCE_DIR, settings.BUILD_DIR):
                self.assertNotIn(str(folder).encode(), data, f"{folder} in {name}")


if __name__ == "__main__":
    unittest.main()
