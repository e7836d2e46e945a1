#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <nppdefs.h>

#include <cstddef>
#include <memory>
#include <random>
#include <vector>

namespace zel::test {

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

    void randomise(unsigned seed) {
        std::mt19937 random(seed);
        std::normal_distribution<float> normal(10.0f, 100.0f);
        for (int y = 0; y < size_.height; ++y) {
            for (int x = 0; x < size_.width; ++x) {
                at(x, y) = std::is_floating_point_v<T> ? static_cast<T>(normal(random)) : static_cast<T>(random());
            }
        }
        upload();
    }

    void upload() {
        EXPECT_EQ(cudaMemcpy(device_.get(), pixels_.data(), bytes(), cudaMemcpyHostToDevice), cudaSuccess);
    }
    void download() {
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        EXPECT_EQ(cudaMemcpy(pixels_.data(), device_.get(), bytes(), cudaMemcpyDeviceToHost), cudaSuccess);
    }

    /// Whether the padding still holds what the image was filled with.
    bool paddingIntact() const {
        for (int y = 0; y < size_.height; ++y) {
            for (std::size_t x = 0; x < padding; ++x) {
                if (pixels_[index(size_.width, y) + x] != fill_) return false;
            }
        }
        return true;
    }

    /// check(pixel, x, y) for each pixel; the padding has to be intact.
    template <typename Check>
    void expectEach(const Check& check) const {
        for (int y = 0; y < size_.height; ++y) {
            for (int x = 0; x < size_.width && !::testing::Test::HasFatalFailure(); ++x) check(at(x, y), x, y);
        }
        EXPECT_TRUE(paddingIntact());
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

}  // namespace zel::test
