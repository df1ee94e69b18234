#include "tablemaker/table_file.h"

#include <filesystem>
#include <fstream>
#include <string_view>

#include "platform/fault.h"
#include "platform/file_replacement.h"
#include "tablebases/material_classes.h"
#include "tablemaker/compressor.h"
#include "tablemaker/ending.h"

namespace valku {

namespace {

constexpr const char* sideEndings[] = {"nbw", "nbb"};

bool cutEnding(std::string& text, std::string_view ending) {
    if (!text.ends_with(ending)) return false;
    text.resize(text.size() - ending.size());
    return true;
}

// Also checks that there is such a table among those that this program makes.
std::optional<TableFile> parseName(const std::string& path) {
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
    if (classTable[file.tbClass].fileSide(file.side) != file.side) return {};
    return file;
}

void checkLength(const TableFile& file, u64 bytes) {
    const TbClass& tbClass = classTable[file.tbClass];
    if (bytes == tbClass.positions[file.side]) return;
    throw Fault(file.path + ": holds " + std::to_string(bytes) + " bytes, where the table of " +
                tbClass.name + " has " + std::to_string(tbClass.positions[file.side]));
}

}  // namespace

TableFile tableFileOf(const std::string& path) {
    const std::optional<TableFile> file = parseName(path);
    if (!file) throw Fault(path + ": is not the name of a table");
    return *file;
}

std::string tablePath(const std::string& directory, int tbClass, int side, bool compressed) {
    const std::string name = classTable[tbClass].name + "." + sideEndings[side];
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

void checkTableLength(const TableFile& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file.path, error);
    if (error) throw Fault(file.path + ": cannot be read");
    if (!file.compressed) checkLength(file, size);
}

std::vector<u8> readTable(const TableFile& file) {
    checkTableLength(file);
    if (file.compressed) {
        std::vector<u8> bytes = expandTable(file.path);
        checkLength(file, bytes.size());
        return bytes;
    }
    std::vector<u8> bytes(classTable[file.tbClass].positions[file.side]);
    std::ifstream stream(file.path, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw Fault(file.path + ": cannot be read");
    return bytes;
}

void writeWhole(const std::string& path, const std::vector<u8>& bytes) {
    FileReplacement file(path);
    file.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!file.putInPlace()) throw Fault(path + ": cannot be written");
}

}  // namespace valku
