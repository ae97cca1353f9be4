"""A Windows system of its own for the tests of the installer: a Wine prefix that no other test uses, so that files, keys
and search paths can be exactly those of each test. One test at a time uses it (CTest's resource lock)."""

import contextlib
import os
import pathlib
import re
import shutil
import subprocess

WINE_RUN = os.environ["ORVANTIS_WINE_RUN"]
PREFIX = pathlib.Path(os.environ["WINEPREFIX"])  # read by the wrapper, too
DRIVE = PREFIX / "drive_c"

UNINSTALL_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\ImporterOrvantis"
MSI_KEY = r"HKLM\Software\Orvantis\Importer"
HOST_KEY = r"HKLM\SOFTWARE\Adobe"
SWITCH_KEY = r"HKCU\Software\Orvantis"


def native(path):
    r"""C:\a\b as a path of this machine."""
    if not path.startswith("C:\\"):
        raise ValueError(path)
    return DRIVE.joinpath(*path[3:].split("\\"))


def run(*command, search_path="", timeout=120, **options):
    """Runs a Windows program to its end. search_path goes ahead of the system's own PATH."""
    environment = dict(os.environ, ORVANTIS_WINEPATH=search_path)
    return subprocess.run([WINE_RUN, *map(str, command)], env=environment, timeout=timeout, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, errors="replace", **options)


@contextlib.contextmanager
def held_library(load_plugin, path, search_path):
    """A process that has the library loaded while the block runs."""
    environment = dict(os.environ, ORVANTIS_WINEPATH=search_path)
    process = subprocess.Popen([WINE_RUN, load_plugin, path, "--hold"], env=environment, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        line = process.stdout.readline().strip()
        if line != "loaded":
            raise RuntimeError(f"the library could not be loaded: {line!r}")
        yield
    finally:
        process.communicate(timeout=60)  # closes its input, which ends it


def registry(key, value):
    """Kind and data of a value as `reg` prints them, or None."""
    result = run("reg", "query", key, "/v", value)
    found = re.search(rf"^\s+{re.escape(value)}\s+(REG_\w+)\s+(.*?)\r?$", result.stdout, re.MULTILINE)
    return (found.group(1), found.group(2)) if found else None


def key_exists(key):
    return run("reg", "query", key).returncode == 0


def set_registry(key, value, data, kind="REG_SZ"):
    run("reg", "add", key, "/v", value, "/t", kind, "/d", data, "/f", check=True)


def delete_keys(*keys):
    """With all they hold. Keys that do not exist are no error."""
    text = "Windows Registry Editor Version 5.00\r\n" + "".join(f"\r\n[-{key}]\r\n" for key in keys)
    file = native(r"C:\clean.reg")
    file.write_bytes(text.replace("HKLM", "HKEY_LOCAL_MACHINE").replace("HKCU", "HKEY_CURRENT_USER").encode())
    run("reg", "import", r"C:\clean.reg", check=True)


def profile():
    """The account's profile folder."""
    folders = [each for each in (DRIVE / "users").iterdir() if each.name != "Public"]
    if len(folders) != 1:
        raise RuntimeError(f"expected one account, found {folders}")
    return folders[0]


def start_menu():
    """The folder of the product in every account's start menu."""
    return DRIVE / "ProgramData/Microsoft/Windows/Start Menu/Programs/Orvantis importer"


def clean():
    """A system on which neither host nor codec nor plug-in was ever installed."""
    product = registry(MSI_KEY, "ProductCode")
    if product:  # left by a test that failed
        run("msiexec", "/x", product[1], "/qn")
    delete_keys(UNINSTALL_KEY, HOST_KEY, SWITCH_KEY, MSI_KEY)
    for folder in (DRIVE / "t", DRIVE / "Program Files" / "Adobe", profile() / "orvantis",
                   start_menu()):
        shutil.rmtree(folder, ignore_errors=True)
    for folder in ("windows/system32", "windows"):
        (DRIVE / folder / "orvantis_common64.dll").unlink(missing_ok=True)
    (DRIVE / "t").mkdir()
