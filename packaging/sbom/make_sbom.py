"""Writes the bill of materials of a release, as CycloneDX 1.5 and as SPDX 2.3.

    make_sbom.py VERSION STAGE RECORD OUT_CYCLONEDX OUT_SPDX

STAGE is the folder with the files that are installed, RECORD what record_build.py wrote.
"""

import pathlib
import re
import sys

import bill


def files_of(stage):
    return [path for path in sorted(pathlib.Path(stage).iterdir()) if path.suffix in (".prm", ".exe")]


def purl(component):
    return bill.purl(component["package"], component["version"])


def cyclonedx(version, files, parts):
    product = f"pkg:generic/ImporterOrvantis@{version}"
    components, dependencies = [], []
    for component in parts:
        reference = f"{purl(component)}#{component['name'].replace(' ', '-')}"
        components.append({
            "type": "library", "bom-ref": reference, "supplier": {"name": component["supplier"]}, "name": component["name"],
            "version": component["version"], "licenses": [{"expression": component["licence"]}], "purl": purl(component),
            "properties": [{"name": "orvantis:in", "value": name} for name in component["in"]],
        })
    for file in files:
        sums = [{"alg": "SHA-256", "content": bill.digest(file)}]
        components.append({"type": "file", "bom-ref": f"file:{file.name}", "name": file.name, "version": version, "hashes": sums})
        inside = [each["bom-ref"] for each in components if {"name": "orvantis:in", "value": file.name} in each.get("properties", [])]
        dependencies.append({"ref": f"file:{file.name}", "dependsOn": inside})
    dependencies.insert(0, {"ref": product, "dependsOn": [each["ref"] for each in dependencies]})
    return {
        "bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
        "serialNumber": f"urn:uuid:{bill.identifier('cyclonedx', version, *map(bill.digest, files))}",
        "metadata": {
            "timestamp": bill.date(),
            "component": {"type": "application", "bom-ref": product, "name": "ImporterOrvantis", "version": version,
                          "supplier": {"name": bill.SUPPLIER}, "description": bill.PURPOSE, "licenses": [{"license": {"id": "MIT"}}],
                          "purl": product},
        },
        "components": components, "dependencies": dependencies,
    }


def spdx(version, files, parts):
    name = lambda text: "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]+", "-", text)
    product = name("ImporterOrvantis")
    packages = [{
        "SPDXID": product, "name": "ImporterOrvantis", "versionInfo": version, "supplier": f"Organization: {bill.SUPPLIER}",
        "downloadLocation": "NOASSERTION", "filesAnalyzed": False, "licenseConcluded": "MIT", "licenseDeclared": "MIT",
        "copyrightText": "Copyright (c) 2026 Orvantis Importer Developers",
    }]
    relations = [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": product}]
    for file in files:
        relations.append({"spdxElementId": product, "relationshipType": "CONTAINS", "relatedSpdxElement": name("file-" + file.name)})
    for component in parts:
        identifier = name("part-" + component["name"])
        packages.append({
            "SPDXID": identifier, "name": component["name"], "versionInfo": component["version"],
            "supplier": f"Organization: {component['supplier']}", "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": component["licence"], "licenseDeclared": component["licence"], "copyrightText": "NOASSERTION",
            "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": purl(component)}],
        })
        holders = [name("file-" + file.name) for file in files if file.name in component["in"]] or [product]
        for holder in holders:
            kind = "CONTAINS" if holder == product else "STATIC_LINK"
            relations.append({"spdxElementId": holder, "relationshipType": kind, "relatedSpdxElement": identifier})
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"ImporterOrvantis-{version}",
        "documentNamespace": f"https://spdx.org/spdxdocs/ImporterOrvantis-{version}-{bill.identifier('spdx', version, *map(bill.digest, files))}",
        "creationInfo": {"created": bill.date(), "creators": [f"Organization: {bill.SUPPLIER}", "Tool: make_sbom.py-1"]},
        "packages": packages,
        "files": [{"SPDXID": name("file-" + file.name), "fileName": f"./{file.name}", "fileTypes": ["BINARY"],
                   "checksums": [{"algorithm": "SHA256", "checksumValue": bill.digest(file)},
                                 {"algorithm": "SHA1", "checksumValue": bill.sha1(file)}],
                   "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION"} for file in files],
        "relationships": relations,
    }


def main(version, stage, record, out_cyclonedx, out_spdx):
    files = files_of(stage)
    parts = bill.components(bill.build_record(record))
    bill.write(out_cyclonedx, cyclonedx(version, files, parts))
    bill.write(out_spdx, spdx(version, files, parts))


if __name__ == "__main__":
    main(*sys.argv[1:])
