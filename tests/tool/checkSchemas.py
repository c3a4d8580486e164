"""Compares JSON Schemas with the values that they are to take and to refuse.

Each line of the file is an object: "type", "schema", "taken" and "refused", two arrays of values.
Prints each difference and, at the end, how much was compared.
"""

import json
import sys

from jsonschema import Draft202012Validator
from jsonschema.exceptions import SchemaError

types = values = differences = 0
for line in open(sys.argv[1], encoding="utf-8"):
    row = json.loads(line)
    types += 1
    try:
        Draft202012Validator.check_schema(row["schema"])
    except SchemaError as error:
        print(f"{row['type']}: no schema: {error.message}")
        continue
    validator = Draft202012Validator(row["schema"])
    for isTaken in (True, False):
        for value in row["taken" if isTaken else "refused"]:
            values += 1
            if validator.is_valid(value) != isTaken:
                print(f"{row['type']}: should {'take' if isTaken else 'refuse'} {json.dumps(value)}")
print(f"{types} types, {values} values")
