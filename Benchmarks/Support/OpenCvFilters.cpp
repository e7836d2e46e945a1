#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>

#include "FilterPeers.h"

namespace zel::bench {

namespace {

int matrixType(VoxelTypes type) {
    switch (type) {
        case VoxelTypes::uint8:
            return CV_8UC1;
        case VoxelTypes::uint16:
            return CV_16UC1;
        case VoxelTypes::int16:
            return CV_16SC1;
        default:
            return CV_32FC1;
    }
}

int dimension(const HostImage& image, int axis) {
    return static_cast<int>(image.getDimension(axis));
}

cv::Mat sliceOf(HostImage& image, int z) {
    auto* const first = static_cast<unsigned char*>(image.data());
    return {dimension(image, 1), dimension(image, 0), matrixType(image.getDataType()),
            first + static_cast<std::size_t>(z) * image.getDimension(1) * image.rowPitchBytes(), image.rowPitchBytes()};
}

/// A row for each slice.
cv::Mat slicesAsRows(HostImage& volume) {
    return {dimension(volume, 2), dimension(volume, 0) * dimension(volume, 1), matrixType(volume.getDataType()),
            volume.data()};
}

/// The images of a peer's runs. @param work  work(image, result).
template <typename Work>
Peer peerOn(const std::shared_ptr<HostImage>& image, const std::string& name, const Work& work) {
    cv::setNumThreads(2);
    const auto result = std::make_shared<HostImage>(
        image->getDataType(), ImageSize{image->getDimension(0), image->getDimension(1), image->getDimension(2)});
    return {name, [=] { work(*image, *result); }, [=] { return result; }};
}

cv::Mat diamondMask(int radius) {
    cv::Mat mask(2 * radius + 1, 2 * radius + 1, CV_8UC1);
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            mask.at<unsigned char>(y + radius, x + radius) = std::abs(x) + std::abs(y) <= radius ? 1 : 0;
        }
    }
    return mask;
}

}  // namespace

Peers blurPeers(const std::shared_ptr<HostImage>& image, unsigned kernelX, unsigned kernelY) {
    const cv::Size kernel(static_cast<int>(kernelX), static_cast<int>(kernelY));
    return {peerOn(image, "cv::blur", [=](HostImage& source, HostImage& result) {
        cv::Mat target = sliceOf(result, 0);
        cv::blur(sliceOf(source, 0), target, kernel, {-1, -1}, cv::BORDER_REPLICATE);
    })};
}

Peers openCvMedianPeers(const std::shared_ptr<HostImage>& image, unsigned radius) {
    const bool hasSize = image->getDataType() == VoxelTypes::uint8 || radius <= 2;
    if (!hasSize || image->getDataType() == VoxelTypes::int16) return {};
    Peer peer = peerOn(image, "cv::medianBlur", [=](HostImage& source, HostImage& result) {
        cv::Mat target = sliceOf(result, 0);
        cv::medianBlur(sliceOf(source, 0), target, static_cast<int>(2 * radius + 1));
    });
    peer.result = {};  // repeats the edge's pixels
    return {peer};
}

Peers morphologyPeers(const std::shared_ptr<HostImage>& image, MorphologyOperation operation, unsigned radius,
                      bool square) {
    const int type = operation == MorphologyOperation::erosion ? cv::MORPH_ERODE : cv::MORPH_OPEN;
    const auto peer = [&](const std::string& name, const cv::Mat& mask, int iterations) {
        return peerOn(image, name, [=](HostImage& source, HostImage& result) {
            cv::Mat target = sliceOf(result, 0);
            cv::morphologyEx(sliceOf(source, 0), target, type, mask, {-1, -1}, iterations, cv::BORDER_REPLICATE);
        });
    };
    const int r = static_cast<int>(radius);
    if (square) return {peer("cv square", cv::Mat::ones(2 * r + 1, 2 * r + 1, CV_8UC1), 1)};
    return {peer("cv diamond", diamondMask(r), 1), peer("cv cross x" + std::to_string(r), diamondMask(1), r)};
}

Peers gaussianPeers(const std::shared_ptr<HostImage>& volume, double sigma, unsigned kernelSize) {
    const cv::Mat kernel = cv::getGaussianKernel(static_cast<int>(kernelSize), sigma, CV_32F);
    const auto filter = [=](const cv::Mat& from, cv::Mat to, const cv::Mat& alongX) {
        cv::sepFilter2D(from, to, to.depth(), alongX, kernel, {-1, -1}, 0, cv::BORDER_REFLECT);
    };
    /// @param between  takes what the slices give.
    const auto filterThrough = [=](HostImage& source, HostImage& between, cv::Mat target) {
        for (int z = 0; z < dimension(source, 2); ++z) filter(sliceOf(source, z), sliceOf(between, z), kernel);
        filter(slicesAsRows(between), target, cv::Mat::ones(1, 1, CV_32F));
    };
    const ImageSize size{volume->getDimension(0), volume->getDimension(1), volume->getDimension(2)};
    const auto own = std::make_shared<HostImage>(volume->getDataType(), size);
    Peers peers{peerOn(volume, "cv own type", [=](HostImage& source, HostImage& result) {
        filterThrough(source, *own, slicesAsRows(result));
    })};
    if (volume->getDataType() == VoxelTypes::float32) return peers;

    const auto exact = std::make_shared<HostImage>(VoxelTypes::float32, size);
    const auto sums = std::make_shared<HostImage>(VoxelTypes::float32, size);
    peers.push_back(peerOn(volume, "cv float", [=](HostImage& source, HostImage& result) {
        filterThrough(source, *exact, slicesAsRows(*sums));
        slicesAsRows(*sums).convertTo(slicesAsRows(result), matrixType(result.getDataType()));
    }));
    return peers;
}

Peers matchTemplatePeers(const std::shared_ptr<HostImage>& image, const std::shared_ptr<HostImage>& pattern,
                         bool removesMean) {
    cv::setNumThreads(2);
    const auto scores = std::make_shared<cv::Mat>(dimension(*image, 1) - dimension(*pattern, 1) + 1,
                                                  dimension(*image, 0) - dimension(*pattern, 0) + 1, CV_32FC1);
    return {{"cv::matchTemplate",
             [=] {
                 cv::matchTemplate(sliceOf(*image, 0), sliceOf(*pattern, 0), *scores,
                                   removesMean ? cv::TM_CCOEFF : cv::TM_CCORR);
             },
             {}}};
}

Peers nonLocalMeansPeers(const std::shared_ptr<HostImage>& image, float h) {
    return {peerOn(image, "cv::fastNlMeansDenoising", [=](HostImage& source, HostImage& result) {
        cv::Mat target = sliceOf(result, 0);
        cv::fastNlMeansDenoising(sliceOf(source, 0), target, h, 5, 21);
    })};
}

}  // namespace zel::bench
