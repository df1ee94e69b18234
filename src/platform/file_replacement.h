#pragma once

#include <string>
#include <string_view>

namespace valku {

// Replaces a file atomically. The new content is written beside the file, under its name with ".new"
// appended, and renamed over it only when it is complete and on the disk, so that a failure, or the end of
// the process at any point, leaves the old file as it was. A symbolic link is followed and stays; the file
// keeps its permissions. Anything that is no regular file, such as a device or a pipe, and our own output are
// written directly. For one thread at a time; of several processes that replace one file at once the first
// succeeds.
class FileReplacement {
  public:
    // For a named pipe this waits for a reader.
    explicit FileReplacement(const std::string& path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Without a putInPlace() that succeeded the old file stays.
    ~FileReplacement();

    // False if the folder does not exist or the file may not be written.
    bool isOpen() const { return descriptor >= 0; }

    // Buffered. After a failed write everything further is dropped.
    void write(std::string_view text);

    // False after a failure that has been noticed.
    bool isGood() const { return good; }

    // Brings everything to the disk; the old file is still in place. False if something was not written.
    bool complete();

    // Completes the file if necessary and replaces the old one. False after any failure.
    bool putInPlace();

  private:
    bool openDirectly(const std::string& path);
    void openBeside(const std::string& path);
    void flush();
    void discard();
    void close();

    std::string target;      // empty if it is written directly
    std::string unfinished;  // the temporary file; empty if there is none to remove
    std::string gathered;
    int descriptor = -1;
    bool good = false;
};

}  // namespace valku
