#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Runs/FilterRun.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// What the algorithms are shown on.
struct DemoSubject {
    const char* name;
    const char* prefix;     ///< of its files
    const char* extension;  ///< of its files; a format that holds it
    HostImage (*make)();
};

/// One algorithm on one subject.
struct DemoCase {
    std::string algorithm;
    std::string variant;     ///< tells the cases of an algorithm apart; empty where there is one
    std::string parameters;  ///< as on the command line
    std::function<RunReport(const ImageModel& input, ImageModel& output, const RunOptions& options)> run;
};

struct DemoSection {
    const DemoSubject& subject;
    std::vector<DemoCase> cases;
};

/// All that the demonstration shows, in its order.
std::vector<DemoSection> demoSections();

}  // namespace zel::tool
