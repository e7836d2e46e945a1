#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/Progress.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Reads and writes the image files of a command, each with a progress bar, and adds up how long that takes.
class TimedFiles {
public:
    /// @param isQuiet  draws no bar.
    explicit TimedFiles(bool isQuiet) : isQuiet_(isQuiet) {}

    /// These throw as readImageFile and writeImageFile do.
    HostImage read(const std::string& path, FileDetails& details);
    HostImage read(const std::string& path);
    void write(const std::string& path, const ImageModel& image, const FileDetails& details = {});

    /// "read 0.01 s, ran 0.2 s, wrote 0.03 s". @param seconds  of the run itself.
    std::string toText(double seconds) const;
    /// The same as the members of a JSON object.
    nlohmann::ordered_json toJson(double seconds) const;

private:
    const bool isQuiet_;
    double readSeconds_ = 0;
    double writeSeconds_ = 0;
};

}  // namespace zel::tool
