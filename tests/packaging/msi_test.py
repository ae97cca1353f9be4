r"""The MSI package, as Windows Installer (Wine's) takes it without windows: installed, repaired, replaced, removed. C:\t is each
test's folder."""

import subprocess
import unittest

import installer_test
import settings
import wine_prefix as wine

INSTALLED = sorted([settings.PLUGIN, settings.TOOL, *settings.TEXTS])
FOLDER = installer_test.OWN_FOLDER
USUAL_FOLDER = installer_test.USUAL_FOLDER


class MsiTest(installer_test.InstallerTest):
    def msiexec(self, *arguments, code=0):
        result = wine.run("msiexec", *arguments, "/qn", "/l*v", r"C:\t\msi.log")
        self.assertEqual(result.returncode, code, result.stdout)

    def install_package(self, *properties, package=None):
        path = wine.native(r"C:\t") / "package.msi"
        path.write_bytes((package or settings.MSI).read_bytes())
        self.msiexec("/i", r"C:\t\package.msi", *properties)

    def remove_package(self):
        self.msiexec("/x", wine.registry(wine.MSI_KEY, "ProductCode")[1])

    def package_of_version(self, version):
        """As that version's would be: other files, another number."""
        out = wine.native(r"C:\t") / f"made-{version}"
        (out / "installer-stage").mkdir(parents=True)
        for name in INSTALLED:
            (out / "installer-stage" / name).write_bytes(f"{name} of version {version}\n".encode())
        variables = {
            "CPACK_PACKAGE_DIRECTORY": out, "CPACK_TOPLEVEL_DIRECTORY": out, "CPACK_PACKAGE_NAME": "ImporterOrvantis",
            "CPACK_PACKAGE_VERSION": version, "CPACK_ORVANTIS_WIXL": settings.WIXL, "CPACK_ORVANTIS_PYTHON": settings.PYTHON,
            "CPACK_ORVANTIS_MSI_ACTIONS": settings.SETUP_ACTIONS, "stage": out / "installer-stage",
            "CPACK_ORVANTIS_MSI_SOURCE": settings.SOURCE_DIR / "packaging/msi/ImporterOrvantis.wxs",
        }
        subprocess.run([settings.CMAKE, *(f"-D{name}={value}" for name, value in variables.items()), "-P",
                        settings.SOURCE_DIR / "packaging/msi/build_msi.cmake"], check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
        return out / f"ImporterOrvantis-{version}.msi"

    def assertPackageInstalled(self, folder):
        self.assertEqual(self.files(folder), INSTALLED)
        for name in INSTALLED:
            self.assertEqual((wine.native(folder) / name).read_bytes(), installer_test.RELEASED[name], name)
        self.assertEqual(wine.registry(wine.MSI_KEY, "InstallLocation"), ("REG_SZ", folder + "\\"))

    def record(self, product, version, folder):
        wine.set_registry(rf"HKLM\SOFTWARE\Adobe\{product}\{version}", "CommonPluginInstallPath", folder)


class MsiInstallTest(MsiTest):
    def test_installs_repairs_and_removes(self):
        self.install_package()
        self.assertPackageInstalled(USUAL_FOLDER)
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY + r"\x"))
        self.assertIsNone(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), "the log switch stays as it is")
        (wine.native(USUAL_FOLDER) / settings.PLUGIN).unlink()
        # A host that moved since does not take a repair along.
        self.record("Premiere Pro", "25.0", r"C:\t\MediaCore")
        # What /fa stands for, which Wine's msiexec does not take.
        self.msiexec("/i", wine.registry(wine.MSI_KEY, "ProductCode")[1], "REINSTALL=ALL", "REINSTALLMODE=amus")
        self.assertPackageInstalled(USUAL_FOLDER)
        self.remove_package()
        self.assertIsNone(self.files(USUAL_FOLDER))
        self.assertFalse(wine.key_exists(wine.MSI_KEY))

    def test_goes_where_the_newest_host_looks(self):
        self.record("Premiere Pro", "9.0", r"C:\t\nine")
        self.record("Premiere Pro", "22.5", "C:\\t\\MediaCore\\\\")
        self.record("Premiere Pro", "22.0", r"C:\t\twenty-two")
        self.record("Premiere Pro", "26.0", r"relative\folder")
        self.record("After Effects", "30.0", r"C:\t\compositor")
        self.install_package()
        self.assertPackageInstalled(FOLDER)
        self.remove_package()

    def test_log_goes_on_when_asked_for_and_off_with_the_plugin(self):
        self.install_package("LOG=1", f"PLUGINDIR={FOLDER}")
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"))
        self.remove_package()
        self.assertIsNone(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"))
        wine.set_registry(wine.SWITCH_KEY, "EnableAdobeLog", "1", "REG_DWORD")
        self.install_package("LOG=1", f"PLUGINDIR={FOLDER}")
        self.remove_package()
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"), "the user's own")


class MsiUpgradeTest(MsiTest):
    def test_older_package_is_replaced_in_the_folder_that_was_chosen(self):
        self.install_package(f"PLUGINDIR={FOLDER}", "LOG=1", package=self.package_of_version("0.0.9"))
        self.assertEqual((wine.native(FOLDER) / settings.PLUGIN).read_bytes(), b"ImporterOrvantis.prm of version 0.0.9\n")
        older = wine.registry(wine.MSI_KEY, "ProductCode")
        self.install_package()
        self.assertPackageInstalled(FOLDER)
        self.assertNotEqual(wine.registry(wine.MSI_KEY, "ProductCode"), older)
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"), "stays on")
        self.remove_package()
        self.assertIsNone(self.files(FOLDER))

    def test_the_first_release_by_setup_is_replaced(self):
        self.install("/LOG=1", folder=FOLDER, setup=self.setup_of_version("0.1.0", installer_test.FIRST_RELEASE))
        self.install_package()
        self.assertPackageInstalled(FOLDER)
        self.assertFalse(wine.key_exists(wine.UNINSTALL_KEY), "one entry among the apps")
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"), "stays on")
        self.remove_package()

    def test_the_first_release_by_setup_leaves_the_folder_that_it_was_in(self):
        other = r"C:\t\Other\Orvantis"
        self.install(folder=other, setup=self.setup_of_version("0.1.0", installer_test.FIRST_RELEASE))
        self.install_package(f"PLUGINDIR={FOLDER}")
        self.assertPackageInstalled(FOLDER)
        self.assertIsNone(self.files(other), "with nothing left in it")
        self.assertFalse(wine.key_exists(wine.UNINSTALL_KEY))
        self.remove_package()

    def test_setup_replaces_a_package(self):
        self.install_package(f"PLUGINDIR={FOLDER}", "LOG=1", package=self.package_of_version("0.0.9"))
        self.install(folder=r"C:\t\Other\Orvantis")
        self.assertInstalled(r"C:\t\Other\Orvantis")
        self.assertIsNone(self.files(FOLDER))
        self.assertFalse(wine.key_exists(wine.MSI_KEY))
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"), "stays on")


if __name__ == "__main__":
    unittest.main()
