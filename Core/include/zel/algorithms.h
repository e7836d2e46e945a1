#pragma once

#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"
#include "zel/algorithms/CudaBoxFilter2d.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"
#include "zel/algorithms/CudaMedianFilter2d.h"
#include "zel/algorithms/CudaTemplateMatching3d.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::cuda {

/// All algorithms, in the order in which a back end hangs its runners on them.
using Algorithms =
    TypeList<CudaAdaptiveManifoldNlmFilter, CudaCrossCorrelation2d, CudaTemplateMatching3d, CudaBoxFilter2d,
             CudaGaussianFilter3d, CudaMedianFilter2d, CudaClosing2d, CudaDilation2d, CudaErosion2d, CudaOpening2d>;

}  // namespace zel::cuda
