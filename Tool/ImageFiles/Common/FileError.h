#pragma once

#include <stdexcept>
#include <string>

namespace zel::tool {

/// A file that cannot be read or written; the message names it and says why.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    static FileError reading(const std::string& path, const std::string& why) {
        return FileError("cannot read " + path + ": " + why);
    }
    static FileError writing(const std::string& path, const std::string& why) {
        return FileError("cannot write " + path + ": " + why);
    }
};

}  // namespace zel::tool
