#include "protocol/parameters.h"
#include "distributed/process_role.h"

#include <gtest/gtest.h>

#include "book/book_file.h"
#include "distributed/clients.h"
#include "eval/weights.h"
#include "search/hash_table.h"
#include "search/upward_calls.h"
#include "tablebases/registration.h"
#include "thinking/thinking.h"

namespace valku {
namespace {

// What no interface shows: the peers to be, and what a client takes over from its parent.
TEST(Settings, PathsPeersAndClients) {
    initParameters();
    const u64 buckets = nHashTables;
    processRole = roleLocalClient;
    applySettingsLine("nHashTables=64");
    EXPECT_EQ(nHashTables, buckets);  // a client has its parent's size
    processRole = roleRoot;
    EXPECT_EQ(TBPath, "<empty>");
    applySettingsLine("TBPath=C:\\tb\r\n");
    EXPECT_EQ(TBPath, "C:\\tb");
    applySettingsLine("TBPath=" + std::string(400, 'x'));
    EXPECT_EQ(TBPath, std::string(255, 'x'));
    TBPath = "<empty>";
    applySettingsLine("bookFile=/books/small one.bk\r");
    EXPECT_EQ(bookFile, "/books/small one.bk");
    bookFile = "<empty>";

    for (const char* value :
         {"one:4000", "two", "three:0", "four:-1", "five:x", "five:65536", "six:4001", ":4002"})
        applySettingsLine(std::string("remoteClient=") + value);
    ASSERT_EQ(remotePeers.size(), 3u);
    EXPECT_EQ(remotePeers[0].host, "one");
    EXPECT_EQ(remotePeers[0].port, 4000);
    EXPECT_EQ(remotePeers[1].host, "six");
    for (int i = 0; i < 200; ++i) applySettingsLine("remoteClient=host:" + std::to_string(i + 1));
    ASSERT_EQ(remotePeers.size(), 128u);  // no more than there can be processes
    EXPECT_EQ(remotePeers[127].port, 125);
    remotePeers.clear();
}

// A check that fails leaves what an earlier line has set; a fixed depth alone falls back to none.
TEST(Settings, ValuesThatFailTheirCheck) {
    const struct {
        const char* key;
        i32& value;
        i32 afterZero, afterMinus;
    } cases[] = {
        {"numberOfLocalClients=", numberOfLocalClients, 2, 2},
        {"quickPlay=", quickPlay, 0, 0},
        {"TBdistance=", TBdistance, 0, 2},
        {"kingSafety=", kingSafety, 0, -1},
    };
    for (const auto& row : cases) {
        const i32 before = row.value;
        const auto valueAfter = [&](const char* value) {
            applySettingsLine(std::string(row.key) + "2");
            applySettingsLine(std::string(row.key) + value);
            return row.value;
        };
        EXPECT_EQ(valueAfter("0"), row.afterZero) << row.key;
        EXPECT_EQ(valueAfter("-1"), row.afterMinus) << row.key;
        row.value = before;
    }
}

}  // namespace
}  // namespace valku
