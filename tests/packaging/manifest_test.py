"""The manifests for winget and scoop: by their schemas, and true of the packages beside them."""

import hashlib
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import yaml

import schema_check
import settings

FOLDER = settings.PACKAGES / "manifests"
PLACE = f"{settings.HOME_URL}/releases/download/v{settings.VERSION}/"
IDENTIFIER = "OrvantisImporterDevelopers.OrvantisImporter"


def winget(part):
    return yaml.safe_load((FOLDER / "winget" / f"{IDENTIFIER}{part}.yaml").read_text())


def digest(package):
    return hashlib.sha256(package.read_bytes()).hexdigest()


class WingetTest(unittest.TestCase):
    """The official schemas here are of version 1.0, which knows most fields; of version 1.6 there is one of our own, narrower."""

    def test_three_files_of_one_version_by_their_schema(self):
        self.assertEqual(len(list((FOLDER / "winget").iterdir())), 3)
        for part in ("", ".installer", ".locale.en-US"):
            manifest = winget(part)
            self.assertEqual(schema_check.problems(manifest, "winget-1.6.0.own.schema.json"), [])
            self.assertEqual((manifest["PackageIdentifier"], manifest["PackageVersion"]), (IDENTIFIER, settings.VERSION))

    def whole(self, installer):
        """All three as the one manifest that version 1.0 had for everything, with one of the installers."""
        return {**winget(""), **winget(".locale.en-US"), **winget(".installer"), "ManifestType": "singleton",
                "Installers": [winget(".installer")["Installers"][installer]]}

    def test_are_by_the_official_schemas_of_their_first_version(self):
        self.assertEqual(schema_check.problems(winget(".installer"), "winget-installer-1.0.0.schema.json"), [])
        for installer in (0, 1):
            self.assertEqual(schema_check.problems(self.whole(installer), "winget-singleton-1.0.0.schema.json"), [])

    def test_every_schema_refuses_what_is_wrong(self):
        manifest = winget(".installer")
        manifest["Installers"][0]["InstallerSha256"] = "12"
        for schema in ("winget-1.6.0.own.schema.json", "winget-installer-1.0.0.schema.json"):
            self.assertNotEqual(schema_check.problems(manifest, schema), [], schema)
        self.assertNotEqual(schema_check.problems({**self.whole(0), "License": "?"}, "winget-singleton-1.0.0.schema.json"), [])

    def test_checksums_and_names_are_those_of_the_packages(self):
        installers = winget(".installer")["Installers"]
        self.assertEqual([(each["InstallerUrl"], each["InstallerSha256"]) for each in installers],
                         [(PLACE + package.name, digest(package).upper()) for package in (settings.MSI, settings.SETUP)])

    def test_product_code_is_that_of_the_msi_package(self):
        table = subprocess.run(["msiinfo", "export", settings.MSI, "Property"], check=True, capture_output=True, text=True).stdout
        code = re.search(r"^ProductCode\t(\{.*\})\r?$", table, re.MULTILINE).group(1)
        self.assertEqual(winget(".installer")["Installers"][0]["ProductCode"], code)


class ScoopTest(unittest.TestCase):
    def test_is_by_its_schema_and_true_of_the_zip(self):
        manifest = json.loads((FOLDER / "scoop/orvantis-importer.json").read_text())
        self.assertEqual(schema_check.problems(manifest, "scoop.schema.json"), [])
        self.assertNotEqual(schema_check.problems({**manifest, "thing": "unknown"}, "scoop.schema.json"), [])
        self.assertEqual(manifest["version"], settings.VERSION)
        package = manifest["architecture"]["64bit"]
        self.assertEqual(manifest["homepage"], settings.HOME_URL)
        self.assertEqual(package["url"], PLACE + settings.PACKAGE.name)
        self.assertEqual(package["hash"], digest(settings.PACKAGE))
        self.assertEqual(package["extract_dir"] + "/", settings.TOP)


class PlaceTest(unittest.TestCase):
    """Manifests that name no place, or one that cannot be, would be handed in by mistake."""

    def make(self, home, recorded="https://example.com/nowhere-yet"):
        """As packaging does it once the packages are there; what it says, and the files that it makes. `home` is what the
        environment says, `recorded` what the sources do."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "recorded").write_text(recorded + "\n")
            variables = {"CPACK_PACKAGE_DIRECTORY": folder / "out", "CPACK_PACKAGE_VERSION": settings.VERSION, "msi": settings.MSI,
                         "installer": settings.SETUP, "CPACK_PACKAGE_FILES": settings.PACKAGE, "home_url_file": folder / "recorded"}
            result = subprocess.run(
                [settings.CMAKE, *(f"-D{name}={value}" for name, value in variables.items()), "-P",
                 settings.SOURCE_DIR / "packaging/manifests/build_manifests.cmake"],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, env={**os.environ, "ORVANTIS_HOME_URL": home})
            files = sorted((folder / "out").rglob("*.*"))
            page = [json.loads(each.read_text())["homepage"] for each in files if each.suffix == ".json"]
            return result.returncode, result.stdout, len(files), page

    def test_without_a_place_there_are_none(self):
        code, said, files, _ = self.make("")
        self.assertEqual((code, files), (0, 0))
        self.assertIn("Manifests: none, as nobody has told where the packages will be published", said)

    def test_place_that_cannot_be_is_refused(self):
        for home in ("http://192.0.2.1/a/b", "https://192.0.2.1", "https://192.0.2.1/a/", "https://localhost/a", "192.0.2.1/a/b",
                     "https://example.com/a/b", "https://www.example.org/a", "https://forge.invalid/a", "https://192.0.2.1/a b",
                     "https://somebody@192.0.2.1/a"):
            code, said, files, _ = self.make(home)
            self.assertEqual((code, files), (1, 0), home)
            self.assertIn("ORVANTIS_HOME_URL is no address", said)

    def test_place_that_can_be_is_taken(self):
        for home in ("https://192.0.2.1/a/b", "https://192.0.2.1:8000/a"):
            code, said, files, page = self.make(home)
            self.assertEqual((code, files, page), (0, 4, [home]), said)

    def test_place_that_the_sources_name_is_taken_unless_somebody_says_another(self):
        for home, expected in (("", "https://192.0.2.1/a/b"), ("https://192.0.2.2/c", "https://192.0.2.2/c")):
            code, said, files, page = self.make(home, "https://192.0.2.1/a/b")
            self.assertEqual((code, files, page), (0, 4, [expected]), said)
        self.assertEqual(self.make("", "http://192.0.2.1/a/b")[0], 1)


class MsiLinksTest(unittest.TestCase):
    def test_entry_among_the_apps_leads_to_the_repository(self):
        table = subprocess.run(["msiinfo", "export", settings.MSI, "Property"], check=True, capture_output=True, text=True).stdout
        self.assertEqual(re.findall(r"(?m)^(ARPURL\w+)\t(.*?)\r?$", table),
                         [("ARPURLINFOABOUT", settings.HOME_URL), ("ARPURLUPDATEINFO", f"{settings.HOME_URL}/releases")])


if __name__ == "__main__":
    unittest.main()
