#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/descriptor_posix.h"
#include "platform/file_replacement.h"
#include "platform/signals.h"

namespace valku {

namespace {

constexpr std::size_t mostGathered = 1 << 16;
constexpr mode_t permissionBits = 07777;

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// The descriptor of our standard output or error if the file is that, as with /dev/stdout; else -1. Opening
// the name anew would start at the beginning of a file, and is impossible for a socket.
int standardDescriptorOf(const struct stat& file) {
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat standard {};
        if (fstat(descriptor, &standard) == 0 && isSameFile(standard, file)) return descriptor;
    }
    return -1;
}

// The file at the end of a chain of symbolic links, whether it exists or not.
std::string endOfLinks(std::filesystem::path path) {
    constexpr int longestChain = 40;
    std::error_code error;
    for (int links = 0; links < longestChain && std::filesystem::is_symlink(path, error); ++links)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path.string();
}

// Opens the file and locks it until it is closed. What a killed process has left under the name is reused.
// -1 if another process holds the lock.
int openAlone(const std::string& path) {
    for (;;) {
        constexpr mode_t anyone = 0666;
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, anyone);
        if (descriptor < 0) return -1;
        struct stat opened {};
        struct stat named {};
        if (fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode) &&
            flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            // Before we got the lock, another process may have renamed the file: then we must not truncate
            // it.
            const bool isNamed = lstat(path.c_str(), &named) == 0 && isSameFile(opened, named);
            if (isNamed && ftruncate(descriptor, 0) == 0) return descriptor;
            close(descriptor);
            if (isNamed) return -1;
        } else {
            close(descriptor);
            return -1;
        }
    }
}

// Not every file system lets us change the owner; the permissions can always be set.
bool takeOverPermissions(int descriptor, const struct stat& old) {
    if (fchown(descriptor, old.st_uid, old.st_gid) != 0 && errno != EPERM && errno != EINVAL) return false;
    return fchmod(descriptor, old.st_mode & permissionBits) == 0;
}

// Devices, pipes and some file systems cannot be synchronised.
bool bringToDisk(int descriptor) {
    while (fsync(descriptor) != 0) {
        if (errno == EINVAL || errno == EROFS || errno == ENOTSUP) return true;
        if (errno != EINTR) return false;
    }
    return true;
}

// The entry of the file in its folder. A folder that we may not read is left to the system.
bool bringFolderToDisk(const std::string& file) {
    const std::string folder = std::filesystem::path(file).parent_path().string();
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return true;
    const bool brought = bringToDisk(descriptor);
    ::close(descriptor);
    return brought;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path) {
    ignoreFileSizeLimit();
    ignoreBrokenPipes();
    if (path.empty()) return;
    if (!openDirectly(path)) openBeside(endOfLinks(path));
    good = isOpen();
}

FileReplacement::~FileReplacement() {
    discard();
}

bool FileReplacement::openDirectly(const std::string& path) {
    struct stat file {};
    if (stat(path.c_str(), &file) != 0) return false;
    const int standard = standardDescriptorOf(file);
    if (standard >= 0) {
        descriptor = fcntl(standard, F_DUPFD_CLOEXEC, 0);
        return true;
    }
    if (S_ISREG(file.st_mode) || S_ISDIR(file.st_mode)) return false;
    descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    return true;
}

void FileReplacement::openBeside(const std::string& path) {
    struct stat old {};
    const bool stands = stat(path.c_str(), &old) == 0;
    // A file that is protected from writing must not be replaced either.
    if (stands && faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) return;
    target = path;
    descriptor = openAlone(path + ".new");
    if (descriptor < 0) return;
    unfinished = path + ".new";
    if (stands && S_ISREG(old.st_mode) && !takeOverPermissions(descriptor, old)) discard();
}

void FileReplacement::write(std::string_view text) {
    if (!good) return;
    gathered += text;
    if (gathered.size() >= mostGathered) flush();
}

void FileReplacement::flush() {
    good = good && writeDescriptor(descriptor, gathered);
    gathered.clear();
}

bool FileReplacement::complete() {
    flush();
    good = good && bringToDisk(descriptor);
    return good;
}

bool FileReplacement::putInPlace() {
    if (complete() && !unfinished.empty()) {
        good = std::rename(unfinished.c_str(), target.c_str()) == 0;
        if (good) {
            unfinished.clear();
            good = bringFolderToDisk(target);
        }
    }
    discard();
    return good;
}

void FileReplacement::discard() {
    // Unlinked before the close that releases the lock: after that the name may belong to another process.
    if (!unfinished.empty()) unlink(unfinished.c_str());
    unfinished.clear();
    close();
}

void FileReplacement::close() {
    if (descriptor >= 0 && ::close(descriptor) != 0) good = false;
    descriptor = -1;
}

}  // namespace valku
