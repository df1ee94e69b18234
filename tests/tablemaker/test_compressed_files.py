#!/usr/bin/env python3
"""The compressed form of table files, read and written a second time: from the format, not from the program."""

import itertools
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

BLOCK, LOG, SYMBOLS = 8192, 13, 1024
BANNER = b"Compressed by DATACOMP v 1.0"
# Entries of some tables, by file.
TABLES = {"kqk.nbw": 25629, "knk.nbb": 28644, "kpk.nbw": 81664, "kpk.nbb": 84012}
CHECKS = list(range(256))
for _ in range(8):
    CHECKS = [x >> 1 if x & 1 else (x >> 1) ^ 0xEDB88320 for x in CHECKS]


def check(data):
    x = 0
    for byte in data:
        x = (x >> 8) ^ CHECKS[(x ^ byte) & 255]
    return x


class Bits:
    """A string of bits, taken from the front."""

    def __init__(self, data):
        self.text, self.place = "".join(f"{byte:08b}" for byte in data), 0

    def take(self, count):
        self.place += count
        return int(self.text[self.place - count:self.place] or "0", 2)

    def take_symbol(self, symbols):
        start = self.place
        while self.text[start:self.place] not in symbols:
            self.place += 1
        return symbols[self.text[start:self.place]]


def symbols_of(lengths):
    """The symbols by their codes as text. A symbol that is alone has an empty one."""
    used = sorted((length, symbol) for symbol, length in enumerate(lengths) if length)
    if len(used) < 2:
        return {"": used[0][1] if used else 0}
    symbols, code, last = {}, 0, used[0][0]
    for length, symbol in used:
        code <<= length - last
        symbols[f"{code:0{length}b}"], last = symbol, length
        code += 1
    assert code == 1 << last, "not complete"
    return symbols


def read_lengths(bits, count):
    if bits.take(1):
        return [0] * count
    lengths = []
    if count <= 128:
        width = bits.take(5)
        while len(lengths) < count:
            lengths.append(bits.take(width))
            if lengths[-1] == 0:
                lengths += [0] * bits.take(4)
    else:
        both = read_lengths(bits, 128)
        values, runs = symbols_of(both[:64]), symbols_of(both[64:])
        while len(lengths) < count:
            value, times = bits.take_symbol(values), 1
            if value >= 32:
                times = bits.take_symbol(runs)
                if times >= 32:
                    times = 2 ** (times - 32) + bits.take(times - 32) + 31
                times += 2
            lengths += [value % 32] * times
    assert len(lengths) == count
    return lengths


def read_file(path):
    """The bytes of a compressed file, all its checks held."""
    data = path.read_bytes()
    size, log, offset_count, blocks, form = struct.unpack(">64xI2xBBII", data[:80])
    assert data[:28] == BANNER and data[58:64] == b"\r\n\0\0\0\0"
    assert (log, offset_count, form) == (LOG, 24, 0x004001F5)
    assert check(data[:size - 4]) == struct.unpack(">I", data[size - 4:size])[0]
    start = 80 + 8 * blocks
    bits = Bits(data[start:size - 4])
    sizes = [bits.take(LOG) or BLOCK for _ in range(blocks + 1)]
    offsets = [bits.take(LOG) for _ in range(24)]
    bits.place = (bits.place + 7) // 8 * 8
    symbols = symbols_of(read_lengths(bits, SYMBOLS))
    assert (bits.place + 7) // 8 == size - 4 - start
    plain = b""
    for i in range(blocks):
        stored = data[size:size + sizes[i]]
        block = read_block(stored, BLOCK if i + 1 < blocks else sizes[-1], symbols, offsets)
        assert struct.unpack(">II", data[80 + 8 * i:88 + 8 * i]) == (check(block), check(stored))
        plain += block
        size += sizes[i]
    assert size == len(data)
    return plain


def read_block(stored, size, symbols, offsets):
    if len(stored) == size:
        return stored
    bits, block = Bits(stored), bytearray()
    while len(block) < size:
        symbol = bits.take_symbol(symbols)
        if symbol < 256:
            block.append(symbol)
            continue
        back, code = offsets[(symbol - 256) // 32], symbol % 32
        length = code + 1 if code < 15 else 2 ** (code - 14) + bits.take(code - 14) + 14
        assert back <= len(block)
        for _ in range(length):
            block.append(block[-back])
    return bytes(block[:size])


def pack(text):
    text += "0" * (-len(text) % 8)
    return bytes(int(text[i:i + 8], 2) for i in range(0, len(text), 8))


def pack_lengths(lengths, symbols=SYMBOLS):
    """Packs the lengths of some symbols' codes with two codes in which each of their 64 symbols has 6 bits."""
    text = "0000101" + "00110" * 128
    for value, run in itertools.groupby(lengths.get(symbol, 0) for symbol in range(symbols)):
        times = len(list(run))
        text += f"{value + 32 * (times > 1):06b}"
        if times >= 34:
            extra = f"{times - 33:b}"[1:]
            text += f"{32 + len(extra):06b}" + extra
        elif times > 1:
            text += f"{times - 2:06b}"
    return text


class CompressedFiles(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory(prefix="valku-test-")
        self.addCleanup(home.cleanup)
        self.home = pathlib.Path(home.name)

    def run_tables(self, command, *names, status=0):
        result = subprocess.run([PROGRAM, command, *names], cwd=self.home, capture_output=True, text=True, timeout=300)
        self.assertEqual(result.returncode, status, result.stderr)
        return result.stderr

    def test_what_is_written(self):
        """Tables of other content than any real one: noise, one byte only, what repeats far back, a mixture."""
        dice = random.Random(5)
        size = TABLES["kpk.nbb"]
        mixture = bytes((i // 48 % 11 + i % 48 // 7) & 255 if i < 50000 or i % 9 else dice.randrange(256)
                        for i in range(size))
        tables = {"knk.nbb": (dice.randbytes(size), 30000), "kqk.nbw": (b"\x80" * size, 200),
                  "kpk.nbw": (dice.randbytes(3001) * 30, 40000), "kpk.nbb": (mixture, 25000)}
        for name, (data, _) in tables.items():
            (self.home / name).write_bytes(data[:TABLES[name]])
        self.run_tables("compress", *tables)
        self.assertEqual(sorted(os.listdir(self.home)), sorted([*tables, *(name + ".emd" for name in tables)]))
        for name, (data, limit) in tables.items():
            path = self.home / (name + ".emd")
            self.assertEqual(read_file(path), data[:TABLES[name]], name)
            self.assertLess(path.stat().st_size, limit, name)
            (self.home / name).unlink()
            self.run_tables("expand", path.name)
            self.assertEqual((self.home / name).read_bytes(), data[:TABLES[name]], name)

    def write_file(self, stored, offsets, packed_lengths, symbols):
        """A compressed file of kqk from its stored blocks and the bits that pack the lengths of its code."""
        last = TABLES["kqk.nbw"] - 3 * BLOCK
        offsets = offsets + [0] * (24 - len(offsets))
        fields = pack("".join(f"{number % BLOCK:013b}" for number in [*map(len, stored), last, *offsets]))
        code = fields + pack(packed_lengths)
        header = (BANNER + b" by hand").ljust(58) + b"\r\n\0\0\0\0"
        header += struct.pack(">IHBBII", 84 + 8 * 4 + len(code), 0xBEEF, LOG, 24, 4, 0x004001F5)
        for block, size in zip(stored, (BLOCK, BLOCK, BLOCK, last)):
            header += struct.pack(">II", check(read_block(block, size, symbols, offsets)), check(block))
        header += code
        path = self.home / "kqk.nbw.emd"
        path.write_bytes(header + struct.pack(">I", check(header)) + b"".join(stored))
        return path

    def expand(self, stored, offsets, packed_lengths):
        """Lets the program read a file made by hand, for a table of four blocks."""
        path = self.write_file(stored, offsets, packed_lengths,
                               symbols_of(read_lengths(Bits(pack(packed_lengths)), SYMBOLS)))
        self.run_tables("expand", path.name)
        found = path.with_suffix("").read_bytes()
        self.assertEqual(found, read_file(path))
        return found

    def test_what_others_write(self):
        last = TABLES["kqk.nbw"] - 3 * BLOCK
        noise = random.Random(7).randbytes(BLOCK)

        # No code at all: raw blocks, and blocks of zeros that take no bits.
        found = self.expand([noise, b"x", noise, noise[:last]], [], "1")
        self.assertEqual(found, noise + bytes(BLOCK) + noise + noise[:last])

        # One symbol, which takes no bits either.
        self.assertEqual(self.expand([b"\0"] * 4, [], pack_lengths({77: 1})), b"M" * TABLES["kqk.nbw"])

        # Two bytes, and matches of length class 26 at the second distance, 15 at the third and 3 at the last.
        long, middle, short = 256 + 32 + 26, 256 + 64 + 15, 256 + 23 * 32 + 3
        symbols = {"00": 7, "01": 200, "10": long, "110": middle, "111": short}
        lengths = pack_lengths({symbol: len(code) for code, symbol in symbols.items()})
        self.assertEqual(symbols_of(read_lengths(Bits(pack(lengths)), SYMBOLS)), symbols)
        offsets = [9, 1, 3] + [5] * 20 + [2]
        overlap = pack("00" "01" "00" "111" "110" + "1" + "01" "10" + "1" * 12)
        two_matches = pack("01" "00" + ("10" + "0" * 12) * 2)
        found = self.expand([overlap, two_matches, noise, pack("00" "10" + "0" * 12)], offsets, lengths)
        pattern = bytes([7, 200, 7, 200, 7, 200, 7])
        pattern += (pattern[-3:] * 6)[:17]
        self.assertEqual(found[:BLOCK], pattern.ljust(BLOCK, b"\xc8"))
        self.assertEqual(found[BLOCK:2 * BLOCK], b"\xc8".ljust(BLOCK, b"\7"))
        self.assertEqual(found[3 * BLOCK:], b"\7" * last)

        # Codes as deep as they may be: 31 bits, past any table of first bits.
        chain = list(range(1, 31)) + [31, 31]
        lengths = pack_lengths(dict(enumerate(chain)))
        codes = {symbol: code for code, symbol in symbols_of(chain).items()}
        deep = pack("".join(codes[i % 32] for i in range(1000)) + codes[31] * 100 + codes[0] * (BLOCK - 1100))
        found = self.expand([deep, noise, noise, noise[:last]], [], lengths)
        self.assertEqual(found[:BLOCK], bytes(i % 32 for i in range(1000)) + b"\x1f" * 100 + bytes(BLOCK - 1100))

    def test_what_nobody_may_write(self):
        """Codes that are no codes, with blocks that need none."""
        raw = [bytes(BLOCK)] * 3 + [bytes(TABLES["kqk.nbw"] - 3 * BLOCK)]
        for status, text in ((0, pack_lengths({77: 1})),
                             (1, pack_lengths({77: 2})),  # one code of two bits
                             (1, pack_lengths({77: 2, 78: 2, 79: 2})),  # incomplete
                             (1, pack_lengths({0: 1, 1: 1, 2: 1})),  # too many
                             (1, pack_lengths({77: 1}, SYMBOLS + 1)),
                             (1, "0000101" + "00110" * 127 + "00000" + "0001"),  # a run of zeros past the end
                             (1, "0011111" + "1" * 600)):  # a width of 31 bits
            self.write_file(raw, [], text + "0" * 64, {})
            self.run_tables("expand", "kqk.nbw.emd", status=status)

    def test_files_appear_only_whole(self):
        plain, packed = self.home / "kqk.nbw", self.home / "kqk.nbw.emd"
        data = random.Random(1).randbytes(TABLES["kqk.nbw"])
        plain.write_bytes(data)
        (packed / "in the way").mkdir(parents=True)
        self.run_tables("compress", plain, status=1)
        self.assertEqual(len(os.listdir(self.home)), 2)
        self.run_tables("expand", packed, status=1)
        shutil.rmtree(packed)
        self.run_tables("compress", plain)
        whole = packed.read_bytes()
        for damaged, error in ((whole[:-1] + bytes([whole[-1] ^ 4]), "wrong bytes"), (whole[:-1], "read error")):
            packed.write_bytes(damaged)
            self.assertIn(error + " in block 3", self.run_tables("expand", packed, status=1))
        self.assertEqual(plain.read_bytes(), data)


if __name__ == "__main__":
    PROGRAM = os.path.join(os.path.dirname(os.path.abspath(sys.argv.pop(1))), "valku-tables")
    unittest.main()
