#!/usr/bin/env python3
"""Writes the seed corpora. hp_answers_fuzzer: jobs that go well, and the common ends of those that do
not; the strip is any JPEG of 16 by 8 pixels, given as the only argument. lowend_documents_fuzzer: each
document of a device, whole and with values that do not belong there. lowend_stream_fuzzer: image
packets with each marker word, whole and torn; every other job is one for TIFF files."""
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


def write_corpus(fuzzer, bodies):
    """Each body behind a first byte that chooses its settings."""
    folder = pathlib.Path(__file__).parent / "corpus" / fuzzer
    folder.mkdir(parents=True, exist_ok=True)
    for settings, (name, body) in enumerate(bodies.items()):
        (folder / name).write_bytes(bytes([settings * 7 & 0x3F]) + body)


write_corpus("hp_answers", seeds)

limits = (b'"basicres":300,"maxAdfHeight":4200,"maxAdfWidth":2550,"minAdfHeight":1650,"minAdfWidth":1350,'
          b'"maxFbHeight":3508,"maxFbWidth":2480,"minFbHeight":150,"minFbWidth":150')
write_corpus("lowend_documents", {
    "capabilities": b'{"supportedMediaSizes":{"adf":[0,2,4,20,26],"flatbed":[0,4,5]},' + limits + b"}",
    "capabilities-limits": b"{" + limits + b"}",
    "capabilities-without-unit": b"{" + limits.replace(b"basicres", b"other") + b"}",
    "capabilities-odd": b'{"supportedMediaSizes":{"adf":4,"flatbed":[4.5,true,"x"]},"basicres":1e300,'
                        b'"maxFbHeight":-1e300,"maxFbWidth":18446744073709551615,"minFbHeight":null,'
                        b'"minFbWidth":{}}',
    "status": b'{"status":{"busy":false,"ready":true,"flatbedCoverOpen":false},"adfStatus":'
              b'{"installed":true,"jamPresent":false,"adfCoverOpen":false,"adfPaperLoaded":true}}',
    "status-odd": b'{"status":{"notready":true,"busy":1},"adfStatus":[true]}',
    "accepted": b'{"status":204,"result":"Starting scan"}',
    "refused": b'{"status":400,"result":"x","error":{"message":"no \\u20ac paper"}}',
    "malformed": b'{"result":null,"error":{"message":"no"}}',
    "nested": b'{"status":400,"result":"x","more":' + b"[" * 60 + b'{"a":{}}' + b"]" * 60 + b"}",
    "no-document": b'{"status":\xff}',
})


def packet(payload, status=0, length=None):
    """One image packet: a first read of at most 63 bytes or of all 512, and one for the rest."""
    data = struct.pack("<4BIBB", 0x1B, 0x4E, 2, 0, len(payload) if length is None else length, status, 0)
    data += payload
    first = 512 if len(data) >= 512 else min(len(data), 63)
    out = (FULL if first == 512 else bytes([0x40 | first])) + data[:first]
    return out + (FULL + data[first:] if data[first:] else b"")


def tiff_page(offset, more):
    """A directory and its strip of 8 by 1 black pixels."""
    tags = [(256, 3, 8), (257, 3, 1), (258, 3, 1), (259, 3, 1), (262, 3, 0), (273, 4, offset + 126),
            (277, 3, 1), (278, 3, 1), (279, 4, 1), (296, 3, 2)]
    body = struct.pack("<H", len(tags))
    body += b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in tags)
    return body + struct.pack("<I", offset + 128 if more else 0) + b"\xff\0"


jpeg = b"\xff\xd8\xff\xe0"
marker = b"BLOCK012345678TES\n"
tiff = b"II*\0" + struct.pack("<I", 8) + tiff_page(8, True) + tiff_page(136, False)
last = packet(b"", 1)
write_corpus("lowend_stream", {
    "two-files": packet(jpeg + b"a" + marker + b"b.NEWFILE" + jpeg) +
                 packet(b"c.NEWFILE" + jpeg + b"d" + marker) + packet(b"eJOBDONE", 1),
    "tiff-pages": packet(tiff[:60]) + packet(marker + tiff[60:]) + last,
    "long-packets": packet(jpeg + b"x" * 700 + marker[:9]) + packet(marker[9:] + b"y" * 600) + last,
    "tiff-with-new-file": packet(b"II*\0aaaa") + packet(b".NEWFILEII*\0") + packet(marker, 1),
    "cancelled": packet(b"JOBCANCEL") + packet(jpeg) + last,
    "no-tiff": packet(b"IIBLO" + marker + b"CK0123456789abcd", 1),
    "more-than-announced": packet(jpeg + b"abc", 0, 3) + last,
    "empty-tiff": last,
    "control": packet(b"ab") + packet(b"abc", 0, 2) + FAIL + packet(jpeg)[1:] + last,
    "silence": b"\x40" * 9 + packet(b"xxII") + packet(b"NEWFIL") + packet(b"E"),
})
