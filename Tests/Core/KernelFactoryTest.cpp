#include "zel/KernelFactory.h"

#include <gtest/gtest.h>

#include <cmath>

#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::filtering::linear;
using kernel_factory::createGaussian1D;

TEST(Gaussian1DTest, HasTheTextbookShapeAboutItsCentre) {
    const Kernel3D kernel = createGaussian1D(5, 1.5, KernelDirection3D::y);
    EXPECT_EQ((std::array{kernel.size(0), kernel.size(1), kernel.size(2)}), (std::array<std::size_t, 3>{1, 5, 1}));
    const double near = std::exp(-1 / 4.5), far = std::exp(-4 / 4.5);
    EXPECT_EQ(kernel.coefficients(), (std::vector<double>{far, near, 1, near, far}));
    Kernel3D even = createGaussian1D(2, 1, KernelDirection3D::x);
    EXPECT_EQ(even.coefficients(), std::vector<double>(2, std::exp(-0.125)));
    even.normalize();
    EXPECT_EQ(even.coefficients(), std::vector<double>(2, 0.5));
}

TEST(Gaussian1DTest, OfNoWidthIsItsCentre) {
    for (const double sigma : {0.0, 5e-324, 1e-200}) {
        EXPECT_EQ(createGaussian1D(1, sigma, KernelDirection3D::x).coefficients(), (std::vector<double>{1}));
        EXPECT_EQ(createGaussian1D(3, sigma, KernelDirection3D::x).coefficients(), (std::vector<double>{0, 1, 0}));
    }
    EXPECT_THROW(createGaussian1D(2, 0, KernelDirection3D::x).normalize(), RuntimeError);
    EXPECT_THROW(createGaussian1D(0, 1, KernelDirection3D::x), RuntimeError);
    for (const double sigma : {-1.0, std::nan(""), HUGE_VAL})
        EXPECT_THROW(createGaussian1D(3, sigma, KernelDirection3D::x), RuntimeError);
}
