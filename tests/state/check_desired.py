#!/usr/bin/env python3
"""check_desired.py SCHEMA DOCUMENTED INSTANCE...: the documented schema is the generated one, takes every instance, and
refuses it as soon as any object in it has a member more."""
import copy
import json
import sys

from jsonschema import Draft202012Validator


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def objects(value):
    """Every object in the value."""
    if isinstance(value, dict):
        yield value
    for part in value.values() if isinstance(value, dict) else value if isinstance(value, list) else ():
        yield from objects(part)


def main(schema_path, documented_path, *instance_paths):
    schema = load(schema_path)
    Draft202012Validator.check_schema(schema)
    if schema != load(documented_path):
        sys.exit(f"{documented_path} is not what is generated; copy {schema_path} there")
    validator = Draft202012Validator(schema, format_checker=Draft202012Validator.FORMAT_CHECKER)
    for path in instance_paths:
        instance = load(path)
        validator.validate(instance)
        for number, _ in enumerate(objects(instance)):
            spoiled = copy.deepcopy(instance)
            list(objects(spoiled))[number]["unknown"] = 1
            if validator.is_valid(spoiled):
                sys.exit(f"{path}: a member more in object {number} is not refused")


if __name__ == "__main__":
    main(*sys.argv[1:])
