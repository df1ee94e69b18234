"""The rules of chess, written for judging the engine: slow, short, and sharing nothing with it.

Castling is kept as the set of rook squares that still have the right, which serves normal chess and Chess960 alike.
"""

START = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"

DIAGONAL = ((1, 1), (1, -1), (-1, 1), (-1, -1))
STRAIGHT = ((1, 0), (-1, 0), (0, 1), (0, -1))
KNIGHT = tuple((a, b) for a in (-2, -1, 1, 2) for b in (-2, -1, 1, 2) if abs(a) != abs(b))
SLIDES = {"b": DIAGONAL, "r": STRAIGHT, "q": DIAGONAL + STRAIGHT}
JUMPS = {"n": KNIGHT, "k": DIAGONAL + STRAIGHT}


def name(square):
    return "abcdefgh"[square % 8] + str(square // 8 + 1)


def square_of(text):
    return "abcdefgh".index(text[0]) + 8 * (int(text[1]) - 1)


def step(square, direction):
    file, rank = square % 8 + direction[0], square // 8 + direction[1]
    return 8 * rank + file if 0 <= file < 8 and 0 <= rank < 8 else None


def ray(square, direction):
    while (square := step(square, direction)) is not None:
        yield square


class Board:
    """A position. A move is (from, to, promotion letter or "", rook square of a castling or None)."""

    def __init__(self, fen=START, chess960=False):
        placement, side, castling, en_passant, fifty, number = fen.split()
        self.chess960 = chess960
        self.men = [None] * 64
        for rank, row in zip(range(7, -1, -1), placement.split("/")):
            square = 8 * rank
            for letter in row:
                if letter.isdigit():
                    square += int(letter)
                else:
                    self.men[square] = letter
                    square += 1
        self.white = side == "w"
        self.rights = frozenset(self.rook_of(letter) for letter in castling if letter != "-")
        self.en_passant = None if en_passant == "-" else square_of(en_passant)
        self.fifty, self.ply = int(fifty), 2 * (int(number) - 1) + (not self.white)

    def rook_of(self, letter):
        home = 0 if letter.isupper() else 56
        return home + {"k": 7, "q": 0}.get(letter.lower(), ord(letter.lower()) - ord("a"))

    def is_own(self, man):
        return man is not None and man.isupper() == self.white

    def king(self, white):
        return self.men.index("K" if white else "k")

    def attacked(self, square, by_white):
        own = str.upper if by_white else str.lower
        for man, directions in JUMPS.items():
            if any(at is not None and self.men[at] == own(man) for at in (step(square, d) for d in directions)):
                return True
        for file in (-1, 1):
            at = step(square, (file, -1 if by_white else 1))
            if at is not None and self.men[at] == own("p"):
                return True
        for directions, men in ((DIAGONAL, own("bq")), (STRAIGHT, own("rq"))):
            for direction in directions:
                at = next((at for at in ray(square, direction) if self.men[at]), None)
                if at is not None and self.men[at] in men:
                    return True
        return False

    def in_check(self):
        return self.attacked(self.king(self.white), not self.white)

    def pawn_moves(self, origin):
        up, last = (1, 7) if self.white else (-1, 0)
        targets = []
        ahead = step(origin, (0, up))
        if self.men[ahead] is None:
            targets.append(ahead)
            if origin // 8 == (1 if self.white else 6) and self.men[ahead + 8 * up] is None:
                targets.append(ahead + 8 * up)
        for file in (-1, 1):
            side = step(origin, (file, up))
            if side is not None and (side == self.en_passant or (self.men[side] and not self.is_own(self.men[side]))):
                targets.append(side)
        for target in targets:
            for promotion in "qrbn" if target // 8 == last else ("",):
                yield origin, target, promotion, None

    def castlings(self):
        home = 0 if self.white else 56
        king = self.king(self.white)
        for rook in self.rights:
            if rook // 8 != home // 8 or self.in_check():
                continue
            king_to, rook_to = (home + 6, home + 5) if rook > king else (home + 2, home + 3)
            between = lambda a, b: range(min(a, b), max(a, b) + 1)
            road = set(between(king, king_to)) | set(between(rook, rook_to))
            if any(self.men[at] for at in road - {king, rook}):
                continue
            if not any(self.attacked(at, not self.white) for at in between(king, king_to)):
                yield king, king_to, "", rook

    def pseudo_moves(self):
        for origin in range(64):
            man = self.men[origin]
            if not self.is_own(man):
                continue
            kind = man.lower()
            if kind == "p":
                yield from self.pawn_moves(origin)
            for direction in JUMPS.get(kind, ()):
                target = step(origin, direction)
                if target is not None and not self.is_own(self.men[target]):
                    yield origin, target, "", None
            for direction in SLIDES.get(kind, ()):
                for target in ray(origin, direction):
                    if not self.is_own(self.men[target]):
                        yield origin, target, "", None
                    if self.men[target]:
                        break
        yield from self.castlings()

    def place(self, move):
        """Moves the men on the board only; the man that was captured."""
        origin, target, promotion, rook = move
        man, captured = self.men[origin], self.men[target]
        self.men[origin] = None
        if rook is not None:
            rook_man, self.men[rook] = self.men[rook], None
            self.men[target + (-1 if target % 8 == 6 else 1)] = rook_man
            captured = None
        elif man in "pP" and target == self.en_passant:
            victim = 8 * (origin // 8) + target % 8
            captured, self.men[victim] = self.men[victim], None
        self.men[target] = (promotion.upper() if self.white else promotion) or man
        return captured

    def is_safe(self, move):
        """Whether a pseudo-legal move leaves the own king out of reach."""
        kept, self.men = self.men, self.men[:]
        self.place(move)
        safe = not self.attacked(self.king(self.white), not self.white)
        self.men = kept
        return safe

    def moves(self):
        return [move for move in self.pseudo_moves() if self.is_safe(move)]

    def play(self, move):
        """The position after a move; this one stays."""
        after = object.__new__(Board)
        after.__dict__.update(self.__dict__)
        after.men = self.men[:]
        origin, target, _, _ = move
        man = self.men[origin]
        captured = after.place(move)
        after.rights = frozenset(rook for rook in self.rights if rook not in (origin, target) and not (
            man in "kK" and rook // 8 == (0 if self.white else 7)))
        after.en_passant = None
        if man in "pP" and abs(target - origin) == 16:
            beside = (step(target, (-1, 0)), step(target, (1, 0)))
            if any(at is not None and self.men[at] == ("p" if self.white else "P") for at in beside):
                after.en_passant = (origin + target) // 2
        after.fifty = 0 if captured or man in "pP" else self.fifty + 1
        after.ply += 1
        after.white = not self.white
        return after

    def uci(self, move):
        origin, target, promotion, rook = move
        return name(origin) + name(rook if rook is not None and self.chess960 else target) + promotion

    def line_text(self, move):
        """The way in which the engine's main lines write a move."""
        if move[3] is not None and self.chess960:
            return "O-O" if move[1] % 8 == 6 else "O-O-O"
        return name(move[0]) + name(move[1]) + move[2].upper()

    def find(self, text, form=uci):
        """The legal move that a text names, None if there is none."""
        return next((move for move in self.pseudo_moves() if form(self, move) == text and self.is_safe(move)), None)

    def identity(self):
        """What two positions of a game must share to count as repeated for the engine: no castling rights."""
        return tuple(self.men), self.white, self.en_passant

    def end(self, earlier):
        """The engine's verdict on a game whose former positions are given, as the words in its braces."""
        if self.fifty >= 100:
            return "Draw by 50-moves-rule"
        if earlier.count(self.identity()) >= 2:
            return "Draw by repetition"
        men = "".join(man for man in self.men if man).lower().replace("k", "")
        if men in ("", "n", "b"):
            return "Draw by insufficient material"
        if any(self.is_safe(move) for move in self.pseudo_moves()):
            return None
        if not self.in_check():
            return "Stalemate"
        return "Black mates" if self.white else "White mates"

    def castling_field(self):
        field = ""
        for home, write in ((0, str.upper), (56, str.lower)):
            files = sorted(rook - home for rook in self.rights if rook // 8 == home // 8)
            if self.chess960:
                field += "".join(write("abcdefgh"[file]) for file in files)
            else:
                field += "".join(write("q" if file == 0 else "k") for file in reversed(files))
        return field or "-"

    def fen(self):
        rows = []
        for rank in range(7, -1, -1):
            row = "".join(man or "1" for man in self.men[8 * rank:8 * rank + 8])
            for gap in range(8, 1, -1):
                row = row.replace("1" * gap, str(gap))
            rows.append(row)
        field = "-" if self.en_passant is None else name(self.en_passant)
        return (f"{'/'.join(rows)} {'w' if self.white else 'b'} {self.castling_field()} {field} {self.fifty % 256} "
                f"{self.ply // 2 + 1}")


def perft(board, depth):
    """Leaves of the tree of legal moves."""
    moves = board.moves()
    return len(moves) if depth == 1 else sum(perft(board.play(move), depth - 1) for move in moves)
