"""The bills of materials and the provenance: by their schemas, and true of what was compiled and linked."""

import hashlib
import json
import pathlib
import re
import subprocess
import tempfile
import unittest

import package_test
import schema_check
import settings

COMPONENTS = json.loads((settings.SOURCE_DIR / "packaging/sbom/components.json").read_text())["components"]
PROGRAMS = {settings.PLUGIN: "ImporterOrvantis", settings.TOOL: "importer_host", settings.SETUP_ACTIONS.name: "setup_actions"}
# Of the project itself, and of Windows: import libraries hold no code but jumps.
OWN = re.compile(r"^/orvantis/|^\* Linker \*$|^$")
# The compiler's own headers put its instructions into words.
COMPILER = re.compile(r"^/usr/lib/llvm-\d+/lib/clang/\d+/include/")
WINDOWS = re.compile(r"/lib(kernel32|user32|gdi32|shell32|shlwapi|advapi32|ole32|psapi|dbghelp|ntdll|msi)\.a$|\.dll$")


def linked(program):
    """The archives and objects that the linker took code from, as the PDB has them."""
    pdb = settings.BUILD_DIR / "symbols" / f"{PROGRAMS[program]}.pdb"
    said = subprocess.run(["llvm-pdbutil", "dump", "--modules", pdb], check=True, capture_output=True, text=True).stdout
    return set(re.findall(r"^ *Obj: `(.*?)`", said, re.MULTILINE))


def included(*sources):
    """The headers that the compiler read for the targets, by the build's own records."""
    result = subprocess.run(["ninja", "-C", settings.BUILD_DIR, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    found, wanted = set(), False
    for line in result.splitlines():
        if line and not line.startswith(" "):
            wanted = line.startswith(sources)
        elif wanted and line:
            found.add(line.strip())
    # Paths that are not full ones are those of the build folder, which is where the compiler runs: `source` leads to the sources.
    return {path for path in found if not path.startswith((str(settings.SOURCE_DIR), "source/")) and not path.endswith(".relative.cxx")}


def components_of(paths):
    """Names of the components that the paths belong to, and the paths that belong to none."""
    names, strange = set(), set()
    for path in paths:
        owners = {each["name"] for each in COMPONENTS if any(re.search(pattern, path) for pattern in each["paths"])}
        names |= owners
        if not owners:
            strange.add(path)
    return names, strange


class LinkedTest(unittest.TestCase):
    def test_everything_that_was_linked_is_listed_and_everything_listed_was_linked(self):
        for program in PROGRAMS:
            archives = {path for path in linked(program) if not OWN.search(path) and not WINDOWS.search(path)}
            self.assertTrue(any(path.endswith("/libstdc++.a") for path in archives), archives)
            names, strange = components_of(archives)
            self.assertEqual(strange, set(), f"linked into {program}, and in no list")
            expected = {each["name"] for each in COMPONENTS
                        if program in each["in"] and any(r"\.a" in pattern or "lib/" in pattern for pattern in each["paths"])}
            self.assertEqual(names, expected, program)

    def test_header_libraries_are_listed_for_the_program_that_was_compiled_with_them(self):
        libraries = {"CLI11", "JSON for Modern C++", "stb_image_write"}
        tool, strange_in_tool = components_of(included("tool/", "testbed/simhost/"))
        plugin, strange_in_plugin = components_of(included("plugin/"))
        _, strange_in_msi = components_of(included("packaging/"))
        strange = {path for path in strange_in_tool | strange_in_plugin | strange_in_msi if not COMPILER.search(path)}
        self.assertEqual(strange, set(), "compiled in, and in no list")
        self.assertEqual({each for each in libraries if each in tool}, libraries)
        self.assertIn("libstdc++", plugin)
        self.assertEqual(plugin & libraries, set())
        for each in COMPONENTS:
            if each["name"] in libraries:
                self.assertEqual(each["in"], [settings.TOOL])

    def test_licence_of_everything_is_in_the_packages(self):
        notices = package_test.read_zip(settings.PACKAGE)[settings.TOP + "THIRD_PARTY_NOTICES.txt"].decode()
        table = [line for line in notices.splitlines() if line.startswith("| ")]
        for each in COMPONENTS:
            self.assertTrue(any(each["name"] in line for line in table), each["name"])


class BillTest(unittest.TestCase):
    def setUp(self):
        self.cyclonedx = json.loads(settings.CYCLONEDX.read_text())
        self.spdx = json.loads(settings.SPDX.read_text())

    def test_both_are_by_their_schemas(self):
        self.assertEqual(schema_check.problems(self.cyclonedx, "cyclonedx-1.5.schema.json"), [])
        self.assertEqual(schema_check.problems(self.spdx, "spdx-2.3.own.schema.json"), [])
        self.cyclonedx["components"][0]["type"] = "thing"
        self.assertNotEqual(schema_check.problems(self.cyclonedx, "cyclonedx-1.5.schema.json"), [])

    def test_licences_are_named_as_spdx_lists_them(self):
        known = set(schema_check.read("cyclonedx-spdx.schema.json")["enum"])
        for each in COMPONENTS:
            names = re.split(r" (?:AND|OR|WITH) ", each["licence"])
            self.assertEqual([name for name in names if name not in known], [], each["name"])

    def test_both_list_the_same_parts_with_the_versions_that_are_installed(self):
        expected = {}
        for each in COMPONENTS:
            version = subprocess.run(["dpkg-query", "-W", "-f=${Version}", each["package"]], check=True, capture_output=True,
                                     text=True).stdout
            expected[each["name"]] = (version, each["licence"])
        self.assertEqual({each["name"]: (each["version"], each["licenses"][0]["expression"])
                          for each in self.cyclonedx["components"] if each["type"] == "library"}, expected)
        self.assertEqual({each["name"]: (each["versionInfo"], each["licenseDeclared"])
                          for each in self.spdx["packages"] if each["name"] != "ImporterOrvantis"}, expected)

    def test_both_name_the_released_files_with_their_sums(self):
        expected = {name: hashlib.sha256(data).hexdigest() for name, data in package_test.programs().items()}
        self.assertEqual({each["name"]: each["hashes"][0]["content"] for each in self.cyclonedx["components"] if each["type"] == "file"},
                         expected)
        self.assertEqual({each["fileName"].removeprefix("./"): each["checksums"][0]["checksumValue"] for each in self.spdx["files"]},
                         expected)

    def test_every_reference_leads_somewhere(self):
        known = {each["bom-ref"] for each in self.cyclonedx["components"]} | {self.cyclonedx["metadata"]["component"]["bom-ref"]}
        for each in self.cyclonedx["dependencies"]:
            self.assertLessEqual({each["ref"], *each["dependsOn"]}, known)
        known = {each["SPDXID"] for each in self.spdx["packages"] + self.spdx["files"]} | {"SPDXRef-DOCUMENT"}
        for each in self.spdx["relationships"]:
            self.assertLessEqual({each["spdxElementId"], each["relatedSpdxElement"]}, known)


class ProvenanceTest(unittest.TestCase):
    def test_is_by_its_schema_and_names_the_packages_and_the_commit(self):
        statement = json.loads(settings.PROVENANCE.read_text())
        self.assertEqual(schema_check.problems(statement, "in-toto-1.own.schema.json"), [])
        self.assertEqual({each["name"]: each["digest"]["sha256"] for each in statement["subject"]},
                         {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in settings.PUBLISHED})
        commit = json.loads((settings.BUILD_DIR / "build-record.json").read_text())["commit"]
        # Somebody may commit while the tests run.
        subprocess.run(["git", "-C", settings.SOURCE_DIR, "merge-base", "--is-ancestor", commit, "HEAD"], check=True)
        definition = statement["predicate"]["buildDefinition"]
        self.assertEqual(definition["externalParameters"]["commit"], commit)
        self.assertEqual(definition["resolvedDependencies"][0],
                         {"uri": f"git+{settings.HOME_URL}", "name": "sources", "digest": {"gitCommit": commit}})

    def test_says_what_was_built_though_the_sources_have_changed_since(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            git = ["git", "-C", folder, "-c", "user.name=a", "-c", "user.email=a@localhost"]
            (folder / "file").write_text("as it was built")
            for words in (["init", "-q"], ["add", "file"], ["commit", "-qm", "a"]):
                subprocess.run([*git, *words], check=True)
            tell = lambda script, *words: subprocess.run([settings.PYTHON, settings.SOURCE_DIR / "packaging/sbom" / script, *words],
                                                         check=True)
            tell("record_build.py", folder, folder / "record")
            tell("make_provenance.py", folder / "record", folder / "one", settings.MSI)
            (folder / "file").write_text("edited since")
            tell("make_provenance.py", folder / "record", folder / "two", settings.MSI)
            self.assertEqual((folder / "one").read_bytes(), (folder / "two").read_bytes())
            changed = lambda: json.loads((folder / "record").read_text())["changed"]
            self.assertFalse(changed())
            tell("record_build.py", folder, folder / "record")
            self.assertTrue(changed())


if __name__ == "__main__":
    unittest.main()
