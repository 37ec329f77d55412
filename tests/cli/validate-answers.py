#!/usr/bin/env python3
"""validate-answers.py FOLDER: holds every JSON answer in the folder against the schema in its schema.json, and tells which
commands of the schema were not answered."""

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
for command in sorted(commands - answered):
    failures += 1
    print(f"FAILED: no answer of \"{command}\" was tried")
print(f"{len(answered)} commands, {failures} failures")
sys.exit(failures > 0)
