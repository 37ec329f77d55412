#!/usr/bin/env python3
"""check_schema.py SCHEMA DOCUMENTED INSTANCE...: the documented schema is the generated one, it takes every instance, and
refuses the last one as soon as any member is missing or of another type."""
import copy
import json
import sys

from jsonschema import Draft202012Validator


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def members(value, path=()):
    """The path of every member of every object in the value."""
    if isinstance(value, dict):
        for key, member in value.items():
            yield path + (key,)
            yield from members(member, path + (key,))
    elif isinstance(value, list):
        for place, item in enumerate(value):
            yield from members(item, path + (place,))


def changed(instance, path, change):
    result = copy.deepcopy(instance)
    parent = result
    for step in path[:-1]:
        parent = parent[step]
    change(parent, path[-1])
    return result


def main(schema_path, documented_path, *instance_paths):
    schema = load(schema_path)
    Draft202012Validator.check_schema(schema)
    if schema != load(documented_path):
        sys.exit(f"{documented_path} is not what is generated; copy {schema_path} there")
    validator = Draft202012Validator(schema, format_checker=Draft202012Validator.FORMAT_CHECKER)
    for path in instance_paths:
        instance = load(path)
        for error in validator.iter_errors(instance):
            sys.exit(f"{path}: {error.json_path}: {error.message}")
    for member in members(instance):
        missing = changed(instance, member, lambda parent, key: parent.pop(key))
        wrong = changed(instance, member, lambda parent, key: parent.update({key: -1.5}))
        if validator.is_valid(missing) or validator.is_valid(wrong):
            sys.exit(f"{path}: the schema does not mind what {member} is")
    print(f"{len(instance_paths)} instances are valid, and not without any of {len(list(members(instance)))} members")


main(*sys.argv[1:])
