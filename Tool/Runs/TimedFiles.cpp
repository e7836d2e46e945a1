#include "Runs/TimedFiles.h"

#include "ImageFiles/ImageFile.h"
#include "Runs/Description.h"
#include "Runs/ProgressBar.h"
#include "Runs/Stopwatch.h"

namespace zel::tool {

HostImage TimedFiles::read(const std::string& path, FileDetails& details) {
    const Stopwatch watch;
    ProgressBar bar("reading", isQuiet_);
    HostImage image = readImageFile(path, details, bar.forWork());
    readSeconds_ += watch.seconds();
    return image;
}

HostImage TimedFiles::read(const std::string& path) {
    FileDetails unused;
    return read(path, unused);
}

void TimedFiles::write(const std::string& path, const ImageModel& image, const FileDetails& details) {
    const Stopwatch watch;
    ProgressBar bar("writing", isQuiet_);
    writeImageFile(path, image, details, bar.forWork());
    writeSeconds_ += watch.seconds();
}

std::string TimedFiles::toText(double seconds) const {
    return "read " + secondsToText(readSeconds_) + " s, ran " + secondsToText(seconds) + " s, wrote " +
           secondsToText(writeSeconds_) + " s";
}

nlohmann::ordered_json TimedFiles::toJson(double seconds) const {
    return {{"seconds", seconds}, {"readSeconds", readSeconds_}, {"writeSeconds", writeSeconds_}};
}

}  // namespace zel::tool
