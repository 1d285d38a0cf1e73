#!/usr/bin/env python3
"""Writes the seed corpora. hp_answers_fuzzer: jobs that go well, and the common ends of those that do
not; the strip is any JPEG of 16 by 8 pixels, given as the only argument. lowend_documents_fuzzer: each
document of a device, whole and with values that do not belong there. lowend_stream_fuzzer: image
packets with each marker word, whole and torn; every other job is one for TIFF files. qz_replies: whole
jobs, and their common ends; the page is the same JPEG. qz_settings_line: files of a store application."""
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


def reply(command, data=b"", status=0, state=0, client=5):
    """A header, and its data if there are any."""
    header = struct.pack(">4BI", client, command, status, state, len(data))
    return FULL + header + (FULL + data if data else b"")


def sense(command, code):
    return reply(command, bytes(4) + bytes.fromhex(code), status=2)


DOCUMENT = 0x40
mode_page = (b"\0\0\x23\0\0\x30\0\0" + struct.pack(">4I", 2160, 2970, 2160, 3560) + bytes(4) +
             struct.pack(">4H", 600, 600, 100, 100) + bytes(20))
reserved = reply(0xC3) + reply(0x16)
set_up = (reply(0x07) + reply(0x5A, mode_page) + reply(0x5A, bytes(8)) + reply(0x55) + reply(0x24) +
          reply(0x1B) + reply(0xC2, bytes(4) + b"\0\4\0\0"))
one_reply = reply(0x28, strip, state=3)
parts = [strip[at:at + 200] for at in range(0, len(strip), 200)]
chain = b"".join(reply(0x28, part, state=2) for part in parts) + reply(0x28, state=3)
block_end = reply(0x28, strip[:100], state=5) + reply(0xC2, bytes(8))
ready, loaded = reply(0xC1), reply(0xC1, state=DOCUMENT)
closing = reply(0x07) + reply(0x17)
SCAN, READ = 0, 9
qz_seeds = {
    "flatbed": (SCAN, reserved + ready + set_up + one_reply + ready + closing),
    "feeder": (SCAN, reserved + loaded + set_up + chain + loaded + set_up + one_reply + ready + closing),
    "block-end": (SCAN, reserved + loaded + set_up + block_end + loaded + set_up + one_reply + ready +
                  closing),
    "cancelled": (SCAN, reserved + ready + set_up + reply(0x28, strip[:50], state=2) +
                  sense(0x28, "060000") + closing),
    "paper-jam": (SCAN, reserved + loaded + set_up + sense(0x28, "025300") + reply(0x17)),
    "no-paper": (SCAN, reserved + loaded + reply(0x07) + reply(0x5A, mode_page) + reply(0x5A, bytes(8)) +
                 sense(0x55, "023A00") + reply(0x17)),
    "busy": (SCAN, reply(0xC3, status=8)),
    "prohibited": (SCAN, reserved + reply(0xC1, status=35) + reply(0x17)),
    "read-alone": (READ, chain),
    "block-ends": (READ, reply(0x28, b"x", state=5) * 6 + reply(0x28, state=3)),
    "other-state": (READ, reply(0x28, strip, state=4)),
    "short-sense": (READ, reply(0x28, b"\0\0\0\0\6", status=2)),
    "cancel-sequence": (8, closing),
    "mode-pages": (12, reply(0x5A, mode_page[:9]) + reply(0x5A, b"\1")),
    "inquiry": (13, reply(0x12, b"\x1f\x80" + b"A" * 100)),
}
write_corpus("qz_replies", {name: bytes([what]) + body for name, (what, body) in qz_seeds.items()})

fields = b"Grayscale,300x300,TwoSided,210,297,1,-40,25,Off,1,VID_0A7E,ISO_A4LEF"
texts = pathlib.Path(__file__).parent / "corpus" / "qz_settings_line"
texts.mkdir(parents=True, exist_ok=True)
for name, content in {
    "whole": fields + b"\n",
    "windows": fields + b"\r\nmore\r\n",
    "no-end": fields,
    "thirteen": fields + b",x\n",
    "commas": b",," + fields.replace(b",", b",,,") + b",",
    "blanks": fields.replace(b",", b", ") + b" \n",
    "letters": fields.replace(b"297", b"A4"),
    "too-large": fields.replace(b"25", b"2147483648"),
    "signs": fields.replace(b"210", b"+2147483647mm").replace(b"-40", b" -2147483648"),
    "zero-byte": fields.replace(b"LEF", b"L\0EF"),
    "longest": fields.replace(b"VID_0A7E", b"V" * (511 - len(fields) + 8)),
    "cut": fields.replace(b"VID_0A7E", b"V" * (512 - len(fields) + 8)) + b"\r\n",
    "empty": b"",
    "empty-line": b"\r\n" + fields,
}.items():
    (texts / name).write_bytes(content)


# Answers of a printer to the status question.
def value(tag, name, content):
    return bytes([tag]) + struct.pack(">H", len(name)) + name + struct.pack(">H", len(content)) + content


def printer_answer(*values, status=0):
    return (struct.pack(">HHIB", 0x0101, status, 1, 1) + value(0x47, b"attributes-charset", b"utf-8") +
            value(0x48, b"attributes-natural-language", b"en") + b"\4" + b"".join(values) + b"\3")


state = value(0x23, b"printer-state", b"\0\0\0\5")
jam = value(0x44, b"printer-state-reasons", b"media-jam-error")
answers = pathlib.Path(__file__).parent / "corpus" / "ipp_answer"
answers.mkdir(parents=True, exist_ok=True)
for name, content in {
    "well": printer_answer(value(0x44, b"printer-state-reasons", b"none")),
    "stopped": printer_answer(state),
    "reasons": printer_answer(state, jam, value(0x44, b"", b"cover-open-warning"),
                              value(0x44, b"", b"toner-low-report")),
    "alerts": printer_answer(jam, value(0x30, b"printer-alert", b"code=jam;severity=critical"),
                             value(0x30, b"", b"code=scanMediaPathJam;severity=warning"),
                             value(0x41, b"printer-alert-description", "Tür".encode()),
                             value(0x35, b"", b"\0\2en\0\4text")),
    "collection": printer_answer(value(0x34, b"printer-alert", b""), value(0x4A, b"", b"member"),
                                 value(0x41, b"", b"x"), value(0x37, b"", b""), jam),
    "refused": printer_answer(status=0x0406),
    "cut": printer_answer(state, jam)[:-9],
}.items():
    (answers / name).write_bytes(content)
