#pragma once

#include <cstddef>
#include <functional>

#include "Validation.h"
#include "zel/HostImage.h"

/// What the children have in common: they read any image of real voxels row by row as doubles, and write their results
/// in the type of the image that they are given.
namespace zel::children {

/// A row of an image along x: its position along the other four axes.
struct Row {
    std::size_t y = 0;
    std::size_t z = 0;
    std::size_t i3 = 0;
    std::size_t i4 = 0;
};

ImageSize sizeOf(const ImageModel& image);
ImageSize toImageSize(const Vector3<int>& size);
/// Number of a row, from 0 on, in an image of that size.
std::size_t rowNumber(const ImageSize& size, const Row& row);

/// The image is there, no axis is empty, and its voxels are real. @throws RuntimeError naming the property.
void requireReal(const validation::NamedImage& image);
/// The same, and it has no more than x, y and z.
void requireVolume(const validation::NamedImage& image);
/// No component is below 1.
void requireSize(const Property<Vector3<int>>& size);
/// The output is there, and is not the input itself.
void requireOther(const PropertyWriteImage& output, const PropertyReadImage& input);
/// A numbered choice has the one value that there is. @throws RuntimeError naming the property.
void requireChoice(const PropertySingleChoice& choice, int known, const char* meaning);

/// Makes the output ready for a result of that size that lies where `input` does. A ResizableImage gets size and the
/// type of `input`, unless it is the input; any other image has to be of that size already.
/// @throws RuntimeError naming the property otherwise.
void shapeOutput(const PropertyWriteImage& output, const ImageModel& input, const ImageSize& size);

/// Reads a whole row as doubles. @throws RuntimeError when the image cannot read it.
void readRow(const ImageModel& image, const Row& row, double* voxels);
/// Writes a whole row; toward zero into integers, low bits kept. @throws RuntimeError when the image cannot write it.
void writeRow(ImageModel& image, const Row& row, const double* voxels);

/// Calls body(row, buffer) for each row of an image of that size, on all cores; the buffer holds size.x doubles.
void forEachRow(const ImageSize& size, const std::function<void(const Row& row, double* buffer)>& body);

}  // namespace zel::children
