#include <cufft.h>
#include <tbb/global_control.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

struct Shape {
    int nz, ny, nx;

    std::size_t reals() const { return static_cast<std::size_t>(nx) * ny * nz; }
    std::size_t spectrum() const { return static_cast<std::size_t>(nx / 2 + 1) * ny * nz; }
};

/// The vendor's calls for a precision.
template <typename R>
struct Calls {
    static constexpr bool isSingle = std::is_same_v<R, float>;
    using Element = std::conditional_t<isSingle, cufftComplex, cufftDoubleComplex>;
    static constexpr auto forwardType = isSingle ? CUFFT_R2C : CUFFT_D2Z,
                          inverseType = isSingle ? CUFFT_C2R : CUFFT_Z2D;
    static constexpr auto functions() {
        if constexpr (isSingle)
            return std::pair(&cufftExecR2C, &cufftExecC2R);
        else
            return std::pair(&cufftExecD2Z, &cufftExecZ2D);
    }
    static constexpr auto forward = functions().first;
    static constexpr auto inverse = functions().second;
    static constexpr double error = isSingle ? 2e-7 : 4e-16;
};

/// A plan with a work area of its own; one slice makes it a plan of two dimensions.
class Plan {
public:
    Plan(const Shape& shape, cufftType type) {
        std::size_t bytes = 0, made = 0;
        EXPECT_EQ(cufftCreate(&handle_), CUFFT_SUCCESS);
        const auto& [nz, ny, nx] = shape;
        EXPECT_EQ(
            nz == 1 ? cufftGetSize2d(handle_, ny, nx, type, &bytes) : cufftGetSize3d(handle_, nz, ny, nx, type, &bytes),
            CUFFT_SUCCESS);
        EXPECT_EQ(
            nz == 1 ? cufftMakePlan2d(handle_, ny, nx, type, &made) : cufftMakePlan3d(handle_, nz, ny, nx, type, &made),
            CUFFT_SUCCESS);
        EXPECT_EQ(bytes, made);
    }
    ~Plan() { EXPECT_EQ(cufftDestroy(handle_), CUFFT_SUCCESS); }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;
    operator cufftHandle() const { return handle_; }

private:
    cufftHandle handle_ = 0;
};

template <typename R>
std::vector<R> randomNumbers(std::size_t count, unsigned seed) {
    std::vector<R> numbers(count);
    std::mt19937 random(seed);
    std::uniform_real_distribution<R> draw(-1, 1);
    for (R& number : numbers) number = draw(random);
    return numbers;
}

/// Transforms of a line, element by element, along one axis of a volume.
void transformAxis(std::vector<std::complex<double>>& volume, std::size_t length, std::size_t step) {
    std::vector<std::complex<double>> roots(length), line(length);
    for (std::size_t k = 0; k < length; ++k)
        roots[k] = std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(length));
    for (std::size_t first = 0; first < volume.size(); ++first) {
        if (first / step % length != 0) continue;
        for (std::size_t k = 0; k < length; ++k) {
            line[k] = 0;
            for (std::size_t p = 0; p < length; ++p) line[k] += volume[first + p * step] * roots[k * p % length];
        }
        for (std::size_t k = 0; k < length; ++k) volume[first + k * step] = line[k];
    }
}

template <typename R>
std::vector<std::complex<double>> plainSpectrum(const Shape& shape, const std::vector<R>& real) {
    std::vector<std::complex<double>> volume(real.begin(), real.end());
    const std::size_t nx = shape.nx, ny = shape.ny, nz = shape.nz;
    transformAxis(volume, nx, 1);
    transformAxis(volume, ny, nx);
    transformAxis(volume, nz, nx * ny);
    std::vector<std::complex<double>> half;
    for (std::size_t i = 0; i < volume.size(); ++i)
        if (i % nx <= nx / 2) half.push_back(volume[i]);
    return half;
}

/// What the transform makes of numbers, and its inverse of that again.
template <typename R>
struct Transformed {
    Transformed(const Shape& shape, const std::vector<R>& real) {
        const Plan there(shape, Calls<R>::forwardType), again(shape, Calls<R>::inverseType);
        const DeviceArray<R> numbers(real);
        const DeviceArray<typename Calls<R>::Element> middle(shape.spectrum());
        EXPECT_EQ(Calls<R>::forward(there, numbers.get(), middle.get()), CUFFT_SUCCESS);
        for (const auto& [re, im] : middle.values()) spectrum.emplace_back(re, im);
        EXPECT_EQ(Calls<R>::inverse(again, middle.get(), numbers.get()), CUFFT_SUCCESS);
        back = numbers.values();
    }

    std::vector<std::complex<R>> spectrum;
    std::vector<R> back;
};

template <typename R>
class FftTest : public DeviceTest {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(FftTest, Precisions);

// Lengths of small and of large prime factors, odd and even, of one; rows that leave the last bundle of lines
// incomplete, and lines of several slices in one bundle.
TYPED_TEST(FftTest, EqualsTheSumsAndComesBack) {
    using R = TypeParam;
    constexpr Shape shapes[] = {{1, 1, 1},    {1, 1, 9},     {1, 40, 1},   {1, 5, 6},    {1, 33, 70},  {1, 81, 49},
                                {1, 64, 128}, {1, 100, 146}, {1, 22, 131}, {1, 243, 27}, {1, 60, 75},  {2, 3, 4},
                                {5, 7, 9},    {9, 16, 25},   {14, 58, 10}, {3, 1, 300},  {1, 2, 2187}, {1, 1168, 3}};
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(::testing::Message() << shape.nz << " x " << shape.ny << " x " << shape.nx);
        const std::vector<R> real = randomNumbers<R>(shape.reals(), 5);
        const auto expected = plainSpectrum(shape, real);
        const Transformed<R> result(shape, real);
        const auto n = static_cast<double>(shape.reals());
        const double bound = Calls<R>::error * std::log2(n + 1);
        double worst = 0, worstBack = 0;
        for (std::size_t i = 0; i < expected.size(); ++i)
            worst = std::max(worst, std::abs(std::complex<double>(result.spectrum[i]) - expected[i]));
        for (std::size_t i = 0; i < real.size(); ++i)
            worstBack = std::max<double>(worstBack, std::abs(result.back[i] / n - real[i]));
        EXPECT_LE(worst, bound * std::sqrt(n));
        EXPECT_LE(worstBack, bound);
    }
}

// A half spectrum may hold what no real data give: the imaginary parts that have to be 0 count as 0.
TYPED_TEST(FftTest, InverseIgnoresImaginaryPartsThatRealDataLack) {
    using R = TypeParam;
    using Element = typename Calls<R>::Element;
    for (const int nx : {1, 2, 7, 8}) {
        const Shape shape{1, 1, nx};
        std::vector<Element> spectrum(shape.spectrum(), Element{1, 0});
        const auto inverseOf = [&] {
            const Plan plan(shape, Calls<R>::inverseType);
            const DeviceArray<Element> in(spectrum);
            const DeviceArray<R> out(shape.reals());
            EXPECT_EQ(Calls<R>::inverse(plan, in.get(), out.get()), CUFFT_SUCCESS);
            return out.values();
        };
        const std::vector<R> expected = inverseOf();
        spectrum.front().y = 5;
        if (nx % 2 == 0) spectrum.back().y = -3;
        EXPECT_EQ(inverseOf(), expected) << "of " << nx;
    }
}

TYPED_TEST(FftTest, GivesTheSameBitsOnAnyNumberOfThreads) {
    using R = TypeParam;
    for (const Shape shape : {Shape{1, 243, 256}, {40, 58, 25}}) {
        const std::vector<R> real = randomNumbers<R>(shape.reals(), 6);
        const Transformed<R> onAll(shape, real);
        const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
        const Transformed<R> onOne(shape, real);
        EXPECT_EQ(onAll.spectrum, onOne.spectrum);
        EXPECT_EQ(onAll.back, onOne.back);
    }
}

/// What calls return that are made one after the other.
using Results = std::vector<cufftResult>;

class FftPlanTest : public DeviceTest {
protected:
    ~FftPlanTest() override { EXPECT_EQ(deviceUse().livePlans, 0u); }
};

TEST_F(FftPlanTest, RefusesWhatCannotBe) {
    cufftHandle plan = 0;
    std::size_t bytes = 0;
    {
        const ScopedDevices none(0, 0);
        EXPECT_EQ(cufftCreate(&plan), CUFFT_SETUP_FAILED);
    }
    EXPECT_EQ(cufftCreate(nullptr), CUFFT_INVALID_VALUE);
    EXPECT_THAT(Results({cufftSetStream(77, nullptr), cufftDestroy(77), cufftSetAutoAllocation(77, 0),
                         cufftSetWorkArea(77, nullptr), cufftGetSize2d(77, 4, 4, CUFFT_R2C, &bytes),
                         cufftMakePlan3d(77, 4, 4, 4, CUFFT_R2C, &bytes), cufftExecR2C(77, nullptr, nullptr)}),
                Each(CUFFT_INVALID_PLAN));

    ASSERT_EQ(cufftCreate(&plan), CUFFT_SUCCESS);
    cudaStream_t gone = nullptr;
    cudaStreamCreate(&gone);
    cudaStreamDestroy(gone);
    EXPECT_EQ(cufftSetStream(plan, gone), CUFFT_INVALID_VALUE);
    EXPECT_EQ(cufftExecR2C(plan, nullptr, nullptr), CUFFT_INVALID_PLAN) << "not made yet";
    constexpr int maxLength = 1 << 27;
    EXPECT_THAT(
        Results({cufftGetSize2d(plan, 0, 4, CUFFT_R2C, &bytes), cufftGetSize3d(plan, 4, 4, -1, CUFFT_R2C, &bytes),
                 cufftMakePlan2d(plan, 4, maxLength + 1, CUFFT_R2C, &bytes),
                 cufftMakePlan2d(plan, maxLength / 2 + 1, 4, CUFFT_Z2D, &bytes),
                 cufftMakePlan3d(plan, maxLength, maxLength, maxLength, CUFFT_R2C, &bytes)}),
        Each(CUFFT_INVALID_SIZE));
    EXPECT_EQ(cufftMakePlan2d(plan, 4, 4, static_cast<cufftType>(0x29), &bytes), CUFFT_INVALID_TYPE);
    EXPECT_EQ(cufftMakePlan2d(plan, 4, 4, CUFFT_R2C, nullptr), CUFFT_INVALID_VALUE);
    {
        const ScopedDevices small(1, 1000);
        EXPECT_EQ(cufftMakePlan2d(plan, 16, 16, CUFFT_R2C, &bytes), CUFFT_ALLOC_FAILED);
    }
    EXPECT_EQ(cufftMakePlan2d(plan, 4, 4, CUFFT_R2C, &bytes), CUFFT_SUCCESS);
    EXPECT_EQ(bytes, 3 * 4 * sizeof(float2));
    EXPECT_EQ(deviceUse().liveBytes, bytes);
    EXPECT_EQ(cufftMakePlan2d(plan, 4, 4, CUFFT_R2C, &bytes), CUFFT_INVALID_PLAN) << "made already";

    const DeviceArray<float> memory(64);
    const auto spectrumAt = [&](std::size_t element) { return reinterpret_cast<float2*>(memory.get() + element); };
    std::vector<float> host(64);
    EXPECT_EQ(cufftExecC2R(plan, spectrumAt(16), memory.get()), CUFFT_INVALID_PLAN) << "of another type";
    {
        const ScopedTestModes separate({.separateMemory = true});
        EXPECT_EQ(cufftExecR2C(plan, host.data(), spectrumAt(0)), CUFFT_INVALID_VALUE);
    }
    EXPECT_EQ(cufftExecR2C(plan, memory.get(), spectrumAt(42)), CUFFT_INVALID_VALUE) << "beyond the end";
    EXPECT_EQ(cufftExecR2C(plan, memory.get(), spectrumAt(14)), CUFFT_NOT_SUPPORTED) << "overlap";
    {
        const ScopedDevices two(2, 1 << 20);
        cudaSetDevice(1);
        EXPECT_EQ(cufftExecR2C(plan, memory.get(), spectrumAt(16)), CUFFT_INVALID_DEVICE);
        cudaSetDevice(0);
    }
    EXPECT_EQ(cufftExecR2C(plan, memory.get(), spectrumAt(16)), CUFFT_SUCCESS);
    EXPECT_EQ(cufftDestroy(plan), CUFFT_SUCCESS);
    EXPECT_EQ(cufftDestroy(plan), CUFFT_INVALID_PLAN);
}

TEST_F(FftPlanTest, WorksInTheCallersWorkArea) {
    cufftHandle plan = 0;
    std::size_t bytes = 0;
    const DeviceArray<float> real(16);
    const DeviceArray<float2> spectrum(12), area(12);
    ASSERT_EQ(cufftCreate(&plan), CUFFT_SUCCESS);
    EXPECT_THAT(Results({cufftSetAutoAllocation(plan, 0), cufftMakePlan2d(plan, 4, 4, CUFFT_R2C, &bytes)}),
                Each(CUFFT_SUCCESS));
    EXPECT_EQ(cufftExecR2C(plan, real.get(), spectrum.get()), CUFFT_NO_WORKSPACE);
    cufftSetWorkArea(plan, area.get() + 1);
    EXPECT_EQ(cufftExecR2C(plan, real.get(), spectrum.get()), CUFFT_EXEC_FAILED) << "an area of too few bytes";
    cufftSetWorkArea(plan, area.get());
    EXPECT_EQ(cufftExecR2C(plan, real.get(), spectrum.get()), CUFFT_SUCCESS);
    EXPECT_EQ(cufftDestroy(plan), CUFFT_SUCCESS);
}

TEST_F(FftPlanTest, FaultsReachEachCallAndAResetEndsPlans) {
    cufftHandle plan = 0;
    injectFault({.call = "cufftCreate", .status = CUFFT_ALLOC_FAILED});
    EXPECT_EQ(cufftCreate(&plan), CUFFT_ALLOC_FAILED);
    ASSERT_EQ(cufftCreate(&plan), CUFFT_SUCCESS);
    injectFault({.call = "cufftDestroy"});
    EXPECT_EQ(cufftDestroy(plan), CUFFT_EXEC_FAILED) << "gone all the same";
    EXPECT_EQ(deviceUse().livePlans, 0u);

    std::size_t bytes = 0;
    ASSERT_EQ(cufftCreate(&plan), CUFFT_SUCCESS);
    ASSERT_EQ(cufftMakePlan2d(plan, 4, 4, CUFFT_C2R, &bytes), CUFFT_SUCCESS);
    cudaDeviceReset();
    EXPECT_EQ(deviceUse().livePlans, 0u);
    EXPECT_EQ(cufftSetStream(plan, nullptr), CUFFT_INVALID_PLAN);
    EXPECT_EQ(cufftDestroy(plan), CUFFT_INVALID_PLAN);
}

// The plan may be given back before.
TEST_F(FftPlanTest, RunsInItsStreamsTurn) {
    TestModes modes;
    modes.deferredStreams = true;
    const ScopedTestModes deferred(modes);
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    const DeviceArray<float> real(1);
    const DeviceArray<float2> spectrum(1, 0xff);
    float number = 0;
    {
        const Plan plan({1, 1, 1}, CUFFT_R2C);
        EXPECT_EQ(cufftSetStream(plan, stream), CUFFT_SUCCESS);
        cudaMemcpyAsync(real.get(), &number, sizeof number, cudaMemcpyHostToDevice, stream);
        EXPECT_EQ(cufftExecR2C(plan, real.get(), spectrum.get()), CUFFT_SUCCESS);
        number = 1;
    }
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_EQ(spectrum.values()[0].x, 1.0f);
    EXPECT_EQ(spectrum.values()[0].y, 0.0f);
}

}  // namespace
}  // namespace zel::host
