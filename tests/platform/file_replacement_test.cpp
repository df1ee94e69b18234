#include "platform/file_replacement.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace valku {
namespace {

namespace fs = std::filesystem;

class FileReplacementTest : public ::testing::Test {
  protected:
    FileReplacementTest() {
        fs::remove_all(home);
        fs::create_directories(home);
        std::ofstream(path) << "old";
    }
    ~FileReplacementTest() override { fs::remove_all(home); }

    static std::string content(const std::string& name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static bool replace(const std::string& name, std::string_view text) {
        FileReplacement file(name);
        file.write(text);
        return file.putInPlace();
    }
    std::ptrdiff_t files() const { return std::distance(fs::directory_iterator(home), {}); }

    const std::string home = ::testing::TempDir() + "valku_replacement_" + std::to_string(getpid());
    const std::string path = home + "/file";
    const std::string large = std::string(200'000, 'x');
};

TEST_F(FileReplacementTest, AWholeFileTakesThePlaceOfTheOld) {
    fs::permissions(path, fs::perms(0604));
    fs::create_directory(home + "/links");
    fs::create_symlink("../file", home + "/links/link");
    fs::create_symlink("links/link", home + "/link");
    fs::create_symlink("links/none", home + "/dangling");
    EXPECT_TRUE(replace(home + "/link", large));
    EXPECT_EQ(content(path), large);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0604));
    EXPECT_TRUE(replace(home + "/dangling", "new"));
    EXPECT_EQ(content(home + "/links/none"), "new");
    EXPECT_TRUE(fs::is_symlink(home + "/link") && fs::is_symlink(home + "/dangling"));
    EXPECT_EQ(files(), 4);
}

TEST_F(FileReplacementTest, WhatFailsOrIsGivenUpLeavesTheOldFile) {
    { FileReplacement(path).write(large); }
    {
        FileReplacement file(path);
        file.write("first");
        EXPECT_FALSE(FileReplacement(path).isOpen());
        EXPECT_TRUE(file.complete());
        EXPECT_EQ(content(path), "old");
    }
    for (const std::string& name : {std::string(), home + "/none/file", home})
        EXPECT_FALSE(replace(name, "new")) << name;

    struct rlimit limit {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const struct rlimit low { 100'000, limit.rlim_max };
    setrlimit(RLIMIT_FSIZE, &low);
    EXPECT_FALSE(replace(path, large));
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(content(path), "old");
    EXPECT_EQ(files(), 1);
}

TEST_F(FileReplacementTest, AKilledWriterLeavesNothingInTheWay) {
    EXPECT_EXIT(
        {
            FileReplacement file(path);
            file.write(large);
            file.complete();
            raise(SIGKILL);
        },
        ::testing::KilledBySignal(SIGKILL), "");
    EXPECT_EQ(content(path), "old");
    EXPECT_TRUE(replace(path, "new"));
    EXPECT_EQ(content(path), "new");
    EXPECT_EQ(files(), 1);
}

// Through links, so that no failure of ours replaces a device.
TEST_F(FileReplacementTest, DevicesAreWritten) {
    for (const char* device : {"full", "null"})
        fs::create_symlink(std::string("/dev/") + device, home + "/" + device);
    EXPECT_FALSE(replace(home + "/full", "x"));
    EXPECT_TRUE(replace(home + "/null", large));
    EXPECT_TRUE(fs::is_symlink(home + "/full") && fs::is_symlink(home + "/null"));
    EXPECT_EQ(files(), 3);
}

}  // namespace
}  // namespace valku
