"""Holds a document against one of the schemas in schemas/."""

import gzip
import json
import pathlib

import jsonschema

FOLDER = pathlib.Path(__file__).parent / "schemas"
# By the names under which schemas refer to each other.
OTHERS = {
    "spdx.SNAPSHOT.schema.json": "cyclonedx-spdx.schema.json",
    "jsf-0.82.SNAPSHOT.schema.json": "cyclonedx-jsf-0.82.schema.json",
}


def read(name):
    """A schema of the folder; those of others are packed."""
    packed = FOLDER / f"{name}.gz"
    return json.loads(gzip.decompress(packed.read_bytes()) if packed.exists() else (FOLDER / name).read_text())


def innermost(error):
    """Of a choice between forms, what is wrong by the form that goes furthest with it says more than that none fits."""
    return innermost(max(error.context, key=lambda each: len(each.absolute_path))) if error.context else error


def problems(document, schema_name):
    """What is wrong with it, a line each; nothing is fetched."""
    schema = read(schema_name)
    base = schema.get("$id", "")
    store = {}
    for reference, file in OTHERS.items():
        other = read(file)
        store[base.rsplit("/", 1)[0] + "/" + reference] = other
    validator = jsonschema.validators.validator_for(schema)(schema, resolver=jsonschema.RefResolver(base, schema, store))
    return [f"{'/'.join(map(str, error.absolute_path))}: {error.message}" for error in map(innermost, validator.iter_errors(document))]
