#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ImageFiles/Common/Progress.h"

namespace zel::tool {

/// A file open for reading, from its beginning to its end or at any offset.
class InputFile {
public:
    /// @param path      "-" for standard input, which begins where it stands.
    /// @param progress  told what part of the bytes was read, where their number is known.
    /// @throws FileError when the file is missing, not readable, or a folder; when standard input is a terminal, or was
    ///         read before.
    explicit InputFile(const std::string& path, Progress progress = {});
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// For messages, and for the format that a name tells.
    const std::string& path() const { return path_; }

    /// Reads `count` bytes, fewer only at the end of the file.
    /// @throws FileError, and Interrupted after a signal.
    std::size_t read(void* buffer, std::size_t count);

    /// Reads exactly `count` bytes.
    /// @param ifShort  the error's text when the file ends before.
    void readExactly(void* buffer, std::size_t count, const std::string& ifShort = "its end is missing");

    /// What read would give next, without moving on.
    std::string peek(std::size_t count);

    /// Reads at an offset as read does, for files with a size only. Does not move the position of read.
    std::size_t readAt(void* buffer, std::size_t count, std::size_t offset);

    /// Nothing where the size is not known, as for a pipe.
    std::optional<std::size_t> size() const { return size_; }
    /// Bytes not read yet; nothing where the size is not known.
    std::optional<std::size_t> remaining() const;

    /// @param what  the bytes, for the error's text: "bytes of voxels".
    /// @throws FileError when the file is known to have fewer than `count` bytes left, though its header promises them.
    void requireRemaining(std::size_t count, const std::string& what) const;
    /// @throws FileError when an image of that many bytes does not fit into this machine's free memory.
    void requireMemory(unsigned long long imageBytes) const;

private:
    /// Calls readSome(bytes, count) until the buffer is full or the file at its end.
    template <typename ReadSome>
    std::size_t fill(void* buffer, std::size_t count, ReadSome&& readSome);
    void addRead(std::size_t bytes);

    std::string path_;  // or "standard input"
    int descriptor_;
    std::size_t start_ = 0;  // where the descriptor stood when it was taken over
    std::optional<std::size_t> size_;
    std::size_t position_ = 0;
    Progress progress_;
    std::size_t bytesRead_ = 0;  // once or again
    std::string ahead_;          // read from the descriptor, but not by the caller
};

}  // namespace zel::tool
