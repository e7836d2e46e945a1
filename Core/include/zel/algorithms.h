#pragma once

/// All algorithms that the core declares.
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"
#include "zel/algorithms/CudaBoxFilter2d.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"
#include "zel/algorithms/CudaMedianFilter2d.h"
#include "zel/algorithms/CudaTemplateMatching3d.h"
#include "zel/algorithms/Morphology2d.h"
