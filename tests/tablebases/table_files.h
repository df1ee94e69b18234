#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "chess/tables.h"
#include "search/upward_calls.h"
#include "tablebases/index_layout.h"
#include "tablebases/material_classes.h"
#include "tablebases/registration.h"

namespace valku {

namespace fs = std::filesystem;

// Made-up table files in a directory for each test: zeros, which take no room on the disk, but for a few
// bytes.
class TableFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        if (squareMask[0] == 0) initChessTables();  // a second time would make other keys
        initIndexLayouts();
        fs::create_directories(home);
    }
    void TearDown() override {
        forgetTablebases();
        largestTbMen = 0;
        fs::remove_all(home);
    }

    std::string path(const std::string& file = "") const { return home / file; }

    void makeFile(const fs::path& file, u64 length) const {
        fs::create_directories((home / file).parent_path());
        std::ofstream(home / file).close();
        fs::resize_file(home / file, length);
    }
    // The tables of the files, with all their parts.
    void makeTables(std::initializer_list<const char*> files) const {
        for (const fs::path file : files) {
            const TbClass& tbClass = classTable[classByName(file.stem().stem().string())];
            const std::string ending = file.extension();
            const int side = ending == ".nbw" ? 0 : 1;
            if (!tbClass.has(tbMultiPart)) makeFile(file, tbClass.positions[side] * tbClass.entrySize());
            for (std::size_t part = 0; tbClass.has(tbMultiPart) && part < tbClass.files[side].size(); ++part)
                makeFile(tbClass.name + "." + "0123456789abcdefgh"[part] + ending, tbPartBytes);
        }
    }
    void write(const std::string& file, u64 offset, const std::string& bytes) const {
        std::fstream stream(home / file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(offset));
        stream << bytes;
        ASSERT_TRUE(stream.good()) << file;
    }

    const fs::path home = fs::path(::testing::TempDir()) / ("valku-tables-" + std::to_string(getpid()));
};

}  // namespace valku
