#include "Commands/FilterCommand.h"

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"

namespace zel::tool {

void AnyFilterCommand::addOptions(CLI::App& app) {
    app_ = &app;
    files_.addTo(app);
    addParameters(app);
    options_.addTo(app, takesTiles());
}

HostImage AnyFilterCommand::makeOutput(const ImageModel& input) const {
    return makeImageLike(input, outputType_.value_or(input.getDataType()));
}

int AnyFilterCommand::run() {
    options_.apply();
    FileDetails details;
    const HostImage input = files_.read(details);
    if (const VoxelTypes type = input.getDataType(); !takesType(type) && !isComplex(type)) {
        throw FileError(name() + " does not take " + std::string(voxelTypeName(type)) + "; make " + files_.input +
                        " fit with zel convert " + files_.input + " NEW.npy --type float32");
    }
    checkWritable(files_.output, outputType_.value_or(input.getDataType()), imageSizeOf(input));
    HostImage output = makeOutput(input);
    const RunReport report = filter(input, output, options_);
    details.done = whatIsDone(*app_);
    writeImageFile(files_.output, output, details);
    reportLosses(files_.input, files_.output, details);
    printReport(name(), files_, output, report, options_);
    return 0;
}

}  // namespace zel::tool
