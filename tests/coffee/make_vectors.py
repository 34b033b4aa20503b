#!/usr/bin/env python3
"""Makes tests/coffee/vectors.tsv without any code of the module: the block is put together here, the `openssl`
program enciphers it.

    tests/coffee/make_vectors.py            writes the table
    tests/coffee/make_vectors.py --check    fails when the table is not what would be written
"""

import fractions
import pathlib
import subprocess
import sys

TABLE = pathlib.Path(__file__).with_name("vectors.tsv")
EPOCH_MS = 25_569 * 86_400_000  # 1970-01-01 in milliseconds since 1899-12-30
NOON = EPOCH_MS + 1_767_614_400_000  # 2026-01-05 12:00:00

# The keys of the standard's own examples, and some others.
NIST = "2b7e151628aed2a6abf7158809cf4f3c"
FIPS = "000102030405060708090a0b0c0d0e0f"
ZERO = "0" * 32
ONES = "F" * 32
MIXED = "00112233445566778899AaBbCcDdEeFf"


def crc16(data):
    """Bit by bit."""
    register = 0
    for byte in data:
        register ^= byte
        for _ in range(8):
            register = register >> 1 ^ (0xA001 if register & 1 else 0)
    return register


def stamp(clock_ms):
    seconds = fractions.Fraction(clock_ms - EPOCH_MS, 1000)
    if abs(seconds % 1 - fractions.Fraction(1, 2)) == 0:
        raise ValueError("an exact half depends on the double")
    return round(seconds) % 2**32


def bits(value, width):
    """Of a negative number the two's complement."""
    return format(value % 2**width, f"0{width}b")


def head_of(numbers, clock_ms):
    """The block without its CRC, as binary digits."""
    part1, part2, part3, value1, value2 = numbers
    text = (bits(0x83, 8) + bits(part1, 10) + bits(part2, 6) + bits(part3, 8) + bits(stamp(clock_ms), 32)
            + bits(1, 8) + bits(value1, 16) + bits(value2, 16) + bits(0, 8))
    return int(text, 2).to_bytes(14, "big")


def block_of(numbers, clock_ms):
    head = head_of(numbers, clock_ms)
    return head + crc16(head).to_bytes(2, "big")


def key_of(text):
    """The 16 bytes of a key text that is shorter, longer or of an odd length."""
    pairs = [int(text[i:i + 2], 16) for i in range(0, len(text), 2)]
    return bytes((pairs + [0] * 16)[:16])


def enciphered(block, key):
    command = ["openssl", "enc", "-aes-128-ecb", "-nopad", "-K", key.hex()]
    return subprocess.run(command, input=block, stdout=subprocess.PIPE, check=True).stdout


def with_crc_below(limit):
    """Numbers whose CRC at noon begins with zeros."""
    for value2 in range(2**16):  # each gives another CRC
        numbers = (1, 2, 3, limit, value2)
        if crc16(head_of(numbers, NOON)) < limit:
            return numbers
    raise ValueError("no such numbers")


def cases():
    """Name, the five numbers, clock and key of every row."""
    plain = (1, 2, 3, 250, 1)
    numbers = {
        "zeros": (0, 0, 0, 0, 0), "ones": (1, 1, 1, 1, 1), "part1 alone": (1, 0, 0, 0, 0),
        "part2 alone": (0, 1, 0, 0, 0), "part3 alone": (0, 0, 1, 0, 0), "value1 alone": (0, 0, 0, 1, 0),
        "value2 alone": (0, 0, 0, 0, 1), "part1 top bit": (512, 0, 0, 0, 0), "part2 top bit": (0, 32, 0, 0, 0),
        "part3 top bit": (0, 0, 128, 0, 0), "value tops": (0, 0, 0, 0x8000, 0x8000),
        "all bits": (1023, 63, 255, 65535, 65535), "value bytes": (0, 0, 0, 0x1234, 0xABCD),
        "part1 overflow": (1024, 0, 0, 0, 0), "part2 overflow": (0, 64, 0, 0, 0),
        "part3 overflow": (0, 0, 256, 0, 0), "value1 overflow": (0, 0, 0, 65536, 0),
        "value2 overflow": (0, 0, 0, 0, 65536), "overflow with rest": (1025, 66, 259, 65540, 65541),
        "largest integers": (2**31 - 1,) * 5, "minus one": (-1,) * 5, "smallest integers": (-2**31,) * 5,
        "negative": (-2, -3, -4, -5, -6), "part1 negative": (-1023, 0, 0, 0, 0), "bit patterns": (682, 42, 170, 43690, 21845),
        "crc below 1000": with_crc_below(0x1000), "crc below 100": with_crc_below(0x100),
        "crc below 10": with_crc_below(0x10), "crc zero": with_crc_below(1),
    }
    for name, values in numbers.items():
        yield name, values, NOON, NIST
    for name, key in {"key counting up": FIPS, "key zeros": ZERO, "key ones": ONES, "key of both cases": MIXED,
                      "key upper case": NIST.upper(), "key too long": NIST + "00FF", "key long and odd": NIST + "a",
                      "key 31 digits": NIST[:31], "key 30 digits": NIST[:30], "key one digit": "a",
                      "key empty": ""}.items():
        yield name, plain, NOON, key
    last = 2**32 - 1
    for name, seconds in {"stamp 0": 0, "stamp 1": 1, "stamp -1": -1, "stamp of the epoch": -EPOCH_MS // 1000,
                          "stamp before the epoch": -EPOCH_MS // 1000 - 100_000, "stamp 2^31-1": 2**31 - 1,
                          "stamp 2^31": 2**31, "stamp 2^32-1": last, "stamp 2^32": last + 1,
                          "stamp 2^32+1": last + 2, "stamp 2^33+5": 2**33 + 5, "stamp -2^32-1": -last - 2,
                          "stamp one second on": 1_767_614_401, "stamp leap day": 1_709_164_800}.items():
        yield name, plain, EPOCH_MS + seconds * 1000, NIST
    for name, ms in {"rounded down": 1, "rounded down late": 499, "rounded up early": 501, "rounded up": 999}.items():
        yield name, plain, NOON + ms, NIST
    yield "rounded up to 0", plain, EPOCH_MS - 499, NIST
    yield "rounded down to -1", plain, EPOCH_MS - 501, NIST
    yield "rounded up to 2^32", plain, EPOCH_MS + last * 1000 + 501, NIST
    yield "rounded down to 2^32-1", plain, EPOCH_MS + last * 1000 + 499, NIST
    yield "rounded up to midnight", plain, NOON + 43_199_999, NIST


def table():
    rows = ["# Made by make_vectors.py. The clock is in milliseconds since 1899-12-30.",
            "\t".join(["# case", "part1", "part2", "part3", "value1", "value2", "clock", "key", "block", "text"])]
    for name, numbers, clock_ms, key in cases():
        block = block_of(numbers, clock_ms)
        text = "O" + enciphered(block, key_of(key)).hex().upper() + "S"
        rows.append("\t".join([name, *map(str, numbers), str(clock_ms), key, block.hex().upper(), text]))
    return "\n".join(rows) + "\n"


def main():
    if crc16(b"123456789") != 0xBB3D:
        sys.exit("the CRC is wrong")
    if sys.argv[1:] == ["--check"]:
        sys.exit(0 if TABLE.read_text(encoding="ascii") == table() else "vectors.tsv is not what is made here")
    TABLE.write_text(table(), encoding="ascii")


if __name__ == "__main__":
    main()
