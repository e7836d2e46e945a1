#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zel::tool {

/// A file open for reading, from its beginning to its end or at any place.
class InputFile {
public:
    /// @throws FileError when it is missing, not readable or a folder.
    explicit InputFile(std::string path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& path() const { return path_; }

    /// Reads `count` bytes, fewer only at the end of the file.
    /// @throws FileError, and Interrupted after a signal.
    std::size_t read(void* buffer, std::size_t count);

    /// The same from a place of its own, which only files with a size have. Leaves the place of read alone.
    std::size_t readAt(void* buffer, std::size_t count, std::size_t offset) const;

    /// Nothing when the file is of a kind that cannot tell, such as a pipe.
    std::optional<std::size_t> size() const { return size_; }
    /// Bytes not read yet; nothing when there is no size.
    std::optional<std::size_t> remaining() const;

    /// @throws FileError when an image of that many bytes does not fit into the memory that this machine has free.
    void requireMemory(unsigned long long imageBytes) const;

private:
    /// Calls readPart(bytes, count) until the buffer is full or the file at its end.
    template <typename ReadPart>
    std::size_t fill(void* buffer, std::size_t count, ReadPart&& readPart) const;

    std::string path_;
    int descriptor_;
    std::optional<std::size_t> size_;
    std::size_t position_ = 0;
};

}  // namespace zel::tool
