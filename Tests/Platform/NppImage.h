#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <nppdefs.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

namespace zel::test {

/// The pixels around each one that a filter looks at.
struct NppWindow {
    NppiSize mask;
    NppiPoint anchor;
};

inline std::ostream& operator<<(std::ostream& out, const NppWindow& window) {
    return out << "mask " << window.mask.width << " x " << window.mask.height << ", anchor " << window.anchor.x << ", "
               << window.anchor.y;
}

/// The part of an image that a filter is to work out.
struct NppRegion {
    NppiPoint offset;
    NppiSize size;
};

/// @param below  below(n) draws from 0 to n - 1.
template <typename Below>
NppRegion randomRegion(NppiSize image, const Below& below) {
    const NppiPoint offset{below(image.width), below(image.height)};
    const NppiSize rest{image.width - offset.x, image.height - offset.y};
    return {offset, {rest.width - below(rest.width), rest.height - below(rest.height)}};
}

/// An image in device memory with padding after each row, and the host's copy of it.
template <typename T>
class NppImage {
public:
    static constexpr std::size_t padding = 6;  // pixels; few enough that rows start at any alignment

    explicit NppImage(NppiSize size, T fill = T(77))
        : size_(size), pixels_((size.width + padding) * static_cast<std::size_t>(size.height), fill), fill_(fill) {
        void* memory = nullptr;
        EXPECT_EQ(cudaMalloc(&memory, bytes()), cudaSuccess);
        device_.reset(static_cast<T*>(memory), [](T* address) { cudaFree(address); });
        upload();
    }

    NppiSize size() const { return size_; }
    int step() const { return static_cast<int>((size_.width + padding) * sizeof(T)); }
    T* device(int x = 0, int y = 0) { return device_.get() + index(x, y); }
    T& at(int x, int y) { return pixels_[index(x, y)]; }
    const T& at(int x, int y) const { return pixels_[index(x, y)]; }

    static NppImage random(NppiSize size, unsigned seed) {
        NppImage image(size);
        std::mt19937 random(seed);
        std::normal_distribution<float> normal(10.0f, 100.0f);
        image.fillWith([&](int, int) {
            return std::is_floating_point_v<T> ? static_cast<T>(normal(random)) : static_cast<T>(random());
        });
        return image;
    }

    /// Each pixel becomes pixel(x, y), on the device too.
    template <typename Pixel>
    void fillWith(const Pixel& pixel) {
        for (int y = 0; y < size_.height; ++y)
            for (int x = 0; x < size_.width; ++x) at(x, y) = pixel(x, y);
        upload();
    }

    void upload() {
        EXPECT_EQ(cudaMemcpy(device_.get(), pixels_.data(), bytes(), cudaMemcpyHostToDevice), cudaSuccess);
    }
    void download() {
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        EXPECT_EQ(cudaMemcpy(pixels_.data(), device_.get(), bytes(), cudaMemcpyDeviceToHost), cudaSuccess);
    }

    /// check(pixel, x, y) for each pixel, or each one in so many of a row; the padding has to be as it was filled.
    template <typename Check>
    void expectEach(const Check& check, int step = 1) const {
        for (int y = 0; y < size_.height; ++y) {
            for (int x = y % step; x < size_.width && !::testing::Test::HasFatalFailure(); x += step)
                check(at(x, y), x, y);
            const T* const behind = &pixels_[index(size_.width, y)];
            EXPECT_EQ(std::count(behind, behind + padding, fill_), padding) << "padding of row " << y;
        }
    }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * (size_.width + padding) + static_cast<std::size_t>(x);
    }
    std::size_t bytes() const { return pixels_.size() * sizeof(T); }

    NppiSize size_;
    std::vector<T> pixels_;
    T fill_;
    std::shared_ptr<T> device_;
};

/// Zeros of both signs, NaNs, infinities; at the left only NaNs.
inline NppImage<float> imageOfSpecials() {
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    const float specials[] = {0.0f, -0.0f, nan, -nan, infinity, -infinity, 1.0f};
    NppImage<float> image({150, 20});
    std::mt19937 random(5);
    image.fillWith([&](int x, int) { return x < 20 ? nan : specials[random() % (x < 80 ? 4 : 7)]; });
    return image;
}

}  // namespace zel::test
