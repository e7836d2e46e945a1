#include "ImageFiles/Common/AtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "ImageFiles/Common/FileError.h"
#include "System/ErrorText.h"
#include "System/Interrupt.h"

namespace zel::tool {

namespace {

constexpr std::size_t bytesPerCall = std::size_t{4} << 20U;

/// A link stays a link: the file that it leads to is replaced.
std::filesystem::path followLinks(const std::string& path) {
    std::error_code failed, ignored;
    std::filesystem::path target = std::filesystem::canonical(path, failed);
    if (!failed) return target;
    if (!std::filesystem::is_symlink(path, ignored)) return path;
    throw FileError::writing(path, "its link leads nowhere: " + systemErrorText(failed.value()));
}

std::filesystem::path folderOf(const std::filesystem::path& file) {
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

mode_t permissionsFor(const std::string& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) return status.st_mode & 0777U;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

std::string temporaryPattern(const std::filesystem::path& target) {
    constexpr std::size_t maxNameLength = 200;  // of the 255 that file systems allow, the dot and suffix included
    const std::string name = target.filename().string().substr(0, maxNameLength);
    return (folderOf(target) / ("." + name + ".XXXXXX")).string();
}

}  // namespace

void AtomicFile::checkWritable(const std::string& path) {
    const std::filesystem::path target = followLinks(path);
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) throw FileError::writing(path, "there is a folder of that name");
        if (!S_ISREG(status.st_mode)) throw FileError::writing(path, "it is not a regular file");
        // The rename would replace it all the same.
        if (access(target.c_str(), W_OK) != 0) throw FileError::writing(path, systemErrorText(errno));
    }
    if (access(folderOf(target).c_str(), W_OK | X_OK) == 0) return;
    const int reason = errno;
    throw FileError::writing(path, "folder " + folderOf(target).string() + ": " + systemErrorText(reason));
}

AtomicFile::AtomicFile(const std::string& path) : path_(path), target_(followLinks(path).string()) {
    checkWritable(path);
    temporary_ = temporaryPattern(target_);
    descriptor_ = mkstemp(temporary_.data());
    if (descriptor_ < 0) throw FileError::writing(path_, systemErrorText(errno));
    fchmod(descriptor_, permissionsFor(target_));  // may fail: some file systems have no permissions
}

AtomicFile::~AtomicFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void AtomicFile::write(const void* bytes, std::size_t count) {
    writeAt(bytes, count, size_);
}

void AtomicFile::writeAt(const void* bytes, std::size_t count, std::size_t offset) {
    std::size_t done = 0;
    while (done < count) {
        checkInterrupt();
        const ssize_t written = pwrite(descriptor_, static_cast<const std::byte*>(bytes) + done,
                                       std::min(count - done, bytesPerCall), static_cast<off_t>(offset + done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail(errno);
        done += static_cast<std::size_t>(written);
    }
    size_ = std::max(size_, offset + count);
}

std::size_t AtomicFile::readAt(void* buffer, std::size_t count, std::size_t offset) const {
    std::size_t done = 0;
    while (done < count) {
        checkInterrupt();
        const ssize_t got = pread(descriptor_, static_cast<std::byte*>(buffer) + done,
                                  std::min(count - done, bytesPerCall), static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(errno);
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void AtomicFile::commit() {
    checkInterrupt();
    // EINVAL, EROFS: file systems without anything to flush.
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) fail(errno);
    if (close(std::exchange(descriptor_, -1)) != 0) fail(errno);
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
    temporary_.clear();
}

void AtomicFile::fail(int errorNumber) const {
    throw FileError::writing(path_, systemErrorText(errorNumber));
}

}  // namespace zel::tool
