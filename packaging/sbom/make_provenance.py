"""Writes where packages came from: an in-toto statement with SLSA provenance 1.0 of the packages' sums.

    make_provenance.py SOURCE OUT PACKAGE...      SOURCE is the source folder

It is signed, if at all, together with the release. ORVANTIS_BUILDER names who built; without it, nobody vouches for the builder.
"""

import os
import pathlib
import subprocess
import sys

import bill

TOOLS = ["clang-16", "lld-16", "g++-mingw-w64-x86-64-posix", "mingw-w64-x86-64-dev", "binutils-mingw-w64-x86-64", "cmake", "ninja-build", "nsis",
         "wixl", "llvm"]


def git(source, *words):
    result = subprocess.run(["git", "-C", source, *words], capture_output=True, text=True)
    return result.stdout.strip() if result.returncode == 0 else ""


def main(source, out, *packages):
    commit = git(source, "rev-parse", "HEAD")
    dependencies = [{"uri": "git+orvantis-importer", "digest": {"gitCommit": commit}}] if commit else []
    names = sorted({*TOOLS, *(component["package"] for component in bill.components())})
    dependencies += [{"uri": f"pkg:deb/debian/{name}@{bill.package_version(name).replace('+', '%2B').replace(':', '%3A')}", "name": name}
                     for name in names]
    bill.write(out, {
        "_type": "https://in-toto.io/Statement/v1",
        "subject": [{"name": pathlib.Path(package).name, "digest": {"sha256": bill.digest(package)}}
                    for package in sorted(packages, key=lambda each: pathlib.Path(each).name)],
        "predicateType": "https://slsa.dev/provenance/v1",
        "predicate": {
            "buildDefinition": {
                "buildType": "https://example.com/orvantis-importer/build/windows-clang/v1",
                "externalParameters": {"commit": commit, "tag": git(source, "tag", "--points-at", "HEAD")},
                "internalParameters": {"preset": "windows-clang", "changed": bool(git(source, "status", "--porcelain", "-uno"))},
                "resolvedDependencies": dependencies,
            },
            "runDetails": {"builder": {"id": os.environ.get("ORVANTIS_BUILDER", "https://example.com/orvantis-importer/unknown-builder")},
                           "metadata": {"finishedOn": bill.date()}},
        },
    })


if __name__ == "__main__":
    main(*sys.argv[1:])
