r"""The installer and its uninstaller, run silently on a Windows system of their own (Wine). Setup's own log, its exit code,
and the files and keys on the system are what a test looks at. C:\t is each test's folder."""

import datetime
import json
import os
import pathlib
import re
import shutil
import subprocess
import time
import unittest

import package_test
import settings
import wine_prefix as wine

OWN_FOLDER = r"C:\t\MediaCore\Orvantis"
USUAL_FOLDER = r"C:\Program Files\Adobe\Common\Plug-ins\7.0\MediaCore\Orvantis"
LOG = r"C:\t\setup.log"
LOAD_PLUGIN = os.environ["ORVANTIS_LOAD_PLUGIN"]
WITHOUT_TOOL = sorted([settings.PLUGIN, "uninstall.exe", *settings.TEXTS])
INSTALLED = sorted([*WITHOUT_TOOL, settings.TOOL])
RELEASED = {name.removeprefix(settings.TOP): data for name, data in package_test.read_zip(settings.PACKAGE).items()}
CODEC = settings.BUILD_DIR / "standin" / settings.CODEC

FIRST_RELEASE = settings.SOURCE_DIR / "tests/packaging/released/installer-0.1.0.nsi"

EXIT_OK, EXIT_FAILED, EXIT_IN_USE, EXIT_USAGE, EXIT_NO_CODEC = 0, 2, 3, 4, 5


class InstallerTest(unittest.TestCase):
    def setUp(self):
        wine.clean()

    # What the tests do to the system.

    def install(self, *arguments, folder=None, setup=settings.SETUP, search_path="", code=EXIT_OK):
        wine.native(LOG).unlink(missing_ok=True)
        last = [f"/D={folder}"] if folder else []
        result = wine.run(setup, "/S", f"/SETUPLOG={LOG}", *arguments, *last, search_path=search_path)
        self.assertEqual(result.returncode, code, self.log())

    def uninstall(self, folder, *arguments, code=EXIT_OK):
        """As whoever has to wait for the end does it: a copy, told the folder."""
        shutil.copy(wine.native(folder) / "uninstall.exe", wine.native(r"C:\t\remove.exe"))
        wine.native(LOG).unlink(missing_ok=True)
        # The folder must come last and unquoted, which only a batch file can do when it has blanks.
        command = " ".join([r"C:\t\remove.exe /S", f"/SETUPLOG={LOG}", *arguments, f"_?={folder}"])
        self.assertEqual(self.batch(command), code, self.log())

    def batch(self, command, search_path=""):
        wine.native(r"C:\t\run.bat").write_bytes(f"@echo off\r\n{command}\r\nexit %errorlevel%\r\n".encode())
        return wine.run("cmd", "/c", r"C:\t\run.bat", search_path=search_path).returncode

    def add_codec(self, folder, data=None):
        path = wine.native(folder) / settings.CODEC
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(CODEC.read_bytes() if data is None else data)
        return folder

    def setup_of_version(self, version, script=settings.SOURCE_DIR / "packaging/installer.nsi"):
        """An installer as that version's would be: another plug-in file, another number, maybe fewer files."""
        stage = wine.native(r"C:\t") / f"stage-{version}"
        stage.mkdir()
        for name in [settings.PLUGIN, *settings.TEXTS]:
            (stage / name).write_bytes(f"{name} of version {version}\n".encode())
        setup = wine.native(r"C:\t") / f"ImporterOrvantis-{version}-setup.exe"
        subprocess.run([settings.MAKENSIS, "-V2", "-WX", f"-DVERSION={version}", f"-DSTAGE={stage}", f"-DOUTFILE={setup}",
                        "-NOCD", script], check=True, stdout=subprocess.DEVNULL, cwd=settings.SOURCE_DIR / "packaging")
        return setup

    # What the tests see of it.

    def log(self):
        path = wine.native(LOG)
        return path.read_bytes().decode("utf-16") if path.exists() else "(no setup log)"

    def files(self, folder):
        path = wine.native(folder)
        return sorted(each.name for each in path.iterdir()) if path.exists() else None

    def assertNothingInstalled(self, folder=OWN_FOLDER):
        self.assertIsNone(self.files(folder))
        self.assertFalse(wine.key_exists(wine.UNINSTALL_KEY))

    def assertInstalled(self, folder, tool=True):
        self.assertEqual(self.files(folder), INSTALLED if tool else WITHOUT_TOOL)
        for name in [settings.PLUGIN, *settings.TEXTS]:
            self.assertEqual((wine.native(folder) / name).read_bytes(), RELEASED[name], name)
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "InstallLocation"), ("REG_SZ", folder))


class InstallTest(InstallerTest):
    def test_files_and_the_entry_among_the_apps(self):
        self.install(folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER)
        expected = {
            "DisplayName": ("REG_SZ", "Orvantis importer"),
            "DisplayVersion": ("REG_SZ", settings.VERSION),
            "Publisher": ("REG_SZ", "Orvantis Importer Developers"),
            "UninstallString": ("REG_SZ", rf'"{OWN_FOLDER}\uninstall.exe"'),
            "QuietUninstallString": ("REG_SZ", rf'"{OWN_FOLDER}\uninstall.exe" /S'),
            "DisplayIcon": ("REG_SZ", rf"{OWN_FOLDER}\uninstall.exe"),
            "Readme": ("REG_SZ", rf"{OWN_FOLDER}\README.txt"),
            "HelpLink": ("REG_SZ", rf"file:///{OWN_FOLDER}\README.txt"),
            "URLInfoAbout": ("REG_SZ", settings.HOME_URL),
            "URLUpdateInfo": ("REG_SZ", f"{settings.HOME_URL}/releases"),
            "NoModify": ("REG_DWORD", "0x1"),
            "NoRepair": ("REG_DWORD", "0x1"),
        }
        self.assertEqual({name: wine.registry(wine.UNINSTALL_KEY, name) for name in expected}, expected)
        kind, date = wine.registry(wine.UNINSTALL_KEY, "InstallDate")
        self.assertEqual(kind, "REG_SZ")
        installed = datetime.datetime.strptime(date, "%Y%m%d")
        self.assertLess(abs(datetime.datetime.now() - installed), datetime.timedelta(days=2))
        total = sum(path.stat().st_size for path in wine.native(OWN_FOLDER).iterdir())
        kind, size = wine.registry(wine.UNINSTALL_KEY, "EstimatedSize")
        self.assertEqual(kind, "REG_DWORD")
        self.assertAlmostEqual(int(size, 16), total / 1024, delta=2)
        self.assertIn(f"Installed version {settings.VERSION} in {OWN_FOLDER}", self.log())

    def test_log_switch_stays_untouched_unless_asked_for(self):
        self.install(folder=OWN_FOLDER)
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY))

    def test_options_are_listed_and_nothing_is_installed(self):
        self.install("/?", folder=OWN_FOLDER)
        self.assertNothingInstalled()
        for option in ("/S", "/D=folder", "/LOG=1, /LOG=0", "/TOOL=1, /TOOL=0", "/REQUIRECODEC", "/SETUPLOG=file"):
            self.assertIn(option, self.log())

    def test_folder_with_blanks(self):
        folder = r"C:\t\Video plug-ins\Media Core\Orvantis"
        code = self.batch(rf'"{self.windows(settings.SETUP)}" /S /SETUPLOG={LOG} /D={folder}')
        self.assertEqual(code, EXIT_OK, self.log())
        self.assertInstalled(folder)

    def test_folder_outside_the_code_page(self):
        folder = "C:\\t\\\u4e2d\u6587\\Orvantis"
        self.install(folder=folder)
        self.assertEqual(self.files(folder), INSTALLED)
        self.assertIn(folder, self.log())
        # reg.exe prints in the console's code page, but exports in UTF-16.
        wine.run("reg", "export", wine.UNINSTALL_KEY, r"C:\t\key.reg", check=True)
        exported = wine.native(r"C:\t\key.reg").read_bytes().decode("utf-16")
        self.assertIn('"InstallLocation"="' + folder.replace("\\", "\\\\") + '"', exported)

    def test_given_folder_that_cannot_exist_is_refused_instead_of_taking_another(self):
        wine.native(r"C:\t\MediaCore").write_bytes(b"a file where the folder should be")
        for folder in (OWN_FOLDER, r"relative\folder", "Q:"):
            self.install(folder=folder, code=EXIT_USAGE)
            self.assertIn(f"/D={folder}: this folder cannot be used.", self.log())
            self.assertNothingInstalled(USUAL_FOLDER)

    def test_recorded_folder_that_cannot_be_made_is_a_failure(self):
        wine.native(r"C:\t\MediaCore").write_bytes(b"a file where the folder should be")
        wine.set_registry(r"HKLM\SOFTWARE\Adobe\Premiere Pro\22.0", "CommonPluginInstallPath", r"C:\t\MediaCore")
        self.install(code=EXIT_FAILED)
        self.assertIn(f"Cannot create {OWN_FOLDER}", self.log())
        self.assertFalse(wine.key_exists(wine.UNINSTALL_KEY))

    def test_file_that_cannot_be_written_is_a_failure_and_leaves_the_older_plugin(self):
        self.install(folder=OWN_FOLDER, setup=self.setup_of_version("0.0.9"))
        before = (wine.native(OWN_FOLDER) / settings.PLUGIN).read_bytes()
        (wine.native(OWN_FOLDER) / f"{settings.PLUGIN}.new").mkdir()
        self.install(folder=OWN_FOLDER, code=EXIT_FAILED)
        self.assertEqual((wine.native(OWN_FOLDER) / settings.PLUGIN).read_bytes(), before)
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "DisplayVersion"), ("REG_SZ", "0.0.9"))

    def test_default_log_lies_in_the_temporary_folder(self):
        temporary = [path for path in (wine.profile() / "AppData/Local/Temp", wine.profile() / "Temp") if path.exists()][0]
        log = temporary / "ImporterOrvantis-setup.log"
        log.unlink(missing_ok=True)
        self.assertEqual(wine.run(settings.SETUP, "/S", f"/D={OWN_FOLDER}").returncode, EXIT_OK)
        lines = log.read_bytes().decode("utf-16").split("\r\n")
        self.assertRegex(lines[0], rf"^\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d ImporterOrvantis {re.escape(settings.VERSION)} setup$")
        self.assertIn(f"Installed version {settings.VERSION} in {OWN_FOLDER}", lines)

    def windows(self, path):
        return wine.run("winepath", "-w", path).stdout.strip()


class FolderTest(InstallerTest):
    def record(self, product, version, folder, kind="REG_SZ"):
        wine.set_registry(rf"HKLM\SOFTWARE\Adobe\{product}\{version}", "CommonPluginInstallPath", folder, kind)

    def assertInstallsInto(self, folder):
        self.install()
        self.assertInstalled(folder)

    def test_the_folder_that_the_host_records(self):
        self.record("Premiere Pro", "22.0", r"C:\t\Common Files\MediaCore")
        self.assertInstallsInto(r"C:\t\Common Files\MediaCore\Orvantis")

    def test_backslash_at_the_end(self):
        # reg.exe takes \" for a quotation mark, so the value ends in two of them here.
        self.record("Premiere Pro", "22.0", "C:\\t\\MediaCore\\\\")
        self.assertInstallsInto(r"C:\t\MediaCore\Orvantis")

    def test_the_highest_version_counts_as_a_number(self):
        self.record("Premiere Pro", "9.0", r"C:\t\nine")
        self.record("Premiere Pro", "22.0", r"C:\t\twenty-two")
        self.record("Premiere Pro", "22.5", r"C:\t\twenty-two-five")
        self.record("Premiere Pro", "8.0", r"C:\t\eight")
        self.assertInstallsInto(r"C:\t\twenty-two-five\Orvantis")

    def test_versions_without_a_usable_folder_are_passed_over(self):
        self.record("Premiere Pro", "14.0", r"C:\t\fourteen")
        self.record("Premiere Pro", "24.0", "")
        self.record("Premiere Pro", "25.0", r"relative\folder")
        self.record("Premiere Pro", "Shared", r"C:\t\no-version")
        wine.set_registry(r"HKLM\SOFTWARE\Adobe\Premiere Pro\26.0", "Other", "x")
        self.assertInstallsInto(r"C:\t\fourteen\Orvantis")

    def test_variables_in_the_folder_are_expanded(self):
        self.record("Premiere Pro", "22.0", r"%SystemDrive%\t\MediaCore", "REG_EXPAND_SZ")
        self.assertInstallsInto(r"C:\t\MediaCore\Orvantis")

    def test_the_editor_comes_before_the_compositor(self):
        self.record("After Effects", "23.0", r"C:\t\compositor")
        self.record("Premiere Pro", "12.0", r"C:\t\editor")
        self.assertInstallsInto(r"C:\t\editor\Orvantis")

    def test_the_compositor_serves_when_there_is_no_editor(self):
        self.record("After Effects", "23.0", r"C:\t\compositor")
        self.assertInstallsInto(r"C:\t\compositor\Orvantis")

    def test_the_usual_folder_when_nothing_is_recorded(self):
        self.assertInstallsInto(USUAL_FOLDER)
        self.assertIn("No host has recorded its plug-in folder", self.log())

    def test_the_newer_spelling_of_the_usual_folder_when_it_exists(self):
        folder = r"C:\Program Files\Adobe\Common\Plugins\7.0\MediaCore"
        wine.native(folder).mkdir(parents=True)
        self.assertInstallsInto(folder + r"\Orvantis")

    def test_a_folder_on_the_command_line_comes_before_the_hosts(self):
        self.record("Premiere Pro", "22.0", r"C:\t\recorded")
        self.install(folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER)
        self.assertIsNone(self.files(r"C:\t\recorded"))


class CodecTest(InstallerTest):
    MISSING = "Warning: The codec library orvantis_common64.dll was not found in the Windows system folder or on the PATH."

    def test_missing_is_a_warning_and_no_failure(self):
        self.install(folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER)
        self.assertIn(self.MISSING, self.log())
        self.assertIn("start the host with the Shift key held down", self.log())

    def test_in_the_system_folder_is_found(self):
        self.add_codec(r"C:\windows\system32")
        self.install(folder=OWN_FOLDER)
        self.assertRegex(self.log(), r"(?i)The codec library was found: C:\\windows\\system32\\orvantis_common64\.dll")
        self.assertNotIn("Warning", self.log())

    def test_in_the_windows_folder_is_found(self):
        self.add_codec(r"C:\windows")
        self.install(folder=OWN_FOLDER)
        self.assertRegex(self.log(), r"(?i)The codec library was found: C:\\windows\\orvantis_common64\.dll")

    def test_on_the_path_is_found(self):
        self.install(folder=OWN_FOLDER, search_path=self.add_codec(r"C:\t\codec"))
        self.assertIn(r"The codec library was found: C:\t\codec\orvantis_common64.dll", self.log())

    def test_at_the_end_of_a_path_longer_than_a_string_of_the_script_is_found(self):
        filler = ";".join(rf"C:\t\no such folder number {number:04}" for number in range(80))
        self.assertGreater(len(filler), 2000)
        self.install(folder=OWN_FOLDER, search_path=filler + ";" + self.add_codec(r"C:\t\codec"))
        self.assertIn(r"The codec library was found: C:\t\codec\orvantis_common64.dll", self.log())

    def test_beside_the_plugin_and_beside_setup_is_not_found(self):
        self.add_codec(OWN_FOLDER)
        self.add_codec(r"C:\t")
        setup = shutil.copy(settings.SETUP, wine.native(r"C:\t"))
        self.install(folder=OWN_FOLDER, setup=setup)
        self.assertIn(self.MISSING, self.log())

    def test_of_32_bits_is_not_good_enough(self):
        data = bytearray(CODEC.read_bytes())
        header = int.from_bytes(data[0x3C:0x40], "little")
        data[header + 4 : header + 6] = (0x014C).to_bytes(2, "little")
        self.install(folder=OWN_FOLDER, search_path=self.add_codec(r"C:\t\codec", bytes(data)))
        self.assertIn(r"C:\t\codec\orvantis_common64.dll, is not a 64-bit library", self.log())
        self.assertIn("Warning", self.log())

    def test_that_is_no_program_at_all_is_not_good_enough(self):
        for data in (b"", b"M", b"MZ", b"text" * 100):
            self.install(folder=OWN_FOLDER, search_path=self.add_codec(r"C:\t\codec", data))
            self.assertIn("is not a 64-bit library", self.log())

    def test_required_and_missing_changes_nothing(self):
        self.install("/REQUIRECODEC", "/LOG=1", folder=OWN_FOLDER, code=EXIT_NO_CODEC)
        self.assertNothingInstalled()
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY))
        self.assertIn("Nothing was changed.", self.log())

    def test_required_and_there_installs(self):
        self.install("/REQUIRECODEC", folder=OWN_FOLDER, search_path=self.add_codec(r"C:\t\codec"))
        self.assertInstalled(OWN_FOLDER)


class LogSwitchTest(InstallerTest):
    def switch(self):
        return wine.registry(wine.SWITCH_KEY, "EnableAdobeLog")

    def test_on(self):
        self.install("/LOG=1", folder=OWN_FOLDER)
        self.assertEqual(self.switch(), ("REG_DWORD", "0x1"))
        self.assertIn("Diagnostic log: switched on for this account", self.log())

    def test_off(self):
        wine.set_registry(wine.SWITCH_KEY, "EnableAdobeLog", "1", "REG_DWORD")
        self.install("/LOG=0", folder=OWN_FOLDER)
        self.assertEqual(self.switch(), ("REG_DWORD", "0x0"))

    def test_stays_on_without_the_argument(self):
        wine.set_registry(wine.SWITCH_KEY, "EnableAdobeLog", "1", "REG_DWORD")
        self.install(folder=OWN_FOLDER)
        self.assertEqual(self.switch(), ("REG_DWORD", "0x1"))

    def test_another_value_is_refused_before_anything_changes(self):
        for value in ("2", "yes", ""):
            self.install(f"/LOG={value}", folder=OWN_FOLDER, code=EXIT_USAGE)
            self.assertNothingInstalled()
            self.assertIsNone(self.switch())
            self.assertIn(f"/LOG={value}: the value must be 1 (on) or 0 (off).", self.log())

    def test_the_argument_in_small_letters(self):
        self.install("/log=1", folder=OWN_FOLDER)
        self.assertEqual(self.switch(), ("REG_DWORD", "0x1"))


class HostRunsTest(InstallerTest):
    """Windows lets nobody replace a library that is loaded."""

    def held(self):
        self.codec = self.add_codec(r"C:\t\codec")
        return wine.held_library(LOAD_PLUGIN, rf"{OWN_FOLDER}\{settings.PLUGIN}", self.codec)

    def test_upgrade_is_refused_and_changes_nothing(self):
        self.install(folder=OWN_FOLDER)
        before = {path.name: path.stat().st_mtime_ns for path in wine.native(OWN_FOLDER).iterdir()}
        with self.held():
            self.install("/LOG=1", folder=OWN_FOLDER, setup=self.setup_of_version("9.9.9"), code=EXIT_IN_USE)
        self.assertInstalled(OWN_FOLDER)
        self.assertEqual({path.name: path.stat().st_mtime_ns for path in wine.native(OWN_FOLDER).iterdir()}, before)
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "DisplayVersion"), ("REG_SZ", settings.VERSION))
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY))
        self.assertIn("Close Premiere Pro", self.log())

    def test_upgrade_into_another_folder_is_refused_and_changes_nothing(self):
        self.install(folder=OWN_FOLDER)
        with self.held():
            self.install(folder=r"C:\t\Other\Orvantis", setup=self.setup_of_version("9.9.9"), code=EXIT_IN_USE)
        self.assertInstalled(OWN_FOLDER)
        self.assertIsNone(self.files(r"C:\t\Other\Orvantis"))

    def test_removal_is_refused_and_changes_nothing(self):
        self.install(folder=OWN_FOLDER)
        with self.held():
            self.uninstall(OWN_FOLDER, "/PURGE", code=EXIT_IN_USE)
        self.assertInstalled(OWN_FOLDER)
        self.assertIn("Close Premiere Pro", self.log())

    def test_afterwards_both_work(self):
        self.install(folder=OWN_FOLDER)
        with self.held():
            pass
        self.install(folder=OWN_FOLDER)
        self.uninstall(OWN_FOLDER)
        self.assertNothingInstalled()


class UpgradeTest(InstallerTest):
    def test_the_first_release_is_replaced(self):
        self.install("/LOG=1", folder=OWN_FOLDER, setup=self.setup_of_version("0.1.0", FIRST_RELEASE))
        self.install()
        self.assertInstalled(OWN_FOLDER, tool=False)
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "DisplayVersion"), ("REG_SZ", settings.VERSION))
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"))
        self.uninstall(OWN_FOLDER)
        self.assertNothingInstalled()

    def test_an_older_version_is_replaced(self):
        self.install(folder=OWN_FOLDER, setup=self.setup_of_version("0.0.9"))
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "DisplayVersion"), ("REG_SZ", "0.0.9"))
        self.install(folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER, tool=False)
        self.assertEqual(wine.registry(wine.UNINSTALL_KEY, "DisplayVersion"), ("REG_SZ", settings.VERSION))
        self.assertIn("Replacing version 0.0.9", self.log())

    def test_a_folder_that_was_chosen_is_kept(self):
        self.install(folder=OWN_FOLDER, setup=self.setup_of_version("0.0.9"))
        self.install()
        self.assertInstalled(OWN_FOLDER, tool=False)
        self.assertIsNone(self.files(USUAL_FOLDER))

    def test_a_host_that_moved_takes_the_plugin_along(self):
        self.install(setup=self.setup_of_version("0.0.9"))
        self.assertEqual(self.files(USUAL_FOLDER), WITHOUT_TOOL)
        wine.set_registry(r"HKLM\SOFTWARE\Adobe\Premiere Pro\25.0", "CommonPluginInstallPath", r"C:\t\MediaCore")
        self.install()
        self.assertInstalled(OWN_FOLDER)
        self.assertIsNone(self.files(USUAL_FOLDER), "a second copy in the old folder would be loaded, too")
        self.assertIn(f"Removing version 0.0.9 from {USUAL_FOLDER}", self.log())

    def test_the_log_switch_and_logs_survive(self):
        self.install("/LOG=1", folder=OWN_FOLDER, setup=self.setup_of_version("0.0.9"))
        log = wine.profile() / "orvantis/adobe/orvantis_pr_importer_20260101_000000_00.log"
        log.parent.mkdir(parents=True)
        log.write_text("Log opened\n")
        self.install(folder=r"C:\t\Other\Orvantis")
        self.assertIsNone(self.files(OWN_FOLDER))
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"))
        self.assertTrue(log.exists())

    def test_a_chosen_folder_that_is_gone_is_forgotten(self):
        self.install(folder=OWN_FOLDER)
        shutil.rmtree(wine.native(OWN_FOLDER))
        self.install()
        self.assertInstalled(USUAL_FOLDER)


class RemovalTest(InstallerTest):
    def test_a_log_that_the_user_switched_on_stays_on(self):
        wine.set_registry(wine.SWITCH_KEY, "EnableAdobeLog", "1", "REG_DWORD")
        self.install("/LOG=1", folder=OWN_FOLDER)
        self.uninstall(OWN_FOLDER)
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"))

    def test_a_log_that_setup_switched_on_and_off_again_leaves_the_users_switch_alone(self):
        self.install("/LOG=1", folder=OWN_FOLDER)
        self.install("/LOG=0", folder=OWN_FOLDER)
        wine.set_registry(wine.SWITCH_KEY, "EnableAdobeLog", "1", "REG_DWORD")
        self.uninstall(OWN_FOLDER)
        self.assertEqual(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"), ("REG_DWORD", "0x1"))

    def test_options_are_listed_and_nothing_is_removed(self):
        self.install(folder=OWN_FOLDER)
        self.uninstall(OWN_FOLDER, "/?")
        self.assertInstalled(OWN_FOLDER)
        for option in ("/S", "/PURGE", "/SETUPLOG=file"):
            self.assertIn(option, self.log())

    def test_everything_goes_with_the_log_that_setup_switched_on_and_the_log_files_stay(self):
        self.install("/LOG=1", folder=OWN_FOLDER)
        log = wine.profile() / "orvantis/adobe/orvantis_pr_importer_20260101_000000_00.log"
        log.parent.mkdir(parents=True)
        log.write_text("Log opened\n")
        self.uninstall(OWN_FOLDER)
        self.assertNothingInstalled()
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY))
        self.assertTrue(log.exists())
        self.assertFalse(wine.start_menu().exists())

    def test_purging_takes_the_log_switch_and_the_logs_and_nothing_else(self):
        self.install("/LOG=1", folder=OWN_FOLDER)
        wine.set_registry(wine.SWITCH_KEY, "SomebodyElses", "x")
        logs = wine.profile() / "orvantis/adobe"
        logs.mkdir(parents=True)
        (logs / "orvantis_pr_importer_20260101_000000_00.log").write_text("Log opened\n")
        (logs / "notes.txt").write_text("mine\n")
        self.uninstall(OWN_FOLDER, "/PURGE")
        self.assertNothingInstalled()
        self.assertIsNone(wine.registry(wine.SWITCH_KEY, "EnableAdobeLog"))
        self.assertIsNotNone(wine.registry(wine.SWITCH_KEY, "SomebodyElses"))
        self.assertEqual([path.name for path in logs.iterdir()], ["notes.txt"])

    def test_purging_leaves_no_empty_folder_and_no_empty_key(self):
        self.install("/LOG=1", folder=OWN_FOLDER)
        logs = wine.profile() / "orvantis/adobe"
        logs.mkdir(parents=True)
        (logs / "orvantis_pr_importer_20260101_000000_00.log").write_text("Log opened\n")
        self.uninstall(OWN_FOLDER, "/PURGE")
        self.assertFalse(wine.key_exists(wine.SWITCH_KEY))
        self.assertFalse((wine.profile() / "orvantis").exists())

    def test_files_of_others_in_the_folder_stay(self):
        self.install(folder=OWN_FOLDER)
        (wine.native(OWN_FOLDER) / "settings.xml").write_text("mine\n")
        (wine.native(OWN_FOLDER).parent / "OtherImporter.prm").write_text("another plug-in\n")
        self.uninstall(OWN_FOLDER)
        self.assertEqual(self.files(OWN_FOLDER), ["settings.xml"])
        self.assertEqual(self.files(r"C:\t\MediaCore"), ["Orvantis", "OtherImporter.prm"])
        self.assertFalse(wine.key_exists(wine.UNINSTALL_KEY))

    def test_in_a_folder_with_blanks(self):
        self.install()
        self.uninstall(USUAL_FOLDER)
        self.assertNothingInstalled(USUAL_FOLDER)

    def test_the_registered_command_removes_everything(self):
        self.install()
        _, command = wine.registry(wine.UNINSTALL_KEY, "QuietUninstallString")
        self.assertEqual(self.batch(command), EXIT_OK)
        # It has started a copy of itself and returned; nobody can wait for that copy but by looking.
        deadline = time.monotonic() + 60
        while self.files(USUAL_FOLDER) is not None:
            self.assertLess(time.monotonic(), deadline, self.files(USUAL_FOLDER))
            time.sleep(0.05)
        while wine.key_exists(wine.UNINSTALL_KEY):
            self.assertLess(time.monotonic(), deadline)


class LoadTest(InstallerTest):
    """What was installed is what a host can load: the codec library decides."""

    def load(self, search_path=""):
        result = wine.run(LOAD_PLUGIN, rf"{OWN_FOLDER}\{settings.PLUGIN}", search_path=search_path)
        return result.returncode, result.stdout.strip()

    def test_loads_with_the_codec_library_on_the_path(self):
        codec = self.add_codec(r"C:\t\codec")
        self.install(folder=OWN_FOLDER, search_path=codec)
        self.assertEqual(self.load(codec), (0, "loaded"))

    def test_does_not_load_without_the_codec_library(self):
        self.install(folder=OWN_FOLDER)
        self.assertEqual(self.load(), (1, "error 126"))

    def test_does_not_load_with_the_codec_library_beside_it(self):
        self.install(folder=OWN_FOLDER)
        self.add_codec(OWN_FOLDER)
        self.assertEqual(self.load(), (1, "error 126"))


class ToolTest(InstallerTest):
    CHECK = "Check this computer.lnk"

    def test_comes_with_a_first_installation_and_its_menu_entry(self):
        self.install(folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER)
        self.assertEqual((wine.native(OWN_FOLDER) / settings.TOOL).read_bytes(), RELEASED[settings.TOOL])
        self.assertEqual(sorted(path.name for path in wine.start_menu().iterdir()), [self.CHECK, "Read me.lnk"])
        shortcut = (wine.start_menu() / self.CHECK).read_bytes()
        command = rf'/k ""{OWN_FOLDER}\{settings.TOOL}" doctor"'
        self.assertIn(command.encode("utf-16-le"), shortcut)

    def test_asked_away_stays_away_and_its_menu_entry_with_it(self):
        self.install(folder=OWN_FOLDER)
        self.install("/TOOL=0", folder=OWN_FOLDER)
        self.assertInstalled(OWN_FOLDER, tool=False)
        self.assertEqual([path.name for path in wine.start_menu().iterdir()], ["Read me.lnk"])
        self.install()
        self.assertInstalled(OWN_FOLDER, tool=False)

    def test_comes_back_when_asked_for(self):
        self.install("/TOOL=0", folder=OWN_FOLDER)
        self.install("/TOOL=1")
        self.assertInstalled(OWN_FOLDER)

    def test_goes_with_the_removal(self):
        self.install("/TOOL=1", folder=OWN_FOLDER)
        self.uninstall(OWN_FOLDER)
        self.assertNothingInstalled()

    def test_another_value_is_refused(self):
        self.install("/TOOL=2", folder=OWN_FOLDER, code=EXIT_USAGE)
        self.assertNothingInstalled()

    def test_names_the_projects_version(self):
        self.install("/TOOL=1", folder=OWN_FOLDER)
        result = wine.run(rf"{OWN_FOLDER}\{settings.TOOL}", "--version")
        self.assertEqual((result.returncode, result.stdout.splitlines()[0]), (0, f"importer_host {settings.VERSION}"))

    def test_opens_a_clip_through_the_installed_plugin(self):
        codec = self.add_codec(r"C:\t\codec")
        self.install("/TOOL=1", folder=OWN_FOLDER, search_path=codec)
        clip = wine.native(r"C:\t") / "clip.avi"
        subprocess.run([settings.FFMPEG, "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=64x32:rate=25:duration=1",
                        "-c:v", "rawvideo", "-strict", "unofficial", "-pix_fmt", "yuv422p", "-vtag", "O8Y2", clip], check=True)
        result = wine.run(rf"{OWN_FOLDER}\{settings.TOOL}", "info", "--json", r"C:\t\clip.avi", search_path=codec)
        self.assertEqual(result.returncode, 0, result.stdout)
        said = json.loads(result.stdout)
        self.assertEqual(pathlib.PureWindowsPath(said["plugin"]["path"]), pathlib.PureWindowsPath(OWN_FOLDER, settings.PLUGIN))
        video = said["file"]["streams"][0]["video"]
        self.assertEqual((video["subType"], video["width"], video["height"], video["frames"]), ("O8Y2", 64, 32, 25))

    def test_says_that_the_plugin_cannot_be_loaded_without_the_codec_library(self):
        self.install("/TOOL=1", folder=OWN_FOLDER)
        result = wine.run(rf"{OWN_FOLDER}\{settings.TOOL}", "info", LOG)
        self.assertEqual(result.returncode, 3, result.stdout)


if __name__ == "__main__":
    unittest.main()
