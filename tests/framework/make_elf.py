"""Writes small ELF files with package notes into the current directory."""
import struct

FDO, PACKAGE = b"FDO\0", 0xCAFE1A7E
JSON = b'{"type":"deb","version":"1.2"}\0\0\0'


def note(owner, kind, text, order="<", align=4):
    head = struct.pack(order + "III", len(owner), len(text), kind) + owner
    return b"".join(part + bytes(-len(part) % align) for part in (head, text))


def write(name, notes, wide=True, order="<", align=4):
    """A header, one program header, and the notes it tells of."""
    header, entry = (64, 56) if wide else (52, 32)
    size = len(notes)
    with open(name, "wb") as file:
        file.write(struct.pack(order + "4sBB10x", b"\x7fELF", 1 + wide, 1 + (order == ">")))
        file.write(struct.pack(order + ("HHIQQQI6H" if wide else "HHIIIII6H"),
                               2, 62, 1, 0, header, 0, 0, header, entry, 1, 0, 0, 0))
        file.write(struct.pack(order + "IIQQQQQQ", 4, 0, header + entry, 0, 0, size, size, align) if wide else
                   struct.pack(order + "8I", 4, header + entry, 0, 0, size, size, 0, align))
        file.write(notes)


for n in range(8):
    style = dict(order="<>"[n & 1], align=4 + (n & 2) * 2)
    others = b"".join(note(owner, kind, text, **style) for owner, kind, text in (
        (b"GNU\0", 3, b"build id"), (b"", PACKAGE, b""), (b"FDX\0", PACKAGE, JSON), (FDO, 1, JSON)))
    write(f"others{n}", others, n >= 4, **style)
    write(f"behind others{n}", others + note(FDO, PACKAGE, JSON, **style), n >= 4, **style)

PLAIN = note(FDO, PACKAGE, JSON)
write("plain", PLAIN)
write("4096th note", bytes(12 * 4095) + PLAIN)
write("4097th note", bytes(12 * 4096) + PLAIN)
write("too long", note(FDO, PACKAGE, b" " * 0x10001 + JSON[:-3]))
for n, text in enumerate((r'"1\u001b[2J"', r'"1\u009b2J"', '""', r'"1\n"', "")):
    write(f"no version{n}", note(FDO, PACKAGE, b'{"version":%s}' % text.encode()))
