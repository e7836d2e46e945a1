#pragma once

#include <cstdint>

#include "zel/ImageModel.h"

namespace amnlm {

/// A voxel's position.
struct Position {
    std::int32_t x, y, z;
};

/// The next number of the C library's rand(), brought to 0 ... 1 in steps of 1 / 32767. Seed it with srand(); only the
/// thread that runs the filter draws.
float drawUnit();

/// A voxel of an image of these extents: z is drawn first, then y, then x, each between 0 and extent - 1. The last
/// plane of an axis comes up only when the generator gives its largest number.
Position drawPosition(std::int64_t extentX, std::int64_t extentY, std::int64_t extentZ);

/// Sample size that estimates a proportion of a population: Cochran's formula with the correction for a finite
/// population.
/// @param confidence  of the answer, in percent.
/// @param margin      of error to either side, in percent.
/// @param proportion  that is expected, in percent; 50 asks for the largest sample.
std::int64_t computeSampleSize(std::uint64_t population, float confidence, float margin, float proportion);

/// Mean of the voxel values of a random sample, large enough for a margin of 5 percent.
/// @param confidence  in percent.
/// @throws RuntimeError when voxels cannot be read, naming the first of them in the image.
float estimateMeanIntensity(const zel::ImageModel* image, float confidence);

}  // namespace amnlm
