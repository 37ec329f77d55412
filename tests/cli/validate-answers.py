#!/usr/bin/env python3
"""validate-answers.py FOLDER: holds every JSON answer in the folder, and every line of those of verbs that go on, against
the schema in its schema.json, and tells which commands and which kinds of lines of the schema were not answered."""

import json
import pathlib
import sys

import jsonschema

folder = pathlib.Path(sys.argv[1])
schema = json.loads((folder / "schema.json").read_text(encoding="utf-8"))
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
commands = {condition["if"]["properties"]["command"]["const"] for condition in schema["allOf"]}

failures = 0
answered = set()
for file in sorted(folder.glob("answer-*.json")):
    answer = json.loads(file.read_text(encoding="utf-8"))
    answered.add(answer["command"])
    for error in validator.iter_errors(answer):
        failures += 1
        print(f"FAILED: {file.name}: {answer['command']}: {error.json_path}: {error.message}")
lines = [json.loads(line) for file in sorted(folder.glob("lines-*.json"))
         for line in file.read_text(encoding="utf-8").splitlines()]
for line in lines:
    for error in validator.iter_errors(line):
        failures += 1
        print(f"FAILED: {line}: {error.json_path}: {error.message}")
for reference in (form["$ref"] for form in schema["oneOf"] if "$ref" in form):
    kind = jsonschema.Draft202012Validator({"$ref": reference, "$defs": schema["$defs"]})
    if not any(kind.is_valid(line) for line in lines):
        failures += 1
        print(f"FAILED: no line of {reference} was tried")
for command in sorted(commands - answered):
    failures += 1
    print(f"FAILED: no answer of \"{command}\" was tried")
print(f"{len(answered)} commands, {len(lines)} lines, {failures} failures")
sys.exit(failures > 0)
