# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Makes inputs of a target that are as large as they may be, each large in another way.

usage: large_inputs.py TARGET FOLDER

No engine comes to them by itself: it tries small inputs first, and many of them.
"""

import pathlib
import plistlib
import sys

MOST = 1 << 20


def repeated(begin, part, end="", most=MOST):
    """As many parts as fit; part(number) gives each."""
    text, number = [begin], 0
    size = len(begin) + len(end)
    while size + len(next_part := part(number)) <= most:
        text.append(next_part)
        size += len(next_part)
        number += 1
    return "".join(text) + end


def xml():
    begin, end = '<plist version="1.0">', "</plist>"
    yield repeated(begin + "<dict>", lambda n: f"<key>{n}</key><true/>", "</dict>" + end)
    yield repeated(begin + "<dict>", lambda n: "<key></key><dict/>", "</dict>" + end)
    yield repeated(begin + "<array>", lambda n: "<array/>", "</array>" + end)
    yield repeated(begin + "<array>", lambda n: "<real>1e-320</real>", "</array>" + end)
    yield repeated(begin + "<string>", lambda n: "&#13;", "</string>" + end)
    yield repeated(begin + "<data>", lambda n: "AP8=\n"[n % 2 :], "</data>" + end)
    yield repeated(begin, lambda n: "<array>")
    yield repeated(begin + "<array>", lambda n: "<!--a-->", "</array>" + end)


def binary():
    count = MOST // 12
    for tree in (
        list(range(count)),
        [{} for _ in range(count)],
        {str(number): number for number in range(count)},
        ["\u20ac" * (MOST // 2 - 100)],
        [{"a": {"b": [number]}} for number in range(count // 8)],
    ):
        yield plistlib.dumps(tree, fmt=plistlib.FMT_BINARY, sort_keys=False)[:MOST]
    # One array holds one other as often as there is room for, and that one many numbers.
    for inner in (1, 8, 300):
        references = MOST // 2 - 2 * inner - 100
        objects = [
            b"\xaf\x12" + references.to_bytes(4, "big") + b"\0\1" * references,
            b"\xaf\x12" + inner.to_bytes(4, "big") + b"\0\2" * inner,
            b"\x09",
        ]
        offsets = [8, 8 + len(objects[0]), 8 + len(objects[0]) + len(objects[1])]
        body = b"bplist00" + b"".join(objects)
        table = b"".join(offset.to_bytes(4, "big") for offset in offsets)
        trailer = bytes([0] * 6 + [4, 2]) + b"".join(
            number.to_bytes(8, "big") for number in (3, 0, len(body))
        )
        yield body + table + trailer


def texts():
    # The target takes its decisions from the end of the input: JSON, the whole of it.
    decisions = b"\x01\x00"
    for begin, part, end in (
        ("{", lambda n: f'"{n}":0,', '"":0}'),
        ("[", lambda n: "{},", "0]"),
        ("[", lambda n: '{"$date":1},', "0]"),
        ('"', lambda n: "\\u20ac", '"'),
        ("", lambda n: "[", ""),
        ("[", lambda n: "1e-300,", "0]"),
    ):
        yield repeated(begin, part, end, (MOST >> 2) - len(decisions)).encode() + decisions


KINDS = {"xml": xml, "binary": binary, "texts": texts}

if __name__ == "__main__":
    target, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True)
    for number, content in enumerate(KINDS.get(target, tuple)()):
        data = content if isinstance(content, bytes) else content.encode()
        (folder / str(number)).write_bytes(data)
