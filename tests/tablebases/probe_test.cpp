#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bitset>

#include "chess/chess_test.h"
#include "platform/fault.h"
#include "tablebases/compressed_file.h"
#include "tablebases/probe.h"
#include "tablebases/table_cache.h"
#include "tablebases/table_files.h"

namespace valku {
namespace {

constexpr int ply = 7;
constexpr i32 noScore = 123456;

class Tablebases : public TableFiles {
  protected:
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

    // That file in bad/ is refused with a line, in which % is its path.
    void expectRefusal(const std::string& file, std::string line) const {
        line.replace(line.find('%'), 1, path("bad/" + file));
        try {
            initTablebases(path("bad"));
            ADD_FAILURE() << file;
        } catch (const Fault& fault) {
            EXPECT_EQ(fault.text(), "*** " + line);
        }
        fs::remove(home / "bad" / file);
    }

    // A compressed file whose blocks are stored as they are. Returns the size of its header.
    u64 makeCompressed(const std::string& file, u32 blockLog, u32 blocks, u32 lastBlock) const {
        std::string bits((blocks - 1) * blockLog, '0');
        for (int i = 0; i < 26; ++i)  // the last block's size, stored and not, and the distances
            bits += std::bitset<32>(i < 2 ? lastBlock : 1).to_string().substr(32 - blockLog);
        bits.resize((bits.size() + 7) / 8 * 8, '0');
        bits += "10000000";  // a code without symbols
        std::string header("Compressed by DATACOMP v 1.0");
        header.resize(58, ' ');
        header += std::string("\r\n\0\0\0\0", 6);
        const auto add = [&header](u64 number) {
            for (const int shift : {24, 16, 8, 0}) header += static_cast<char>(number >> shift);
        };
        for (const u64 number :
             {84 + 8 * blocks + bits.size() / 8, u64{blockLog << 8 | 24}, u64{blocks}, u64{compressedFormat}})
            add(number);
        header.resize(80 + 8 * blocks);
        for (std::size_t i = 0; i < bits.size(); i += 8)
            header += static_cast<char>(std::bitset<8>(bits, i, 8).to_ulong());
        add(headerCheck({reinterpret_cast<const u8*>(header.data()), header.size()}));
        makeFile(file, header.size() + (u64{blocks - 1} << blockLog) + lastBlock);
        write(file, 0, header);
        return header.size();
    }
};

// The entries of positions, found by counting the placements before them one by one.
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
        makeTables({entry.file});
        const bool twoByte = classTable[classByName(file.substr(0, file.find('.')))].has(tbTwoByte);
        write(file, entry.offset, twoByte ? "\xE4\x7F" : "\x64");
    }
    tbStartUp(path());
    EXPECT_EQ(largestTbMen, 6);
    for (const Entry& entry : entries) {
        EXPECT_EQ(scoreOf(entry.fen), 29947 - ply) << entry.fen << " in " << entry.file;
        // In kpkp only the side to move tells the colors apart.
        if (std::string(entry.file).starts_with("kpkp.")) continue;
        mirrorPosition();
        EXPECT_EQ(scoreHere(), 29947 - ply) << entry.fen;
    }
}

TEST_F(Tablebases, ValuesBecomeScores) {
    makeTables({"knk.nbw"});
    constexpr std::pair<int, i32> scores[] = {{0, 0},
                                              {1, 29749 - ply},
                                              {126, 29999 - ply},
                                              {127, noScore},
                                              {-1, ply - 29750},
                                              {-126, ply - 30000},
                                              {-127, ply - 29748},
                                              {-128, 29747 - ply}};
    for (const auto& [byte, score] : scores) {
        write("knk.nbw", 14730, std::string(1, static_cast<char>(byte)));
        tbStartUp(path());
        EXPECT_EQ(scoreOf("8/8/1K6/8/8/5N2/8/3k4 w"), score) << byte;
    }

    // Two bytes, the low one first.
    makeTables({"kpppkq.nbb"});
    for (const auto& [bytes, score] : {std::pair("\xFE\x7F", 29999 - ply),
                                       {"\xFF\x7F", noScore},
                                       {"\x02\x80", ply - 30000},
                                       {"\xFE\xFF", ply + 35528}}) {
        write("kpppkq.nbb", 1125717346, bytes);
        tbStartUp(path());
        EXPECT_EQ(scoreOf("2q5/5P2/P7/8/3P4/1K3k2/8/8 b"), score);
    }

    // Losses of kppkp that a byte cannot hold, whatever is in the file; and the entry beside one.
    makeTables({"kppkp.nbb"});
    tbStartUp(path());
    for (const char* const lost : {"8/1p6/8/8/4P3/k1K1P3/8/8 b", "8/8/8/1p6/4P3/4P3/1k6/3K4 b"})
        EXPECT_EQ(scoreOf(lost), ply - 29746) << lost;
    EXPECT_EQ(scoreOf("8/1p6/8/8/4P3/k1K1P3/8/8 w"), noScore);
    EXPECT_EQ(scoreOf("8/8/1p6/8/4P3/1k1KP3/8/8 b"), 0);
}

TEST_F(Tablebases, PositionsOutsideOfTheTablesHaveNoValue) {
    makeTables(
        {"kbk.nbw", "kpkp.nbw", "kpkp.nbb", "kqkr.nbw", "kqkr.nbb", "kqqqk.nbw", "kqqqk.nbb", "kqkq.nbw"});
    tbStartUp(path());
    for (const char* const fen :
         {"8/8/8/K1k5/3pP3/8/8/8 b - e3 0 1", "8/8/8/K1k5/4Pp2/8/8/8 b - e3 0 1",
          "8/8/8/2pP4/8/8/8/K1k5 w - c6 0 1", "8/8/3k4/8/8/8/3K4/8 w", "8/8/3k4/8/8/8/3KR3/8 w",
          "RR6/RR6/8/8/8/3k4/8/7K w", "qqq5/8/8/4q3/8/3k4/7q/7K w"})
        EXPECT_EQ(scoreOf(fen), noScore) << fen;
    for (const char* const fen :
         {"8/8/8/K1k5/2p1P3/8/8/8 b - e3 0 1", "8/8/8/3Pp3/8/8/8/K1k5 w - - 0 1", "8/8/3k1q2/8/8/8/1R1K4/8 w",
          "8/8/3k1q2/8/8/8/1R1K4/8 b", "8/8/3k1q2/8/8/8/1Q1K4/8 b"})
        EXPECT_EQ(scoreOf(fen), 0) << fen;
}

TEST_F(Tablebases, DirectoriesAreSearchedInTurn) {
    const char* const kbk = "8/8/3k4/8/8/8/3KB3/8 b";
    makeTables({"one/knk.nbw", "two/knk.nbw", "two/kbk.nbb", "two/kqqk.nbw"});
    write("two/knk.nbw", 14730, "\x64");
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
    for (int i = 0; i < 20; ++i) many += path("none") + std::to_string(i) + ";";
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
    for (const char* const part : {"kqqpkq.1.nbb", "kqqpkq.2.nbb"}) makeFile(part, tbPartBytes);
    tbStartUp(path());
    EXPECT_EQ(largestTbMen, 0);
    makeFile("first/kqqpkq.0.nbb", tbPartBytes);
    write("first/kqqpkq.0.nbb", 901082788, "\x64");
    write("first/kqqpkq.0.nbb", tbPartBytes - 1, "\5");
    write("kqqpkq.1.nbb", 3, "\6");
    tbStartUp(path("first") + ";" + path());
    EXPECT_EQ(filesOpened, 3);
    EXPECT_EQ(scoreOf("8/1P6/8/2Q5/q7/2K5/7Q/4k3 b"), 29947 - ply);
    EXPECT_EQ(scoreOf("3k4/8/1q6/8/8/P7/1QQ5/7K b"), noScore) << "in part 3, which is not there";
    EXPECT_EQ(scoreOf("3K2Q1/8/1q3k2/8/6Q1/P7/8/8 w"), noScore);

    constexpr u32 blocks = 262144;  // of a part
    const int tbClass = classByName("kqqpkq");
    EXPECT_EQ(readTableByte(tbClass, 1, blocks - 1, 8191), 5);
    EXPECT_EQ(readTableByte(tbClass, 1, blocks, 3), 6);
    EXPECT_EQ(readTableByte(tbClass, 1, 100 * blocks, 0), noTableByte);
}

TEST_F(Tablebases, CompressedFilesTellTheirLength) {
    const auto refused = [this](const std::string& file, u32 blockLog, u32 blocks, u32 lastBlock,
                                const std::string& line) {
        makeCompressed("bad/" + file, blockLog, blocks, lastBlock);
        expectRefusal(file, line);
    };
    refused("knk_nbw.emd", 14, 2, 9898, "%: Unsupported block size 16384");
    refused("knk_nbw.emd", 13, 4, 1707, "% corrupted 26282 26282 26283");
    refused("kqqpkq.0.nbb.emd", 13, 515021, 384, "% corrupted 2147483648 2071560576 4219044224");
    // Where 1986420461 are the least.
    refused("kqqpkq.0.nbb.emd", 13, 242000, 1, "% corrupted 2147483648 2071560576 1982455809");

    makeCompressed("good/kqqpkq.0.nbb.emd", 13, 262144, 0);
    makeCompressed("good/kqqpkq.1.nbb.emd", 13, 252876, 376);
    const u64 header = makeCompressed("good/knknbw.emd", 13, 4, 1706);
    write("good/knknbw.emd", header + 14730, "\x64");
    tbStartUp(path("good"));
    EXPECT_EQ(compressedFiles, 3);
    EXPECT_EQ(scoreOf("8/8/1K6/8/8/5N2/8/3k4 w"), 29947 - ply);
}

TEST_F(Tablebases, FilesThatDoNotFitAreRefused) {
    const auto refused = [this](const std::string& file, u64 length, const std::string& line) {
        makeFile("bad/" + file, length);
        expectRefusal(file, line);
    };
    refused("knk.nbw", 26281, "% corrupted 26282 26282 26281");
    refused("kqkr.nbb", 0, "% corrupted 1649196 1649196 0");
    // The names of compressed files.
    for (const char* const name : {"krkn.nbw.emd", "krkn_nbw.emd", "krkn_nbb_emd", "kqqkqnbw.emd",
                                   "kqqqk_nbb.emd", "krbknp.0.nbb.emd"})
        refused(name, 1000, "Unable to read % - file broken");
    refused("krknnbb.emd", 79, "Unable to read % - read error");
    for (const char* const name : {"kqqqknbw.emd", "krbknp_0_nbb.emd", "krbknp.nbw", "krkn.0.nbw",
                                   "krkn-nbw.emd", "KRKN.nbw", "krkr.nbb"})
        makeFile(fs::path("good") / name, 1000);
    tbStartUp(path("good"));
    EXPECT_EQ(filesOpened, 0);

    // Where a length is known from the index range alone, a table may be a little shorter.
    const int kbpkp = classByName("kbpkp");
    const u64 limit = indexLayout(kbpkp, 0).limit;
    makeFile("good/kbpkp.nbw", limit - limit / 200);
    tbStartUp(path("good"));
    EXPECT_EQ(largestTbMen, 5);
    EXPECT_EQ(scoreOf("8/6k1/8/4p3/8/8/1P6/KB6 w"), 0);
    const std::string length = std::to_string(classTable[kbpkp].positions[0]);
    for (const u64 wrong : {limit + 1, limit - limit / 50})
        refused("kbpkp.nbw", wrong, "% corrupted " + length + " " + length + " " + std::to_string(wrong));
}

}  // namespace
}  // namespace valku
