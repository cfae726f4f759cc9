#!/usr/bin/python3
"""Validates JSON against a JSON Schema: check_json.py SCHEMA FILE... A .ndjson file has one text a line.

Fails for names that occur twice in an object, and for numbers that JSON does not have, such as NaN.
"""
import json
import sys

import jsonschema


def make_object(pairs):
    result = dict(pairs)
    if len(result) != len(pairs):
        raise ValueError("a name occurs twice")
    return result


def refuse(constant):
    raise ValueError(constant + " is not JSON")


def read(path):
    with open(path, encoding="utf-8", newline="") as file:
        text = file.read()
    texts = text.split("\n")[:-1] if path.endswith(".ndjson") else [text]
    return [json.loads(each, object_pairs_hook=make_object, parse_constant=refuse) for each in texts]


def main(schema_path, *paths):
    with open(schema_path, encoding="utf-8") as file:
        schema = json.load(file)
    validator_class = jsonschema.validators.validator_for(schema)
    validator_class.check_schema(schema)
    validator = validator_class(schema)
    failed = False
    for path in paths:
        for instance in read(path):
            for error in validator.iter_errors(instance):
                print(f"{path}: {'/'.join(map(str, error.path))}: {error.message[:300]}")
                failed = True
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
