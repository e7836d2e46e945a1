#pragma once

#include <nppdefs.h>

#include <cstddef>

namespace zel::host {

/// What all border filters are given, without the pixel type.
struct FilterArguments {
    const void* src;
    int srcStep;
    NppiSize srcSize;
    NppiPoint srcOffset;
    void* dst;
    int dstStep;
    NppiSize roi;
    NppiSize mask;
    NppiPoint anchor;
    NppiBorderType border;
};

/// The first fault among, in this order: null pointers, sizes, steps, alignment, a region that leaves the source image,
/// mask size, anchor, a border other than `supported`, source or destination outside live device memory.
NppStatus checkFilterArguments(const FilterArguments& arguments, std::size_t pixelBytes, NppiBorderType supported);

/// Address of the source image's pixel (0, 0).
const std::byte* sourceOrigin(const FilterArguments& arguments, std::size_t pixelBytes);

}  // namespace zel::host
