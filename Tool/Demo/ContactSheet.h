#pragma once

#include <string>
#include <vector>

#include "zel/HostImage.h"

namespace zel::tool {

/// One picture that shows many, each with a caption under it.
class ContactSheet {
public:
    /// Adds the middle slice of an image of any real type, scaled to the panel's size. uint8 is shown unchanged, other
    /// types from their smallest value in black to their largest in white.
    void add(const ImageModel& image, const std::string& caption);

    /// The panels added so far, row by row, as uint8.
    HostImage render() const;

private:
    struct Panel {
        HostImage picture;
        std::string caption;
    };

    std::vector<Panel> panels_;
};

}  // namespace zel::tool
