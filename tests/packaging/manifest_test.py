"""The manifests for winget and scoop: by their schemas, and true of the packages beside them."""

import hashlib
import json
import re
import subprocess
import unittest

import yaml

import schema_check
import settings

FOLDER = settings.PACKAGES / "manifests"
IDENTIFIER = "OrvantisImporterDevelopers.OrvantisImporter"


def winget(part):
    return yaml.safe_load((FOLDER / "winget" / f"{IDENTIFIER}{part}.yaml").read_text())


def digest(package):
    return hashlib.sha256(package.read_bytes()).hexdigest()


class WingetTest(unittest.TestCase):
    def test_three_files_of_one_version_by_their_schema(self):
        self.assertEqual(len(list((FOLDER / "winget").iterdir())), 3)
        for part in ("", ".installer", ".locale.en-US"):
            manifest = winget(part)
            self.assertEqual(schema_check.problems(manifest, "winget-1.6.0.own.schema.json"), [])
            self.assertEqual((manifest["PackageIdentifier"], manifest["PackageVersion"]), (IDENTIFIER, settings.VERSION))

    def test_schema_refuses_what_is_wrong(self):
        manifest = winget(".installer")
        manifest["Installers"][0]["InstallerSha256"] = "12"
        self.assertNotEqual(schema_check.problems(manifest, "winget-1.6.0.own.schema.json"), [])

    def test_checksums_and_names_are_those_of_the_packages(self):
        installers = winget(".installer")["Installers"]
        self.assertEqual([(each["InstallerUrl"].rsplit("/", 1)[1], each["InstallerSha256"]) for each in installers],
                         [(package.name, digest(package).upper()) for package in (settings.MSI, settings.SETUP)])

    def test_product_code_is_that_of_the_msi_package(self):
        table = subprocess.run(["msiinfo", "export", settings.MSI, "Property"], check=True, capture_output=True, text=True).stdout
        code = re.search(r"^ProductCode\t(\{.*\})\r?$", table, re.MULTILINE).group(1)
        self.assertEqual(winget(".installer")["Installers"][0]["ProductCode"], code)


class ScoopTest(unittest.TestCase):
    def test_is_by_its_schema_and_true_of_the_zip(self):
        manifest = json.loads((FOLDER / "scoop/orvantis-importer.json").read_text())
        self.assertEqual(schema_check.problems(manifest, "scoop.own.schema.json"), [])
        self.assertEqual(manifest["version"], settings.VERSION)
        package = manifest["architecture"]["64bit"]
        self.assertEqual(package["url"].rsplit("/", 1)[1], settings.PACKAGE.name)
        self.assertEqual(package["hash"], digest(settings.PACKAGE))
        self.assertEqual(package["extract_dir"] + "/", settings.TOP)


if __name__ == "__main__":
    unittest.main()
