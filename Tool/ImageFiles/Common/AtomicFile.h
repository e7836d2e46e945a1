#pragma once

#include <cstddef>
#include <string>

namespace zel::tool {

/// A file that appears under its name only when it is complete: it is written under a temporary name in the same folder
/// and renamed by commit. Without commit nothing is left, and a file that had the name before stays unchanged. What
/// runs that were killed have left in the folder is cleared away.
class AtomicFile {
public:
    /// The temporary file gets owner and permissions of the file that it will replace, where this user may give them,
    /// else the permissions that the umask gives.
    /// @param path  "-" for standard output, where bytes go as they are written, one after the other.
    /// @throws FileError when the folder cannot be written, or the name belongs to something that is not a file, to a
    ///         write-protected file, to another user's file in a sticky folder, or to a link that leads nowhere.
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    const std::string& path() const { return path_; }

    /// Appends. @throws FileError, and Interrupted after a signal.
    void write(const void* bytes, std::size_t count);

    /// For formats that fill in earlier bytes later, in files. Writing beyond the end fills the gap with zeros.
    void writeAt(const void* bytes, std::size_t count, std::size_t offset);
    /// Reads what was written; fewer bytes only at the end. @throws as write does.
    std::size_t readAt(void* buffer, std::size_t count, std::size_t offset) const;
    /// Bytes written so far.
    std::size_t size() const { return size_; }

    /// Flushes everything to the disk, then gives the file its name. The last call, once.
    void commit();

    /// Checks early that a file of that name can be made.
    /// @throws FileError as the constructor does.
    static void checkWritable(const std::string& path);

private:
    bool isStream() const { return temporary_.empty(); }
    [[noreturn]] void fail(int errorNumber) const;

    std::string path_;       // as the caller named it, or "standard output"
    std::string target_;     // with links followed
    std::string temporary_;  // empty when there is none to remove
    int descriptor_ = -1;
    std::size_t size_ = 0;
};

}  // namespace zel::tool
