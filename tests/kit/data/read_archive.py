"""Reads a keyed archive with cbor2, a CBOR decoder that is not Vellumo's, and prints what it
finds, so that the test can compare it with what was written."""
import sys

import cbor2

with open(sys.argv[1], "rb") as f:
    archive = cbor2.load(f)

print("archiver", archive["$archiver"], archive["$version"])
sample = archive["$top"][0]
print("keys", " ".join(sample.keys()))
print("class", sample["$class"])
print("title", sample["title"])
print("alpha", repr(sample["alpha"]))
print("created", sample["created"].isoformat())
print("payload", sample["payload"].hex())
print("colors", " ".join(color["$class"] for color in sample["colors"]))
