"""Validates JSON documents against a JSON Schema.

validate_json.py SCHEMA FILE...

A file whose name ends in .jsonl contains one document per line. Exit status 0: all documents are valid;
1: one is invalid or not JSON (NaN and Infinity are not JSON), and standard output says why; 77: the package
python3-jsonschema is missing.
"""

import json
import sys

try:
    import jsonschema
except ImportError:
    sys.exit(77)


def refuse(name):
    raise ValueError(name + " is no JSON number")


def documents(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    # Only a newline ends a line: JSON strings may contain other line separators unescaped.
    for part in text.rstrip("\n").split("\n") if path.endswith(".jsonl") else [text]:
        yield json.loads(part, parse_constant=refuse)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    failed = False
    for path in sys.argv[2:]:
        try:
            for document in documents(path):
                error = jsonschema.exceptions.best_match(validator.iter_errors(document))
                if error is not None:
                    print(f"{path}: {error.json_path}: {error.message[:1000]}")
                    failed = True
        except ValueError as error:
            print(f"{path}: {error}")
            failed = True
    sys.exit(1 if failed else 0)


main()
