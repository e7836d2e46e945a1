#include "ImageFiles/Common/AtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/TemporaryFile.h"
#include "System/ErrorText.h"
#include "System/Interrupt.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

constexpr std::size_t bytesPerCall = std::size_t{4} << 20U;
constexpr const char* standardOutput = "standard output";

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

/// Gives a new file owner and permissions of the one that it will replace, as far as this user may; without such, the
/// permissions of the umask. Failures do not matter: some file systems have neither.
void takeOverPermissions(int descriptor, const std::string& target) {
    struct stat before {};
    if (stat(target.c_str(), &before) != 0) {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(descriptor, 0666U & ~mask);
        return;
    }
    mode_t mode = before.st_mode & 0777U;
    constexpr auto unchanged = static_cast<uid_t>(-1);
    // Only root gives files to others; everybody may give them to a group of one's own.
    const bool keepsGroup =
        fchown(descriptor, before.st_uid, before.st_gid) == 0 || fchown(descriptor, unchanged, before.st_gid) == 0;
    // Another group gets no more than everybody.
    if (!keepsGroup) mode &= 0707U | (mode & 07U) << 3U;
    fchmod(descriptor, mode);
}

/// Whether the folder lets only its owner and those of its files replace them, and this user is neither.
bool isStickyFor(const struct stat& file, const std::filesystem::path& folder) {
    struct stat status {};
    const uid_t user = geteuid();
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & S_ISVTX) != 0 && user != 0 && user != file.st_uid &&
           user != status.st_uid;
}

}  // namespace

void AtomicFile::checkWritable(const std::string& path) {
    if (path == "-") {
        if (isatty(STDOUT_FILENO) == 0) return;
        throw FileError::writing(standardOutput, "it is a terminal; redirect it, or give a file's name");
    }
    const std::filesystem::path target = followLinks(path);
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) throw FileError::writing(path, "there is a folder of that name");
        if (!S_ISREG(status.st_mode)) throw FileError::writing(path, "it is not a regular file");
        // The rename would replace it all the same.
        if (access(target.c_str(), W_OK) != 0) throw FileError::writing(path, systemErrorText(errno));
        if (isStickyFor(status, folderOf(target))) {
            throw FileError::writing(path, "folder " + folderOf(target).string() +
                                               " is sticky: only the file's owner may replace it; write another name");
        }
    }
    if (access(folderOf(target).c_str(), W_OK | X_OK) == 0) return;
    const int reason = errno;
    throw FileError::writing(path, "folder " + folderOf(target).string() + ": " + systemErrorText(reason));
}

AtomicFile::AtomicFile(const std::string& path) : path_(path) {
    checkWritable(path);
    if (path == "-") {
        takeStandardOutput();
        path_ = standardOutput;
        descriptor_ = dup(STDOUT_FILENO);
        return;
    }
    target_ = followLinks(path).string();
    clearTemporaryFiles(folderOf(target_));
    descriptor_ = makeTemporaryFile(target_, temporary_);
    if (descriptor_ < 0) throw FileError::writing(path_, systemErrorText(errno));
    takeOverPermissions(descriptor_, target_);
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
        const auto* const next = static_cast<const std::byte*>(bytes) + done;
        const std::size_t most = std::min(count - done, bytesPerCall);
        const ssize_t written = isStream() ? ::write(descriptor_, next, most)
                                           : pwrite(descriptor_, next, most, static_cast<off_t>(offset + done));
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
    if (isStream()) {
        if (close(std::exchange(descriptor_, -1)) != 0) fail(errno);
        return;
    }
    // EINVAL, EROFS: file systems without anything to flush.
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) fail(errno);
    // Until the file has its name, the lock of a second descriptor keeps other runs from clearing it away.
    const int second = dup(descriptor_);
    const bool isClosed = close(std::exchange(descriptor_, second)) == 0;
    if (!isClosed || std::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
    temporary_.clear();
}

void AtomicFile::fail(int errorNumber) const {
    throw FileError::writing(path_, systemErrorText(errorNumber));
}

}  // namespace zel::tool
