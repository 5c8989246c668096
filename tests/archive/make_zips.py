"""Writes archives that no archiver would write, byte by byte, into the current directory.

Those named case.N come with a file that says what is to become of them.
"""
import itertools
import struct
import zlib

HELLO = b"hello, archive"
SATURATED = 0xFFFFFFFF
ENCIPHERED, STREAMED = 1, 8
DATE = 0x58216AEF  # 2024-01-01 13:23:30


def entry(name=b"a.txt", data=HELLO, deflate=False, local={}, extra=b"", comment=b"", **lies):
    """A local header with its data, and what makes the central header. Both are true but for the lies."""
    stored = zlib.compress(data)[2:-4] if deflate else data
    c = dict(signature=0x02014B50, made=0x031E, flags=0, method=8 * deflate, crc=zlib.crc32(data),
             compressed=len(stored), size=len(data), name_length=len(name), extra_length=len(extra), disk=0,
             attributes=0x81A40000)
    here = {**c, "signature": 0x04034B50, "name": name, "flags": lies.get("flags", 0), **local}
    c.update(lies)
    head = struct.pack("<I3H4I2H", here["signature"], 20, here["flags"], here["method"], DATE, here["crc"],
                       len(stored), len(data), len(here["name"]), 0)

    def central(offset):
        return struct.pack("<I4H4I5HII", c["signature"], c["made"], 20, c["flags"], c["method"], DATE,
                           c["crc"], c["compressed"], c["size"], c["name_length"], c["extra_length"],
                           len(comment), c["disk"], 0, c["attributes"],
                           c.get("offset", offset)) + name + extra + comment

    return head + here["name"] + stored, central


def archive(*entries, before_end=b"", comment=b"", disk=0, directory_disk=0, **lies):
    heads, directory = bytearray(), bytearray()
    for head, central in entries:
        directory += central(len(heads))
        heads += head
    end = dict(count=len(entries), size=len(directory), offset=len(heads))
    end.update(lies)
    return bytes(heads + directory) + before_end + struct.pack(
        "<I4H2IH", 0x06054B50, disk, directory_disk, end["count"], end["count"], end["size"], end["offset"],
        len(comment)) + comment


def locator(offset, disks=1):
    return struct.pack("<IIQI", 0x07064B50, 0, offset, disks)


def records(count, size, record_size=44):
    """Zip64 records behind the sound archive's local header of 49 and its central header of 51 bytes."""
    return struct.pack("<IQ12x4Q", 0x06064B50, record_size, count, count, size, 49) + locator(100)


def zip64(before_end, **lies):
    return archive(entry(), before_end=before_end, offset=SATURATED, **lies)


def block(*values):
    """The Zip64 block of an extra field."""
    return struct.pack("<HH%dQ" % len(values), 1, 8 * len(values), *values)


def write(name, content):
    with open(name, "wb") as file:
        file.write(content)


numbers = itertools.count()


def case(outcome, content):
    """The outcome: why it is not opened; or the text that a.txt is extracted to, or "!" and the code."""
    name = "case.%d" % next(numbers)
    write(name, content)
    write(name + ".outcome", outcome.encode())


def one(outcome, **lies):
    case(outcome, archive(entry(**lies)))


SOUND = archive(entry())
write("sound", SOUND)

case("end record: not found", SOUND + b"x" * 65536)
case("hello, archive", archive(entry(), comment=b"c" * 65535))
case("end record: cut short", SOUND + b"PK\5\6" + bytes(17))
case("end record: the directory does not fit in front of it", archive(entry(), size=SATURATED))
case("end record: the directory does not fit in front of it", archive(entry(), offset=0xFFFFFFFE))
one("central header: wrong signature", signature=0x02014B51)
case("central header: cut short", archive(entry(), count=0xFFFF))
one("central header: name cut short", name_length=250)
one("central header: extra field cut short", extra_length=0xFFFF)
case("central header: cannot be read", archive(entry(), disk=2))  # begins in a missing volume
case("Zip64 locator: no room for it", archive(offset=SATURATED))
case("Zip64 locator: wrong signature", zip64(b""))
case("Zip64 end record: wrong signature", zip64(locator(0)))
case("Zip64 end record: cannot be read", zip64(locator(2**64 - 1)))
case("Zip64 end record: cut short", zip64(locator(len(SOUND))))
case("Zip64 end record: cannot be read", zip64(locator(0, 0xFFFFFFFF)))  # volumes without end
case("Zip64 end record: longer than the room before its locator", zip64(records(1, 51, 2**64 - 4)))
case("end record: the directory does not fit in front of it", zip64(records(1, 2**64 - 1)))
case("central header: wrong signature", zip64(records(2**64 - 1, 51)))
# Where the end record has no room for them, volumes are counted in the Zip64 one.
case("hello, archive", zip64(records(1, 51), disk=0xFFFF, directory_disk=0xFFFF))
case("!3", archive(entry(), disk=2, directory_disk=2))  # lies in a volume that is not there
case("hello, archive", b"anything" + SOUND)
# Another story in the local header.
one("!3", local=dict(signature=0))
one("!3", local=dict(method=8))
one("!3", method=12, local=dict(method=12))
one("!3", local=dict(crc=1))
one("hello, archive", local=dict(crc=0, flags=STREAMED))
one("hello, archive", local=dict(name=b"A.TXT"))
one("!3", local=dict(name=b"b.txt"))
one("!3", local=dict(name=b"a.txt.exe"))
one("!3", offset=0xFFFFFFFE)
# Sizes and checks.
one("!3", size=15)
one("!3", size=15, deflate=True)
one("!3", compressed=13)
one("!30", compressed=9, deflate=True)
one("!30", compressed=0xFFFFFFF0)
one("!30", method=8, local=dict(method=8))  # a text is no deflate stream
one("!30", crc=1, local=dict(crc=1))
one("!30", size=0)
one("hello", size=5, deflate=True, crc=zlib.crc32(b"hello"), local=dict(crc=zlib.crc32(b"hello")))
one("!3", flags=ENCIPHERED, data=HELLO[:11])
# Zip64 values: those that are needed, or all of them, in the first block of the extra field.
one("!30", compressed=SATURATED, size=SATURATED)
one("hello, archive", size=SATURATED, offset=SATURATED, extra=block(14, 0))
one("hello, archive", offset=SATURATED, extra=block(99, 99, 0))
one("hello, archive", extra=block(99, 99, 99))  # nothing to replace
one("!3", size=SATURATED, extra=struct.pack("<HHQ", 0x5455, 8, 14) + block(14))
one("!3", size=SATURATED, extra=struct.pack("<HHQ", 1, 9, 14))

write("one bad", archive(entry(b"b.txt", local=dict(method=14)), entry()))
write("65535 entries", archive(*[entry()] * 0xFFFF))
write("no directory", archive(entry(), size=0))
write("last end record", archive(entry(), comment=b"PK\5\6" + bytes(18) + b"rest"))
write("in front", b"in front" + zip64(records(1, 51)))
write("short end", SOUND + b"PK\5\6 too short")

# Extraction. The entries of the first are called by what is to come of them: mode and content.
write("modes", archive(
    entry(b"100755:x", b"x", attributes=0x81ED0000),
    entry(b"100600:", b"", attributes=0x8D800000),  # set-id bits stay behind
    entry(b"100464:", b"", attributes=0x00000010 | 0o444),
    entry(b"100666:x", b"x", made=0x0014, attributes=0),  # 438 is added, whatever it makes
    entry(b"40755:", b"", attributes=0x41ED0010),
    entry(b"40700:", b"", attributes=0x4000 | 0o700),
    entry(b"100644:", b"", attributes=0x81A44000),  # the bit alone is no directory where Unix says file
    entry(b"40755:not listed/", b"", attributes=0x41ED0010)))
write("names", archive(entry(b"Sub\\File.txt"), entry(b"sub/FILE.txt", b"the second"), entry(b"\x82/\xb1")))
write("failing", archive(entry(crc=1, local=dict(crc=1)), entry(b"short", size=20),
                         entry(b"secret", flags=ENCIPHERED)))
write("large", archive(entry(data=b"x" * 200000, deflate=True), entry(b"small")))
write("listed", archive(entry(flags=ENCIPHERED), entry(b"sub\\empty", b"", attributes=0x7FFFFFFF),
                        entry(b".")))  # neither a base name nor an extension: not listed

LONG = b"l" + b"o" * 270 + b"ng"
write("walked", archive(
    entry(b"Dir\\one.txt"), entry(b"dir/ONE.txt", b"".join(b"%d" % n**2 for n in range(20000)), deflate=True),
    entry(b"mixed/a\\b", crc=1, local=dict(crc=1))))
write("long names", b"12345" + archive(
    entry(LONG, extra=b"extra", comment=b"entry comment", disk=3), entry(),
    entry(LONG, disk=3, local=dict(name=LONG + b"er")),  # differs behind the part that is used
    comment=b"caf\xE9 \x80", disk=3, directory_disk=3))
