#!/usr/bin/env python3
"""Writes the seed corpus of hp_answers_fuzzer: jobs that go well, and the common ends of those that
do not. The strip is any JPEG of 16 by 8 pixels, given as the only argument."""
import pathlib
import struct
import sys

FULL, FAIL = b"\x00", b"\x80"
strip = pathlib.Path(sys.argv[1]).read_bytes()


def answer(length, status=0, **at):
    record = bytearray(length)
    record[1] = status
    for offset, value in at.items():
        offset = int(offset[1:])
        record[offset:offset + len(value)] = value
    return FULL + bytes(record)


def chunks(data):
    """Reads as the host makes them: powers of two up to 4096."""
    out, at = b"", 0
    while at < len(data):
        size = min(1 << ((len(data) - at).bit_length() - 1), 4096)
        out += FULL + data[at:at + size]
        at += size
    return out


def block(kind):
    head = answer(20, _3=bytes([kind]), _4=struct.pack(">I", len(strip)), _8=b"\0\x08", _10=b"\0\x10")
    return head + chunks(strip)


def opening(feeder):
    return (answer(72, _53=b"\x02" if feeder else b"\0") + answer(8) +
            answer(32, _4=b"\0\x01", _8=b"\0\0\0\x18\0\0\0\x10"))


page = answer(6) + block(0x70) + block(0x80) + block(0x81)
no_paper = answer(6, 2, _4=b"\0\x10")
close = answer(3) + answer(3)
seeds = {
    "flatbed": opening(False) + page + close,
    "feeder": opening(True) + page + page + no_paper + close,
    "feeder-jam": opening(True) + page + answer(6, 2, _4=b"\0\x20") + close,
    "busy": opening(True) + answer(6, 8) + page + no_paper + close,
    "lost-end": opening(True) + page + answer(6) + block(0x70) + answer(20, 4) + no_paper + close,
    "in-use": answer(72, 9),
    "reserve-message": answer(72) + answer(8, 2, _3=b"\x20\0\x80"),
    "window-refused": answer(72) + answer(8) + answer(32, 2, _3=b"\x20\x02\0") + close,
    "failed-read": opening(False) + answer(6) + FAIL + b"\0" * 20 + close,
}
folder = pathlib.Path(__file__).parent / "corpus" / "hp_answers"
folder.mkdir(parents=True, exist_ok=True)
for settings, (name, body) in enumerate(seeds.items()):
    (folder / name).write_bytes(bytes([settings * 7 & 0x3F]) + body)
