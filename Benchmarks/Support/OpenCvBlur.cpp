#include <opencv2/imgproc.hpp>

#include "BlurPeer.h"

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

cv::Mat matrixOver(HostImage& image) {
    return {static_cast<int>(image.getDimension(1)), static_cast<int>(image.getDimension(0)),
            matrixType(image.getDataType()), image.data(), image.rowPitchBytes()};
}

}  // namespace

std::function<void()> blurPeer(const std::shared_ptr<HostImage>& image, unsigned kernelX, unsigned kernelY) {
    cv::setNumThreads(2);
    const auto result =
        std::make_shared<HostImage>(image->getDataType(), ImageSize{image->getDimension(0), image->getDimension(1)});
    const cv::Size kernel(static_cast<int>(kernelX), static_cast<int>(kernelY));
    return [=] {
        cv::Mat target = matrixOver(*result);
        cv::blur(matrixOver(*image), target, kernel, {-1, -1}, cv::BORDER_REPLICATE);
    };
}

}  // namespace zel::bench
