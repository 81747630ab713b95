"""Reads a notes archive with cbor2, a CBOR decoder that is not Vellumo's, and prints what a
user would want from it."""
import sys

import cbor2

with open(sys.argv[1], "rb") as f:
    archive = cbor2.load(f)
print("archiver", archive["$archiver"], archive["$version"])
notes = archive["$top"]
print("notes", len(notes))
for note in notes:
    print("keys", " ".join(key for key in note.keys() if key != "$class"))
    text = cbor2.loads(note["data"])["$top"]
    print("text", text["string"])
    print("created", note["dateCreated"].isoformat())
    print("frame", note["windowFrame"], "pin", note["pinState"], "alpha", repr(note["windowAlpha"]))
    for tag in note["tags"]:
        color = tag["color"]
        print("tag", tag["name"], color["red"], color["green"], color["blue"])
    print("theme", note["themeName"])
    print("uuid", note["uuid"])
