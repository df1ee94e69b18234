#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "chess/chess_test.h"
#include "search/tablebase_port.h"
#include "tablebases/compressed_header.h"
#include "tablebases/index_plan.h"
#include "tablebases/probe.h"
#include "tablebases/registration.h"
#include "tablebases/table_cache.h"
#include "tablebases/table_classes.h"

namespace valku {
namespace {

namespace fs = std::filesystem;

constexpr int ply = 7;
constexpr i32 noScore = 123456;

// Tables of our own making: files of the right length that are empty but for a few bytes.
class Tablebases : public ::testing::Test {
  protected:
    void SetUp() override {
        initIndexPlans();
        fs::create_directories(home);
    }
    void TearDown() override {
        forgetTablebases();
        largestTbMen = 0;
        fs::remove_all(home);
    }

    static u64 lengthOf(const char* name, int side) { return classTable[classByName(name)].positions[side]; }

    // A file of that length, full of zeros that take no room.
    fs::path makeFile(const fs::path& path, u64 length) const {
        fs::create_directories((home / path).parent_path());
        std::ofstream(home / path).close();
        fs::resize_file(home / path, length);
        return home / path;
    }

    void makeTable(const fs::path& directory, const char* name, int side) const {
        makeFile(directory / (std::string(name) + (side == 0 ? ".nbw" : ".nbb")), lengthOf(name, side));
    }

    void write(const fs::path& path, u64 offset, const std::string& bytes) const {
        std::fstream file(home / path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(offset));
        file << bytes;
        ASSERT_TRUE(file.good()) << path;
    }

    static i32 scoreOf(const std::string& fen) {
        setPosition(fen.find(" - ") == std::string::npos ? fen + " - - 0 1" : fen);
        return scoreHere();
    }

    static i32 scoreHere() {
        i32 score = noScore;
        const int found = probeTablebases(ply, &score, gamePosition);
        EXPECT_EQ(found, score == noScore ? 0 : 1);
        return score;
    }

    std::string path(const char* directory = "") const { return (home / directory).string(); }

    // Starting with that path prints the line and ends the process.
    void expectRefusal(const std::string& path, const std::string& line) {
        EXPECT_EXIT(
            {
                dup2(STDERR_FILENO, STDOUT_FILENO);
                tbStartUp(path);
                exit(0);
            },
            ::testing::ExitedWithCode(1), ::testing::StrEq(line));
    }

    const fs::path home = fs::path(::testing::TempDir()) / ("valku-tables-" + std::to_string(getpid()));
};

// Positions with the place of their entries, worked out by counting the placements before them one by one.
struct Entry {
    const char* fen;
    const char* file;
    u64 offset;
};
constexpr Entry entries[] = {
    {"8/8/1K6/8/8/5N2/8/3k4 w", "knk.nbw", 14730},
    {"8/8/8/8/1K5k/8/8/4r3 w", "krk.nbb", 21235},
    {"8/8/8/b3n2K/k7/8/8/8 b", "kbnk.nbw", 677713},
    {"8/8/8/8/4K1R1/8/8/1n5k w", "krkn.nbw", 1543305},
    {"1K6/P7/8/3k4/8/3N4/8/8 w", "knpk.nbw", 4287323},
    {"8/3k3K/8/8/8/2P1N3/8/8 b", "knpk.nbb", 1175489},
    {"8/6k1/8/8/6p1/R7/7K/8 w", "krkp.nbw", 778433},
    {"8/7K/8/8/r7/3P4/8/6k1 w", "krkp.nbb", 3716951},
    {"8/8/8/5k2/8/8/p1K4P/8 w", "kpkp.nbb", 801296},
    {"2k5/3P4/Kp6/8/8/8/8/8 b", "kpkp.nbw", 276692},
    {"8/nP6/8/8/4K3/8/1k6/8 b", "knkp.nbw", 3943057},
    {"8/4K3/8/n7/8/1k6/3P4/8 w", "knkp.nbb", 4236175},
    {"8/8/2K5/8/8/8/1k3q2/1Q6 b", "kqkq.nbw", 742012},
    {"8/1p6/8/k5K1/8/8/5p2/8 w", "kppk.nbb", 1052423},
    {"8/8/P7/8/Q3Q3/8/8/1k1K4 b", "kqqpk.nbb", 143293007},
    {"8/5q2/8/3K3q/8/qk6/8/8 w", "kqqqk.nbb", 16822086},
    {"8/8/8/8/1K6/5pPp/4k3/8 b", "kppkp.nbw", 71237196},
    {"8/8/8/4p2p/8/3P4/2k5/K7 w", "kppkp.nbb", 322411},
    {"8/8/8/3K1N2/3n4/8/4N3/k4n2 b", "knnknn.nbw", 54054840},
    {"n7/3K4/6B1/4k3/8/8/2Rp4/8 w", "krbknp.e.nbw", 304606184},
    {"6R1/8/B7/8/1np2k2/8/3K4/8 b", "krbknp.8.nbb", 2099685156},
    {"3K2Q1/8/1q3k2/8/6Q1/P7/8/8 w", "kqqpkq.3.nbw", 804636328},
    {"8/1P6/8/2Q5/q7/2K5/7Q/4k3 b", "kqqpkq.0.nbb", 901082788},
    {"8/8/8/6PR/3K4/pr4k1/8/8 b", "krpkrp.4.nbw", 331104146},
    {"8/2P5/4P3/8/5p2/2p5/1k6/3K4 b", "kppkpp.nbw", 3003990346},
    {"4b2q/2K5/8/8/8/8/1k2N3/5r2 b", "kqrbkn.nbw", 2490648982},
    {"2q5/5P2/P7/8/3P4/1K3k2/8/8 b", "kpppkq.nbb", 1125717346},
};

TEST_F(Tablebases, EveryKindOfClassReadsItsOwnEntry) {
    for (const Entry& entry : entries) {
        const std::string file = entry.file;
        const std::string name = file.substr(0, file.find('.'));
        const TbClass& tbClass = classTable[classByName(name)];
        const int side = file.back() == 'w' ? 0 : 1;
        if (tbClass.has(tbMultiPart)) {
            for (std::size_t part = 0; part < tbClass.files[side].size(); ++part) {
                const char letter = static_cast<char>(part < 10 ? '0' + part : 'a' + part - 10);
                makeFile(name + "." + letter + file.substr(file.size() - 4), 0);
            }
            fs::resize_file(home / file, tbPartBytes);
        } else {
            makeFile(file, tbClass.positions[side] * tbClass.entrySize());
        }
        write(file, entry.offset, tbClass.has(tbTwoByte) ? "\xE4\x7F" : "\x64");
    }
    tbStartUp(path());
    EXPECT_EQ(largestTbMen, 6);
    for (const Entry& entry : entries) {
        EXPECT_EQ(scoreOf(entry.fen), 29947 - ply) << entry.fen << " in " << entry.file;
        mirrorPosition();
        // The colours of kpkp are told apart by nothing but the side to move.
        if (!std::string(entry.file).starts_with("kpkp.")) {
            EXPECT_EQ(scoreHere(), 29947 - ply) << entry.fen;
        }
    }
}

TEST_F(Tablebases, ValuesBecomeScores) {
    const char* const fen = "8/8/1K6/8/8/5N2/8/3k4 w";  // entry 14730 of knk.nbw
    makeTable("", "knk", 0);
    const std::pair<int, i32> scores[] = {
        {0, 0},         {1, 29749 - ply},    {126, 29999 - ply},  {-1, -29750 + ply}, {-126, ply - 30000},
        {127, noScore}, {-127, ply - 29748}, {-128, 29747 - ply},
    };
    for (const auto& [byte, score] : scores) {
        write("knk.nbw", 14730, std::string(1, static_cast<char>(byte)));
        tbStartUp(path());
        EXPECT_EQ(scoreOf(fen), score) << byte;
    }

    // Two bytes, the low one first.
    const char* const longFen = "2q5/5P2/P7/8/3P4/1K3k2/8/8 b";
    makeFile("kpppkq.nbb", lengthOf("kpppkq", 1) * 2);
    const std::pair<const char*, i32> longScores[] = {{"\xFE\x7F", 29999 - ply},
                                                      {"\xFF\x7F", noScore},
                                                      {"\x02\x80", ply - 30000},
                                                      {"\xFE\xFF", ply + 35528}};
    for (const auto& [bytes, score] : longScores) {
        write("kpppkq.nbb", 1125717346, bytes);
        tbStartUp(path());
        EXPECT_EQ(scoreOf(longFen), score);
    }

    // Losses of kppkp that a byte cannot tell, whatever stands in the file; and the entry beside one.
    makeTable("", "kppkp", 1);
    tbStartUp(path());
    for (const char* const lost : {"8/1p6/8/8/4P3/k1K1P3/8/8 b", "8/8/8/1p6/4P3/4P3/1k6/3K4 b"})
        EXPECT_EQ(scoreOf(lost), ply - 29746) << lost;
    EXPECT_EQ(scoreOf("8/1p6/8/8/4P3/k1K1P3/8/8 w"), noScore);
    EXPECT_EQ(scoreOf("8/8/1p6/8/4P3/1k1KP3/8/8 b"), 0);
}

TEST_F(Tablebases, PositionsOutsideOfTheTablesHaveNoValue) {
    for (const char* const name : {"kbk", "kpkp", "kqkr", "kqqqk", "kqkq"}) makeTable("", name, 0);
    for (const char* const name : {"kpkp", "kqkr", "kqqqk"}) makeTable("", name, 1);
    tbStartUp(path());
    EXPECT_EQ(largestTbMen, 5);
    for (const char* const fen :
         {"8/8/8/K1k5/3pP3/8/8/8 b - e3 0 1", "8/8/8/K1k5/4Pp2/8/8/8 b - e3 0 1",
          "8/8/8/2pP4/8/8/8/K1k5 w - c6 0 1", "8/8/3k4/8/8/8/3K4/8 w", "8/8/3k4/8/8/8/3KR3/8 w",
          "RR6/RR6/8/8/8/3k4/8/7K w", "qqq5/8/8/4q3/8/3k4/7q/7K w"})
        EXPECT_EQ(scoreOf(fen), noScore) << fen;
    for (const char* const fen :
         {"8/8/8/K1k5/2p1P3/8/8/8 b - e3 0 1", "8/8/8/3Pp3/8/8/8/K1k5 w - - 0 1", "8/8/3k1q2/8/8/8/1R1K4/8 w",
          "8/8/3k1q2/8/8/8/1R1K4/8 b", "8/8/3k1q2/8/8/8/1Q1K4/8 b"})
        EXPECT_EQ(scoreOf(fen), 0) << fen;

    // A table that goes away while the engine runs.
    forgetTablebases();
    EXPECT_EQ(scoreOf("8/8/3k1q2/8/8/8/1R1K4/8 b"), noScore);
    tbStartUp(path());
    fs::remove(home / "kqkr.nbw");
    EXPECT_EQ(scoreOf("8/8/3k1q2/8/8/8/1R1K4/8 b"), noScore);
    EXPECT_EQ(scoreOf("8/8/3k1q2/8/8/8/1R1K4/8 w"), 0);
}

TEST_F(Tablebases, DirectoriesAreSearchedInTurn) {
    const char* const kbk = "8/8/3k4/8/8/8/3KB3/8 b";
    makeTable("one", "knk", 0);
    makeTable("two", "knk", 0);
    makeTable("two", "kbk", 1);
    write("two/knk.nbw", 14730, "\x64");
    makeTable("two", "kqqk", 0);
    fs::create_directories(home / "two/krk.nbw");  // no file
    mkfifo((home / "two/krk.nbb").c_str(), 0600);  // and no end to waiting for it
    const std::string directories = path("one/") + ";" + path("two") + "," + path("none");
    tbStartUp(directories);
    EXPECT_EQ(largestTbMen, 4);
    EXPECT_EQ(filesOpened, 3);
    EXPECT_EQ(scoreOf("8/8/1K6/8/8/5N2/8/3k4 w"), 0) << "the first directory counts";
    EXPECT_EQ(scoreOf(kbk), 0);
    EXPECT_EQ(scoreOf("8/8/3k4/8/8/8/3KR3/8 b"), noScore);

    std::string many;
    for (int i = 0; i < 200; ++i) many += path("none") + std::to_string(i) + ";";
    for (const std::string& odd : {many + directories, std::string(5000, 'x') + ";" + directories}) {
        tbStartUp(odd);
        EXPECT_EQ(scoreOf(kbk), 0);
    }
    for (const std::string& nothing : {std::string("<empty>"), std::string(), std::string(";,"),
                                       path() + std::string(1100, '/') + "two"}) {
        tbStartUp(nothing);
        EXPECT_EQ(largestTbMen, 0) << nothing;
        EXPECT_EQ(scoreOf(kbk), noScore);
    }
    const fs::path before = fs::current_path();
    fs::current_path(home / "two");
    tbStartUp(";" + path("none"));
    fs::current_path(before);
    EXPECT_EQ(largestTbMen, 4) << "an empty element is the current directory";
}

// Parts may come from several directories, but a gap ends the table. Where the part of an entry is missing
// there is no value.
TEST_F(Tablebases, PartsMakeUpATable) {
    const char* const fen = "8/1P6/8/2Q5/q7/2K5/7Q/4k3 b";  // in part 0 of kqqpkq.nbb
    for (const char* const part : {"kqqpkq.1.nbb", "kqqpkq.2.nbb"}) makeFile(part, tbPartBytes);
    tbStartUp(path());
    EXPECT_EQ(largestTbMen, 0);
    makeFile("first/kqqpkq.0.nbb", tbPartBytes);
    write("first/kqqpkq.0.nbb", 901082788, "\x64");
    tbStartUp(path("first") + ";" + path());
    EXPECT_EQ(filesOpened, 3);
    EXPECT_EQ(scoreOf(fen), 29947 - ply);
    EXPECT_EQ(scoreOf("3k4/8/1q6/8/8/P7/1QQ5/7K b"), noScore) << "in part 3, which is not there";
    EXPECT_EQ(scoreOf("3K2Q1/8/1q3k2/8/6Q1/P7/8/8 w"), noScore);
}

// The header of a compressed file whose blocks are stored as they are.
std::string compressedHeader(u32 blockLog, u32 blocks, u32 lastBlock) {
    std::string header("Compressed by DATACOMP v 1.0");
    header.resize(58, ' ');
    header += std::string("\r\n\0\0\0\0", 6);
    u64 waiting = 1;  // bits behind a leading one
    const auto add = [&](u32 value, u32 width) {
        for (u32 bit = width; bit > 0; --bit) {
            waiting = waiting << 1 | (value >> (bit - 1) & 1);
            if (waiting < 256) continue;
            header += static_cast<char>(waiting);
            waiting = 1;
        }
    };
    const u32 fieldBytes = ((blocks + 25) * blockLog + 7) / 8;
    add(80 + 8 * blocks + fieldBytes + 1 + 4, 32);
    for (const u32 byte : {0U, 0U, blockLog, 24U}) add(byte, 8);
    add(blocks, 32);
    add(0x004001F5, 32);
    header.resize(80 + 8 * blocks);
    for (u32 block = 1; block < blocks; ++block) add(0, blockLog);
    for (int i = 0; i < 2; ++i) add(lastBlock, blockLog);
    for (int offset = 0; offset < 24; ++offset) add(1, blockLog);
    while (waiting != 1) add(0, 1);
    add(0x80, 8);  // a code without symbols
    add(headerCheck({reinterpret_cast<const u8*>(header.data()), header.size()}), 32);
    return header;
}

TEST_F(Tablebases, CompressedFilesTellTheirLength) {
    const auto makeCompressed = [this](const char* name, u32 blockLog, u32 blocks, u32 lastBlock) {
        const std::string header = compressedHeader(blockLog, blocks, lastBlock);
        makeFile(name, header.size() + (u64{blocks - 1} << blockLog) + lastBlock);
        write(name, 0, header);
        return header.size();
    };
    const auto refused = [this](const char* name, const std::string& end) {
        expectRefusal(path("bad"), "*** " + path("bad/") + name + end);
        fs::remove(home / "bad" / name);
    };
    makeCompressed("bad/knk_nbw.emd", 14, 2, 26282 - 16384);
    refused("knk_nbw.emd", ": Unsupported block size 16384\n");
    makeCompressed("bad/knk_nbw.emd", 13, 4, 1707);
    refused("knk_nbw.emd", " corrupted 26282 26282 26283\n");
    makeCompressed("bad/kqqpkq.0.nbb.emd", 13, 515021, 384);
    refused("kqqpkq.0.nbb.emd", " corrupted 2147483648 2071560576 4219044224\n");
    makeCompressed("bad/kqqpkq.0.nbb.emd", 13, 242000, 1);  // 1982455809, where 1986420461 are the least
    refused("kqqpkq.0.nbb.emd", " corrupted 2147483648 2071560576 1982455809\n");

    makeCompressed("good/kqqpkq.0.nbb.emd", 13, 262144, 0);
    makeCompressed("good/kqqpkq.1.nbb.emd", 13, 252876, 376);
    const u64 header = makeCompressed("good/knknbw.emd", 13, 4, 1706);
    write("good/knknbw.emd", header + 14730, "\x64");
    tbStartUp(path("good"));
    EXPECT_EQ(compressedFiles, 3);
    EXPECT_EQ(scoreOf("8/8/1K6/8/8/5N2/8/3k4 w"), 29947 - ply);
}

TEST_F(Tablebases, FilesThatDoNotFitAreRefused) {
    const auto refused = [this](const char* file, u64 length, const std::string& line) {
        const fs::path made = makeFile(fs::path("bad") / file, length);
        expectRefusal(path("bad"),
                      "*** " + (line.front() == 'U' ? "Unable to read " + made.string() + line.substr(1)
                                                    : made.string() + line));
        fs::remove(made);
    };
    refused("knk.nbw", 26281, " corrupted 26282 26282 26281\n");
    refused("kqkr.nbb", 0, " corrupted 1649196 1649196 0\n");
    // The names of compressed files.
    for (const char* const name : {"krkn.nbw.emd", "krkn_nbw.emd", "krkn_nbb_emd", "kqqkqnbw.emd",
                                   "kqqqk_nbb.emd", "krbknp.0.nbb.emd"})
        refused(name, 1000, "U - file broken\n");
    refused("krknnbb.emd", 79, "U - read error\n");
    for (const char* const name : {"kqqqknbw.emd", "krbknp_0_nbb.emd", "krbknp.nbw", "krkn.0.nbw",
                                   "krkn-nbw.emd", "KRKN.nbw", "krkr.nbb"}) {
        makeFile(fs::path("good") / name, 1000);
    }
    tbStartUp(path("good"));
    EXPECT_EQ(filesOpened, 0);

    // Where only the numbering tells a length, a table may be a little shorter.
    const u64 limit = indexLimit(classByName("kbpkp"), 0);
    makeFile("good/kbpkp.nbw", limit - limit / 200);
    tbStartUp(path("good"));
    EXPECT_EQ(largestTbMen, 5);
    EXPECT_EQ(scoreOf("8/6k1/8/4p3/8/8/1P6/KB6 w"), 0);
    const std::string expected = " corrupted " + std::to_string(lengthOf("kbpkp", 0)) + " " +
                                 std::to_string(lengthOf("kbpkp", 0)) + " ";
    for (const u64 length : {limit + 1, limit - limit / 50})
        refused("kbpkp.nbw", length, expected + std::to_string(length) + "\n");
}

}  // namespace
}  // namespace valku
