"""ZIP archives byte by byte, true or lying, as no archiver would write them."""
import struct
import zlib

HELLO = b"hello, archive"
SATURATED = 0xFFFFFFFF
ENCIPHERED, STREAMED, UTF8 = 1, 8, 1 << 11
DATE = 0x58216AEF  # 2024-01-01 13:23:30


def entry(name=b"a.txt", data=HELLO, deflate=False, local={}, extra=b"", comment=b"", **lies):
    """A local header with its data, and what makes the central header. Both are true but for the lies."""
    stored = lies.pop("stored", zlib.compress(data, 9)[2:-4] if deflate else data)
    c = dict(signature=0x02014B50, made=0x031E, flags=0, method=8 * deflate, crc=zlib.crc32(data),
             compressed=len(stored), size=len(data), name_length=len(name), extra_length=len(extra), disk=0,
             attributes=0x81A40000)
    here = {**c, "signature": 0x04034B50, "name": name, "flags": lies.get("flags", 0), **local}
    c.update(lies)
    head = struct.pack("<I3H4I2H", here["signature"], 20, here["flags"], here["method"], DATE, here["crc"],
                       len(stored), len(data), len(here["name"]), 0)

    def central(offset, disk=0):
        return struct.pack("<I4H4I5HII", c["signature"], c["made"], 20, c["flags"], c["method"], DATE,
                           c["crc"], c["compressed"], c["size"], c["name_length"], c["extra_length"],
                           len(comment), c["disk"] or disk, 0, c["attributes"],
                           c.get("offset", offset)) + name + extra + comment

    return head + here["name"] + stored, central


def end_record(count, size, offset, disk=0, directory_disk=0, comment=b""):
    return struct.pack("<I4H2IH", 0x06054B50, disk, directory_disk, count, count, size, offset,
                       len(comment)) + comment


def split(cuts, *entries, before_end=b"", **lies):
    """The volumes of a set that is cut at these positions; it may be cut anywhere."""
    def place(position):
        disk = sum(cut <= position for cut in cuts)
        return position - ([0] + cuts)[disk], disk

    heads, directory = bytearray(), bytearray()
    for head, central in entries:
        directory += central(*place(len(heads)))
        heads += head
    offset, directory_disk = place(len(heads))
    whole = bytes(heads + directory) + before_end + end_record(**{**dict(
        count=len(entries), size=len(directory), offset=offset, disk=len(cuts), directory_disk=directory_disk), **lies})
    return [whole[start:end] for start, end in zip([0] + cuts, cuts + [len(whole)])]


def archive(*entries, **lies):
    return split([], *entries, **lies)[0]


def locator(offset, disks=1):
    return struct.pack("<IIQI", 0x07064B50, 0, offset, disks)


def records(count, size, record_size=44, offset=49, directory=51):
    """Zip64 records behind the sound archive's local header of 49 bytes and its central header of 51."""
    return struct.pack("<IQ12x4Q", 0x06064B50, record_size, count, count, size, offset) + locator(offset + directory)


def zip64(before_end, **lies):
    return archive(entry(), before_end=before_end, offset=SATURATED, **lies)


def block(*values):
    """The Zip64 block of an extra field."""
    return struct.pack("<HH%dQ" % len(values), 1, 8 * len(values), *values)
