#pragma once

#include <string>
#include <vector>

#include "zel/HostImage.h"

namespace zel::tool {

/// An image that filters are shown on.
struct DemoSubject {
    const char* name;
    const char* prefix;     ///< of its files' names
    const char* extension;  ///< of its files: of a format that can hold it
    HostImage (*make)();
};

/// One filter on one subject: a command line without files.
struct DemoCase {
    const char* command;
    const char* parameters;
    const char* variant = "";  ///< distinguishes the cases of one command in file names; empty where there is one

    /// The command and, behind the separator, the variant.
    std::string title(const char* separator) const;
};

/// A search for a part of a subject: a command line without files. Pictures are searched by cross-correlation, volumes
/// by template matching.
struct DemoSearch {
    const char* parameters;
    std::size_t left, top, width, height;  ///< of the part
    std::size_t front = 0, depth = 1;
};

struct DemoSection {
    DemoSubject subject;
    std::vector<DemoCase> cases;
    std::vector<DemoSearch> searches{};
};

/// Everything that the demonstration shows, in its order.
std::vector<DemoSection> demoSections();

}  // namespace zel::tool
