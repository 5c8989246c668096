"""Writes archives that no archiver would write into the current directory."""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))) + "/support")
sys.dont_write_bytecode = True
from zip_bytes import ENCIPHERED, archive, entry, records, zip64  # noqa: E402


def write(name, content):
    with open(name, "wb") as file:
        file.write(content)


SOUND = archive(entry())
write("sound", SOUND)
write("65535 entries", archive(*[entry()] * 0xFFFF))
write("no directory", archive(entry(), size=0))
write("last end record", archive(entry(), comment=b"PK\5\6" + bytes(18) + b"rest"))
write("in front", b"in front" + zip64(records(1, 51)))
write("no end", SOUND[:-22])
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
write("open modes", archive(entry(b"f", b"new", attributes=0x81FF0000), entry(b"d", b"", attributes=0x41FF0000)))
write("names", archive(entry(b"Sub\\File.txt"), entry(b"sub/FILE.txt", b"the second"), entry(b"\x82/\xb1")))
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
