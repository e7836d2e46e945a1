#pragma once

#include <cstddef>
#include <string>

namespace zel::tool {

/// A file that appears under its name only when it is whole: written beside it under a temporary name, renamed by
/// commit. Without commit nothing is left, and a file that had the name before stays as it was.
class AtomicFile {
public:
    /// The temporary file gets the permissions of the file that it will replace, else those that the umask gives.
    /// @throws FileError when the folder takes no file or the name belongs to something else than a file.
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    const std::string& path() const { return path_; }

    /// @throws FileError, and Interrupted after a signal.
    void write(const void* bytes, std::size_t count);

    /// Brings everything to the disk, then gives the file its name. Once, as the last call.
    void commit();

    /// Finds out early whether a file of that name can be made.
    /// @throws FileError as the constructor does.
    static void checkWritable(const std::string& path);

private:
    [[noreturn]] void fail(int errorNumber) const;

    std::string path_;       // as the caller named it
    std::string target_;     // with links followed
    std::string temporary_;  // empty when there is none to remove
    int descriptor_ = -1;
};

}  // namespace zel::tool
