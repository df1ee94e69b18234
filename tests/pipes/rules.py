"""The rules of chess, written for judging the engine: slow, short, and sharing nothing with it.

Castling is kept as the set of rook squares that still have the right, which serves normal chess and Chess960 alike.
"""

import re

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
        rows = (re.sub("[1-8]", lambda gap: "." * int(gap[0]), row) for row in reversed(placement.split("/")))
        self.men = [None if letter == "." else letter for row in rows for letter in row]
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
        color = str.upper if by_white else str.lower
        pawns = [(file, -1 if by_white else 1) for file in (-1, 1)]
        for man, directions in (*JUMPS.items(), ("p", pawns)):
            if any(at is not None and self.men[at] == color(man) for at in (step(square, d) for d in directions)):
                return True
        for directions, men in ((DIAGONAL, color("bq")), (STRAIGHT, color("rq"))):
            for direction in directions:
                at = next((at for at in ray(square, direction) if self.men[at]), None)
                if at is not None and self.men[at] in men:
                    return True
        return False

    def in_check(self):
        return self.attacked(self.king(self.white), not self.white)

    def pawn_moves(self, origin):
        up, home = (1, 1) if self.white else (-1, 6)
        ahead = step(origin, (0, up))
        targets = [ahead] if self.men[ahead] is None else []
        if targets and origin // 8 == home and self.men[ahead + 8 * up] is None:
            targets.append(ahead + 8 * up)
        for file in (-1, 1):
            side = step(origin, (file, up))
            if side is not None and (side == self.en_passant or (self.men[side] and not self.is_own(self.men[side]))):
                targets.append(side)
        for target in targets:
            for promotion in "qrbn" if target // 8 in (0, 7) else ("",):
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
        for origin, man in enumerate(self.men):
            if not self.is_own(man):
                continue
            kind = man.lower()
            if kind == "p":
                yield from self.pawn_moves(origin)
            for direction in JUMPS.get(kind, SLIDES.get(kind, ())):
                for target in ray(origin, direction):
                    if not self.is_own(self.men[target]):
                        yield origin, target, "", None
                    if self.men[target] or kind in JUMPS:
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
            letters = "abcdefgh" if self.chess960 else "q------k"
            field += write("".join(letters[file] for file in (files if self.chess960 else files[::-1])))
        return field or "-"

    def fen(self):
        rows = ("".join(man or "." for man in self.men[8 * rank:8 * rank + 8]) for rank in range(7, -1, -1))
        placement = re.sub(r"\.+", lambda gap: str(len(gap[0])), "/".join(rows))
        field = "-" if self.en_passant is None else name(self.en_passant)
        return (f"{placement} {'w' if self.white else 'b'} {self.castling_field()} {field} {self.fifty % 256} "
                f"{self.ply // 2 + 1}")


def perft(board, depth):
    """Leaves of the tree of legal moves."""
    moves = board.moves()
    return len(moves) if depth == 1 else sum(perft(board.play(move), depth - 1) for move in moves)
