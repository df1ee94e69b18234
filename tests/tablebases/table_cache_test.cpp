#include "tablebases/table_cache.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <deque>
#include <filesystem>
#include <fstream>

#include "tablebases/registration.h"
#include "tablebases/table_classes.h"

namespace valku {
namespace {

namespace fs = std::filesystem;

constexpr u32 blockBytes = 8192;
constexpr u32 slots = 4062;

// What the cache holds is seen by changing the files behind it.
class TableCache : public ::testing::Test {
  protected:
    void SetUp() override {
        initTableClasses();
        fs::create_directories(home);
    }
    void TearDown() override {
        forgetTablebases();
        fs::remove_all(home);
    }

    // A file of zeros, which take no room.
    void makeFile(const std::string& name, u64 size) const {
        std::ofstream(home / name).close();
        fs::resize_file(home / name, size);
    }
    void makeTable(const std::string& name, int side) const {
        makeFile(name + (side == 0 ? ".nbw" : ".nbb"), classTable[number(name)].positions[side]);
    }
    void write(const std::string& name, u64 block, u32 offset, char byte, u32 blocks = 1) const {
        std::fstream file(home / name, std::ios::in | std::ios::out | std::ios::binary);
        for (u64 i = block; i < block + blocks; ++i) {
            file.seekp(static_cast<std::streamoff>(i * blockBytes + offset));
            file.put(byte);
        }
        ASSERT_TRUE(file.good()) << name;
    }
    static u32 number(const std::string& name) { return static_cast<u32>(classByName(name)); }
    static i32 read(const char* name, int side, u32 block, u32 offset = 0) {
        return readTableByte(classByName(name), side, block, offset);
    }
    static bool isRegistered(const char* name, int side) {
        return !classTable[number(name)].files[side][0].name.empty();
    }

    const fs::path home = fs::path(::testing::TempDir()) / ("valku-table-cache-" + std::to_string(getpid()));
};

TEST_F(TableCache, ForgetsTheBlockThatWasNotUsedForLongest) {
    for (const int side : {0, 1}) makeTable("kppkp", side);
    tbStartUp(home);
    for (u32 block = 0; block < slots; ++block) ASSERT_EQ(read("kppkp", 0, block), 0);
    write("kppkp.nbw", 0, 0, 7, slots + 10);

    EXPECT_EQ(read("kppkp", 0, 0), 0);      // not the oldest one any more
    EXPECT_EQ(read("kppkp", 0, slots), 7);  // takes the place of block 1
    for (u32 block = 2; block < slots; ++block) ASSERT_EQ(read("kppkp", 0, block), 0) << block;
    EXPECT_EQ(read("kppkp", 0, 0), 0);
    EXPECT_EQ(read("kppkp", 0, 1), 7);  // in place of block slots, then
    write("kppkp.nbw", slots, 0, 8);
    EXPECT_EQ(read("kppkp", 0, slots), 8);

    // The same numbers of another table are other blocks.
    write("kppkp.nbb", 2, 0, 9);
    EXPECT_EQ(read("kppkp", 1, 2), 9);
    EXPECT_EQ(read("kppkp", 0, 3), 7);  // whose place it took
    EXPECT_EQ(read("kppkp", 0, 5), 0);

    initCache();
    EXPECT_EQ(read("kppkp", 0, 5), 7);
}

TEST_F(TableCache, LosesAFileThatFails) {
    makeTable("kppkp", 0);
    for (const char* name : {"kqk", "krk", "kbk", "knk"}) makeTable(name, 0);
    tbStartUp(home);
    for (const char* name : {"kppkp", "kqk", "krk", "kbk"}) EXPECT_EQ(read(name, 0, 0), 0);

    // Shrunk: the blocks that it still has go on. A failure costs the cache nothing.
    write("kppkp.nbw", 0, 0, 7);
    fs::resize_file(home / "kppkp.nbw", 100 * blockBytes + 10);
    EXPECT_EQ(read("kppkp", 0, 100, 9), 0);
    for (u32 block = 101; block < 101 + 2 * slots; ++block) ASSERT_EQ(read("kppkp", 0, block), noTableByte);
    EXPECT_FALSE(isRegistered("kppkp", 0));
    EXPECT_EQ(read("kppkp", 0, 50), noTableByte);
    EXPECT_EQ(read("kppkp", 0, 0), 0);
    EXPECT_EQ(read("kppkp", 0, 100, 20), 127);  // no value

    // Vanished: read to its end as long as it is open.
    fs::remove(home / "kqk.nbw");
    EXPECT_EQ(read("kqk", 0, 1), 0);
    closeAllTbFiles(false);
    EXPECT_EQ(read("kqk", 0, 2), noTableByte);
    EXPECT_FALSE(isRegistered("kqk", 0));

    // Become a directory, before it was ever opened.
    fs::remove(home / "knk.nbw");
    fs::create_directory(home / "knk.nbw");
    EXPECT_EQ(read("knk", 0, 0), noTableByte);
    EXPECT_FALSE(isRegistered("knk", 0));
    EXPECT_TRUE(isRegistered("krk", 0));
}

TEST_F(TableCache, ClosesFilesWhenTheSystemAllowsNoMore) {
    for (const char* name : {"kqk", "krk", "kbk"}) makeTable(name, 0);
    write("kbk.nbw", 0, 5, 55);
    tbStartUp(home);
    for (const char* name : {"kqk", "krk"}) ASSERT_EQ(read(name, 0, 0), 0);
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit few{64, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    {
        std::deque<std::ifstream> others;
        while (others.emplace_back("/dev/null").is_open()) {
        }
        EXPECT_EQ(read("kbk", 0, 0, 5), 55);
        EXPECT_EQ(read("kqk", 0, 1), 0);
    }
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST_F(TableCache, FindsTheBlocksOfTableParts) {
    constexpr u64 partBytes = u64{1} << 31;
    constexpr u32 partBlocks = 262144;
    makeFile("knpknp.0.nbw", partBytes);
    makeFile("knpknp.1.nbw", partBytes);
    write("knpknp.0.nbw", partBlocks - 1, blockBytes - 1, 5);
    write("knpknp.1.nbw", 0, 3, -6);
    tbStartUp(home);
    EXPECT_EQ(read("knpknp", 0, partBlocks - 1, blockBytes - 1), 5);
    EXPECT_EQ(read("knpknp", 0, partBlocks, 3), -6);
    EXPECT_EQ(read("knpknp", 0, 2 * partBlocks), noTableByte);
    EXPECT_EQ(read("knpknp", 0, 100 * partBlocks), noTableByte);
    EXPECT_EQ(read("knpknp", 0, 0, 3), 0);
}

}  // namespace
}  // namespace valku
