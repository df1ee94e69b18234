#include <map>

#include "chess/move_text.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "distributed/split_search.h"
#include "eval/pawn_table.h"
#include "search/alpha_beta.h"
#include "search/quiescence.h"
#include "search/search_state.h"
#include "search/search_test.h"
#include "search/stop_word.h"
#include "search/upward_calls.h"
#include "thinking/main_line.h"
#include "thinking/root_search.h"
#include "thinking/search_observer.h"
#include "thinking/thinking.h"
#include "thinking/time_management.h"

namespace valku {
namespace {

// Writes down what a search tells, and can stop it at a root move.
class Watcher final : public SearchObserver {
  public:
    struct Report {
        i32 depth;
        Line line;
        bool failHigh;
    };

    void rootMoveBegun(i32, Move, i32, const StateRecord&) override {
        if (++rootMovesBegun == stopAtRootMove) setStop(stopFromOutside);
    }
    void mainLineFound(i32 depth, i32, const Line& line, bool failHigh) override {
        mainLines.push_back({depth, line, failHigh});
        nodes[depth] = totalNodes;
    }

    std::vector<Report> mainLines;
    std::map<i32, u64> nodes;  // at the end of each iteration
    int rootMovesBegun = 0, stopAtRootMove = 0;
};

class Search : public ::testing::Test {
  protected:
    void SetUp() override { freshEngine(65536); }
    void TearDown() override {
        clearAllStops();
        searchObserver = nullptr;
    }

    // As a process that has just started, but for the stream of random numbers.
    void freshEngine(u64 buckets) {
        rootSearchProcess.reset();
        releaseHashTable();
        setHashBuckets(static_cast<i64>(buckets));
        rootSearchProcess = std::make_unique<RootSearchProcess>(false);
        clearPawnTable();
        clearHistory();
        clearAllStops();
        watcher = Watcher{};
        searchObserver = &watcher;
        splitSearchPort = splitSearch;
    }

    static void setGame(const char* fen, const char* moves = "") {
        setPosition(fen);
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            const Move move = uciTextToMove(word, gamePosition);
            EXPECT_NE(move, nullMove) << word;
            makeMove(gamePosition, move);
        }
    }

    void search(i32 depth) {
        watcher.nodes.clear();
        clearAllStops();
        think(depth, unlimitedSeconds);
    }

    std::string nodesOfIterations() const {
        std::string counts;
        for (const auto& [depth, count] : watcher.nodes) counts += std::to_string(count) + ' ';
        return counts;
    }

    static SearchResult job(const char* fen, i32 depth, bool zws) {
        setPosition(fen);
        rootSearchProcess->setJob(searchPosition, {1, 0, 50, depth, zws}, nullptr);
        rootSearchProcess->runRootSearch();
        return rootSearchProcess->getResult();
    }

    static std::string text(const Line& line) {
        std::string text;
        for (int i = 0; line.moves[i]; ++i) text += moveToText(line.moves[i]) + ' ';
        return text;
    }

    Watcher watcher;
};

struct SearchCase {
    u64 buckets;  // none: the tables stay as the search before has left them
    i32 depth, score;
    u32 hashUsed;
    i32 selDepth;
    const char *fen, *moves;
    const char* nodes;  // at the end of each iteration, from depth 2 on
    const char* line;   // none: nothing is known of it nor of the selective depth
    bool isChess960 = false;
};

// Figures of an independent model of evaluation and search. The deep ones draw random numbers, so the rows go
// in this order, once in a process, and no test before this one may draw. The last four are one game, whose
// searches find the tables of the ones before, and aged entries of a small table.
TEST_F(Search, NodeCountsOfAnIndependentModel) {
    const SearchCase cases[] = {
        {2097152, 9, 27, 8511, 18, startPositionFen, "", "116 541 939 2173 7061 15936 28119 40153 ",
         "g1f3 b8c6 d2d4 d7d5 b1c3 g8f6 c1f4 c8f5 e2e3 "},
        {65536, 8, 32, 9826, 18, startPositionFen, "e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6 e1g1",
         "168 310 584 2368 5544 11664 34969 ", "f8c5 d2d3 d7d6 c1g5 c8e6 b1c3 d8e7 "},
        {65536, 6, 11, 4545, 16, richPosition, "", "312 1047 2121 5590 20416 ",
         "d5e6 a6e2 c3e2 e7e6 d2f4 h3g2 f3g2 "},
        {65536, 8, -17, 13494, 14, "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 b - - 0 9", "",
         "465 686 1870 3586 7689 29967 50745 ", "d8c7 c3b5 c7b8 c4c5 c8d7 c1d2 f8c8 b5c3 "},
        {65536, 6, 29997, 2038, 10, "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1", "",
         "1058 2185 4172 4885 8517 ", "g3g6 f7g6 e5g6 "},
        {65536, 10, 72, 11698, 19, "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "",
         "159 396 937 1320 2296 16255 28926 51131 71580 ",
         "b4f4 h4g3 f4c4 h5h7 a5a6 g3g2 a6b7 c7c5 b7c6 h7h6 b5b6 d6d5 c6d5 h6b6 d5c5 "},
        {65536, 10, -21, 7047, 17, "8/5pk1/4p1p1/1p1pP2p/1P1P3P/r4PP1/4RK2/8 w - - 93 80", "",
         "139 281 740 2333 2960 4602 7075 11377 31125 ",
         "e2e3 a3a1 e3e1 a1a4 e1b1 f7f6 b1b3 f6e5 d4e5 d5d4 "},
        {65536, 9, 1701, 5465, 16, "r5k1/p1P2p1p/1P4p1/8/8/b7/B5PP/5RK1 w - - 0 30", "",
         "269 610 1045 2100 3057 5117 15897 28815 ",
         "b6b7 a8f8 b7b8Q a3c5 g1h1 g8g7 c7c8Q f8c8 f1f7 g7h6 b8c8 c5e3 a2b3 "},
        {65536, 7, 74, 2637, 13, startPositionFen, "g1f3 g8f6 f3g1 f6g8 b1c3 b8c6 c3b1",
         "113 434 989 2664 6742 11988 ", "e7e5 b1c3 d7d5 e2e4 d5e4 c3e4 c8f5 "},
        {65536, 7, -51, 8403, 16, "bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", "",
         "238 344 519 1469 4810 21765 ", "b2b3 d8b6 a1f6 c5c4 d3d4 c4b3 c2b3 g7f6 ", true},
        {4096, 7, 26, 3173, 0, startPositionFen, "", "116 541 939 2173 6973 15780 ", ""},
        {0, 7, 27, 2068, 0, startPositionFen, "e2e4 e7e5", "162 438 1290 2846 5481 8979 ", ""},
        {0, 7, 28, 2277, 0, startPositionFen, "e2e4 e7e5 g1f3 b8c6", "159 248 389 1561 4661 9960 ", ""},
        {0, 7, -3, 3180, 0, startPositionFen, "e2e4 e7e5 g1f3 b8c6 f1b5 g8f6", "315 554 952 3334 6544 12173 ",
         ""},
    };
    for (const SearchCase& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + ' ' + c.moves);
        const Chess960Scope mode(c.isChess960);
        if (c.buckets) freshEngine(c.buckets);
        setGame(c.fen, c.moves);
        search(c.depth);
        EXPECT_EQ(nodesOfIterations(), c.nodes);
        EXPECT_EQ(lastScore, c.score);
        EXPECT_EQ(hashUsed, c.hashUsed);
        // An iteration reports its line again at its end.
        const auto& reports = watcher.mainLines;
        for (std::size_t i = 1; i < reports.size(); ++i) {
            if (i + 1 < reports.size() && reports[i + 1].depth == reports[i].depth) continue;
            EXPECT_EQ(text(reports[i].line), text(reports[i - 1].line)) << i;
            EXPECT_FALSE(reports[i].failHigh) << i;
        }
        if (!*c.line) continue;
        EXPECT_EQ(text(mainLine), c.line);
        EXPECT_EQ(totalSelDepth, c.selDepth);
    }
}

TEST_F(Search, WithoutTimeTheFirstLegalMoveIsTheAnswer) {
    setGame("4k3/8/8/8/1b6/8/2P5/4K3 w - - 0 1");  // c2 is no good: White is in check
    think(50, 0.0);
    EXPECT_TRUE(watcher.mainLines.empty());
    EXPECT_EQ(writeFen(), "4k3/8/8/8/1b6/2P5/8/4K3 b - - 0 1");
}

// A root move that is stopped leaves the board as it was before that move; what comes back means nothing.
TEST_F(Search, AStopUnmakesTheRootMove) {
    for (const int stopAt : {1, 2, 20, 47}) {
        freshEngine(65536);
        setGame(richPosition);
        watcher.stopAtRootMove = stopAt;
        prepareSearches();
        prepareRootSearch();
        EXPECT_EQ(alphaBetaRoot(-mateScore, mateScore, 4), stopValue) << stopAt;
        EXPECT_EQ(watcher.rootMovesBegun, stopAt);
        EXPECT_EQ(writeFen(rootPosition), richPosition) << stopAt;
    }
}

int probeWin(int, i32* score, const Position&) {
    *score = 1234;
    return 1;
}

TEST_F(Search, NodesAskTheTablesWhereTheDepthAllows) {
    const ValueScope probe(tablebaseProbe, TablebaseProbe{probeWin});
    const ValueScope distance(TBdistance, 8);
    const ValueScope men(largestTbMen, 4);
    const char* four = "4k3/4p3/8/8/8/8/4P3/4K3 w - - 0 1";
    for (const bool zws : {false, true}) {
        const SearchResult deep = job(four, 32, zws);
        EXPECT_EQ(deep.value, 1234);
        EXPECT_EQ(deep.nodes, 1u);
        EXPECT_EQ(deep.tbProbes, 1);
        EXPECT_EQ(deep.tbHits, 1);
    }
    EXPECT_EQ(job(four, 24, true).tbProbes, 0);                                // too near to the horizon
    EXPECT_NE(job("4k3/4p3/8/8/8/8/3PP3/4K3 w - - 0 1", 32, true).nodes, 1u);  // too many men
}

// In quiescence a quiet move from the table is followed six plies deep. The stored mobilities fall, so that
// nobody is content to stand pat.
TEST_F(Search, QuietTableMovesOfQuiescenceEnd) {
    setPosition("7k/5ppp/8/8/8/8/PPP5/K7 w - - 0 1");
    int mobility = 250;
    for (const char* text : {"a1b1", "h8g8", "b1c1", "g8f8", "c1d1", "f8e8", "d1e1", "e8d8", "e1f1"}) {
        const StateRecord& s = *searchPosition.state;
        if (searchPosition.sideToMove == Black) mobility -= 45;
        storeLowerBound(1, s.hashHigh, s.hashLow, -25000, 0, moveOf(text), s.fiftyMoves, mobility);
        play(text);
    }
    while (stackedMoves(searchPosition) > 0) unmakeMove();
    searchFrames[1].ownMobility = 250;
    nodeCount = 0;
    selDepth = 0;
    quiescePv(1, -mateScore, mateScore, 0);
    EXPECT_EQ(nodeCount, 7u);
    EXPECT_EQ(selDepth, 7);
    EXPECT_EQ(stackedMoves(searchPosition), 0);
}

}  // namespace
}  // namespace valku
