#pragma once

#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <tuple>

#include "Kernels/RowLaunch.h"
#include "PaddedVolume.h"
#include "Utilities_CUDA/OffsetBytes.h"

// What the tests of kernels share that make a pixel of the output from the pixels at its place in the inputs.
namespace zel::test {

/// An image on the device as launchers take it.
template <typename T>
struct ImageArgument {
    T* first;
    std::uint64_t pitch, slicePitch;
};

using VolumeSize = std::array<std::size_t, 3>;
using FloatTypes = ::testing::Types<float, double>;

inline void randomize(double& value, std::mt19937& random) {
    value = std::normal_distribution<double>(0, 3)(random);
}
inline void randomize(float& value, std::mt19937& random) {
    value = std::normal_distribution<float>(0, 3)(random);
}
template <typename P>
void randomize(P& value, std::mt19937& random) {
    randomize(value.x, random);
    randomize(value.y, random);
}

template <typename In, typename Out = In>
struct PixelwiseOperation {
    std::function<void(const std::vector<ImageArgument<In>>& in, ImageArgument<Out> out, const VolumeSize& size)>
        launch;
    std::function<Out(const std::vector<In>& in)> pixel;  ///< what a pixel is to become, bit for bit
    std::size_t slicePadding = 1;                         ///< rows between slices
};

/// Launches a kernel that no launcher reaches, for each slice: launch(config, at) with at(image) where its slice
/// begins.
template <typename Launch>
void launchBySlices(const VolumeSize& size, const Launch& launch) {
    cuda::launchRowsPerSlice(size[1], size[2], nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        launch(config, [z](const auto& image) { return cuda::offsetBytes(image.first, z * image.slicePitch); });
    });
}

/// A launcher of one or two inputs and an output, each with its pitches, then the size, scalars and the stream.
template <std::size_t inputs, typename Launcher, typename... Scalars>
auto launching(Launcher launcher, Scalars... scalars) {
    return [=](const auto& in, const auto& out, const VolumeSize& size) {
        const auto parts = [](const auto& image) { return std::tuple(image.first, image.pitch, image.slicePitch); };
        const std::tuple rest(size[0], size[1], size[2], scalars..., nullptr);
        if constexpr (inputs == 1)
            std::apply(launcher, std::tuple_cat(parts(in[0]), parts(out), rest));
        else
            std::apply(launcher, std::tuple_cat(parts(in[0]), parts(in[1]), parts(out), rest));
    };
}

template <typename T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

/// A volume of random pixels and paddings, and the same on the device.
template <typename T>
struct RandomVolume {
    RandomVolume(const VolumeSize& size, std::size_t rowPadding, std::size_t slicePadding, unsigned seed)
        : plain(size, rowPadding, T{}, slicePadding) {
        std::mt19937 random(seed);
        for (T& element : plain.elements) randomize(element, random);
        device = toDevice(plain.elements);
    }
    ImageArgument<T> argument() const { return {device.get(), plain.pitch(), plain.slicePitch()}; }
    void expect(const std::vector<T>& elements) const {
        EXPECT_TRUE(sameBits(toHost(device, plain.elements.size()), elements));
    }

    PaddedVolume<T> plain;
    std::shared_ptr<T> device;
};

/// Runs the operation on images each with pitches of its own, and looks at all their bytes. A placement names the
/// images of a launch, the output last; equal letters are one image.
template <typename In, typename Out>
void expectPixelwise(const PixelwiseOperation<In, Out>& operation, const std::vector<std::string>& placements) {
    const VolumeSize sizes[]{{1, 1, 1}, {63, 2, 1}, {64, 1, 2}, {65, 3, 2}, {200, 2, 3}};
    for (const std::string& placement : placements) {
        for (const VolumeSize& size : sizes) {
            SCOPED_TRACE(testing::Message() << placement << ", " << size[0] << " x " << size[1] << " x " << size[2]);
            std::map<char, RandomVolume<In>> inputs;
            std::vector<ImageArgument<In>> arguments;
            std::vector<std::vector<In>> voxels;
            for (const char name : placement.substr(0, placement.size() - 1)) {
                const auto number = static_cast<unsigned>(inputs.size());
                const auto& input =
                    inputs.try_emplace(name, size, 3 + 4 * number, operation.slicePadding, number).first->second;
                arguments.push_back(input.argument());
                voxels.push_back(input.plain.plain().voxels);
            }
            std::vector<Out> expected;
            std::vector<In> pixels(voxels.size());
            for (std::size_t i = 0; i < voxels[0].size(); ++i) {
                for (std::size_t k = 0; k < voxels.size(); ++k) pixels[k] = voxels[k][i];
                expected.push_back(operation.pixel(pixels));
            }
            const auto check = [&](const RandomVolume<Out>& out) {
                operation.launch(arguments, out.argument(), size);
                out.expect(out.plain.with(expected));
            };
            const char output = placement.back();
            if (inputs.count(output) == 0) check({size, 2, operation.slicePadding, 99});
            if constexpr (std::is_same_v<In, Out>)
                if (inputs.count(output) == 1) check(inputs.at(output));
            for (const auto& [name, input] : inputs)
                if (name != output) input.expect(input.plain.elements);
        }
    }
}

}  // namespace zel::test
