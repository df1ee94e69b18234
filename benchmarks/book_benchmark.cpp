#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "benchmark_engine.h"
#include "book/book_file.h"
#include "book/pgn_reader.h"
#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/move_text.h"

namespace valku {

namespace {

char manLetter(u8 code) {
    if (code & knightFlag) return 'N';
    if (code & kingFlag) return 'K';
    if (!(code & straightFlag)) return 'B';
    return code & diagonalFlag ? 'Q' : 'R';
}

// The legal moves of searchPosition.
void generateLegalMoves(MoveList& list) {
    generateAllMoves(list);
    i32 legal = 0;
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(list.moves[i]);
        if (!leftKingInCheck()) list.moves[legal++] = list.moves[i];
        unmakeMove();
    }
    list.count = legal;
}

// File, rank or both where other men of the kind could go there too.
std::string disambiguation(const MoveList& legal, Move move) {
    const int from = moveFrom(move);
    bool needed = false;
    bool sharesFile = false;
    bool sharesRank = false;
    for (i32 i = 0; i < legal.count; ++i) {
        const int other = moveFrom(legal.moves[i]);
        if (other == from || moveTo(legal.moves[i]) != moveTo(move) ||
            searchPosition.board[other] != searchPosition.board[from]) {
            continue;
        }
        needed = true;
        sharesFile |= fileOf(other) == fileOf(from);
        sharesRank |= rankOf(other) == rankOf(from);
    }
    const std::string square = squareText(from);
    if (!needed) return "";
    if (!sharesFile) return square.substr(0, 1);
    return sharesRank ? square : square.substr(1);
}

std::string notationOf(const MoveList& legal, Move move) {
    const int from = moveFrom(move);
    const int to = moveTo(move);
    const u8 man = searchPosition.board[from];
    const bool pawn = (man & pawnFlag) != 0;
    const bool captures = searchPosition.board[to] != empty || (pawn && fileOf(from) != fileOf(to));
    std::string text;
    if (moveCastling(move)) {
        text = moveCastling(move) == shortCastling ? "O-O" : "O-O-O";
    } else {
        if (!pawn) {
            text += manLetter(man);
            text += disambiguation(legal, move);
        } else if (captures) {
            text += squareText(from).front();
        }
        if (captures) text += 'x';
        text += squareText(to);
        if (const u8 promotion = movePromotion(move)) {
            text += '=';
            text += manLetter(promotion);
        }
    }
    makeMove(move);
    MoveList answers;
    generateLegalMoves(answers);
    if (inCheck()) text += answers.count ? '+' : '#';
    unmakeMove();
    return text;
}

enum Style : i64 { databaseStyle, engineStyle };

struct Collection {
    std::filesystem::path path;
    i64 bytes = 0;
    i64 plies = 0;

    explicit Collection(Style style);
    ~Collection() {
        std::error_code error;
        std::filesystem::remove(path, error);
    }
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;
};

// Lines of at most 80 characters, as export formats want them.
class Movetext {
  public:
    void add(const std::string& word) {
        const bool breaks = text_.size() - lineStart_ + word.size() >= 80;
        text_ += breaks ? '\n' : ' ';
        if (breaks) lineStart_ = text_.size();
        text_ += word;
    }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
    std::size_t lineStart_ = 0;
};

std::string randomGame(std::mt19937& random, Style style, i64& plies) {
    copyPosition(searchPosition, gamePosition);
    const int length = 60 + static_cast<int>(random() % 100);
    Movetext moves;
    for (int ply = 0; ply < length; ++ply) {
        MoveList legal;
        generateLegalMoves(legal);
        if (legal.count == 0) break;
        const Move move = legal.moves[random() % static_cast<u32>(legal.count)];
        const std::string number = std::to_string(ply / 2 + 1);
        if (ply % 2 == 0) {
            moves.add(number + '.');
        } else if (style == engineStyle) {
            moves.add(number + "...");
        }
        moves.add(notationOf(legal, move));
        if (style == engineStyle) {
            char value[32];
            std::snprintf(value, sizeof value, "{%+.2f/%u", static_cast<int>(random() % 400 - 200) / 100.0,
                          static_cast<unsigned>(random() % 12 + 8));
            moves.add(value);
            moves.add(std::to_string(random() % 9 + 1) + "s}");
        }
        makeMove(move);
        ++plies;
    }
    moves.add("1/2-1/2");
    return moves.text();
}

Collection::Collection(Style style) {
    const std::string name = "valku_benchmark_" + std::to_string(std::random_device{}()) + ".pgn";
    path = std::filesystem::temp_directory_path() / name;
    std::ofstream file(path, std::ios::binary);
    readFen(startPositionFen);
    std::mt19937 random(1);
    for (int game = 1; game <= 5000; ++game) {
        file << "[Event \"Random moves\"]\n[Site \"?\"]\n[Date \"2000.01.01\"]\n[Round \"" << game
             << "\"]\n[White \"Player, A\"]\n[Black \"Player, B\"]\n[Result \"1/2-1/2\"]\n"
             << "[WhiteElo \"2400\"]\n[BlackElo \"2400\"]\n[ECO \"A00\"]\n\n"
             << randomGame(random, style, plies) << "\n\n";
    }
    bytes = file.tellp();
}

const Collection& collection(Style style) {
    static const std::array<Collection, 2> collections{Collection(databaseStyle), Collection(engineStyle)};
    return collections[static_cast<std::size_t>(style)];
}

// Reads and plays a whole collection; `each` is the time of one ply.
void walkPgn(benchmark::State& state) {
    const Style style = static_cast<Style>(state.range(0));
    state.SetLabel(style == databaseStyle ? "database" : "engine games");
    const Collection& games = collection(style);
    i64 shown = 0;
    const auto visitor = [&](const PgnPly&) {
        ++shown;
        return true;
    };
    for (auto _ : state) walkPgnFile(games.path.string(), visitor, PgnGame::maxPlies);
    const i64 rounds = static_cast<i64>(state.iterations());
    if (shown != rounds * games.plies) state.SkipWithError("moves are missing");
    state.SetBytesProcessed(rounds * games.bytes);
    countOperations(state, static_cast<double>(shown));
}
BENCHMARK(walkPgn)->Arg(databaseStyle)->Arg(engineStyle)->Unit(benchmark::kMillisecond);

void appendNumber(std::string& bytes, u32 number, int length) {
    for (int i = 0; i < length; ++i) bytes += static_cast<char>(number >> 8 * i);
}

// A book of a million positions with one move each, in all buckets or in one.
std::string largeBook(u32 buckets) {
    constexpr u32 positions = 1'000'000;
    std::mt19937 random(1);
    std::string bytes;
    for (u32 bucket = 0; bucket < buckets; ++bucket) {
        if (bucket) bytes.back() = '\xC9';
        appendNumber(bytes, bucket, 2);
        for (u32 i = bucket; i < positions; i += buckets) {
            appendNumber(bytes, static_cast<u32>(random()), 4);
            bytes += std::string("\x14\x34\0b\xC8", 5);
        }
    }
    bytes.back() = '\xCA';
    return bytes;
}

// Once for each size: a process reads its book once, and what it has read stays.
void readBook(benchmark::State& state) {
    const std::string name = "valku_benchmark_" + std::to_string(std::random_device{}()) + ".book";
    const std::filesystem::path path = std::filesystem::temp_directory_path() / name;
    const std::string bytes = largeBook(static_cast<u32>(state.range(0)));
    std::ofstream(path, std::ios::binary) << bytes;
    bookFile = path.string();
    for (auto _ : state) loadBook();
    std::filesystem::remove(path);
    state.SetBytesProcessed(static_cast<i64>(bytes.size()));
}
BENCHMARK(readBook)->Arg(65536)->Arg(1)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace valku
