#!/usr/bin/env python3
"""Writes the seed corpora under fuzz/corpus/<target>/ from inputs used by
the unit tests. Each seed is laid out the way the target's
FuzzedDataProvider reads it: texts from the front, each ended by a
backslash and another character, and the single-byte choices from the end
(the last byte is the flags byte)."""
import hashlib
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))

PAIRS = [
    ("YYYY-MM-DD", "2024-05-17"), ("YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.123"),
    ("SYYYY-MM-DD", "-0044-03-15"), ("YYYY-MM-DD TZH:TZM", "2024-05-17 +05:30"),
    ("TZH:TZM", "-05:30"), ("FF1", "9"), ("FF5", "12345"), ("DD.MM.YYYY HH24:MI:SS", "17.05.2024 13:45:10"),
    ("DD.MM.YYYY HH12:MI:SS", "17.05.2024 01:45:10"), ("YYYYMMDD", "20240517"),
    ("yyyy-mm-dd hh24:mi:ss", "2024-05-17 01:02:03"), ("  YYYY-MM-DD  ", "   2024-05-17   "),
    ("YYYY-MM-DD", "2024-5-7"), ("YYYY MM DD", "2024 05 17"), ("YYYYMMDDHH24MISS", "20240517134510"),
    ("DD-MON-YYYY", "17-MAY-2024"), ("FF3 FF5", "123 12345"), ("DY YYYY", "x 2024"),
    ("YYYY-MM-DD", "2024-02-29"), ("SYYYY-MM-DD", "-4712-01-01"), ("YYYY-MM-DD", "9999-12-31"),
    ("HH24:MI:SS", "23:59:59"), ("MM/DD/YYYY HH12:MI:SS", "05/17/2024 11:20:30"),
    ("YYYY-MM-DD HH24:MI:SS.FF5 TZH:TZM", "2024-03-31 02:30:00.50000 -03:30"),
    ("YY-MM-DD", "24-05-17"), ("DDD YYYY", "138 2024"), ("J", "2460448"), ("MONTH DD YYYY", "MAY 17 2024"),
]
ZONES = ["+02:00", "-05:30", "  -05:30", "+14:00", "-12:00", "+5", "05:30", "UTC", "", "+02:60", "x"]
INTERVALS_YM = ["1-2", "+0001-02", "- 12 - 3", "  -5-11  ", "1-12", "10000-0", "+2147483647-11", "1", "1-2-3"]
INTERVALS_DS = ["1 02:03:04", "-3 4:5:6.789", "  +0 00 : 00 : 01 . 5  ", "1 24:00:00",
                "1 02:03:04.1234567", "+01 02:03:04.99999", "+2147483647 23:59:59.99999", "02:03:04"]
DATES = [(2024, 1, 31, 10, 30, 0), (2024, 2, 29, 0, 0, 0), (-4712, 1, 1, 0, 0, 0), (9999, 12, 31, 23, 59, 59),
         (2024, 3, 31, 2, 30, 0), (2023, 10, 29, 2, 30, 0), (1, 1, 1, 0, 0, 0), (2024, 13, 1, 0, 0, 0)]
DAYS = ["MONDAY", "sunday", "Friday", "FRIDAY", "saturd", "mon", ""]


def s(text):
    return text.encode("latin-1").replace(b"\\", b"\\\\") + b"\\|"


def write(target, blobs):
    d = os.path.join(HERE, "corpus", target)
    os.makedirs(d, exist_ok=True)
    for b in blobs:
        with open(os.path.join(d, hashlib.sha1(b).hexdigest()[:16]), "wb") as f:
            f.write(b)


def date_fields(y, mo, d, h, mi, se):
    # Read from the end: year, month, day, hour, minute, second (2 bytes each,
    # most significant byte last).
    out = b""
    for v in (se, mi, h, d, mo):
        out += struct.pack(">H", v & 0xFFFF)[::-1][::-1]
    return out + struct.pack(">h", y)


def main():
    blobs = []
    for fmt, text in PAIRS:
        for flags in (0, 1):
            blobs.append(s(fmt) + s(text) + bytes([flags]))
    write("date_text_fuzz", blobs)

    blobs = []
    for fmt, text in PAIRS:
        for t in range(6):
            blobs.append(s(fmt) + s(text) + bytes([9, t, t & 1]))
    write("datetime_text_fuzz", blobs)

    blobs = []
    for z in ZONES:
        for t in (2, 4):
            blobs.append(s(z) + bytes([t, 0]))
            blobs.append(s(z) + bytes([t, 1]))
    write("zone_text_fuzz", blobs)

    blobs = [s(t) + bytes([0]) for t in INTERVALS_YM] + [s(t) + bytes([8]) for t in INTERVALS_DS]
    blobs += [s(t) + bytes([9]) for t in INTERVALS_DS[:3]]
    write("interval_text_fuzz", blobs)

    blobs = [
        bytes([120, 124, 2, 29]) + bytes([9, 1, 0, 0]),           # class 184, type 65
        bytes([11, 21, 31, 7, 91, 205, 21]) + bytes([3, 2, 1, 0]),  # class 185, type 66
        bytes([11, 1, 1, 0, 0, 0, 0, 22, 60]) + bytes([9, 3, 2, 0]),  # class 186, type 67
        bytes([120, 124, 2, 29, 11, 21, 31, 7, 91, 205, 21]) + bytes([9, 4, 3, 0]),
        bytes([120, 124, 3, 31, 11, 1, 1, 35, 195, 33, 0, 22, 60]) + bytes([0, 5, 4, 1]),
        bytes([53, 88, 1, 1]) + bytes([9, 1, 0, 0]),
    ]
    write("datetime_array_fuzz", blobs)

    blobs = []
    for v in (1.5, -2.25, 0.0, -0.0, 1e-300, 123456.789, 2.0 ** 31, 1e300, 1 / 3):
        for flags in (32, 32 | 8, 32 | 8 | 1, 32 | 64):
            blobs.append(struct.pack("<d", v) + bytes([flags]))
    write("interval_number_fuzz", blobs)

    blobs = []
    for i, dt in enumerate(DATES):
        other = DATES[(i + 3) % len(DATES)]
        day = DAYS[i % len(DAYS)]
        blobs.append(s(day) + struct.pack(">i", 31 * i - 40) + date_fields(*other) + date_fields(*dt)
                     + bytes([i & 1]))
    write("date_arith_fuzz", blobs)

    blobs = []
    for i in range(len(DATES)):
        blobs.append(bytes(range(i, i + 64)) + bytes([2 | 8 | 16 | (32 if i & 1 else 0) | (i & 1)]))
    write("datetime_arith_fuzz", blobs)


if __name__ == "__main__":
    main()
