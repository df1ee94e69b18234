#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "tablebases/block_decoder.h"
#include "tablebases/compressed_header.h"
#include "tablemaker/compressor.h"

namespace valku {
namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<u8>;

// Rows of numbers that rise and fall, with some noise: three blocks and a short one.
Bytes someTable() {
    std::mt19937 random(1);
    Bytes bytes(3 * tableBlockSize + 1000);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<u8>(random() % 5 == 0 ? random() % 40 : i / 61 % 7 + i % 61 / 9);
    return bytes;
}

class CompressedFile : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(home);
        plain = someTable();
        const u64 size = compressTable(plain, path, 2);
        std::ifstream file(path, std::ios::binary);
        whole.assign(std::istreambuf_iterator<char>(file), {});
        ASSERT_EQ(whole.size(), size);
        ASSERT_LT(size, plain.size() * 2 / 3);
        headerSize = numberAt(bytesOf(whole), 64);
    }
    void TearDown() override { fs::remove_all(home); }

    static std::span<const u8> bytesOf(const std::string& text) {
        return {reinterpret_cast<const u8*>(text.data()), text.size()};
    }
    static void setNumber(std::string& file, std::size_t place, u32 number) {
        for (std::size_t i = 0; i < 4; ++i) file[place + i] = static_cast<char>(number >> (24 - 8 * i));
    }
    void repairCheck(std::string& file) const {
        setNumber(file, headerSize - 4, headerCheck(bytesOf(file).first(headerSize - 4)));
    }

    // What became of reading a file: the header's error, or that of each block, 0 if it has the right bytes
    // and -1 if it has others.
    struct Outcome {
        i32 header = 0;
        std::vector<i32> blocks;
    };
    Outcome readAll(const std::string& file) const {
        std::istringstream stream(file);
        Outcome outcome;
        const std::unique_ptr<DecodeInfo> info = readCompressedHeader(stream, outcome.header);
        EXPECT_EQ(info != nullptr, outcome.header == 0);
        DecodeBlock context;
        for (u32 block = 0; info && block < std::min(info->blockCount, 10U); ++block) {
            const std::unique_ptr<u8[]> output(
                new u8[tableBlockSize]);  // of a size that the sanitizer guards
            const std::span<u8> room(output.get(), tableBlockSize);
            const i32 error = decodeBlock(context, stream, *info, block, room);
            const std::size_t place = block * std::size_t{tableBlockSize};
            const bool right =
                place < plain.size() && std::equal(plain.begin() + static_cast<std::ptrdiff_t>(place),
                                                   plain.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                       plain.size(), place + tableBlockSize)),
                                                   output.get());
            outcome.blocks.push_back(error != 0 ? errorKind(error) : right ? 0 : -1);
        }
        outcome.header = errorKind(outcome.header);
        return outcome;
    }

    const fs::path home =
        fs::path(::testing::TempDir()) / ("valku-compressed-file-" + std::to_string(getpid()));
    const std::string path = home / "table.emd";
    Bytes plain;
    std::string whole;
    std::size_t headerSize = 0;
};

TEST_F(CompressedFile, IsRefusedWithADamagedHeader) {
    EXPECT_EQ(readAll(whole).blocks, std::vector<i32>(4, 0));
    int refused = 0, wrong = 0;
    for (std::size_t place = 0; place < headerSize; ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(~damaged[place]);
        const i32 error = readAll(damaged).header;
        ASSERT_TRUE(error == tbBrokenFile || (error == tbReadError && place >= 64 && place < 68))
            << place << ' ' << error;
        // With a check that fits, the rest has to stand on its own feet.
        for (const int flip : {0x01, 0x10, 0xFF}) {
            damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ flip);
            if (place + 4 < headerSize) repairCheck(damaged);
            const Outcome outcome = readAll(damaged);
            refused += outcome.header != 0;
            wrong += outcome.header == 0 && outcome.blocks != std::vector<i32>(4, 0);
        }
    }
    EXPECT_GT(refused, 300);
    EXPECT_GT(wrong, 50);

    // Sizes that no file of this length can have; nothing is allocated for them.
    for (const auto& [place, number, kind] : {std::tuple<std::size_t, u32, i32>{64, 83, tbBrokenFile},
                                              {64, 0xFFFFFFFF, tbReadError},
                                              {72, 0, tbBrokenFile},
                                              {72, 0xFFFFFFFF, tbBrokenFile},
                                              {72, 0x1FFFFFF6, tbBrokenFile}}) {
        std::string damaged = whole;
        setNumber(damaged, place, number);
        repairCheck(damaged);
        EXPECT_EQ(readAll(damaged).header, kind) << place << ' ' << number;
    }
}

TEST_F(CompressedFile, GivesWhatIsLeftWhenItIsCut) {
    for (std::size_t tenth = 0; tenth < 10; ++tenth) {
        const std::size_t size = whole.size() * tenth / 10;
        const Outcome outcome = readAll(whole.substr(0, size));
        if (size < headerSize) {
            EXPECT_EQ(outcome.header, tbReadError);
            continue;
        }
        ASSERT_EQ(outcome.blocks.size(), 4U);
        EXPECT_EQ(outcome.blocks.back(), tbReadError);
        EXPECT_TRUE(std::ranges::is_sorted(outcome.blocks)) << tenth;
        EXPECT_TRUE(tenth < 9 || outcome.blocks.front() == 0);
    }
    EXPECT_FALSE(fs::exists(path + ".new"));
}

TEST_F(CompressedFile, KeepsDamagedBlocksWithinTheirBounds) {
    std::mt19937 random(2);
    int wrong = 0, broken = 0;
    for (int round = 0; round < 500; ++round) {
        std::string damaged = whole;
        // Everything, or some bytes here and there.
        const std::size_t step = round % 2 == 0 ? 1 : 1 + random() % 2000;
        for (std::size_t i = headerSize + random() % step; i < damaged.size(); i += step)
            damaged[i] = static_cast<char>(random());
        // Every third time with a code and sizes from elsewhere too.
        if (round % 3 == 0) {
            for (std::size_t i = 80; i + 4 < headerSize; i += 1 + random() % 150)
                damaged[i] = static_cast<char>(random());
            repairCheck(damaged);
        }
        for (const i32 block : readAll(damaged).blocks) {
            ASSERT_TRUE(block <= 0 || block == tbReadError || block == tbBrokenFile) << block;
            wrong += block == -1;
            broken += block == tbBrokenFile;
        }
    }
    EXPECT_GT(wrong, 0);
    EXPECT_GT(broken, 0);
}

TEST_F(CompressedFile, AppearsOnlyWhole) {
    Bytes expanded;
    std::string error;
    EXPECT_TRUE(expandTable(path, expanded, error)) << error;
    EXPECT_EQ(expanded, plain);

    EXPECT_EQ(compressTable(plain, home / "nowhere" / "table.emd", 2), 0U);
    fs::create_directory(home / "taken");
    std::ofstream(home / "taken" / "file").close();
    EXPECT_EQ(compressTable(plain, home / "taken", 2), 0U);
    EXPECT_EQ(std::distance(fs::directory_iterator(home), {}), 2);

    // Other bytes are found by the blocks' own checks.
    whole[headerSize + 100] = static_cast<char>(whole[headerSize + 100] ^ 4);
    std::ofstream(path, std::ios::binary) << whole;
    EXPECT_FALSE(expandTable(path, expanded, error));
    EXPECT_NE(error.find("in block 0"), std::string::npos) << error;
    EXPECT_FALSE(expandTable(home / "nothing.emd", expanded, error));
    EXPECT_FALSE(expandTable(home / "taken", expanded, error));
}

}  // namespace
}  // namespace valku
