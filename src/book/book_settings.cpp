#include "book/book_settings.h"

namespace valku {

namespace {

struct BookWeight {
    unsigned char value;
    i32 weight;
};

constexpr BookWeight standardWeights[] = {{'a', 900}, {'b', 400}, {'c', 100}, {'d', 1},
                                          {'e', 0},   {'f', 0},   {'g', 0}};

}  // namespace

std::string bookFile = "<empty>";
i32 bookWeights[256];
SharedFlag BestBookMovesOnly{true};

void initBookWeights() {
    for (const BookWeight& row : standardWeights) bookWeights[row.value] = row.weight;
}

}  // namespace valku
