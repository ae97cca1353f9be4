"""Holds a document against one of the schemas in schemas/."""

import json
import pathlib

import jsonschema

FOLDER = pathlib.Path(__file__).parent / "schemas"
# By the names under which schemas refer to each other.
OTHERS = {
    "spdx.SNAPSHOT.schema.json": "cyclonedx-spdx.schema.json",
    "jsf-0.82.SNAPSHOT.schema.json": "cyclonedx-jsf-0.82.schema.json",
}


def problems(document, schema_name):
    """What is wrong with it, a line each; nothing is fetched."""
    schema = json.loads((FOLDER / schema_name).read_text())
    base = schema.get("$id", "")
    store = {}
    for reference, file in OTHERS.items():
        other = json.loads((FOLDER / file).read_text())
        store[base.rsplit("/", 1)[0] + "/" + reference] = other
    validator = jsonschema.Draft7Validator(schema, resolver=jsonschema.RefResolver(base, schema, store))
    return [f"{'/'.join(map(str, error.absolute_path))}: {error.message}" for error in validator.iter_errors(document)]
