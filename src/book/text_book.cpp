#include "book/text_book.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "chess/game.h"
#include "chess/move_text.h"
#include "platform/fault.h"
#include "platform/long_command.h"
#include "platform/text_scan.h"

namespace valku {

namespace {

constexpr std::size_t longestLine = 4096;
constexpr char endOfBranch = ';';

// One line of the text. Past its end there is nothing but ends of branches.
class Branch {
  public:
    explicit Branch(std::string_view line) : text(line.substr(0, longestLine)) {
        const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
        ply = 2 * i64{readNumber(text.substr(0, digits))} - 2;
        position = digits;
        if (peek() == '-') {
            ++ply;
            ++position;
        }
    }

    char peek() const { return position < text.size() ? text[position] : endOfBranch; }
    char next() {
        const char c = peek();
        ++position;
        return c;
    }
    void skipBlanks() {
        while (peek() == ' ' || peek() == '\t' || peek() == '\r') ++position;
    }

    i64 ply;  // of the game, from 0, where the branch goes on

  private:
    std::string_view text;
    std::size_t position;
};

struct BranchMove {
    int from = noSquare;
    int to = noSquare;
    char promotion = 0;
    char value = noTextValue;
};

int readSquare(Branch& branch) {
    const int file = branch.next() - 'A';
    const int rank = branch.peek() - '1';
    if (file < 0 || file > 7 || rank < 0 || rank > 7) return noSquare;
    branch.next();
    return makeSquare(file, rank);
}

// Nothing if the text there is no move.
std::optional<BranchMove> readMove(Branch& branch) {
    BranchMove move;
    move.from = readSquare(branch);
    if (move.from == noSquare) return std::nullopt;
    move.to = readSquare(branch);
    if (move.to == noSquare) return std::nullopt;
    if (branch.peek() == '/') {
        branch.next();
        move.promotion = branch.next();
    }
    if (branch.peek() == endOfBranch) return move;
    branch.next();
    branch.skipBlanks();
    if (isBookValue(branch.peek()) || branch.peek() == '-') {
        move.value = branch.next();
        if (branch.peek() != endOfBranch) branch.next();
    }
    branch.skipBlanks();
    return move;
}

void readBranch(Branch& branch, const TextBookValues& values, Overwrite overwrite) {
    if (branch.ply < 0) return;
    while (stackedMoves(gamePosition) + droppedGameMoves > branch.ply && takeBackGameMove()) {
    }
    branch.skipBlanks();
    while (branch.peek() != endOfBranch) {
        const std::optional<BranchMove> read = readMove(branch);
        if (!read) return;
        const u8 piece = promotionPiece(read->promotion, static_cast<Color>(gamePosition.sideToMove));
        if (read->promotion && !piece) throw Fault("Error in importTextBook(): promotion error!");
        const Move move = withPromotion(findLegalMove(read->from, read->to, gamePosition), piece);
        if (move == nullMove) continue;
        const char value = values.at(read->value);
        if (isBookValue(value)) addBookMove(gamePosition, move, value, overwrite);
        playGameMove(move);
    }
}

}  // namespace

void readTextBook(std::istream& text, const TextBookValues& values, Overwrite overwrite) {
    for (std::string line; !commandStopped() && std::getline(text, line);) {
        Branch branch(line);
        readBranch(branch, values, overwrite);
    }
}

}  // namespace valku
