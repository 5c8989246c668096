"""Archives that are damaged or made to deceive, each with what has to become of it.

make(folder) writes them with a manifest.jsonl in the form that replay.py reads. Whatever is not said of one, the
common rules of every archive hold for it.
"""
import json
import os
import struct
import zlib

from zip_bytes import (ENCIPHERED, HELLO, SATURATED, STREAMED, UTF8, archive, block, end_record, entry, locator,
                       records, split, zip64)

SOUND = archive(entry())
PASSWORD = "secret"
# A small one with all that an entry may be, and one with the Zip64 records; both are damaged in every place.
CONTENT = {"a.txt": HELLO, "sub/deflated": b"data " * 50 + bytes(range(50)), "enciphered": b"hidden"}
SMALL = archive(entry(), entry(b"sub/deflated", CONTENT["sub/deflated"], deflate=True, comment=b"entry"),
                entry(b"enciphered", b"hidden", flags=ENCIPHERED, extra=b"UT\4\0time",  # with the password
                      stored=bytes.fromhex("c889c95bb4deac0e5a9d7ee93ca2b9b16b05")), comment=b"remark")
SMALL64 = archive(entry(size=SATURATED, compressed=SATURATED, offset=SATURATED, extra=block(14, 14, 0)),
                  before_end=records(1, 79, directory=79), offset=SATURATED)
# The records by their signatures, and the widths of the fields behind them.
FIELDS = {
    b"PK\3\4": [2] * 3 + [4] * 4 + [2] * 2,
    b"PK\1\2": [2] * 4 + [4] * 4 + [2] * 5 + [4] * 2,
    b"PK\5\6": [2] * 4 + [4] * 2 + [2],
    b"PK\6\6": [8, 2, 2, 4, 4, 8, 8, 8, 8],
    b"PK\6\7": [4, 8, 4],
    block(14, 14, 0)[:4]: [8] * 3,
}


class Sets:
    def __init__(self, folder):
        self.folder = folder
        self.rows = []

    def add(self, what, content, expected="refuse-damaged", codes=None, volumes=(), **row):
        """codes: by entry, the code of extracting it to a file, or the content that it has."""
        path = "%s.%d.zip" % (what.replace(" ", "_").replace("/", ""), len(self.rows))
        for number, volume in [("ip", content)] + [("%02d" % (n + 1), volume) for n, volume in enumerate(volumes)]:
            if volume is not None:
                with open("%s/%s" % (self.folder, path[:-2] + number), "wb") as file:
                    file.write(volume)
        entries = [{"name": name, "code": code} if isinstance(code, int) else
                   {"name": name, "code": 0, "crc": "%08x" % zlib.crc32(code)} for name, code in (codes or {}).items()]
        self.rows.append(dict(path=path, what=what, expected=expected, entries=entries, findings=[], **row))

    def refused(self, reason, content, **row):
        self.add("refused", content, open=reason, **row)

    def becomes(self, outcome, content=None, **lies):
        """The content that a.txt is extracted to, or the code."""
        self.add("one rule", archive(entry(**lies)) if content is None else content, codes={"a.txt": outcome})


def records_that_lie(sets):
    """Each of them breaks one rule, or keeps to one that is easily broken."""
    fits = "end record: the directory does not fit in front of it"
    for reason, content in [
            ("end record: not found", SOUND + b"x" * 65536),
            ("end record: cut short", SOUND + b"PK\5\6" + bytes(17)),
            ("end record: cut short", SOUND + b"PK\5\6"),
            (fits, archive(entry(), offset=0xFFFFFFFE)),
            (fits, end_record(0xFFFF, SATURATED, 0)),  # thousands of entries in 22 bytes
            ("Zip64 locator: no room for it", end_record(0xFFFF, SATURATED, SATURATED)),
            ("central header: wrong signature", archive(entry(signature=0x02014B51))),
            ("central header: cut short", archive(entry(), count=0xFFFF)),
            ("central header: name cut short", archive(entry(name_length=250))),
            ("central header: extra field cut short", archive(entry(extra_length=0xFFFF))),
            # Begins in a missing volume, and is not here.
            (fits, archive(entry(), disk=2, offset=50)),
            ("Zip64 locator: wrong signature", zip64(b"")),
            ("Zip64 end record: wrong signature", zip64(locator(0))),
            ("Zip64 end record: cannot be read", zip64(locator(2**64 - 1))),
            ("Zip64 end record: cut short", zip64(locator(len(SOUND)))),
            ("Zip64 end record: wrong signature", zip64(locator(0, SATURATED))),  # volumes without end
            ("Zip64 end record: longer than the room before its locator", zip64(records(1, 51, 2**64 - 4))),
            (fits, zip64(records(1, 2**64 - 1))),
            ("central header: wrong signature", zip64(records(2**64 - 1, 51)))]:
        sets.refused(reason, content)
    sets.becomes(HELLO, b"anything" + archive(entry(), comment=b"c" * 65535))
    sets.becomes(HELLO, archive(entry(), comment=b"c" * 1004))  # the search goes back in steps of 1024 bytes
    # Where the end record has no room for them, volumes are counted in the Zip64 one.
    sets.becomes(HELLO, zip64(records(1, 51), disk=0xFFFF, directory_disk=0xFFFF))
    # One file that counts itself as a later volume, though there is no other.
    for disk, directory_disk in (2, 2), (2, 0), (0, 2), (0xFFFE, 3):
        sets.becomes(HELLO, archive(entry(), disk=disk, directory_disk=directory_disk))
        sets.becomes(HELLO, b"in front" + archive(entry(disk=1), disk=disk, directory_disk=directory_disk))
    sets.becomes(HELLO, zip64(records(1, 51)[:-4] + b"\4\0\0\0", disk=3))
    sets.becomes(3, archive(entry(disk=1, offset=7), disk=2, directory_disk=2))  # in a volume that is not there
    # Another story in the local header.
    sets.becomes(3, local=dict(signature=0))
    sets.becomes(3, local=dict(method=8))
    sets.becomes(3, local=dict(crc=1))
    sets.becomes(3, method=12, local=dict(method=12))
    sets.becomes(HELLO, local=dict(crc=0, flags=STREAMED))
    sets.becomes(HELLO, local=dict(name=b"A.TXT"))
    sets.becomes(3, local=dict(name=b"a.txt.exe"))
    sets.becomes(3, offset=0xFFFFFFFE)
    # Sizes and checks.
    hello = dict(size=5, crc=zlib.crc32(b"hello"), local=dict(crc=zlib.crc32(b"hello")))
    sets.becomes(3, size=15)
    sets.becomes(30, compressed=9, deflate=True)
    sets.becomes(30, compressed=0xFFFFFFF0)
    sets.becomes(30, method=8, local=dict(method=8))  # a text is no deflate stream
    sets.becomes(30, crc=1, local=dict(crc=1))
    sets.becomes(30, data=b"", crc=1, local=dict(crc=1))
    sets.becomes(b"hello", deflate=True, **hello)
    sets.becomes(3, flags=ENCIPHERED, data=HELLO[:11])
    sets.becomes(21, flags=ENCIPHERED)
    # Zip64 values: those that are needed, or all of them, in the first block of the extra field.
    sets.becomes(30, compressed=SATURATED, size=SATURATED)
    sets.becomes(HELLO, size=SATURATED, offset=SATURATED, extra=block(14, 0))
    sets.becomes(HELLO, offset=SATURATED, extra=block(99, 99, 0))
    sets.becomes(HELLO, extra=block(99, 99, 99))  # nothing to replace
    sets.becomes(3, size=SATURATED, extra=struct.pack("<HHQ", 0x5455, 8, 14) + block(14))
    sets.becomes(3, size=SATURATED, extra=struct.pack("<HHQ", 1, 9, 14))


def damage_everywhere(sets):
    for name, sound, content in ("plain", SMALL, CONTENT), ("zip64", SMALL64, {"a.txt": HELLO}):
        row = dict(password=[PASSWORD])
        sets.add("sound " + name, sound, "policy", content, **row)
        for length in range(len(sound)):
            reason = {"open": "end record: "} if length < len(sound) - 6 else {}  # the comment may be cut
            sets.add("cut " + name, sound[:length], **row, **reason)
        for position, byte in enumerate(sound):
            for flip in 0xFF, 1 << position % 8:
                sets.add("flipped " + name, sound[:position] + bytes([byte ^ flip]) + sound[position + 1:], **row)
        for signature, widths in FIELDS.items():
            record = sound.find(signature)
            while record >= 0:
                lies_of_record(sets, "lies " + name, sound, record + 4, widths, row)
                record = sound.find(signature, record + 1)


def lies_of_record(sets, what, sound, position, widths, row):
    for width in widths:
        true = int.from_bytes(sound[position:position + width], "little")
        high = 1 << 8 * width
        for lie in {0, 1, true + 1, true - 1, high // 2 - 1, high // 2, high - 2, high - 1} - {true, high, -1}:
            sets.add(what, sound[:position] + lie.to_bytes(width, "little") + sound[position + width:], **row)
        position += width


def entries_in_each_others_way(sets):
    inner = entry(b"inner")
    sets.add("nested", archive(entry(b"outer", archive(inner)), (b"", lambda *_: inner[1](35))), "policy",
             {"outer": archive(inner), "inner": HELLO})
    again = entry(b"again", bytes(1 << 20), deflate=True)
    sets.add("overlapping", archive(again, *[(b"", lambda *_: again[1](0))] * 299), "policy",
             {"again": bytes(1 << 20)})
    many = [entry(b"\\%06d" % n + b"n" * 250)[1] for n in range(1000)]  # each of them takes the most memory
    sets.add("many headers", archive(*[(b"", lambda *_, central=central: central(0)) for central in many]))
    for first, second in ("a", "a/b"), ("a/b", "a"):
        sets.add("file and folder", archive(entry(first.encode()), entry(second.encode())), "refuse-hostile",
                 {first: HELLO, second: 2})
    sets.add("link entry", archive(entry(b"link", b"..", attributes=0xA1FF0000), entry(b"link/evil")),
             "refuse-hostile", {"link": b"..", "link/evil": 2})
    # Data that is more, or less, than is stated.
    zeros = bytes(100 << 20)
    short = dict(size=5, local=dict(size=5))
    for outcome, lies in ((36, {}), (30, short), (30, dict(size=0)), (30, dict(compressed=50)),
                          (b"\0" * 5, dict(short, crc=zlib.crc32(bytes(5)), local=dict(crc=zlib.crc32(bytes(5)))))):
        sets.becomes(outcome, data=zeros, deflate=True, **lies)
    for size in 15, 1 << 31, 0xFFFFFFFE:
        sets.becomes(3, size=size, deflate=True)


def names(sets):
    for name in "..", "../evil", "a/../../evil", "/far/evil", "\\evil", "..\\evil", "C:\\evil", "c:evil", "a/..":
        sets.add("name", archive(entry(name.encode())), "refuse-hostile", {name.replace("\\", "/"): 3})
    for stored, flags, shown, outcome in [
            (b"", 0, "", None), (b"a\0b", 0, "a?b", 3), (b"\0", 0, "?", 3), (b"x/\xFF\xC0\x80", UTF8, "", None),
            (b"\xED\xA0\x80", UTF8, "", None), (b"%n\n\x1b[2J", 0, "%n??[2J", HELLO), (b"n" * 65535, 0, "n" * 260, 2),
            (b"n/" * 32767, 0, "", None), (b"../" * 21845, UTF8, "", None),
            (b"d" * 250 + b"/f", 0, "d" * 250 + "/f", 2)]:
        codes = {} if outcome is None else {shown: outcome}
        sets.add("name", archive(entry(stored, flags=flags)), "refuse-hostile", codes)


def things_in_the_destination(sets):
    sound = archive(entry(), entry(b"sub/file"))
    for lay, file_code, below in [
            ("ln -s ../sentinel a.txt; ln -s .. sub", HELLO, 2), ("ln ../sentinel a.txt; ln -s /far sub", HELLO, 2),
            ("ln -s ../new a.txt; ln -s ../new sub", HELLO, 2), ("mkfifo a.txt sub", HELLO, 2),
            ("mkdir a.txt sub; ln ../sentinel sub/file", 2, HELLO),
            ("mkdir sub; ln -s ../../sentinel sub/file", HELLO, HELLO)]:
        sets.add("lying there", sound, "policy", {"a.txt": file_code, "sub/file": below}, lay=lay)


def volumes(sets):
    """The first volume ends in the data of "second", the second one in that of "third"."""
    good = {name: name.encode() * 10 for name in ("first", "second", "third")}
    *early, last = split([130, 200], *[entry(name.encode(), data) for name, data in good.items()])
    sets.add("volumes", last, "policy", good, early)
    sets.add("first missing", last, codes={"first": 3, "second": 3, "third": good["third"]}, volumes=[None, early[1]])
    sets.add("second missing", last, codes={**good, "second": 30, "third": 3}, volumes=[early[0], None])
    sets.add("swapped", last, codes={name: 3 for name in good}, volumes=early[::-1])
    sets.add("last swapped", early[1], open="end record: not found", volumes=[early[0], last])
    zip64_first = zip64(records(1, 51)[:-4] + struct.pack("<I", 2), disk=1)  # its end record in the first volume
    sets.add("zip64 volumes", zip64_first[156:], "policy", {"a.txt": HELLO}, [zip64_first[:156]])
    alone = zip64(records(1, 51), disk=0xFFFF, directory_disk=0xFFFF)  # beside another one's volume
    sets.add("zip64 alone", alone, "policy", {"a.txt": HELLO}, [b"another"])
    for length in range(0, 130, 10):
        sets.add("short", last, volumes=[early[0][:length], early[1]])


def make(folder):
    os.makedirs(folder, exist_ok=True)
    sets = Sets(folder)
    for part in (records_that_lie, damage_everywhere, entries_in_each_others_way, names, things_in_the_destination,
                 volumes):
        part(sets)
    with open(folder + "/manifest.jsonl", "w") as file:
        file.writelines(json.dumps(row) + "\n" for row in sets.rows)
