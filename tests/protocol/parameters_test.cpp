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
    [[noreturn]] void quit(int) override { std::abort(); }

    void send(std::string_view) override {}

    bool logging = false;
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

template <class... Numbers>
std::vector<i32*> pointersTo(Numbers&... numbers) {
    return {&numbers...};
}

// The keys with their standard values, and in the same order the variables behind them.
const char* const numberKeys =
    "pawnValue 100 knightValue 370 bishopValue 381 rookValue 580 queenValue 1160 endgameMaterial 5200 "
    "rookOn7th 24 pairOfBishops 35 doublePawn 12 isolatedPawn 18 noShortCastling 18 noLongCastling 12 "
    "rightToMove 8 rookAgainstNoRook 20 backstandingPawn 18 trappedBishop 120 narrowedRook 10 "
    "badBishop 20 rookOnOpenLine 16 rookOnHalfOpenLine 10 doubledRooks 10 spaceAdvantage 5 "
    "pawnStormValue1 7 pawnStormValue2 12 aspirationWindow 25 maxCompensation 120 maxExtensions 12 "
    "fewMovesExtValue1 100 fewMovesExtValue2 100 selectivity1 1 selectivity2 1 TBdistance 8 "
    "TBCacheSize 33554432 factorForAnotherIteration 150 weightA 900 weightB 400 weightC 100 weightD 1 "
    "weightE 0 weightF 0 weightG 0 resignValue 0 quickPlay 0 numberOfLocalClients 0 "
    "minDepthRemoteSearch 8 kingSafety 100 dummy2 100 dummy3 100 showCurrentMove 0 ";
const std::vector<i32*> numbers = pointersTo(
    pawnValue, knightValue, bishopValue, rookValue, queenValue, endgameMaterial, rookOn7th, pairOfBishops,
    doublePawn, isolatedPawn, noShortCastling, noLongCastling, rightToMove, rookAgainstNoRook,
    backstandingPawn, trappedBishop, narrowedRook, badBishop, rookOnOpenLine, rookOnHalfOpenLine,
    doubledRooks, spaceAdvantage, pawnStormValue1, pawnStormValue2, aspirationWindow, maxCompensation,
    storedSettings.maxExtensions, storedSettings.fewMovesExtValue1, storedSettings.fewMovesExtValue2,
    storedSettings.selectivity1, storedSettings.selectivity2, TBdistance, TBCacheSize,
    factorForAnotherIteration, bookWeights[int{'a'}], bookWeights[int{'b'}], bookWeights[int{'c'}],
    bookWeights[int{'d'}], bookWeights[int{'e'}], bookWeights[int{'f'}], bookWeights[int{'g'}], resignValue,
    quickPlay, numberOfLocalClients, storedSettings.minDepthRemoteSearch, kingSafety, storedSettings.dummy2,
    storedSettings.dummy3, storedSettings.showCurrentMove);

TEST(Settings, EveryNumberKeyTakesItsValue) {
    std::istringstream words(numberKeys);
    std::vector<i32> standards;
    for (i32* const number : numbers) standards.push_back(*number);
    std::size_t i = 0;
    std::string key;
    for (i32 standard; words >> key >> standard; ++i) {
        ASSERT_LT(i, standards.size());
        i32& number = *numbers[i];
        EXPECT_EQ(number, standard) << key;
        applySettingsLine(key + "=77");
        EXPECT_EQ(number, 77) << key;
        // Most keys refuse it, two take it for 0, the last ones have any number.
        applySettingsLine(key + "=-5");
        EXPECT_EQ(number, i < 42 ? 77 : i < 44 ? 0 : -5) << key;
        applySettingsLine(key + "=33\r");
        EXPECT_EQ(number, 33) << key;
        applySettingsLine(key + "=none");  // no number reads as 0
        EXPECT_EQ(number, 0) << key;
        number = standard;
        // No line has touched any other key.
        for (std::size_t j = 0; j < standards.size(); ++j) EXPECT_EQ(*numbers[j], standards[j]) << key << j;
    }
    EXPECT_EQ(i, standards.size());
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
    applySettingsLine("bookFile=/books/small one.bk\r");
    EXPECT_EQ(bookFile, "/books/small one.bk");
    bookFile = "<empty>";

    for (const char* value : {"one:4000", "two", "three:0", "four:-1", "five:x", "six:4001", ":4002"})
        applySettingsLine(std::string("remoteClient=") + value);
    ASSERT_EQ(remotePeers.size(), 3u);
    EXPECT_EQ(remotePeers[0].host, "one");
    EXPECT_EQ(remotePeers[0].port, 4000);
    EXPECT_EQ(remotePeers[1].host, "six");
    for (int i = 0; i < 200; ++i) applySettingsLine("remoteClient=host:" + std::to_string(i + 1));
    ASSERT_EQ(remotePeers.size(), 128u);  // no more than there can be processes
    EXPECT_EQ(remotePeers[127].port, 125);
    remotePeers.clear();

    applySettingsLine("writeLogFile=1");
    EXPECT_TRUE(services.logging);
    applySettingsLine("writeLogFile=0");
    EXPECT_FALSE(services.logging);
    applySettingsLine("minNodesRemoteSearch=6000000000");
    EXPECT_EQ(storedSettings.minNodesRemoteSearch, 6000000000);
}

// The king attack table follows the option, and only the option.
TEST(Settings, KingSafetyOfASettingsFileDoesNotChangeTheEvaluation) {
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
}

}  // namespace
}  // namespace valku
