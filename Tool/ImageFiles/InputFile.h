#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zel::tool {

/// A file open for reading from its beginning to its end.
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

    /// Bytes not read yet; nothing when the file is of a kind that cannot tell, such as a pipe.
    std::optional<std::size_t> remaining() const;

    /// @throws FileError when an image of that many bytes does not fit into the memory that this machine has free.
    void requireMemory(unsigned long long imageBytes) const;

private:
    std::string path_;
    int descriptor_;
    std::optional<std::size_t> size_;
    std::size_t position_ = 0;
};

}  // namespace zel::tool
