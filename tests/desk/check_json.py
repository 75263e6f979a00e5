"""Checks JSON objects against a schema: check_json.py SCHEMA FILE, with one object on each line of FILE.

Prints what is wrong, one violation on a line, and exits with status 1 if there is anything, or if FILE is empty.
"""
import json
import sys

import jsonschema


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    with open(sys.argv[2], encoding="utf-8") as file:
        objects = [json.loads(line) for line in file]
    violations = [f"object {number}: {error.json_path}: {error.message}"
                  for number, one in enumerate(objects, 1) for error in validator.iter_errors(one)]
    print("\n".join(violations) or f"{len(objects)} objects are valid")
    return 1 if violations or not objects else 0


if __name__ == "__main__":
    sys.exit(main())
