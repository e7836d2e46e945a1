#pragma once

#include "zel/ImageModel.h"

namespace zel::cuda {

/// Calls body.operator()<T>() with the voxel type of the algorithm's input where that has an instance, else with Other.
template <typename Other, typename Algo, typename Body>
void withInstance(const Algo& algorithm, const Body& body) {
    const VoxelTypes type = algorithm.inputImage.get()->getDataType();
    if (!visitVoxelType(type, typename Algo::InstanceTypes{}, body)) body.template operator()<Other>();
}

}  // namespace zel::cuda
