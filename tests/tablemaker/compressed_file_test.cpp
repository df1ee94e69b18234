#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "platform/fault.h"
#include "tablebases/compressed_file.h"
#include "tablemaker/compressor.h"

namespace valku {
namespace {

namespace fs = std::filesystem;

// Damaged files. Whole ones are read back by test_compressed_files.py.
class CompressedFile : public ::testing::Test {
  protected:
    // Rows of numbers that rise and fall, with some noise: three blocks and a short one.
    void SetUp() override {
        std::mt19937 random(1);
        plain.resize(3 * tableBlockSize + 1000);
        for (std::size_t i = 0; i < plain.size(); ++i)
            plain[i] = static_cast<u8>(random() % 5 == 0 ? random() % 40 : i / 61 % 7 + i % 61 / 9);
        fs::create_directories(home);
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

    // What reading a file gives: the fault of the header and of each block, "" for none, "wrong" for other
    // bytes.
    std::vector<std::string> readAll(const std::string& file) const {
        std::istringstream stream(file);
        std::unique_ptr<DecodeInfo> info;
        const auto faultOf = [](auto action) -> std::string {
            try {
                return action() ? "" : "wrong";
            } catch (const Fault& fault) {
                return fault.text();
            }
        };
        std::vector<std::string> results{
            faultOf([&] { return (info = readCompressedHeader(stream)) != nullptr; })};
        DecodeBlock context;
        for (u32 block = 0; info && block < std::min(info->blockCount, 10U); ++block) {
            const std::size_t place = std::min(plain.size(), block * std::size_t{tableBlockSize});
            const std::size_t size = std::min<std::size_t>(plain.size() - place, tableBlockSize);
            // On the heap, where the sanitizer guards its size.
            const std::unique_ptr<u8[]> output(new u8[tableBlockSize]);
            results.push_back(faultOf([&] {
                decodeBlock(context, stream, *info, block, {output.get(), tableBlockSize});
                return size != 0 && std::equal(&plain[place], &plain[place] + size, output.get());
            }));
        }
        return results;
    }

    const fs::path home =
        fs::path(::testing::TempDir()) / ("valku-compressed-file-" + std::to_string(getpid()));
    const std::string path = home / "table.emd";
    const std::vector<std::string> sound = std::vector<std::string>(5);
    std::vector<u8> plain;
    std::string whole;
    std::size_t headerSize = 0;
};

TEST_F(CompressedFile, IsRefusedWithADamagedHeader) {
    EXPECT_EQ(readAll(whole), sound);
    int refused = 0, wrong = 0;
    for (std::size_t place = 0; place < headerSize; ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(~damaged[place]);
        const std::string fault = readAll(damaged).front();
        ASSERT_TRUE(fault == "file broken" || (fault == "read error" && place >= 64 && place < 68))
            << place << ' ' << fault;
        // The same with a check that fits.
        for (const int flip : {0x01, 0x10, 0xFF}) {
            damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ flip);
            if (place + 4 < headerSize) repairCheck(damaged);
            const std::vector<std::string> results = readAll(damaged);
            refused += !results.front().empty();
            wrong += results.front().empty() && results != sound;
        }
    }
    EXPECT_GT(refused, 300);
    EXPECT_GT(wrong, 50);

    // Sizes that no file of this length can have; nothing is allocated for them.
    for (const auto& [place, number] :
         {std::pair<std::size_t, u32>{64, 3}, {72, 0}, {72, 0xFFFFFFFF}, {72, 0x1FFFFFF6}}) {
        std::string damaged = whole;
        setNumber(damaged, place, number);
        repairCheck(damaged);
        EXPECT_EQ(readAll(damaged).front(), "file broken") << place << ' ' << number;
    }
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
        const std::vector<std::string> results = readAll(damaged);
        for (const std::string& result : std::span(results).subspan(1)) {
            wrong += result == "wrong";
            broken += result == "file broken";
            ASSERT_NE(result, "no such block");
        }
    }
    EXPECT_GT(wrong, 0);
    EXPECT_GT(broken, 0);
}

}  // namespace
}  // namespace valku
