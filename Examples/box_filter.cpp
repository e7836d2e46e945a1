// Smooths an image in the application's own memory.

#include <cstdint>
#include <iostream>
#include <vector>

#include "zel/Exceptions.h"
#include "zel/HostImage.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace {

/// Prints the progress of a run.
class Progress : public zel::InteractionInterface {
public:
    void progress(std::uint64_t done, std::uint64_t total) override {
        std::cout << "step " << done << " of " << total << "\n";
    }
};

}  // namespace

int main() {
    std::vector<std::uint8_t> pixels(640 * 480);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = i / 640 % 2 == 0 ? 0 : 100;

    zel::HostImage input(zel::VoxelTypes::uint8, {640, 480}, pixels.data());  // shows the vector, copies nothing
    zel::HostImage output(zel::VoxelTypes::uint8, {640, 480});                // owns its pixels

    zel::cuda::CudaBoxFilter2d filter;
    filter.inputImage = &input;
    filter.kernelSizeX = 9;
    filter.kernelSizeY = 4;
    filter.outputImage = &output;

    try {
        Progress progress;
        filter.run(&progress);
    } catch (const zel::Exception& error) {
        std::cerr << "the filter failed: " << error.what() << "\n";
        return 1;
    }

    // Four rows, two of them black and two of 100.
    const auto* const smooth = static_cast<const std::uint8_t*>(output.data());
    std::cout << "pixel (320, 240) is " << int{smooth[240 * 640 + 320]} << "\n";
    return smooth[240 * 640 + 320] == 50 ? 0 : 1;
}
