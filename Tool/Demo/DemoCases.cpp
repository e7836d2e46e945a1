#include "Demo/DemoCases.h"

#include "Demo/DemoPicture.h"
#include "Demo/DemoVolume.h"
#include "zel/algorithms/CudaBoxFilter2d.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::tool {

namespace {

constexpr DemoSubject picture{"picture", "", ".png", makeDemoPicture};
constexpr DemoSubject volume{"volume", "volume-", ".tif", makeDemoVolume};

template <typename Algorithm, typename Configure>
DemoCase demoCase(std::string algorithm, std::string variant, std::string parameters, const Configure& configure) {
    return {std::move(algorithm), std::move(variant), std::move(parameters),
            [=](const ImageModel& input, ImageModel& output, const RunOptions& options) {
                return runFilter<Algorithm>(input, output, options, configure);
            }};
}

DemoCase boxFilter() {
    return demoCase<cuda::CudaBoxFilter2d>("box-filter", "", "--kernel 9,9", [](cuda::CudaBoxFilter2d& filter) {
        filter.kernelSizeX = 9;
        filter.kernelSizeY = 9;
    });
}

DemoCase gaussianFilter(const char* variant, const char* parameters, const Vector3<double>& sigma) {
    return demoCase<cuda::CudaGaussianFilter3d>(
        "gaussian-filter", variant, parameters,
        [=](cuda::CudaGaussianFilter3d& filter) { filter.standardDeviation = sigma; });
}

template <typename Algorithm>
DemoCase morphology(const char* algorithm, const char* neighborhood, unsigned radius) {
    return demoCase<Algorithm>(algorithm, neighborhood,
                               "--radius " + std::to_string(radius) + " --neighborhood " + neighborhood,
                               [=](Algorithm& filter) {
                                   filter.kernelRadius = radius;
                                   filter.neighborhood = std::string_view(neighborhood) == "square" ? 1 : 0;
                               });
}

}  // namespace

// A new algorithm needs a line for each subject that it is for.
std::vector<DemoSection> demoSections() {
    return {
        {picture,
         {boxFilter(), gaussianFilter("", "--sigma 3,3,0", {3, 3, 0}), gaussianFilter("x", "--sigma 8,0,0", {8, 0, 0}),
          morphology<cuda::CudaErosion2d>("erosion", "square", 3),
          morphology<cuda::CudaErosion2d>("erosion", "diamond", 5),
          morphology<cuda::CudaDilation2d>("dilation", "square", 3),
          morphology<cuda::CudaDilation2d>("dilation", "diamond", 5),
          morphology<cuda::CudaOpening2d>("opening", "square", 3),
          morphology<cuda::CudaOpening2d>("opening", "diamond", 5),
          morphology<cuda::CudaClosing2d>("closing", "square", 3),
          morphology<cuda::CudaClosing2d>("closing", "diamond", 5)}},
        {volume,
         {boxFilter(), gaussianFilter("", "--sigma 1.5,1.5,1.5", {1.5, 1.5, 1.5}),
          morphology<cuda::CudaOpening2d>("opening", "square", 2)}},
    };
}

}  // namespace zel::tool
