#include "tablemaker/table_file.h"

#include <atomic>
#include <filesystem>
#include <fstream>

#include "platform/file_replacement.h"
#include "tablemaker/compressor.h"
#include "tablemaker/parallel.h"

namespace valku {

namespace {

constexpr const char* sideEndings[] = {"nbw", "nbb"};

bool cutEnding(std::string& text, std::string_view ending) {
    if (!text.ends_with(ending)) return false;
    text.resize(text.size() - ending.size());
    return true;
}

void fillLists(const EndingMaterial& material, const Placement& p, TbMen (&lists)[2]) {
    int placed[2][tbTypes]{};
    for (const int side : {0, 1}) lists[side][tbKingPlace] = p.kings[side];
    for (int man = 0; man < material.count; ++man) {
        const int side = material.side[man], type = material.type[man];
        lists[side][static_cast<std::size_t>(3 * type + placed[side][type]++)] = p.men[man];
    }
}

// Calls use(index, entry of the table) for every legal position.
template <class Use>
void forEachLegal(const Ending& ending, int side, int threads, Use use) {
    const int tbClass = ending.tbClass;
    inParallel(threads, ending.pairCount(), [&](u32 pair) {
        const u32 begin = pair * ending.pairSize();
        for (u32 index = begin; index < begin + ending.pairSize(); ++index) {
            if (ending.states[side][index] == stateIllegal) continue;
            TbMen lists[2]{};
            fillLists(ending.material, ending.placementOf(index), lists);
            use(index, tableIndex(tbClass, side, lists[0], lists[1], false));
        }
    });
}

bool isLengthOf(const TableFile& file, u64 bytes, std::string& error) {
    const TbClass& tbClass = recordOf(file.tbClass);
    if (bytes == tbClass.positions[file.side]) return true;
    error = file.path + ": holds " + std::to_string(bytes) + " bytes, where the table of " + tbClass.name +
            " has " + std::to_string(tbClass.positions[file.side]);
    return false;
}

}  // namespace

std::optional<TableFile> tableFileOf(const std::string& path) {
    TableFile file{.path = path};
    std::string name = std::filesystem::path(path).filename().string();
    file.compressed = cutEnding(name, ".emd") || cutEnding(name, "_emd");
    if (cutEnding(name, sideEndings[1])) {
        file.side = 1;
    } else if (!cutEnding(name, sideEndings[0])) {
        return {};
    }
    if (!name.empty() && (name.back() == '.' || name.back() == '_')) name.pop_back();
    file.tbClass = classByName(name);
    if (file.tbClass <= 0 || menOfClass(file.tbClass) > maxEndingMen + 2) return {};
    if (recordOf(file.tbClass).fileSide(file.side) != file.side) return {};
    return file;
}

std::string tablePath(const std::string& directory, int tbClass, int side, bool compressed) {
    const std::string name = recordOf(tbClass).name + "." + sideEndings[side];
    return (std::filesystem::path(directory) / (compressed ? name + ".emd" : name)).string();
}

std::optional<TableFile> findTable(const std::string& directory, int tbClass, int side) {
    for (const bool compressed : {false, true}) {
        const std::string path = tablePath(directory, tbClass, side, compressed);
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) return TableFile{path, tbClass, side, compressed};
    }
    return {};
}

bool hasTableLength(const TableFile& file, std::string& error) {
    std::error_code fault;
    const auto size = std::filesystem::file_size(file.path, fault);
    if (fault) error = file.path + ": cannot be read";
    return !fault && (file.compressed || isLengthOf(file, size, error));
}

bool readTable(const TableFile& file, std::vector<u8>& bytes, std::string& error) {
    if (!hasTableLength(file, error)) return false;
    if (file.compressed) return expandTable(file.path, bytes, error) && isLengthOf(file, bytes.size(), error);
    bytes.resize(recordOf(file.tbClass).positions[file.side]);
    std::ifstream stream(file.path, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream) error = file.path + ": cannot be read";
    return static_cast<bool>(stream);
}

bool writeWhole(const std::string& path, const std::vector<u8>& bytes) {
    FileReplacement file(path);
    file.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    return file.putInPlace();
}

std::vector<u8> tableOfEnding(const Ending& ending, int side, int threads) {
    const u64 length = recordOf(ending.tbClass).positions[side];
    std::vector<u8> bytes(length, static_cast<u8>(unusedTableByte));
    forEachLegal(ending, side, threads, [&](u32 index, u64 entry) {
        // Images of one position may be written by several threads.
        const auto byte = static_cast<u8>(tableByteOf(ending.states[side][index]));
        std::atomic_ref(bytes[entry]).store(byte, std::memory_order_relaxed);
    });
    return bytes;
}

void fillFromTable(Ending& ending, int side, const std::vector<u8>& bytes, int threads) {
    inParallel(threads, ending.pairCount(), [&](u32 pair) { ending.markIllegal(side, pair); });
    forEachLegal(ending, side, threads, [&](u32 index, u64 entry) {
        ending.states[side][index] = stateOfTableByte(static_cast<i8>(bytes[entry]));
    });
}

}  // namespace valku
