#pragma once

#include "ImageFiles/Common/InputFile.h"
#include "ImageFiles/Npy/NpyHeader.h"

namespace zel::tool {

/// Reads the voxels of an array in Fortran order, the first axis fastest, and transposes them into C order, the last
/// axis fastest. Byte order is left alone.
/// @param voxels  room for all of them.
void readFortranOrder(InputFile& file, const NpyHeader& header, std::byte* voxels);

}  // namespace zel::tool
