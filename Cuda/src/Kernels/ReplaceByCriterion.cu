#include "ReplaceByCriterion.h"

#include "BlockRow.h"
#include "lanes.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

template <typename Op, typename T>
__global__ void replaceByCriterion2dKernel(T* image, unsigned long long pitch, T value, T replacement,
                                           unsigned long long width) {
    T* const row = blockRow(image, pitch);
    forEachColumn(width, [=](std::uint64_t x) {
        if (Op{}(row[x], value)) row[x] = replacement;
    });
}

#define KERNEL(OPERATOR, T)                                                                            \
    template __global__ void replaceByCriterion2dKernel<ComparisonCriterionOperator_##OPERATOR<T>, T>( \
        T*, unsigned long long, T, T, unsigned long long);
#define KERNELS(NAME, CODE, T)       \
    KERNEL(Equal_to, T)              \
    KERNEL(Not_equal_to, T)          \
    KERNEL(Less_than, T)             \
    KERNEL(Less_than_or_equal_to, T) \
    KERNEL(Greater_than, T)          \
    KERNEL(Greater_than_or_equal_to, T)
ZEL_FOR_EACH_KERNEL_TYPE(KERNELS)
#undef KERNELS
#undef KERNEL

}  // namespace zel::cuda
