"""The opening book: its file byte for byte, the moves that are played from it, and everything that fills it.

What a book must hold is worked out here, from the rules of chess and the keys that the engine prints with a board. A
book is a dictionary here: bucket -> second half of the key -> (origin, destination, promotion) -> value.
"""

import collections
import copy
import os
import pathlib
import random
import re
import tempfile

import engine
from rules import START, Board, square_of
from test_xboard import CASTLES, CASTLES_960

WHITE_PROMOTES = "1n5k/P7/8/8/8/8/8/K7 w - - 0 1"
BLACK_PROMOTES = "8/8/8/7k/8/8/p7/2K4N b - - 0 1"
PINNED = "4k3/4r3/8/8/8/8/4B3/4K3 w - - 0 1"
NEW_MEN = {"": (0, 0), "q": (225, 226), "r": (161, 162), "b": (193, 194), "n": (137, 138)}
VALUES = "abcdefg"
TEXT_ASKED = [f"Please enter {text} (0: ignore those moves)\n" for text in (
    *(f"the import value for moves with value '{value}'" for value in VALUES),
    "a value from a-g for moves with '-'", "a value from a-g for moves without value")]
TEXT_ASKED.append("Enter overwrite mode if a move already exists in the book (0: keep, 1: replace, 2: cond. replace)\n")
PGN_ASKED = [text.format(side) for side in ("white", "black") for text in (
    "Please enter the default value for {0} moves without comment (value a-g; 0=ignore {0} moves):",
    "Please enter the overwrite behavior for {0} moves (0=keep old value, 1=always, 2=if better, 3=if worse) :")]
PGN_ASKED.append("Up to which ply shall the moves be imported? (max = 512; attention: 1 move = 2 plies!)")
TEXT = """0 Ruy Lopez E2E4 a ;
1 E2E4 a E7E5 b G1F3 a B8C6 - F1B5 A7A6 B5A4 c G8F6 d E1G1 e;
2- D7D6 d D2D4 b;
1 E2E5 a D2D4 a D4D5 b E8E7 a D7D5 f;
1 A2A4 a B7B5 b A4B5 a A7A6 b B5A6 a B8C6 b A6A7 a C6B8 c A7B8/N - A8B8 c ;
5 A7B8 b G8F6 ; E2E4 a
1 E2E4/Q g E7E6 a ;
1 E2E4 c;"""
# What may follow a move of a game, and the value that it gives; none is "-".
MARKS = {"": "-", "!!": "a", "!": "b", " !? ": "c", "?!": "e", " ?": "f", "??": "g", "$1": "b", " $2": "f", " $3": "a",
         "\n$4": "g", "$5": "c", " $6": "e", " $14": "-", "$14 $1": "b", "! {good? ?? $4}": "b", " (1. c4 ??)": "-"}
# Games as people have them: the position at the start, the text, the moves with their values.
GAMES = [
    (START, '[Event "a [strange] "name""]\r\n\r\n1. e4? e5 2. Nf3 Nc6\r\n3.Bc4 Bc5?! 4. O-O! Nf6 1-0\r\n\r\n',
     "e2e4f e7e5- g1f3- b8c6- f1c4- f8c5e e1g1b g8f6-"),
    (BLACK_PROMOTES, f'[FEN "{BLACK_PROMOTES}"]\n\n1... a1=N!? 2. Kd2 Nb3+! 3. Kc3 *\n\n', "a2a1nc c1d2- a1b3b d2c3-"),
    (START, "1. e4 $6 e5? 2. Kd5 e4!! d4 {a broken game} *\n\n", "e2e4e e7e5f"),
    (START, '[FEN "8/8 w"]\n\n1. e4 e5 *\n\n[Round "1"]\n\n1. d4 Nf6! 2. c4', "d2d4- g8f6b c2c4-")]


def entry(board, move):
    """A move of the rules as the book keeps it."""
    return *(at // 8 * 16 + at % 8 for at in move[:2]), NEW_MEN[move[2]][not board.white]


def add(book, key, move, value, overwrite=1):
    moves = book.setdefault(key[0] & 0xFFFF, {}).setdefault(key[1], {})
    old = moves.setdefault(move, value)
    if overwrite == 1 or (overwrite == 2 and value < old) or (overwrite == 3 and value > old):
        moves[move] = value


def image(book):
    return b"\xc9".join(bucket.to_bytes(2, "little") + b"\xc8".join(
        high.to_bytes(4, "little") + b"".join(bytes((*move, ord(value))) for move, value in moves.items())
        for high, moves in positions.items()) for bucket, positions in sorted(book.items()) if positions) + b"\xca"


def sizes(book):
    positions = [moves for bucket in book.values() for moves in bucket.values() if moves]
    return len(positions), sum(map(len, positions))


def report(book, before=None):
    grown = () if before is None else (new - old for new, old in zip(sizes(book), sizes(before)))
    lines = ["...{} new positions, {} new moves.".format(*grown)] if grown else []
    values = [value for bucket in book.values() for moves in bucket.values() for value in moves.values()]
    lines += ["Book contains {} positions and {} moves now.".format(*sizes(book)), "The book contains:"]
    return lines + [f"{values.count(value):7} moves with value {value}" for value in VALUES]


def read_text(text):
    """The legal moves of a text book, in its order: the way to each position, the position, the move and its value."""
    way, boards = [START], [Board()]
    for number, black, branch in re.findall(r"(?m)^([1-9]\d*)(-?) ([^;\n]*)", text):
        ply = 2 * int(number) - 2 + len(black)
        del way[ply + 1:], boards[ply + 1:]
        for squares, man, value in re.findall(r"((?:[A-H][1-8]){2})(?:/(.))?(?: +([a-g-])?)?", branch):
            forms = [squares.lower() + end for end in (man.lower(), "", "q")]
            if move := next(filter(None, map(boards[-1].find, forms)), None):
                yield tuple(way), boards[-1], move, value or " "
                way.append(boards[-1].uci(move))
                boards.append(boards[-1].play(move))


class BookTest(engine.EngineTest):
    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="valku-book-")))
        self.book, self.out = self.home / "book", self.home / "out"
        self.settings()

    def settings(self, *lines):
        (self.home / "settings.ini").write_text("\n".join(("nHashTables=4096", "bookFile=book", *lines, "")))

    def console(self, *lines, code=0):
        """Everything that is said to some lines and the end of the input."""
        player = self.engine(words=("console", *lines), directory=self.home)
        player.expected_end = {code}
        player.end_input()
        return player.read_all()

    def saved(self, *lines):
        """The bytes of the book after some commands, and what was said."""
        said = self.console(*lines, "writebook out")
        self.assertEqual(said[-2:], ["Writing opening-book...", "...done!"])
        return self.out.read_bytes(), said[:-2]

    def keys(self, *ways):
        """The keys at the end of some ways, each a tuple of a position and moves; a key tells how it was reached."""
        words, ends, at = [], [], ()
        for way in ways:
            shared = len(os.path.commonprefix((at, way)))
            words += ["undo"] * (len(at) - shared) if shared else ["fen " + way[0]]
            words += way[max(shared, 1):]
            ends.append(len(words))
            at = way
        printed = re.findall(r"hashpos = (\d+)  hashkey = (\d+)", "\n".join(self.console("force", *words)))
        return [tuple(map(int, printed[end - len(words) - 1])) for end in ends]

    def make(self, moves, fen=START):
        """Puts a book of one position in place, from texts such as e2e4a or a7a8nb."""
        book, key, board = {}, *self.keys((fen,)), Board(fen)
        for text in moves.split():
            add(book, key, entry(board, (square_of(text[:2]), square_of(text[2:4]), text[4:-1])), text[-1])
        self.book.write_bytes(image(book))
        return book

    def check_shares(self, player, weights):
        counts = collections.Counter(player.go("depth 5", "startpos").best for _ in range(1500))
        expected = {move: 1500 * weight / sum(weights.values()) for move, weight in weights.items() if weight}
        self.assertLessEqual(set(counts), set(expected))
        # Chance alone fails less than once in a hundred million runs.
        distance = sum((counts[move] - share) ** 2 / share for move, share in expected.items())
        self.assertLess(distance, 50 + 2 * len(expected), counts)


class Files(BookTest):
    def test_a_book_is_read_and_written_byte_for_byte(self):
        book, (low, high) = self.make("e2e4b d2d4a a2a8ng"), *self.keys((START,))
        for number, key in enumerate(((low, 0), (0, 0xCACACACA), (65535, 7), (low ^ 1, high))):
            add(book, key, (number, 119, 225), VALUES[number])
        self.book.write_bytes(image(book))
        data, said = self.saved("showbook", "bookstats")
        self.assertEqual(data, image(book))
        self.assertEqual(said[-12:], ["The following moves are in the opening book:", "e2 - e4 (value b)",
                                      "d2 - d4 (value a)", "a2 - a8 (value g)", *report(book)[1:]])

    def test_large_books(self):
        # With work that grew with the square of a bucket, this would not end.
        bucket = b"\xc8".join(high.to_bytes(4, "little") + b"\x14\x34\0b" for high in range(1_000_000))
        book = {number: {number * 77777 % 2**32: {(19, 51, 0): "a", (20, 52, 0): "c"}} for number in range(3, 65536, 3)}
        self.book.write_bytes(b"\1\0" + bucket + b"\xc9" + image(book))
        self.assertTrue(self.saved()[0] == self.book.read_bytes())

    def test_damaged_files_and_what_is_no_book(self):
        start, one, two, fault = b"\1\0key1", b"\x14\x34\0b", b"\x13\x33\xe1c", "Error when reading opening book!"
        files = [((start + one + two)[:size], 1, (one + two)[:max(size - 6, 0) // 4 * 4]) for size in range(15)]
        files += [(start + one + rest, faults, one + kept) for rest, faults, kept in (
            (b"\xcarest", 0, b""), (b"\xc7\xff" + two + b"\x78\xca", 3, two), (b"\xff" * 99 + b"\xca", 20, b""),
            (b"\x14\x34\0h\x08\x34\0a\x14\x88\0a" + two + b"\xca", 3, two), (b"\xc9\2\0none\xca", 0, b""))]
        for data, faults, kept in files:
            self.book.write_bytes(data)
            said = self.console("writebook out")
            self.assertEqual(said.count(fault), faults, data)
            self.assertEqual(said[-1], "...done!" if kept else "...error: no opening-moves to write!")
            if kept:
                self.assertEqual(self.out.read_bytes(), start + kept + b"\xca", data)
        for seed in range(5):  # what is read of it is a good book
            self.book.write_bytes(bytes(random.Random(seed).choices(b"\x14\x34\0ag\xc8\xc9\xff", k=3000)))
            self.book.write_bytes(self.saved()[0])
            data, said = self.saved()
            self.assertEqual((data, said.count(fault)), (self.book.read_bytes(), 0))
        self.book.write_bytes(b"no book")  # no child of an engine reads it
        child = self.engine("localclient", "1", *map(str, self.engine(directory=self.home).started()), words=(),
                            directory=self.home)
        child.end_input()
        self.assertNotIn(fault, child.read_all())
        os.mkfifo(self.home / "pipe")
        for path in (".", "none", "pipe", "/dev/zero", "x" * 250):
            self.settings(f"bookFile={path}")
            self.assertEqual(self.console("showbook")[-1], "No moves for this position in the opening book!")

    def test_a_write_that_fails_is_told(self):
        self.make("e2e4a")
        (self.home / "folder").mkdir()
        (self.home / "device").symlink_to("/dev/full")  # a link, so that no failure of ours replaces a device
        before = sorted(self.home.rglob("*"))
        refused = "Couldn´t open book-file!".encode().decode("latin-1")
        failed = "...error: the book could not be written!"
        for path, told in (("none/book", refused), ("", refused), ("folder", failed), ("device", failed)):
            self.assertEqual(self.console("writebook " + path)[-2:], ["Writing opening-book...", told])
        self.assertEqual(sorted(self.home.rglob("*")), before)


class Choice(BookTest):
    def test_how_often_moves_are_played(self):
        every = {"e2e4": 700, "d2d4": 300, "c2c4": 0, "g1f3": 200, "b2b3": 900, "g2g3": 50, "f2f4": 100}
        self.make("d2d4b e2e4a g1f3a")
        self.check_shares(self.ready_engine(directory=self.home), {"e2e4": 1, "g1f3": 1})  # BestBookMovesOnly
        self.make(" ".join(map("".join, zip(every, VALUES))))
        self.settings(*(f"weight{value.upper()}={weight}" for value, weight in zip(VALUES, every.values())))
        players = [self.ready_engine("BestBookMovesOnly value false", directory=self.home) for _ in range(2)]
        self.check_shares(players[0], every)
        self.assertNotEqual(*([player.go("depth 5", "startpos").best for _ in range(60)] for player in players))

    def test_what_cannot_be_played_is_searched(self):
        for moves in ("d2d4e e2e4g", "e2e5a d2d4b", "e7e5a a1a1a e1g1a"):  # no weight; illegal, as after a collision
            self.make(moves)
            self.assertEqual(self.ready_engine(directory=self.home).go("depth 5", "startpos").depth, 5)

    def test_promotions_and_castling(self):
        for fen, book, best in (
                (WHITE_PROMOTES, "a7b8n", "a7b8n"), (WHITE_PROMOTES, "a7a8", "a7a8q"),
                (BLACK_PROMOTES, "a2a1b", "a2a1b"), (CASTLES, "e1g1", "e1g1"),
                (CASTLES.replace(" w ", " b "), "e8c8", "e8c8"), (CASTLES_960, "e1c1", "e1b1"),
                ("4k3/8/8/8/8/8/8/6KR w H - 0 1", "g1g1", "g1h1")):
            chess960 = any(letter in fen.split()[2] for letter in "HG")
            board = Board(fen, chess960)
            move = board.find(best)
            self.make(book + "a", fen)
            player = self.ready_engine(f"UCI_Chess960 value {str(chess960).lower()}", directory=self.home)
            answer = player.go("wtime 1000", f"fen {fen}")
            self.assertEqual((answer.best, answer.ponder, answer.root_moves, answer.score), (best, None, [], 0))
            self.assertEqual([line.group("depth", "pv") for line in answer.main_lines], [("0", board.line_text(move))])
            self.assertEqual(player.board().split()[:5], board.play(move).fen().split()[:5])

    def test_the_lines_of_a_book_move(self):
        self.make("e2e4c")
        player = self.engine(words=("console", "go"), directory=self.home)
        player.read_to(r"bookMove \(value c\)")
        main, move, _ = engine.CONSOLE.finditer("\n".join((*player.read_to("hashpos .*"), "")))
        self.assertEqual((main.group("depth", "score", "pv"), move["text"]), (("0", "0", "e2e4"), "e2e4"))
        player = self.engine(words=("xboard", "hard", "level 0 1 0", "go"), directory=self.home)
        *_, value, thinking, move = player.read_to("move .*")
        self.assertEqual((value, move), ("whisper kibitz bookMove (value c)", "move e2e4"))
        self.assertEqual(engine.THINKING.fullmatch(thinking).group("depth", "score", "pv"), ("0", "0", "e2e4"))
        self.assertEqual(player.settled(), ([], True))  # it does not ponder

    def test_pondering(self):
        self.make("e2e4a")
        player = self.ready_engine(directory=self.home)
        for word in ("ponderhit", "stop"):
            player.send("position startpos", "go ponder depth 9")
            self.assertEqual(player.settled(), ([], False))
            player.send(word)
            self.assertEqual(player.answer().best, "e2e4")
        player = self.engine(words=("xboard", "easy", "force", "e2e4", "e7e5", "addmove g1f3d"), directory=self.home)
        for word in ("e7e5", "c7c5", "exit", "force", "undo", "new", "?") * 20:
            player.send("new", "sd 4", "force", "e2e4", "ponder e7e5", word)
            said = "\n".join(player.read_to("move .*") if word.endswith("5") else player.settled()[0])
            if word == "e7e5":
                self.assertRegex(said, r"whisper kibitz bookMove \(value d\)\n.*\nmove g1f3$")
            else:  # it is taken back, or another move has come
                self.assertNotRegex(said, "bookMove" if word == "c7c5" else "bookMove|move ")


class Filling(BookTest):
    def check_import(self, rows, before, *words):
        """Imports into a book, which must then hold the rows: way, position, move, value (0: none), mode."""
        self.book.write_bytes(image(before) if before else b"")
        book = copy.deepcopy(before)
        for (_, board, move, value, mode), key in zip(rows, self.keys(*(row[0] for row in rows)), strict=True):
            if value != "0":
                add(book, key, entry(board, move), value, int(mode))
        data, said = self.saved(*words)
        self.assertEqual(data, image(book))
        return book, "\n".join(said)

    def import_text(self, text, answers, before, typed=None):
        (self.home / "lines.txt").write_text(text)
        values = dict(zip(VALUES + "- ", answers))
        rows = [(*place, values[value], answers[-1]) for *place, value in read_text(text)]
        book, said = self.check_import(rows, before, "importbook lines.txt", typed or answers)
        self.assertIn("\n".join(report(book, before)), said)
        self.assertEqual(said.count("Value must be zero or in the range from a-g!"), 7 if typed else 0)
        return book, len(rows)

    def test_text_books(self):
        first, _ = self.import_text(TEXT, "abcdefgde1", {})
        for mode in "012":
            self.import_text(TEXT, "b0adgfc0e" + mode, first, typed="xBb 0\nh1-a d g?f c 0 z e " + mode)
        text = (pathlib.Path(__file__).parents[2] / "share" / "book.txt").read_text()  # every move of it is legal
        self.assertEqual(self.import_text(text, "abcdefg001", {})[1], len(re.findall(r"\b(?:[A-H][1-8]){2}\b", text)))

    def test_refusals_and_input_that_ends(self):
        for path in ("none", ".", ""):
            self.assertIn("Error: file does not exist!", self.console(f"importbook {path}"))
            told = f"Error: could not open {path}!" if path else "Error: no filename given!"
            self.assertEqual(self.console(f"pgn2book {path}")[-1], told)
        (self.home / "lines.txt").write_text("1 E2E4 a E7E8/K a ;")
        said = self.console("importbook lines.txt", "abcdefg001", "bookstats", code=1)
        self.assertEqual(said[-1], "Error in importTextBook(): promotion error!")
        for command, questions, answers in (("importbook", TEXT_ASKED, "abcdefg00"), ("pgn2book", PGN_ASKED, "a1b1")):
            for given in range(len(questions)):
                expected = "".join(questions[:given + 1]) + "Error: the input ended before all questions were answered!"
                self.assertIn(expected, "\n".join(self.console(f"{command} lines.txt", answers[:given])))

    def import_games(self, games, values, modes, plies, *typed):
        """Values and overwrite modes are those of white and of black."""
        rows = []
        for fen, _, moves in games:
            way, board = (fen,), Board(fen)
            for text in moves.split()[:plies]:
                move, (default, mode) = board.find(text[:-1]), (values[not board.white], modes[not board.white])
                rows.append((way, board, move, default if default == "0" or text[-1] == "-" else text[-1], mode))
                way, board = (*way, text[:-1]), board.play(move)
        return self.check_import(rows, {}, "pgn2book games.pgn", *typed)

    def test_from_games_to_play_and_back(self):
        texts = {entry(Board(), move): Board().uci(move) for move in Board().moves()}
        games = [(START, f"1. {'N' * (text[1] == '1')}{text[2:]}{mark}\n*\n\n", text + value)
                 for text, (mark, value) in zip(texts.values(), MARKS.items())] + GAMES
        (self.home / "games.pgn").write_bytes(("\ufeff" + "".join(text for _, text, _ in games)).encode())
        self.import_games(games, "0e", "03", 3, "0e3", "3")
        book, said = self.import_games(games, "cd", "12", 512, "x c\r\n4 1 h 1 d - 2", "0", "513", "512")
        complaint = "The value has to be (?:zero or between 'a' and 'g'|between 0 and 3|between 1 and 512)!\n"
        self.assertEqual(len(re.findall(complaint, said)), 7)
        self.assertIn("\nerror in convertPGNMove2move: move could not be correctly converted!\n"
                      "Error: the FEN of a game cannot be read: 8/8 w\nWent through 22 games...", said)
        self.settings("bookFile=out", "weightD=50")
        (low, high), = self.keys((START,))
        moves = book[low & 0xFFFF][high]
        weights = dict(zip(VALUES, (900, 400, 100, 50, 0, 0, 0)))
        self.check_shares(self.ready_engine("BestBookMovesOnly value false", directory=self.home),
                          {texts[move]: weights[value] for move, value in moves.items()})
        data, said = self.saved(*("rmmove " + texts[move] for move in moves))
        del book[low & 0xFFFF][high]
        self.assertEqual((data, said[-9:]), (image(book), report(book)))
        self.assertEqual(self.ready_engine(directory=self.home).go("depth 5", "startpos").depth, 5)

    def test_single_moves(self):
        book, player = self.make("e2e4a"), self.ready_engine(directory=self.home)
        wide, value, promotion = "coordinates out of range", "value out of range", "promotion error"
        for fen, command, texts, told in (
                (START, "addmove", "|e2e|i2e4a|e2e9a", wide), (WHITE_PROMOTES, "rmmove", "a7b8|a7b8r", promotion),
                (START, "addmove", "e2e4|e2e4 a|e2e4h", value), (WHITE_PROMOTES, "addmove", "a7b8R|a7b8R f", value),
                (START, "addmove", "e2e5a|e7e5a|e1g1a", "illegal move"), (PINNED, "addmove", "e2d3a", "illegal move"),
                (START, "rmmove", "e7e5|d2d4", "move not found in book"), (START, "rmmove", "|e2|e2i4", wide),
                (WHITE_PROMOTES, "addmove", "a7a8a|a7b8q|a7a8Kc|a7a8", promotion)):
            place = "AddMove" if command == "addmove" or told == promotion else "RMMove"
            for text in texts.split("|"):
                player.send(f"position fen {fen}", f"{command} {text}" if text else command)
                self.assertEqual(player.ready(), [f"error in received{place}: {told}!"], f"{command} {text} {fen}")
        for fen, text in ((WHITE_PROMOTES, "a7b8Rf"), (WHITE_PROMOTES, "a7b8Ra"), (BLACK_PROMOTES, "a2a1Ne")):
            before, board = copy.deepcopy(book), Board(fen)
            add(book, *self.keys((fen,)), entry(board, board.find(text[:-1].lower())), text[-1])
            player.send(f"position fen {fen}", "addmove " + text, "writebook out")
            self.assertEqual(player.ready()[:-2], report(book, before), text)
            self.assertEqual(self.out.read_bytes(), image(book))


if __name__ == "__main__":
    engine.main()
