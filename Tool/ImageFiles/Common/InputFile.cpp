#include "ImageFiles/Common/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <limits>
#include <utility>

#include "ImageFiles/Common/FileError.h"
#include "System/ErrorText.h"
#include "System/Interrupt.h"

namespace zel::tool {

namespace {

// Small enough that a signal is noticed soon.
constexpr std::size_t bytesPerCall = std::size_t{4} << 20U;

int openStandardInput(const std::string& name) {
    static bool isTaken = false;
    if (std::exchange(isTaken, true)) throw FileError::reading(name, "it is read for another image already");
    if (isatty(STDIN_FILENO) == 1) throw FileError::reading(name, "it is a terminal; pipe an image into it");
    const int descriptor = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) throw FileError::reading(name, systemErrorText(errno));
    return descriptor;
}

int openForReading(const std::string& path) {
    for (;;) {
        checkInterrupt();
        const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor >= 0) return descriptor;
        if (errno != EINTR) throw FileError::reading(path, systemErrorText(errno));
    }
}

/// What Linux expects a new program to use without swapping; the largest number where it does not say.
unsigned long long availableMemoryBytes() {
    std::ifstream info("/proc/meminfo");
    std::string key;
    while (info >> key) {
        unsigned long long kibibytes = 0;
        if (key == "MemAvailable:" && info >> kibibytes) return kibibytes << 10U;
        info.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return std::numeric_limits<unsigned long long>::max();
}

}  // namespace

InputFile::InputFile(const std::string& path, Progress progress)
    : path_(path == "-" ? "standard input" : path),
      descriptor_(path == "-" ? openStandardInput(path_) : openForReading(path)),
      progress_(std::move(progress)) {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) return;
    if (S_ISDIR(status.st_mode)) {
        close(descriptor_);
        throw FileError::reading(path_, "it is a folder, not a file");
    }
    if (!S_ISREG(status.st_mode)) return;
    const auto fileSize = static_cast<std::size_t>(status.st_size);
    start_ = std::min(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_CUR)), fileSize);
    size_ = fileSize - start_;
}

InputFile::~InputFile() {
    close(descriptor_);
}

template <typename ReadSome>
std::size_t InputFile::fill(void* buffer, std::size_t count, ReadSome&& readSome) {
    std::size_t done = 0;
    while (done < count) {
        checkInterrupt();
        const ssize_t got = readSome(static_cast<std::byte*>(buffer) + done, std::min(count - done, bytesPerCall));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw FileError::reading(path_, systemErrorText(errno));
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
        addRead(static_cast<std::size_t>(got));
    }
    return done;
}

void InputFile::addRead(std::size_t bytes) {
    bytesRead_ += bytes;
    if (!progress_ || size_.value_or(0) == 0) return;
    progress_(std::min(1.0, static_cast<double>(bytesRead_) / static_cast<double>(*size_)));
}

std::size_t InputFile::read(void* buffer, std::size_t count) {
    const std::size_t known = ahead_.copy(static_cast<char*>(buffer), count);
    ahead_.erase(0, known);
    const std::size_t done =
        known + fill(static_cast<std::byte*>(buffer) + known, count - known,
                     [&](std::byte* bytes, std::size_t most) { return ::read(descriptor_, bytes, most); });
    position_ += done;
    return done;
}

std::string InputFile::peek(std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(read(bytes.data(), count));
    position_ -= bytes.size();
    ahead_.insert(0, bytes);
    return bytes;
}

void InputFile::readExactly(void* buffer, std::size_t count, const std::string& ifShort) {
    if (read(buffer, count) < count) throw FileError::reading(path_, ifShort);
}

std::size_t InputFile::readAt(void* buffer, std::size_t count, std::size_t offset) {
    if (offset >= size_.value_or(0)) return 0;
    return fill(buffer, count,
                [&, position = static_cast<off_t>(start_ + offset)](std::byte* bytes, std::size_t most) mutable {
                    const ssize_t got = pread(descriptor_, bytes, most, position);
                    position += std::max<ssize_t>(got, 0);
                    return got;
                });
}

std::optional<std::size_t> InputFile::remaining() const {
    if (!size_) return std::nullopt;
    return *size_ - std::min(*size_, position_);
}

void InputFile::requireRemaining(std::size_t count, const std::string& what) const {
    const auto left = remaining();
    if (!left || *left >= count) return;
    throw FileError::reading(path_, "its end is missing: the header promises " + std::to_string(count) + " " + what +
                                        ", " + std::to_string(*left) + " are there");
}

void InputFile::requireMemory(unsigned long long imageBytes) const {
    const unsigned long long available = availableMemoryBytes();
    if (imageBytes <= available) return;
    throw FileError::reading(path_, "the image takes " + std::to_string(imageBytes >> 20U) +
                                        " MiB, and this machine has " + std::to_string(available >> 20U) +
                                        " MiB of memory free");
}

}  // namespace zel::tool
