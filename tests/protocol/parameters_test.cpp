#include "protocol/parameters.h"

#include "book/book_settings.h"
#include "chess/chess_test.h"
#include "distributed/client_settings.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "eval/pawn_table.h"
#include "eval/weights.h"
#include "protocol/engine_services.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/output.h"
#include "search/process_state.h"
#include "search/search_state.h"
#include "search/tablebase_port.h"
#include "search/thinking_state.h"
#include "search/time_management.h"

namespace valku {
namespace {

class Services final : public EngineServices, public TextSink {
  public:
    void setLogging(bool on) override { logging = on; }
    bool isLogging() const override { return logging; }
    [[noreturn]] void quit() override { std::abort(); }
    void send(std::string_view text) override { sent += text; }

    bool logging = false;
    std::string sent;
};

Services services;

class Environment : public ::testing::Environment {
  public:
    void SetUp() override {
        if (squareMask[0] != 0) return;
        initChessTables();
        initEvalTables();
        linkHistoryTables();
        initBookWeights();
        initParameters();
        createPawnTable();
        engineServices = &services;
        textSink = &services;
    }
    void TearDown() override { releaseHashTable(); }
};

[[maybe_unused]] const ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new Environment);

enum Check { atLeastZero, aboveZero, anyNumber };

struct NumberKey {
    const char* key;
    i32* variable;
    i32 standard;
    Check check = atLeastZero;
};

const NumberKey numberKeys[] = {
    {"pawnValue", &pawnValue, 100},
    {"knightValue", &knightValue, 370},
    {"bishopValue", &bishopValue, 381},
    {"rookValue", &rookValue, 580},
    {"queenValue", &queenValue, 1160},
    {"endgameMaterial", &endgameMaterial, 5200},
    {"rookOn7th", &rookOn7th, 24},
    {"pairOfBishops", &pairOfBishops, 35},
    {"doublePawn", &doublePawn, 12},
    {"isolatedPawn", &isolatedPawn, 18},
    {"noShortCastling", &noShortCastling, 18},
    {"noLongCastling", &noLongCastling, 12},
    {"rightToMove", &rightToMove, 8},
    {"rookAgainstNoRook", &rookAgainstNoRook, 20},
    {"backstandingPawn", &backstandingPawn, 18},
    {"trappedBishop", &trappedBishop, 120},
    {"narrowedRook", &narrowedRook, 10},
    {"badBishop", &badBishop, 20},
    {"rookOnOpenLine", &rookOnOpenLine, 16},
    {"rookOnHalfOpenLine", &rookOnHalfOpenLine, 10},
    {"doubledRooks", &doubledRooks, 10},
    {"spaceAdvantage", &spaceAdvantage, 5},
    {"pawnStormValue1", &pawnStormValue1, 7},
    {"pawnStormValue2", &pawnStormValue2, 12},
    {"aspirationWindow", &aspirationWindow, 25},
    {"maxCompensation", &maxCompensation, 120},
    {"maxExtensions", &storedSettings.maxExtensions, 12},
    {"fewMovesExtValue1", &storedSettings.fewMovesExtValue1, 100},
    {"fewMovesExtValue2", &storedSettings.fewMovesExtValue2, 100},
    {"selectivity1", &storedSettings.selectivity1, 1},
    {"selectivity2", &storedSettings.selectivity2, 1},
    {"quickPlay", &quickPlay, 0, aboveZero},
    {"numberOfLocalClients", &numberOfLocalClients, 0, aboveZero},
    {"minDepthRemoteSearch", &storedSettings.minDepthRemoteSearch, 8, anyNumber},
    {"kingSafety", &kingSafety, 100, anyNumber},
    {"dummy2", &storedSettings.dummy2, 100, anyNumber},
    {"dummy3", &storedSettings.dummy3, 100, anyNumber},
    {"TBdistance", &TBdistance, 8},
    {"TBCacheSize", &TBCacheSize, 33554432},
    {"factorForAnotherIteration", &factorForAnotherIteration, 150},
    {"weightA", bookWeights + 'a', 900},
    {"weightB", bookWeights + 'b', 400},
    {"weightC", bookWeights + 'c', 100},
    {"weightD", bookWeights + 'd', 1},
    {"weightE", bookWeights + 'e', 0},
    {"weightF", bookWeights + 'f', 0},
    {"weightG", bookWeights + 'g', 0},
    {"showCurrentMove", &storedSettings.showCurrentMove, 0, anyNumber},
    {"resignValue", &resignValue, 0},
};

TEST(Settings, EveryNumberKeyTakesItsValue) {
    for (const NumberKey& row : numberKeys) {
        const std::string key = row.key;
        EXPECT_EQ(*row.variable, row.standard) << key;
        applySettingsLine(key + "=77");
        EXPECT_EQ(*row.variable, 77) << key;
        applySettingsLine(key + "=-5");
        EXPECT_EQ(*row.variable, row.check == atLeastZero ? 77 : row.check == aboveZero ? 0 : -5) << key;
        applySettingsLine(key + "=33\r");
        EXPECT_EQ(*row.variable, 33) << key;
        applySettingsLine(key + "=none");  // no number reads as 0
        EXPECT_EQ(*row.variable, 0) << key;
        *row.variable = row.standard;
        // No line has touched any other key.
        for (const NumberKey& other : numberKeys)
            EXPECT_EQ(*other.variable, other.standard) << key << ' ' << other.key;
    }
}

// A key is found anywhere; as many characters go as its end is away from the start of the line.
TEST(Settings, KeysAreFoundAnywhereInALine) {
    const ValueScope pawn(pawnValue, 100), knight(knightValue, 370);
    const struct {
        const char* line;
        i32 pawn, knight;
    } cases[] = {
        {"pawnValue=120", 120, 1}, {"pawnValue= 120 points", 120, 1},
        {"#pawnValue=150", 0, 1},  // "#50"
        {" pawnValue=150", 50, 1}, {"pawnValue=120 knightValue=400", 120, 0},
        {"PawnValue=120", 1, 1},   {"pawnValue 120", 1, 1},
        {"pawnValue=", 0, 1},      {"", 1, 1},
        {"nonsense=3", 1, 1},      {"pawnValue=99999999999999", 100000, 1},  // cut to what the sums can bear
    };
    for (const auto& c : cases) {
        pawnValue = knightValue = 1;
        applySettingsLine(c.line);
        EXPECT_EQ(pawnValue, c.pawn) << c.line;
        EXPECT_EQ(knightValue, c.knight) << c.line;
    }
}

TEST(Settings, SizesPathsPeersAndTheLog) {
    const u64 buckets = nHashTables, entries = nPawnTables;
    EXPECT_EQ(buckets, 2097152u);
    EXPECT_EQ(entries, 524288u);
    const struct {
        const char* value;
        u64 size;
    } sizes[] = {{"3000000", 2097152}, {"1", 1}, {"0", 1}, {"1000", 512}, {"-4", 1}, {"junk", 1}};
    for (const auto& c : sizes) {
        applySettingsLine(std::string("nHashTables=") + c.value);
        EXPECT_EQ(nHashTables, c.size) << c.value;
        EXPECT_EQ(hashMask, c.size - 1) << c.value;
        applySettingsLine(std::string("nPawnTables=") + c.value);
        EXPECT_EQ(nPawnTables, c.size) << c.value;
    }
    {
        const ValueScope role(processRole, i32{roleLocalClient});
        applySettingsLine("nHashTables=64");
        EXPECT_EQ(nHashTables, 1u);  // a client has its parent's size
    }
    applySettingsLine("nHashTables=64");
    EXPECT_EQ(nHashTables, 64u);
    setHashBuckets(static_cast<i64>(buckets));
    nPawnTables = entries;

    EXPECT_EQ(TBPath, "<empty>");
    applySettingsLine("TBPath=C:\\tb\r\n");
    EXPECT_EQ(TBPath, "C:\\tb");
    applySettingsLine("TBPath=" + std::string(400, 'x'));
    EXPECT_EQ(TBPath, std::string(255, 'x'));
    TBPath = "<empty>";
    EXPECT_EQ(bookFile, "<empty>");
    applySettingsLine("bookFile=/books/small one.bk\r");
    EXPECT_EQ(bookFile, "/books/small one.bk");
    applySettingsLine("bookFile=");
    EXPECT_EQ(bookFile, "");
    bookFile = "<empty>";

    for (const char* value : {"one:4000", "two", "three:0", "four:-1", "five:x", "six:4001", ":4002"})
        applySettingsLine(std::string("remoteClient=") + value);
    ASSERT_EQ(remotePeers.size(), 3u);
    EXPECT_EQ(remotePeers[0].host, "one");
    EXPECT_EQ(remotePeers[0].port, 4000);
    EXPECT_EQ(remotePeers[1].host, "six");
    remotePeers.clear();

    applySettingsLine("writeLogFile=1");
    EXPECT_TRUE(services.logging);
    applySettingsLine("writeLogFile=0");
    EXPECT_FALSE(services.logging);
    applySettingsLine("minNodesRemoteSearch=6000000000");
    EXPECT_EQ(storedSettings.minNodesRemoteSearch, 6000000000);
}

class Options : public ::testing::Test {
  protected:
    void SetUp() override {
        setPosition(startPositionFen);
        services.sent.clear();
    }
    void TearDown() override {
        for (const char* name : {"PawnValue", "KnightValue", "BishopValue", "RookValue", "QueenValue",
                                 "PairOfBishops", "TwoKnightsMalus", "KingSafety", "TimeUsage"}) {
            setOption(name, "100");
        }
        PreserveHash = true;
    }
};

TEST_F(Options, PercentagesAreOfTheDefaultAndCutToWholePoints) {
    const struct {
        const char* name;
        const char* percent;
        const i32* variable;
        i32 value;
    } cases[] = {
        {"PawnValue", "150", &pawnValue, 150},
        {"PawnValue", "200", &pawnValue, 200},  // not of the 150
        {"KnightValue", "50", &knightValue, 185},
        {"BishopValue", "33", &bishopValue, 125},
        {"RookValue", "101", &rookValue, 585},
        {"QueenValue", "400", &queenValue, 4640},
        {"PairOfBishops", "25", &pairOfBishops, 8},
        {"TwoKnightsMalus", "400", &twoKnightsMalus, 24},
        {"KingSafety", "999", &kingSafety, 999},
        {"TimeUsage", "100", &factorForAnotherIteration, 150},
        {"TimeUsage", "50", &factorForAnotherIteration, 300},
        {"TimeUsage", "200", &factorForAnotherIteration, 75},
        {"TimeUsage", "400", &factorForAnotherIteration, 37},
        {"TimeUsage", "0", &factorForAnotherIteration, 2147483647},
    };
    for (const auto& c : cases) {
        services.sent.clear();
        setOption(c.name, c.percent);
        EXPECT_EQ(*c.variable, c.value) << c.name << ' ' << c.percent;
        EXPECT_EQ(services.sent.rfind("info string pawn = ", 0), 0u) << c.name;
    }
    services.sent.clear();
    setOption("NoSuchOption", "3");
    setOption("pawnValue", "3");  // names are taken as they are written
    EXPECT_EQ(pawnValue, 200);
    EXPECT_EQ(services.sent, "");
}

TEST_F(Options, PieceValuesReachWhatIsDerivedFromThem) {
    setOption("KnightValue", "150");
    EXPECT_EQ(knightValue, 555);
    EXPECT_EQ(pieceValueByCode[WhiteKnight], 555);
    EXPECT_EQ(pieceValueByCode[BlackKnight], 555);
    EXPECT_EQ(minorValue, 555);
    EXPECT_EQ(drawishMaterial, 555 + 2 * (1160 + 100));
    EXPECT_EQ(gamePosition.whiteMaterial, 800 + 2 * (555 + 381 + 580) + 1160);
    EXPECT_NE(
        services.sent.find("knight = 555; bishop = 381; rook = 580; queen = 1160; e1 = 555; e2 = 3075;"),
        std::string::npos)
        << services.sent;
    EXPECT_NE(services.sent.find("ksft = 100;\n"), std::string::npos);
}

// The king attack table follows the option, and only the option.
TEST_F(Options, KingSafetyChangesTheEvaluation) {
    const auto value = [] {
        setPosition("r1bq1rk1/ppp2p1p/2np1p2/4p2Q/2B1P3/2NP3R/PPP2PPP/R5K1 w - - 0 1");
        clearPawnTable();
        mobilityBalance = 0;
        return evaluate();
    };
    const i32 usual = value();
    applySettingsLine("kingSafety=300");
    EXPECT_EQ(value(), usual);
    setOption("KingSafety", "300");
    EXPECT_GT(value(), usual);
    setOption("KingSafety", "100");
    EXPECT_EQ(value(), usual);
}

TEST_F(Options, HashSizeAndPinnedPositions) {
    setHashBuckets(64);
    ASSERT_TRUE(createHashTable());
    setOption("Hash", "1");
    EXPECT_EQ(nHashTables, 16384u);
    const HashBucket* const table = hashTable;
    setOption("Hash", "1");
    EXPECT_EQ(hashTable, table);  // the same size changes nothing

    const auto pinned = [](const char* fen) {
        setPosition(fen);
        HashEntry entry{};
        return probeHash(*gamePosition.state, entry) && entry.lowerDepth == pinnedDepth ? entry.lowerScore
                                                                                        : -1;
    };
    const char* first = "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1";
    const char* second = "4k3/8/8/8/8/8/8/R3K3 b Q - 0 1";
    setPosition(richPosition);
    setOption("UCI_SetPositionValue", std::string("250 ") + first);
    setOption("UCI_SetPositionValue", std::string("250 ") + second);
    EXPECT_EQ(writeFen(), richPosition);  // the game goes on where it was
    EXPECT_EQ(pinned(first), 250);
    EXPECT_EQ(pinned(second), -250);
    setOption("UCI_SetPositionValue", std::string("clear ") + first);
    EXPECT_EQ(pinned(first), -1);
    EXPECT_EQ(pinned(second), -250);
    setOption("ClearHash", "");
    EXPECT_EQ(pinned(second), -250);
    setOption("UCI_SetPositionValue", "clearall");
    EXPECT_EQ(pinned(second), -1);
    setOption("UCI_SetPositionValue", "33 no position at all");
    setOption("UCI_SetPositionValue", "33");
    setOption("UCI_SetPositionValue", "clear");

    historyTables[2].values[WhitePawn][E4] = 9;
    storeLowerBound(1, 7, 7, 0, 4, 0, 0, 0);
    setOption("ClearHash", "");
    EXPECT_EQ(historyTables[2].values[WhitePawn][E4], 0);
    StateRecord state{};
    state.hashLow = state.hashHigh = 7;
    HashEntry entry;
    EXPECT_FALSE(probeHash(state, entry));

    setOption("PreserveHash", "false");
    EXPECT_FALSE(PreserveHash);
    setOption("PreserveHash", "true");
    EXPECT_TRUE(PreserveHash);
    releaseHashTable();
}

TEST_F(Options, Chess960Modes) {
    setOption("UCI_Chess960", "true");
    EXPECT_TRUE(chess960);
    setOption("ArenaChess960", "true");
    EXPECT_TRUE(arenaCastlingNotation);
    setOption("ArenaChess960", "false");
    EXPECT_EQ(
        services.sent,
        "info string Switched Arena Chess 960 mode on!\ninfo string Switched Arena Chess 960 mode off!\n");
    setOption("UCI_Chess960", "no");
    EXPECT_FALSE(chess960);
}

}  // namespace
}  // namespace valku
