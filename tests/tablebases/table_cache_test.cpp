#include "tablebases/table_cache.h"

#include <sys/resource.h>

#include <deque>

#include "tablebases/table_files.h"

namespace valku {
namespace {

constexpr u64 blockBytes = 8192;
constexpr u32 slots = 4062;

// What the cache holds shows when the files change.
class TableCache : public TableFiles {
  protected:
    static i32 read(const char* name, int side, u32 block, u32 offset = 0) {
        return readTableByte(classByName(name), side, block, offset);
    }
    static bool isRegistered(const char* name) {
        return !classTable[classByName(name)].files[0][0].name.empty();
    }
};

TEST_F(TableCache, ForgetsTheBlockThatWasNotUsedForLongest) {
    makeTables({"kppkp.nbw", "kppkp.nbb"});
    tbStartUp(path());
    for (u32 block = 0; block < slots; ++block) ASSERT_EQ(read("kppkp", 0, block), 0);
    for (u32 block = 0; block < slots + 10; ++block) write("kppkp.nbw", block * blockBytes, "\7");

    EXPECT_EQ(read("kppkp", 0, 0), 0);      // not the oldest one any more
    EXPECT_EQ(read("kppkp", 0, slots), 7);  // takes the place of block 1
    for (u32 block = 2; block < slots; ++block) ASSERT_EQ(read("kppkp", 0, block), 0) << block;
    EXPECT_EQ(read("kppkp", 0, 0), 0);
    EXPECT_EQ(read("kppkp", 0, 1), 7);  // in place of block slots, then
    write("kppkp.nbw", slots * blockBytes, "\x8");
    EXPECT_EQ(read("kppkp", 0, slots), 8);

    // The same numbers of another table are other blocks.
    write("kppkp.nbb", 2 * blockBytes, "\x9");
    EXPECT_EQ(read("kppkp", 1, 2), 9);
    EXPECT_EQ(read("kppkp", 0, 3), 7);  // whose place it took
    EXPECT_EQ(read("kppkp", 0, 5), 0);

    initCache();
    EXPECT_EQ(read("kppkp", 0, 5), 7);
}

TEST_F(TableCache, LosesAFileThatFails) {
    makeTables({"kppkp.nbw", "kqk.nbw", "krk.nbw", "knk.nbw"});
    tbStartUp(path());
    for (const char* name : {"kppkp", "kqk", "krk"}) EXPECT_EQ(read(name, 0, 0), 0);

    // Cut short: the blocks that it still has are read. A failure costs the cache no slot.
    write("kppkp.nbw", 0, "\7");
    fs::resize_file(home / "kppkp.nbw", 100 * blockBytes + 10);
    EXPECT_EQ(read("kppkp", 0, 100, 9), 0);
    for (u32 block = 101; block < 101 + 2 * slots; ++block) ASSERT_EQ(read("kppkp", 0, block), noTableByte);
    EXPECT_FALSE(isRegistered("kppkp"));
    EXPECT_EQ(read("kppkp", 0, 50), noTableByte);
    EXPECT_EQ(read("kppkp", 0, 0), 0);
    EXPECT_EQ(read("kppkp", 0, 100, 20), 127);  // no value

    // Vanished: read to its end as long as it is open.
    fs::remove(home / "kqk.nbw");
    EXPECT_EQ(read("kqk", 0, 1), 0);
    closeAllTbFiles();
    EXPECT_EQ(read("kqk", 0, 2), noTableByte);
    EXPECT_FALSE(isRegistered("kqk"));

    // Become a directory, before it was ever opened.
    fs::remove(home / "knk.nbw");
    fs::create_directory(home / "knk.nbw");
    EXPECT_EQ(read("knk", 0, 0), noTableByte);
    EXPECT_FALSE(isRegistered("knk"));
    EXPECT_TRUE(isRegistered("krk"));
}

TEST_F(TableCache, ClosesFilesWhenTheSystemAllowsNoMore) {
    makeTables({"kqk.nbw", "krk.nbw", "kbk.nbw"});
    write("kbk.nbw", 5, "7");
    tbStartUp(path());
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

}  // namespace
}  // namespace valku
