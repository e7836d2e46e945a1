// What happens when the library is loaded and unloaded. All of it stands in this one source, since the order of static
// objects across sources is not defined.

#include "ImageFiltering/CudaBoxFilter2d_CUDA.h"
#include "ImageFiltering/CudaClosingOpening2d_CUDA.h"
#include "ImageFiltering/CudaDilationErosion2d_CUDA.h"
#include "ImageFiltering/CudaGaussianFilter3d_CUDA.h"
#include "Runners/UnbuiltRunners_CUDA.h"
#include "diagnostics/DebugFacility.h"

namespace zel::cuda {

namespace {

/// Use of the debug facility from load to unload.
class Debugging {
public:
    Debugging() { diagnostics::initialiseDebugging(); }
    ~Debugging() { diagnostics::shutDownDebugging(); }
    Debugging(const Debugging&) = delete;
    Debugging& operator=(const Debugging&) = delete;
};

/// Hangs a runner on its algorithm class, and takes it away again. The core owns the runner and deletes it.
template <typename Algo, typename Runner>
class Registration {
public:
    Registration() {
        AlgoInfo* const info = Algo::getClassInfo();
        if (info == nullptr) return;
        runner_ = new Runner();
        info->addRunner(runner_);
    }
    ~Registration() {
        AlgoInfo* const info = runner_ == nullptr ? nullptr : Algo::getClassInfo();
        if (info != nullptr) info->removeRunner(runner_);
        runner_ = nullptr;
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    Runner* runner_ = nullptr;
};

// Set up from top to bottom at load, undone from bottom to top at unload.
const Debugging debugging;
const Registration<CudaAdaptiveManifoldNlmFilter, CudaNonLocalMeansRunner> nonLocalMeans;
const Registration<CudaCrossCorrelation2d, CudaCrossCorrelation2dRunner> crossCorrelation2d;
const Registration<CudaTemplateMatching3d, CudaTemplateMatching3dRunner> templateMatching3d;
const Registration<CudaBoxFilter2d, CudaBoxFilter2dRunner> boxFilter2d;
const Registration<CudaGaussianFilter3d, CudaGaussianFilter3dRunner> gaussianFilter3d;
const Registration<CudaMedianFilter2d, CudaMedianFilter2dRunner> medianFilter2d;
const Registration<CudaClosing2d, CudaClosing2dRunner> closing2d;
const Registration<CudaDilation2d, CudaDilation2dRunner> dilation2d;
const Registration<CudaErosion2d, CudaErosion2dRunner> erosion2d;
const Registration<CudaOpening2d, CudaOpening2dRunner> opening2d;

}  // namespace

}  // namespace zel::cuda
