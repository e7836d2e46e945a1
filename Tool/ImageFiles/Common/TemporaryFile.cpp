#include "ImageFiles/Common/TemporaryFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <string_view>

namespace zel::tool {

namespace {

// Names are ".out.npy.zel-a1B2c3". Others, such as rsync, end theirs in random letters too, but not behind these.
constexpr std::string_view mark = ".zel-", randomLetters = "XXXXXX";

std::string patternFor(const std::filesystem::path& target) {
    constexpr std::size_t maxNameLength = 200;  // of the 255 that file systems allow, the dot and suffix included
    std::string name(1, '.');
    name.append(target.filename().string(), 0, maxNameLength).append(mark).append(randomLetters);
    return (target.parent_path() / name).string();
}

bool isTemporaryName(const std::string& name) {
    const std::size_t suffix = mark.size() + randomLetters.size();
    return name.size() > suffix && name.front() == '.' && name.compare(name.size() - suffix, mark.size(), mark) == 0 &&
           std::all_of(name.end() - randomLetters.size(), name.end(), [](unsigned char c) { return std::isalnum(c); });
}

bool lock(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

/// Whether the descriptor's file still has that name.
bool hasName(int descriptor, const char* path) {
    struct stat opened {
    }, named{};
    return fstat(descriptor, &opened) == 0 && lstat(path, &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
}

/// A lock that can be had belongs to no process.
void removeUnused(const char* path) {
    const int descriptor = open(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;
    struct stat status {};
    const bool isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (isFile && lock(descriptor) && hasName(descriptor, path)) unlink(path);
    close(descriptor);
}

}  // namespace

int makeTemporaryFile(const std::filesystem::path& target, std::string& path) {
    for (;;) {
        path = patternFor(target);
        const int descriptor = mkostemp(path.data(), O_CLOEXEC);
        if (descriptor < 0) return descriptor;
        // Another run may clear the file away before it is locked. Where a file system has no locks, nobody clears.
        const bool isTaken = !lock(descriptor) && errno == EWOULDBLOCK;
        if (!isTaken && hasName(descriptor, path.c_str())) return descriptor;
        close(descriptor);
    }
}

void clearTemporaryFiles(const std::filesystem::path& folder) {
    static std::set<std::filesystem::path> cleared;
    if (!cleared.insert(folder).second) return;
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        if (isTemporaryName(entry->path().filename().string())) removeUnused(entry->path().c_str());
    }
}

}  // namespace zel::tool
