#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What qvr prints with --json fits the schemas in docs/schema, and docs/json.md names every field of them.

Usage: check_schemas.py QVR SCHEMA_FOLDER DOCUMENT PICTURE
"""
import copy
import json
import os
import re
import subprocess
import sys
import tempfile

try:
    import jsonschema
except ImportError:
    print("skipped: python3-jsonschema is not installed")
    sys.exit(77)

QVR, FOLDER, DOCUMENT, PICTURE = [os.path.abspath(path) for path in sys.argv[1:5]]


def closed(schema):
    """The schema with no room for fields that it does not name: none may be printed that is not written down."""
    if isinstance(schema, dict):
        schema = {key: closed(value) for key, value in schema.items()}
        if "properties" in schema:
            schema["additionalProperties"] = False
    elif isinstance(schema, list):
        schema = [closed(value) for value in schema]
    return schema


def load_schemas():
    schemas = {}
    for name in sorted(os.listdir(FOLDER)):
        with open(os.path.join(FOLDER, name), encoding="ascii") as file:
            schema = json.load(file)
        jsonschema.Draft7Validator.check_schema(schema)
        schemas[name.replace("-1.schema.json", "/1")] = closed(schema)
    return schemas


def lines_of(*arguments, stream="stdout"):
    done = subprocess.run([QVR, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    assert done.returncode in (0, 1), (arguments, done.stderr)
    return [json.loads(line) for line in getattr(done, stream).splitlines() if line.startswith(b"{")]


def box(kind, *content):
    content = b"".join(content)
    return (8 + len(content)).to_bytes(4, "little") + kind + content


def plane(code):
    return box(b"sinf", (4).to_bytes(4, "little"), (2).to_bytes(4, "little"), code, b"\0")


def all_documents():
    """Of good and damaged files, with coded alpha, wrapped payloads and nothing that can be read."""
    qcx = bytearray(45)
    qcx[24:28] = b"\0\2\0\4"
    qcx[40:44] = (1300).to_bytes(4, "big")
    with open("q.bin", "wb") as file:
        file.write(qcx)
    with open("m.raw", "wb") as file:
        file.write(bytes(8))
    documents = lines_of("encode", PICTURE, "a.qvr", "--alpha-rle", "--json", "-q")
    documents += lines_of("decode", "a.qvr", "a.raw", "--json", "-q")
    documents += lines_of("wrap", "--qcx", "q.bin", "--alpha", "m.raw", "--size", "4x2", "--type", "U8", "b.qvr", "--json")
    documents += lines_of("wrap", "--tiles", "q.bin", "m.raw", "--size", "4x2", "c.qvr", "--json")
    documents += lines_of("unwrap", "b.qvr", "--into", "parts", "--json")
    documents += lines_of("convert", "a.qvr", "d.qvr", "--json", "-q")
    documents += lines_of("join", "a.qvr", "d.qvr", "-o", "e.qvr", "--json", "-q")
    documents += lines_of("view", "a.qvr", "-o", "sheet.png", "--json", "-q")
    documents += lines_of("formats", "--json")
    documents += lines_of("bench", "--size", "64x32", "--seconds", "0", "--order", "RGBA", "--json")
    damaged = box(b"pack", plane(b"what"), box(b"sdat", bytes(3)), b"xyz")
    with open("all.qvr", "wb") as all_frames:
        for name in ("a.qvr", "b.qvr", "c.qvr"):
            with open(name, "rb") as file:
                all_frames.write(file.read())
        all_frames.write(damaged + box(b"pack", plane(b"rl08"), box(b"sdat", b"\x05")) + b"end")
    for command in (["info"], ["dump", "--hex", "8"], ["verify"]):
        found = lines_of(*command, "all.qvr", "--json")
        assert len(found) == (7 if command == ["verify"] else 6), (command, found)
        documents += found
    lines_of("encode", PICTURE, "h.qvr", "--manifest", "h.manifest", "-q")
    for name, findings in (("h.qvr", 0), ("a.qvr", 1)):
        found = lines_of("verify", name, "--manifest", "h.manifest", "--json")
        assert found[-1]["manifest"]["findings_count"] == findings, found[-1]
        assert len(found[-1]["manifest"]["findings"]) == findings
        assert found[-1]["good"] == (findings == 0)
        documents += found
    return documents


def all_lists():
    """Lists whose first line alone names the schema: manifests, and how far work has come."""
    with open("damaged.qvr", "wb") as file, open("a.qvr", "rb") as good:
        whole = good.read()
        file.write(whole + box(b"pack", bytes(40)) + whole)
    progress = lines_of("decode", "damaged.qvr", "f.raw", "--progress", "json", "--keep-going", stream="stderr")
    kinds = {line["event"] for line in progress}
    assert {"start", "frame_failed", "end"} <= kinds, kinds
    lines_of("encode", PICTURE, "g.qvr", "--manifest", "g.manifest", "-q")
    with open("g.manifest", encoding="ascii") as file:
        manifest = [json.loads(line) for line in file]
    assert len(manifest) == 3
    return progress, manifest


def errors_of(schemas, document, schema=None):
    return list(jsonschema.Draft7Validator(schemas[schema or document["schema"]]).iter_errors(document))


def fields_of(schema):
    if isinstance(schema, dict):
        for name, value in schema.items():
            if name == "properties":
                yield from value
            yield from fields_of(value)
    elif isinstance(schema, list):
        for value in schema:
            yield from fields_of(value)


def rows_of_findings():
    """The list in the help of verify, as rows of a table."""
    text = subprocess.run([QVR, "verify", "--help"], stdout=subprocess.PIPE, check=True).stdout.decode("ascii")
    found = re.findall(r"^  (error|warning) +([a-z-]+) +(.+)$", text, re.MULTILINE)
    assert found
    return [f"| `{name}` | {severity} | {what}" for severity, name, what in found]


def main():
    schemas = load_schemas()
    documents = all_documents()
    for document in documents:
        for error in errors_of(schemas, document):
            sys.exit(f"{document['schema']}: {error.message}\n{json.dumps(document)[:2000]}")
        # Each field counts: without it, or with another beside it, the document does not fit.
        for name in document:
            changed = copy.deepcopy(document)
            if name != "schema":
                changed[name] = {"no": "value"}
                assert errors_of(schemas, changed), name
        assert errors_of(schemas, dict(document, more=1))
    lists = all_lists()
    for lines in lists:
        for line in lines:
            for error in errors_of(schemas, line, lines[0]["schema"]):
                sys.exit(f"{lines[0]['schema']}: {error.message}\n{line}")
            assert errors_of(schemas, dict(line, more=1), lines[0]["schema"])
    assert {document["schema"] for document in documents + [lines[0] for lines in lists]} == set(schemas)
    with open(DOCUMENT, encoding="ascii") as file:
        text = file.read()
    missing = [name for name in sorted(set(fields_of(list(schemas.values())))) if f"`{name}`" not in text]
    missing += [name for name in schemas if f"`{name}`" not in text and f'"{name}"' not in text]
    missing += [f"{row} in its table of findings" for row in rows_of_findings() if row not in text]
    if missing:
        sys.exit(f"docs/json.md says nothing of {', '.join(missing)}")
    print(f"{len(documents)} documents fit {len(schemas)} schemas")


with tempfile.TemporaryDirectory() as work:
    os.chdir(work)
    main()
