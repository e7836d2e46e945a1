#pragma once

#include <array>
#include <optional>

#include "zel/HostImage.h"

namespace zel::tool {

/// What a filter lets pass of a template's frequencies. What is not given lets all pass; several multiply.
struct FrequencyBands {
    std::optional<double> lowPass{};   ///< half of the amplitude passes here; cycles per unit of length
    std::optional<double> highPass{};  ///< the same, of a filter that lets more pass the higher the frequency
    std::optional<double> maxTilt{};   ///< degrees that a tilt series about y reached to either side; less than 90
};

/// A filter for templates in a box, as a matching takes it: float32, zero frequency at the centre (size >> 1 along each
/// axis), one column more than the box along x.
///
/// The low pass is exp(-ln 2 (f / lowPass)^2), the high pass 1 - exp(-ln 2 (f / highPass)^2). Of a tilt series about
/// the y axis, with the beam along z, the frequencies with |kz| <= |kx| tan(maxTilt) were seen; the others, the
/// missing wedge, become 0. The zero frequency counts as seen.
/// @param spacing  voxel size of the searched image.
HostImage makeFrequencyFilter(const std::array<std::size_t, 3>& boxSize, const std::array<double, 3>& spacing,
                              const FrequencyBands& bands);

}  // namespace zel::tool
