#include "Commands/FilterCommand.h"

#include <exception>
#include <new>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Runs/CompressionOption.h"
#include "System/Interrupt.h"
#include "System/Output.h"

namespace zel::tool {

void AnyFilterCommand::addOptions(CLI::App& app) {
    app_ = &app;
    files_.addTo(app);
    addParameters(app);
    addCompressionOption(app, details_, [this] {
        std::vector<std::string> outputs;
        for (const FilterFiles& files : files_.all()) outputs.push_back(files.output);
        return outputs;
    });
    options_.addTo(app, takesTiles());
    options_.addPlanOption(app);
}

HostImage AnyFilterCommand::makeOutput(const ImageModel& input) const {
    return makeImageLike(input, outputType_.value_or(input.getDataType()));
}

/// Of several files, one that cannot be filtered does not keep the others from it.
int AnyFilterCommand::run() {
    checkOptions();
    options_.apply();
    const std::vector<FilterFiles> all = files_.all();
    bool hasFailed = false;
    for (const FilterFiles& files : all) {
        try {
            filterFile(files);
        } catch (const CLI::Error&) {
            throw;  // the options are wrong
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            if (all.size() == 1) throw;
            checkInterrupt();  // after a signal, it failed because of it
            const bool namesFile = dynamic_cast<const FileError*>(&error) != nullptr;
            printError((namesFile ? "" : files.input + ": ") + error.what());
            hasFailed = true;
        }
    }
    return hasFailed ? 1 : 0;
}

void AnyFilterCommand::filterFile(const FilterFiles& files) {
    FileDetails details = details_;
    TimedFiles timed(options_.isQuiet);
    checkWritable(files.output);
    const HostImage input = timed.read(files.input, details);
    if (const VoxelTypes type = input.getDataType(); !takesType(type) && !isComplex(type)) {
        throw FileError(name() + " does not take " + std::string(voxelTypeName(type)) + "; make " + files.input +
                        " fit with zel convert " + files.input + " NEW.npy --type float32");
    }
    takeInput(input);
    warnOfOddAxes(files.input, input, details);
    checkWritable(files.output, outputType_.value_or(input.getDataType()), imageSizeOf(input));
    HostImage output = makeOutput(input);
    const RunReport report = filter(input, output, options_);
    if (options_.isPlan) {
        printPlan(name(), files.input, report, options_);
        return;
    }
    details.done = whatIsDone(*app_);
    timed.write(files.output, output, details);
    reportLosses(files.input, files.output, details);
    printReport(name(), files, output, report, timed, options_);
}

void AnyFilterCommand::warnOfOddAxes(const std::string& path, const HostImage& input,
                                     const FileDetails& details) const {
    const std::size_t width = input.getDimension(0);
    if (details.npyAxisCount > 2 && input.getDataType() == VoxelTypes::uint8 && (width == 3 || width == 4)) {
        printError("warning: the last axis of " + path + " looks like colours (" + std::to_string(width) +
                   " bytes) and is taken as x, the axes before it as y and z; with the colours as the first of four "
                   "axes, (colour, z, y, x), each is filtered as an image of its own");
    }
    if (part() == RunPart::volume && details.mrc && details.mrc->spaceGroup == MrcDetails::imageStack &&
        input.getDimension(2) > 1) {
        printError("warning: " + path + " is a stack of images by its space group, 0, and is filtered as one volume");
    }
}

}  // namespace zel::tool
