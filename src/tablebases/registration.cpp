#include "tablebases/registration.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/raw_io.h"
#include "search/upward_calls.h"
#include "tablebases/compressed_file.h"
#include "tablebases/index_layout.h"
#include "tablebases/material_classes.h"
#include "tablebases/table_cache.h"

namespace valku {

std::string TBPath = "<empty>";
i32 filesTried = 0;
i32 filesOpened = 0;
i32 compressedFiles = 0;
i64 tbMemoryUsed = 0;
bool tbVerbose = false;

namespace {

constexpr std::size_t longestTablePath = 1023;
// The last class whose compressed file may have a name of the 8.3 form, such as kqqkqnbw.emd.
constexpr int lastShortNamedClass = 110;

void tell(const std::string& line) {
    if (tbVerbose) writeStandardOutput(line);
}

// A table file that has been found.
struct FoundFile {
    std::string path;
    std::ifstream stream;
    bool compressed = false;
};

bool tryFile(FoundFile& file, std::string path) {
    ++filesTried;
    std::error_code error;
    if (path.size() > longestTablePath || !std::filesystem::is_regular_file(path, error)) return false;
    file.stream.open(path, std::ios::binary);
    if (!file.stream.is_open()) return false;
    ++filesOpened;
    file.path = std::move(path);
    return true;
}

// Looks for the file under all the names that it may have.
bool findFile(FoundFile& file, const std::string& directory, const TbClass& tbClass, int side, int part) {
    std::string stem = directory;
    if (!stem.empty() && stem.back() != '/') stem += '/';
    stem += tbClass.name;
    if (tbClass.has(tbMultiPart)) {
        stem += '.';
        stem += static_cast<char>(part < 10 ? '0' + part : 'a' + part - 10);
    }
    const std::string extension = side == 0 ? "nbw" : "nbb";
    if (tryFile(file, stem + "." + extension)) return true;
    file.compressed = true;
    if (tryFile(file, stem + "." + extension + ".emd")) return true;
    if (tbClass.has(tbMultiPart)) return false;
    return tryFile(file, stem + "_" + extension + ".emd") || tryFile(file, stem + "_" + extension + "_emd") ||
           (tbClass.id <= lastShortNamedClass && tryFile(file, stem + extension + ".emd"));
}

std::unique_ptr<DecodeInfo> readHeader(FoundFile& file) {
    ++compressedFiles;
    std::unique_ptr<DecodeInfo> info;
    try {
        info = readCompressedHeader(file.stream);
    } catch (const Fault& fault) {
        throw Fault("*** Unable to read " + file.path + " - " + fault.text());
    }
    if (info->blockSize != tableBlockSize)
        throw Fault("*** " + file.path + ": Unsupported block size " + std::to_string(info->blockSize));
    tbMemoryUsed += static_cast<i64>(info->memoryUsed());
    return info;
}

u64 sizeOfPlainFile(FoundFile& file) {
    file.stream.seekg(0, std::ios::end);
    const std::streamoff size = file.stream.tellg();
    if (size < 0) throw Fault("*** Seek in " + file.path + " failed");
    return static_cast<u64>(size);
}

// Where a length is known from the index range alone, a table may lack more useless entries at its end than
// usedTailEnd leaves out: up to a hundredth of the range is accepted.
bool isPossibleCount(const TbClass& tbClass, int side, u64 count) {
    const bool pawnsAndPieces = tbClass.hasPawnsOnBothSides() && tbClass.hasPieces();
    const bool certain = tbClass.id < firstFiveMenClass || (tbClass.id < firstSixMenClass && !pawnsAndPieces);
    const u64 most = certain ? tbClass.positions[side] : indexLayout(tbClass.id, side).limit;
    const u64 least = certain ? most : most - most / 100;
    if (!tbClass.has(tbMultiPart)) return count >= least && count <= most;
    // A part is full, or the rest of a possible length.
    const u64 chunk = tbPartBytes / tbClass.entrySize();
    return count == chunk || (count < chunk && (count + chunk - least % chunk) % chunk <= most - least);
}

void checkCount(const TbClass& tbClass, int side, const std::string& path, u64 count) {
    if (isPossibleCount(tbClass, side, count)) return;
    u64 expected = tbClass.positions[side];
    u64 rest = expected;
    if (tbClass.has(tbMultiPart)) {
        expected = tbPartBytes / tbClass.entrySize();
        rest %= expected;
    }
    throw Fault("*** " + path + " corrupted " + std::to_string(expected) + " " + std::to_string(rest) + " " +
                std::to_string(count));
}

// Looks for one file of a table. True if it is there, in this directory or an earlier one.
bool registerFile(const std::string& directory, int tbClass, int side, int part) {
    TbClass& record = classTable[tbClass];
    std::vector<TbFile>& files = record.files[record.fileSide(side)];
    TbFile& target = files[static_cast<std::size_t>(part)];
    if (!target.name.empty()) return true;

    FoundFile file;
    if (!findFile(file, directory, record, side, part)) return false;
    std::unique_ptr<DecodeInfo> info;
    if (file.compressed) {
        info = readHeader(file);
        checkCount(record, side, file.path, info->decodedSize() / record.entrySize());
    } else if (!record.has(tbTwoByte) && record.positions[side] < tbPartBytes) {
        checkCount(record, side, file.path, sizeOfPlainFile(file));
    }
    registerMaterial(record);
    const bool first = std::ranges::all_of(files, [](const TbFile& known) { return known.name.empty(); });
    tell(file.path + (first ? " registered\n" : " found\n"));
    target.name = std::move(file.path);
    target.decodeInfo = std::move(info);
    return true;
}

// True if at least the first part of the table is there.
bool registerClassSide(const std::string& directory, int tbClass, int side) {
    const TbClass& record = classTable[tbClass];
    const int parts = static_cast<int>(record.files[record.fileSide(side)].size());
    int part = 0;
    while (part < parts && registerFile(directory, tbClass, side, part)) ++part;
    return part != 0;
}

// The highest class that has a file in the directory, 0 if there is none.
int registerDirectory(const std::string& directory) {
    int highest = 0;
    for (int number = 1; number < tbClassCount; ++number) {
        const bool symmetric = classTable[number].has(tbSymmetric);
        const bool white = registerClassSide(directory, number, 0);
        const bool black = !symmetric && registerClassSide(directory, number, 1);
        if (white || black) highest = number;
    }
    return highest;
}

}  // namespace

void forgetTablebases() {
    filesTried = filesOpened = compressedFiles = 0;
    tbMemoryUsed = 0;
    closeAllTbFiles();
    initIndexLayouts();
    clearMaterial();
    for (TbClass& tbClass : classTable) {
        for (std::vector<TbFile>& files : tbClass.files) {
            for (TbFile& file : files) file = {};
        }
    }
}

int initTablebases(const std::string& path) {
    forgetTablebases();
    int highest = 0;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(",;", start), path.size());
        highest = std::max(highest, registerDirectory(path.substr(start, end - start)));
        start = end + 1;
    }
    if (compressedFiles != 0) {
        tell(formatText("Allocated %dKb for decompression tables, indices, and buffers.\n",
                        static_cast<int>((tbMemoryUsed + 1023) / 1024)));
    }
    tell(formatText("Tried to open %d files. Opened %d files.\n", filesTried, filesOpened));
    return menOfClass(highest);
}

void tbStartUp(const std::string& path) {
    const int men = initTablebases(path);
    if (men != 0) initCache();
    largestTbMen = men;
}

}  // namespace valku
