#pragma once

#include <string>
#include <string_view>

namespace valku {

/// The new content of a file. It is written beside the file, under the file's name with ".new" behind it, and
/// put in its place only when it is whole and on the disk, so that a failure, or the end of the process at
/// any point, leaves the old file as it was. A symbolic link is followed and stays; a file keeps its
/// permissions. What is no regular file, such as a device or a pipe, and what is our own output, is written
/// straight. For one thread at a time; of several processes that replace one file at once, the first does.
class FileReplacement {
  public:
    /// A pipe may have to wait here for its reader.
    explicit FileReplacement(const std::string& path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Without a putInPlace() that succeeded the old file stays.
    ~FileReplacement();

    /// False if there is no such folder, or the file may not be written.
    bool isOpen() const { return descriptor >= 0; }

    /// Writes are gathered. After one that failed the rest is dropped.
    void write(std::string_view text);

    /// False after a failure that has come to light.
    bool isGood() const { return good; }

    /// Brings everything to the disk, before the file is put in its place. False if something was not
    /// written.
    bool complete();

    /// Completes the file if that is still to be done, and replaces the old one. False after any failure.
    bool putInPlace();

  private:
    bool openDirectly(const std::string& path);
    void openBeside(const std::string& path);
    void flush();
    void discard();
    void close();

    std::string target;      ///< empty if it is written straight
    std::string unfinished;  ///< empty if there is nothing to take away
    std::string gathered;
    int descriptor = -1;
    bool good = false;
};

}  // namespace valku
