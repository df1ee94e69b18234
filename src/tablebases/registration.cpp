#include "tablebases/registration.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

#include "platform/format_text.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "search/upward_calls.h"
#include "tablebases/class_lookup.h"
#include "tablebases/compressed_header.h"
#include "tablebases/index_plan.h"
#include "tablebases/table_cache.h"
#include "tablebases/table_classes.h"

namespace valku {

std::string TBPath = "<empty>";
i32 filesTried = 0;
i32 filesOpened = 0;
i32 compressedFiles = 0;
i64 tbMemoryUsed = 0;
bool tbVerbose = false;

namespace {

constexpr std::size_t longestTablePath = 1023;
// The last class whose compressed file may have a name of eight letters and three.
constexpr int lastShortNamedClass = 110;

[[noreturn]] void fail(const std::string& line) {
    writeStandardOutput(line);
    exitProcess(1);
}

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
    i32 error = 0;
    std::unique_ptr<DecodeInfo> info = readCompressedHeader(file.stream, error);
    if (!info) {
        const i32 kind = errorKind(error);
        fail("*** Unable to read " + file.path + " - " +
             (kind == tbReadError     ? "read error\n"
              : kind == tbOutOfMemory ? "out of memory\n"
              : kind == tbBrokenFile  ? "file broken\n"
                                      : formatText("error %d\n", error)));
    }
    if (info->blockSize != tableBlockSize) {
        fail("*** " + file.path + ": Unsupported block size " + std::to_string(info->blockSize) + "\n");
    }
    tbMemoryUsed += static_cast<i64>(info->memoryUsed());
    return info;
}

u64 sizeOfPlainFile(FoundFile& file) {
    file.stream.seekg(0, std::ios::end);
    const std::streamoff size = file.stream.tellg();
    if (size < 0) fail("*** Seek in " + file.path + " failed\n");
    return static_cast<u64>(size);
}

// Where only the numbering tells a table's length, its maker may have left out more numbers at the end than
// we know to be of no use: it is believed down to a hundredth below the range.
bool isPossibleCount(const TbClass& tbClass, int side, u64 count) {
    const bool pawnsAndPieces = tbClass.hasPawns(0) && tbClass.hasPawns(1) && tbClass.hasPieces();
    const bool certain = tbClass.id < firstFiveMenClass || (tbClass.id < firstSixMenClass && !pawnsAndPieces);
    const u64 most = certain ? tbClass.positions[side] : indexLimit(tbClass.id, side);
    const u64 least = certain ? most : most - most / 100;
    if (!tbClass.has(tbMultiPart)) return count >= least && count <= most;
    // A part is full, or what a possible length leaves for the last.
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
    fail("*** " + path + " corrupted " + std::to_string(expected) + " " + std::to_string(rest) + " " +
         std::to_string(count) + "\n");
}

void initDecodeBlock() {
    if (compressedFiles == 0) return;
    if (const i32 error = allocateDecodeBlock())
        fail(formatText("*** Cannot allocate decode block: error code %d\n", error));
    tell(formatText("Allocated %dKb for decompression tables, indices, and buffers.\n",
                    static_cast<int>((tbMemoryUsed + 1023) / 1024)));
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

bool registerFile(const std::string& directory, int tbClass, int side, int part) {
    TbClass& record = classTable[tbClass];
    std::vector<TbFile>& files = record.files[record.fileSide(side)];
    TbFile& slot = files[static_cast<std::size_t>(part)];
    if (!slot.name.empty()) return true;

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
    slot.name = std::move(file.path);
    slot.decodeInfo = std::move(info);
    return true;
}

bool registerClassSide(const std::string& directory, int tbClass, int side) {
    const TbClass& record = classTable[tbClass];
    const int parts = static_cast<int>(record.files[record.fileSide(side)].size());
    int part = 0;
    while (part < parts && registerFile(directory, tbClass, side, part)) ++part;
    return part != 0;
}

void forgetTablebases() {
    filesTried = filesOpened = compressedFiles = 0;
    tbMemoryUsed = 0;
    closeAllTbFiles(false);
    initIndexPlans();
    clearMaterial();
    for (TbClass& tbClass : classTable) {
        for (std::vector<TbFile>& files : tbClass.files) {
            for (TbFile& file : files) file = {};
        }
    }
    freeDecodeBlock();
}

int initTablebases(const std::string& path) {
    forgetTablebases();
    int highest = 0;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(",;", start), path.size());
        highest = std::max(highest, registerDirectory(path.substr(start, end - start)));
        start = end + 1;
    }
    initDecodeBlock();
    tell(formatText("Tried to open %d files. Opened %d files.\n", filesTried, filesOpened));
    return menOfClass(highest);
}

void tbStartUp(const std::string& path) {
    const int men = initTablebases(path);
    if (men != 0) initCache();
    largestTbMen = men;
}

}  // namespace valku
