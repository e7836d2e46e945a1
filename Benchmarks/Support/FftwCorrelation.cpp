#include "FftwCorrelation.h"

#include <fftw3.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <complex>

namespace zel::bench {

namespace {

template <typename T>
std::shared_ptr<T> fftwMemory(std::size_t count) {
    return {static_cast<T*>(fftwf_malloc(count * sizeof(T))), fftwf_free};
}

class FftwCorrelation {
public:
    FftwCorrelation(std::size_t nx, std::size_t ny, int threads)
        : nx_(nx),
          ny_(ny),
          threads_(threads),
          image_(fftwMemory<float>(nx * ny)),
          pattern_(fftwMemory<float>(nx * ny)),
          imageSpectrum_(fftwMemory<Complex>(half() * ny)),
          patternSpectrum_(fftwMemory<Complex>(half() * ny)) {
        fftwf_init_threads();
        fftwf_plan_with_nthreads(threads);
        const int rows = static_cast<int>(ny), columns = static_cast<int>(nx);
        auto* const spectrum = reinterpret_cast<fftwf_complex*>(imageSpectrum_.get());
        forward_ = fftwf_plan_dft_r2c_2d(rows, columns, image_.get(), spectrum, FFTW_ESTIMATE);
        inverse_ = fftwf_plan_dft_c2r_2d(rows, columns, spectrum, image_.get(), FFTW_ESTIMATE);
    }
    FftwCorrelation(const FftwCorrelation&) = delete;
    FftwCorrelation& operator=(const FftwCorrelation&) = delete;
    ~FftwCorrelation() {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
    }

    void run(const HostImage& image, const HostImage& pattern) {
        const std::size_t width = pattern.getDimension(0), height = pattern.getDimension(1);
        place(image, image_.get(), (width - 1) / 2, (height - 1) / 2);
        place(pattern, pattern_.get(), 0, 0);
        transform(image_.get(), imageSpectrum_.get());
        transform(pattern_.get(), patternSpectrum_.get());
        const float scale = 1 / (static_cast<float>(nx_) * static_cast<float>(ny_));
        forEachRow([&](std::size_t y) {
            Complex* const a = imageSpectrum_.get() + y * half();
            const Complex* const b = patternSpectrum_.get() + y * half();
            for (std::size_t x = 0; x < half(); ++x) {
                const float re = a[x].real() * b[x].real() + a[x].imag() * b[x].imag();
                const float im = a[x].imag() * b[x].real() - a[x].real() * b[x].imag();
                a[x] = {re * scale, im * scale};
            }
        });
        fftwf_execute_dft_c2r(inverse_, reinterpret_cast<fftwf_complex*>(imageSpectrum_.get()), image_.get());
    }

private:
    using Complex = std::complex<float>;

    std::size_t half() const { return nx_ / 2 + 1; }

    template <typename Body>
    void forEachRow(const Body& body) {
        tbb::task_arena(threads_).execute([&] { tbb::parallel_for(std::size_t{0}, ny_, body); });
    }

    void place(const HostImage& image, float* padded, std::size_t left, std::size_t top) {
        const std::size_t width = image.getDimension(0), height = image.getDimension(1);
        forEachRow([&](std::size_t y) {
            float* const row = padded + y * nx_;
            if (y < top || y >= top + height) {
                std::fill_n(row, nx_, 0.0F);
                return;
            }
            std::fill_n(row, left, 0.0F);
            std::copy_n(static_cast<const float*>(image.data()) + (y - top) * width, width, row + left);
            std::fill(row + left + width, row + nx_, 0.0F);
        });
    }

    void transform(float* from, Complex* to) {
        fftwf_execute_dft_r2c(forward_, from, reinterpret_cast<fftwf_complex*>(to));
    }

    std::size_t nx_, ny_;
    int threads_;
    std::shared_ptr<float> image_, pattern_;
    std::shared_ptr<Complex> imageSpectrum_, patternSpectrum_;
    fftwf_plan forward_, inverse_;
};

}  // namespace

Peer fftwCorrelation(const std::shared_ptr<HostImage>& image, const std::shared_ptr<HostImage>& pattern, int nx, int ny,
                     int threads) {
    const auto correlation =
        std::make_shared<FftwCorrelation>(static_cast<std::size_t>(nx), static_cast<std::size_t>(ny), threads);
    return {"FFTW " + std::to_string(threads) + "T", [=] { correlation->run(*image, *pattern); }, {}};
}

}  // namespace zel::bench
