#!/usr/bin/env python3
"""The compressed form of table files, read and written a second time: from the format, not from the program."""

import math
import os
import random
import struct
import subprocess
import sys
import tempfile
import unittest

BLOCK, LOG, SYMBOLS = 8192, 13, 1024
BANNER = b"Compressed by DATACOMP v 1.0"
# Entries of some tables, by file.
TABLES = {"kqk.nbw": 25629, "knk.nbb": 28644, "kpk.nbw": 81664, "kpk.nbb": 84012}


def check(data):
    x = 0
    for byte in data:
        x = (x >> 8) ^ CHECKS[(x ^ byte) & 255]
    return x


def check_entry(x):
    for _ in range(8):
        x = x >> 1 if x & 1 else (x >> 1) ^ 0xEDB88320
    return x


CHECKS = [check_entry(i) for i in range(256)]


class Bits:
    """A string of bits, taken from the front."""

    def __init__(self, data):
        self.text, self.place = "".join(f"{byte:08b}" for byte in data), 0

    def take(self, count):
        self.place += count
        return int(self.text[self.place - count:self.place] or "0", 2)


def codes_of(lengths):
    """The code of each symbol as text. A symbol that is alone has an empty one."""
    used = sorted((length, symbol) for symbol, length in enumerate(lengths) if length)
    if len(used) < 2:
        return {used[0][1] if used else 0: ""}
    codes, code, last = {}, 0, used[0][0]
    for length, symbol in used:
        code <<= length - last
        codes[symbol], last = f"{code:0{length}b}", length
        code += 1
    assert code == 1 << last, "not complete"
    return codes


def take_symbol(bits, symbols):
    text = ""
    while text not in symbols:
        text += bits.text[bits.place]
        bits.place += 1
    return symbols[text]


def symbols_of(lengths):
    return {code: symbol for symbol, code in codes_of(lengths).items()}


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
            value, times = take_symbol(bits, values), 1
            if value >= 32:
                times = take_symbol(bits, runs)
                if times >= 32:
                    times = 2 ** (times - 32) + bits.take(times - 32) + 31
                times += 2
            lengths += [value % 32] * times
    assert len(lengths) == count
    return lengths


def read_file(path):
    """The bytes of a compressed file, all its checks held."""
    with open(path, "rb") as file:
        data = file.read()
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
        symbol = take_symbol(bits, symbols)
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


def built_file(plain_size, stored, offsets, packed_lengths):
    """A compressed file from its stored blocks and the bits that pack the lengths of its code."""
    blocks = len(stored)
    last = plain_size - (blocks - 1) * BLOCK
    offsets = offsets + [0] * (24 - len(offsets))
    fields = pack("".join(f"{number % BLOCK:013b}" for number in [*map(len, stored), last, *offsets]))
    code = pack(packed_lengths)
    symbols = symbols_of(read_lengths(Bits(code), SYMBOLS))
    size = 80 + 8 * blocks + len(fields) + len(code) + 4
    header = (BANNER + b" by hand").ljust(58) + b"\r\n\0\0\0\0"
    header += struct.pack(">IHBBII", size, 0xBEEF, LOG, 24, blocks, 0x004001F5)
    for i, block in enumerate(stored):
        plain = read_block(block, BLOCK if i + 1 < blocks else last, symbols, offsets)
        header += struct.pack(">II", check(plain), check(block))
    header += fields + code
    return header + struct.pack(">I", check(header)) + b"".join(stored)


def few_lengths(lengths):
    """Packs up to 128 lengths, in a width of 5 bits."""
    text, i = "0" + "00101", 0
    while i < len(lengths):
        text += f"{lengths[i]:05b}"
        i += 1
        if lengths[i - 1] == 0:
            run = 0
            while i < len(lengths) and lengths[i] == 0 and run < 15:
                i, run = i + 1, run + 1
            text += f"{run:04b}"
    return text


def many_lengths(runs):
    """Packs (value, times) with codes in which every one of their 64 symbols has 6 bits."""
    text = "0" + few_lengths([6] * 128)
    for value, times in runs:
        if times == 1:
            text += f"{value:06b}"
        elif times < 34:
            text += f"{value + 32:06b}{times - 2:06b}"
        else:
            power = int(math.log2(times - 33))
            text += f"{value + 32:06b}{32 + power:06b}" + (f"{times - 33 - 2 ** power:0{power}b}" if power else "")
    return text


class CompressedFiles(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory(prefix="valku-test-")
        self.addCleanup(home.cleanup)
        self.home = home.name

    def run_tables(self, command, *names, status=0):
        result = subprocess.run([PROGRAM, command, *names], cwd=self.home, capture_output=True, text=True, timeout=300)
        self.assertEqual(result.returncode, status, result.stderr)
        return result

    def path(self, name):
        return os.path.join(self.home, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def test_what_is_written(self):
        """Tables of other content than any real one: noise, one byte only, what repeats far back, a mixture."""
        dice = random.Random(5)
        row = bytes(dice.choices(range(256), k=3001))
        size = TABLES["kpk.nbw"]
        mixture = bytes((i // 48 % 11 + i % 48 // 7) & 255 if i < 50000 or i % 9 else dice.randrange(256)
                        for i in range(TABLES["kpk.nbb"]))
        tables = {"knk.nbb": bytes(dice.choices(range(256), k=TABLES["knk.nbb"])),
                  "kqk.nbw": b"\x80" * TABLES["kqk.nbw"],
                  "kpk.nbw": (row * 30)[:size],
                  "kpk.nbb": mixture}
        limits = {"knk.nbb": 30000, "kqk.nbw": 200, "kpk.nbw": 40000, "kpk.nbb": 25000}
        for name, data in tables.items():
            self.write(name, data)
        self.run_tables("compress", *tables)
        self.assertEqual(sorted(os.listdir(self.home)), sorted([*tables, *(name + ".emd" for name in tables)]))
        for name, data in tables.items():
            with self.subTest(name=name):
                self.assertEqual(read_file(self.path(name + ".emd")), data)
                self.assertLess(os.path.getsize(self.path(name + ".emd")), limits[name])
                os.remove(self.path(name))
        self.run_tables("expand", *(name + ".emd" for name in tables))
        for name, data in tables.items():
            with open(self.path(name), "rb") as file:
                self.assertEqual(file.read(), data, name)

    def expand(self, stored, offsets, packed_lengths):
        """Lets the program read a file made by hand, for a table of four blocks."""
        size = TABLES["kqk.nbw"]
        self.write("kqk.nbw.emd", built_file(size, stored, offsets, packed_lengths))
        expected = read_file(self.path("kqk.nbw.emd"))
        self.run_tables("expand", "kqk.nbw.emd")
        with open(self.path("kqk.nbw"), "rb") as file:
            found = file.read()
        self.assertEqual(len(found), size)
        self.assertEqual(found, expected)
        return found

    def test_what_others_write(self):
        last = TABLES["kqk.nbw"] - 3 * BLOCK
        noise = random.Random(7).randbytes(BLOCK)

        # No code at all: raw blocks, and blocks of zeros that take no bits.
        found = self.expand([noise, b"x", noise, noise[:last]], [], "1")
        self.assertEqual(found, noise + bytes(BLOCK) + noise + noise[:last])

        # One symbol, which takes no bits either.
        lengths = many_lengths([(0, 77), (1, 1), (0, 1024 - 78)])
        self.assertEqual(self.expand([b"\0"] * 4, [], lengths), b"M" * TABLES["kqk.nbw"])

        # Symbols 7 (2 bits: 00), 200 (01), a match of length class 26 at the second distance (10), one of class
        # 3 at the last (110), one of class 15 at the third (111).
        long, short, middle = 256 + 32 + 26, 256 + 23 * 32 + 3, 256 + 64 + 15
        order = [(7, 2), (200, 2), (long, 2), (middle, 3), (short, 3)]
        runs, at = [], 0
        for symbol, length in order:
            runs += [(0, symbol - at)] * (symbol > at) + [(length, 1)]
            at = symbol + 1
        lengths = many_lengths(runs + [(0, SYMBOLS - at)])
        offsets = [9, 1, 3] + [5] * 20 + [2]
        codes = codes_of(read_lengths(Bits(pack(lengths)), SYMBOLS))
        self.assertEqual([codes[symbol] for symbol in sorted(codes)], ["00", "01", "10", "110", "111"])
        word = lambda *symbols: "".join(codes[symbol] for symbol in symbols)
        overlap = pack(word(7, 200, 7, short, middle) + "1" + word(200, long) + "1" * 12)
        two_matches = pack(word(200, 7) + (word(long) + "0" * 12) * 2)
        found = self.expand([overlap, two_matches, noise, pack(word(7, long) + "0" * 12)], offsets, lengths)
        pattern = bytes([7, 200, 7]) + bytes([200, 7, 200, 7])
        pattern += bytes(pattern[-3 + i % 3] for i in range(17))
        self.assertEqual(found[:BLOCK], pattern + b"\xc8" * (BLOCK - len(pattern)))
        self.assertEqual(found[BLOCK:2 * BLOCK], b"\xc8" + b"\7" * (BLOCK - 1))
        self.assertEqual(found[3 * BLOCK:], b"\7" * last)

        # Codes as deep as they may be: 31 bits, past any table of first bits.
        chain = list(range(1, 31)) + [31, 31]
        lengths = many_lengths([(length, 1) for length in chain] + [(0, SYMBOLS - len(chain))])
        codes = codes_of(chain)
        deep = pack("".join(codes[i % 32] for i in range(1000)) + codes[31] * 100 + codes[0] * (BLOCK - 1100))
        found = self.expand([deep, noise, noise, noise[:last]], [], lengths)
        self.assertEqual(found[:BLOCK], bytes(i % 32 for i in range(1000)) + b"\x1f" * 100 + bytes(BLOCK - 1100))

    def test_what_nobody_may_write(self):
        size = TABLES["kqk.nbw"]
        raw = [bytes(BLOCK)] * 3 + [bytes(size - 3 * BLOCK)]
        good = many_lengths([(0, 77), (1, 1), (0, SYMBOLS - 78)])
        sound = built_file(size, raw, [], good)
        # Codes that are no codes, put in place of the good one.
        start = 80 + 32 + (29 * LOG + 7) // 8
        trials = {"good": good,
                  "one code of two bits": many_lengths([(0, 77), (2, 1), (0, 1024 - 78)]),
                  "incomplete": many_lengths([(0, 77), (2, 3), (0, 1024 - 80)]),
                  "too many": many_lengths([(1, 3), (0, 1021)]),
                  "beyond the last symbol": many_lengths([(0, 77), (1, 1), (0, 1024 - 77)]),
                  "a zero run past the end": "00" + "00101" + "00110" * 127 + "00000" + "0001",
                  "a width of 31 bits": "00" + "11111" + "1" * 600}
        for name, text in trials.items():
            with self.subTest(name=name):
                code = pack(text + "0" * 64)
                head = bytearray(sound[:start] + code)
                head[64:68] = struct.pack(">I", len(head) + 4)
                self.write("kqk.nbw.emd", bytes(head) + struct.pack(">I", check(head)) + b"".join(raw))
                self.run_tables("expand", "kqk.nbw.emd", status=0 if name == "good" else 1)


if __name__ == "__main__":
    PROGRAM = os.path.join(os.path.dirname(os.path.abspath(sys.argv.pop(1))), "valku-tables")
    unittest.main()
