"""FLAC files of one level from end to end: quick to make, and each told by its level.

They are tiny, or as large as uncompressed sound.
"""
import pathlib
import struct

RATE = 44100
BLOCK = 4096


def _crc_table(polynomial, bits):
    table = []
    for byte in range(256):
        crc = byte << (bits - 8)
        for _ in range(8):
            crc = (crc << 1) ^ (polynomial if crc >> (bits - 1) else 0)
            crc &= (1 << bits) - 1
        table.append(crc)
    return table


_CRC8 = _crc_table(0x07, 8)
_CRC16 = _crc_table(0x8005, 16)


def _crc8(data):
    crc = 0
    for byte in data:
        crc = _CRC8[crc ^ byte]
    return crc


def _crc16(data):
    crc = 0
    for byte in data:
        crc = ((crc << 8) & 0xFFFF) ^ _CRC16[(crc >> 8) ^ byte]
    return crc


def _coded_number(number):
    if number < 0x80:
        return bytes([number])
    if number < 0x800:
        return bytes([0xC0 | number >> 6, 0x80 | number & 0x3F])
    return bytes([0xE0 | number >> 12, 0x80 | number >> 6 & 0x3F, 0x80 | number & 0x3F])


class _Crc16Behind:
    """The checksum of heads that stand before the same body, without going through it each time."""

    def __init__(self, body):
        self.own = _crc16(body)
        # What is left of each bit of a head's checksum behind so many bytes.
        self.left = []
        for bit in range(16):
            crc = 1 << bit
            for _ in body:
                crc = ((crc << 8) & 0xFFFF) ^ _CRC16[crc >> 8]
            self.left.append(crc)

    def of(self, head):
        crc, whole = _crc16(head), self.own
        for bit in range(16):
            if crc >> bit & 1:
                whole ^= self.left[bit]
        return whole


def _frames(count, level, large):
    # 4,096 samples at 44.1 kHz, two channels of 16 bits; constant subframes or verbatim ones.
    sample = struct.pack(">h", level)
    body = 2 * (b"\x02" + BLOCK * sample if large else b"\0" + sample)
    behind = _Crc16Behind(body)
    for number in range(count):
        head = bytes([0xFF, 0xF8, 0xC9, 0x18]) + _coded_number(number)
        head += bytes([_crc8(head)])
        yield head + body + struct.pack(">H", behind.of(head))


def _block(kind, data, last=False):
    return bytes([kind | (0x80 if last else 0)]) + len(data).to_bytes(3, "big") + data


def _comments(tags):
    def text(value):
        encoded = value.encode()
        return struct.pack("<I", len(encoded)) + encoded
    return text("bench") + struct.pack("<I", len(tags)) + b"".join(
        text(f"{name}={value}") for name, value in tags.items())


def flac(seconds, level, tags, large=False):
    """The bytes of a file; `level` is a 16-bit sample."""
    count = int(seconds * RATE) // BLOCK + 1
    format_bits = RATE << 44 | 1 << 41 | 15 << 36 | count * BLOCK
    info = struct.pack(">HH", BLOCK, BLOCK) + bytes(6) + format_bits.to_bytes(8, "big") + bytes(16)
    head = b"fLaC" + _block(0, info) + _block(4, _comments(tags), last=True)
    return head + b"".join(_frames(count, level, large))


def make_library(folder, albums, tracks, seconds, large=False):
    """`albums` times `tracks` files. Track n of every album has the level 100 n."""
    folder = pathlib.Path(folder)
    for album in range(1, albums + 1):
        place = folder / f"artist-{album // 10}" / f"album-{album}"
        place.mkdir(parents=True, exist_ok=True)
        for track in range(1, tracks + 1):
            tags = {"TITLE": f"Track {track} of {album}", "ALBUM": f"Album {album:05}",
                    "ARTIST": f"Artist {album // 10:04}", "TRACKNUMBER": track}
            (place / f"{track:03}.flac").write_bytes(flac(seconds, 100 * track, tags, large))
