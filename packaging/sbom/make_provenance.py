"""Writes where packages came from: an in-toto statement with SLSA provenance 1.0 of the packages' sums.

    make_provenance.py RECORD OUT PACKAGE...      RECORD is what record_build.py wrote

The statement is not signed. Two claims of whoever makes it come from the environment: ORVANTIS_BUILDER is the address of who built,
ORVANTIS_HOME_URL that of the repository, which packaging has from home-url.txt unless somebody says another.
"""

import os
import pathlib
import sys

import bill

# What scripts/build-release.sh does, in the way it does it now.
BUILD_TYPE = bill.identifier("build type", "windows-clang", "1").urn
UNKNOWN_BUILDER = bill.identifier("builder", "nobody vouches for it").urn


def sources(commit):
    home = os.environ.get("ORVANTIS_HOME_URL")
    address = {"uri": f"git+{home}"} if home else {}
    return [{**address, "name": "sources", "digest": {"gitCommit": commit}}] if commit else []


def main(record, out, *packages):
    record = bill.build_record(record)
    tools = [{"uri": bill.purl(name, version), "name": name} for name, version in sorted(record["packages"].items())]
    bill.write(out, {
        "_type": "https://in-toto.io/Statement/v1",
        "subject": [{"name": pathlib.Path(package).name, "digest": {"sha256": bill.digest(package)}}
                    for package in sorted(packages, key=lambda each: pathlib.Path(each).name)],
        "predicateType": "https://slsa.dev/provenance/v1",
        "predicate": {
            "buildDefinition": {
                "buildType": BUILD_TYPE,
                "externalParameters": {"commit": record["commit"]},
                "internalParameters": {"preset": "windows-clang", "changed": record["changed"]},
                "resolvedDependencies": sources(record["commit"]) + tools,
            },
            "runDetails": {"builder": {"id": os.environ.get("ORVANTIS_BUILDER", UNKNOWN_BUILDER)},
                           "metadata": {"finishedOn": bill.date()}},
        },
    })


if __name__ == "__main__":
    main(*sys.argv[1:])
