#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "CaseSizes.h"
#include "FilterPeers.h"
#include "NoisyPhantom.h"
#include "NonLocalMeansStages.h"
#include "PythonPeers.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

namespace zel::bench {

namespace {

constexpr double noise = 20, rangeSigma = 0.2;

template <typename T>
Comparison nonLocalMeans(const ImageSize& size, double spatialSigma) {
    const auto clean = std::make_shared<std::vector<double>>(test::phantom(size));
    const auto image = std::make_shared<HostImage>(test::noisyImage<T>(size, *clean, noise, 1));
    const auto output = std::make_shared<HostImage>(image->getDataType(), size);
    const auto run = [=] {
        cuda::CudaAdaptiveManifoldNlmFilter filter;
        filter.inputImage = image.get();
        filter.outputImage = output.get();
        filter.spatialSigma = spatialSigma;
        filter.rangeSigma = rangeSigma;
        std::srand(1);
        filter.run();
    };
    Comparison result;
    if (std::is_same_v<T, std::uint8_t>) result.peers = nonLocalMeansPeers(image, 22);
    addPythonPeers(result, "nlm", {image}, nlohmann::json::object());
    result.bytes = 2 * voxelCount(size) * sizeof(T);
    for (const int threads : {1, 2})
        result.ours.push_back({"host images, " + std::to_string(threads) + "T", run, threads});
    const auto peers = result.peers;
    result.remark = [=] {
        run();
        char ratios[64];
        std::snprintf(ratios, sizeof ratios, "  dB: noisy %.1f, ours %.1f", test::psnrOf<T>(*image, *clean, 1),
                      test::psnrOf<T>(*output, *clean, 1));
        std::string text = ratios;
        for (const Peer& peer : peers) {
            peer.run();
            HostImage filtered(image->getDataType(), size);
            test::copyRows(*peer.result(), filtered);
            std::snprintf(ratios, sizeof ratios, ", %s %.1f", peer.name.c_str(), test::psnrOf<T>(filtered, *clean, 1));
            text += ratios;
        }
        return text + '\n' +
               nonLocalMeansStages(*image, static_cast<float>(rangeSigma), static_cast<float>(spatialSigma));
    };
    return result;
}

}  // namespace

void addNonLocalMeansCases(Comparisons& comparisons) {
    const auto add = [&]<typename T>(const std::string& type, const ImageSize& size, int spatialSigma, T) {
        comparisons.add("nlm " + type + ' ' + sizeText(size) + " sigma " + std::to_string(spatialSigma),
                        [=] { return nonLocalMeans<T>(size, spatialSigma); });
    };
    for (const int spatialSigma : {4, 16}) {
        // Four sizes show that the time grows with the number of voxels.
        for (const std::size_t side : {256, 512, 1024, 2048}) add("float", {side, side, 1}, spatialSigma, 0.0F);
        add("u8", {1024, 1024, 1}, spatialSigma, std::uint8_t{});
        add("float", {64, 64, 64}, spatialSigma, 0.0F);
    }
}

}  // namespace zel::bench
