#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/descriptor_posix.h"
#include "platform/new_file.h"
#include "platform/signals.h"

namespace valku {

NewFile::~NewFile() {
    close();
}

NewFile::Result NewFile::create(const std::string& name) {
    close();
    ignoreFileSizeLimit();
    constexpr int anyone = 0666;  // less the user's mask
    descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, anyone);
    if (isOpen()) return Result::done;
    return errno == EEXIST ? Result::taken : Result::refused;
}

bool NewFile::write(std::string_view text) {
    return writeDescriptor(descriptor, text);
}

void NewFile::close() {
    if (isOpen()) ::close(descriptor);
    descriptor = -1;
}

}  // namespace valku
