#include "Commands/FilterCommand.h"

#include <chrono>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/CompressionOption.h"
#include "System/Output.h"

namespace zel::tool {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

void AnyFilterCommand::addOptions(CLI::App& app) {
    app_ = &app;
    files_.addTo(app);
    addParameters(app);
    addCompressionOption(app, details_, {&files_.output});
    options_.addTo(app, takesTiles());
    options_.addPlanOption(app);
}

HostImage AnyFilterCommand::makeOutput(const ImageModel& input) const {
    return makeImageLike(input, outputType_.value_or(input.getDataType()));
}

int AnyFilterCommand::run() {
    checkOptions();
    options_.apply();
    FileTimes times;
    const Clock::time_point readingStart = Clock::now();
    const HostImage input = files_.read(details_);
    times.reading = secondsSince(readingStart);
    if (const VoxelTypes type = input.getDataType(); !takesType(type) && !isComplex(type)) {
        throw FileError(name() + " does not take " + std::string(voxelTypeName(type)) + "; make " + files_.input +
                        " fit with zel convert " + files_.input + " NEW.npy --type float32");
    }
    takeInput(input);
    if (details_.npyAxisCount > 2 && input.getDataType() == VoxelTypes::uint8 &&
        (input.getDimension(0) == 3 || input.getDimension(0) == 4)) {
        printError("warning: the last axis of " + files_.input + " looks like colours (" +
                   std::to_string(input.getDimension(0)) +
                   " bytes) and is taken as x, the axes before it as y and z; with the colours as the first of four "
                   "axes, (colour, z, y, x), each is filtered as an image of its own");
    }
    checkWritable(files_.output, outputType_.value_or(input.getDataType()), imageSizeOf(input));
    HostImage output = makeOutput(input);
    const RunReport report = filter(input, output, options_);
    if (options_.isPlan) {
        printPlan(name(), files_.input, report, options_);
        return 0;
    }
    details_.done = whatIsDone(*app_);
    const Clock::time_point writingStart = Clock::now();
    writeImageFile(files_.output, output, details_);
    times.writing = secondsSince(writingStart);
    reportLosses(files_.input, files_.output, details_);
    printReport(name(), files_, output, report, times, options_);
    return 0;
}

}  // namespace zel::tool
