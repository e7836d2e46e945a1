#include "Utilities_CUDA/StatusChecks_CUDA.h"

#include <gtest/gtest.h>

#include "Messages.h"
#include "NonLocalMeans/CudaUtils_CUDA.h"
#include "Utilities_CUDA/StatusTexts_CUDA.h"

using namespace zel;
using namespace zel::cuda;
using test::messageOf;

namespace {

/// Leaves an error pending: there is no such device.
void makeErrorPending() {
    ASSERT_NE(cudaSetDevice(9999), cudaSuccess);
}

}  // namespace

TEST(CheckCudaStatusTest, NamesThePendingErrorOnlyWhenItIsAnother) {
    cudaGetLastError();
    EXPECT_NO_THROW(checkCudaStatus(cudaSuccess));

    makeErrorPending();
    const cudaError_t pending = cudaPeekAtLastError();
    EXPECT_EQ(messageOf<RuntimeError>([&] { checkCudaStatus(pending); }), cudaGetErrorString(pending));
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess) << "reported, so no longer pending";

    makeErrorPending();
    EXPECT_EQ(messageOf<RuntimeError>([] { checkCudaStatus(cudaErrorMemoryAllocation); }),
              std::string(cudaGetErrorString(cudaErrorMemoryAllocation)) + " ; " + cudaGetErrorString(pending));
    EXPECT_EQ(messageOf<RuntimeError>([] { checkCudaStatus(cudaErrorMemoryAllocation); }),
              std::string(cudaGetErrorString(cudaErrorMemoryAllocation)) + " ; " + cudaGetErrorString(cudaSuccess));

    makeErrorPending();
    EXPECT_NO_THROW(checkCudaStatus(cudaSuccess)) << "success is not asked for what is pending";
    cudaGetLastError();
}

TEST(CheckCudaStatusTest, ReportsFromItsSource) {
    try {
        checkCudaStatus(cudaErrorInvalidValue);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.info().file, "Cuda/src/Utilities_CUDA");
        EXPECT_GT(error.info().line, 0U);
    }
    cudaGetLastError();
}

TEST(CheckNppStatusTest, FailsOnWarningsToo) {
    EXPECT_NO_THROW(checkNppStatus(NPP_NO_ERROR));
    const auto text = [](int status) {
        return messageOf<RuntimeError>([=] { checkNppStatus(static_cast<NppStatus>(status)); });
    };
    EXPECT_EQ(text(6), "Divisor is zero however does not terminate the execution.");
    EXPECT_EQ(text(-6), "Size error.");
    EXPECT_EQ(text(-9999), "Not supported mode.");
    EXPECT_EQ(text(10000), "Speed reduction due to uncoalesced memory accesses warning.");
    EXPECT_EQ(text(-4711), "<unknown>");
}

TEST(CheckCufftStatusTest, SpeaksByNumberWhateverTheToolkitStillNames) {
    EXPECT_NO_THROW(checkCufftStatus(CUFFT_SUCCESS));
    EXPECT_EQ(messageOf<RuntimeError>([] { checkCufftStatus(CUFFT_ALLOC_FAILED); }),
              "cuFFT failed to allocate GPU or CPU memory");
    EXPECT_STREQ(cufftStatusText(10), "Missing parameters in call");
    EXPECT_STREQ(cufftStatusText(16), "Operation is not supported for parameters given");
    EXPECT_STREQ(cufftStatusText(17), "<unknown>");
    EXPECT_STREQ(cufftStatusText(-1), "<unknown>");
}

TEST(CheckCudaFatalTest, ResetsTheDevice) {
    EXPECT_NO_THROW(amnlm::checkCudaFatal(cudaSuccess));
    EXPECT_EQ(messageOf<RuntimeError>([] { amnlm::checkCudaFatal(cudaErrorMemoryAllocation); }),
              std::string("Fatal Cuda error: ") + cudaGetErrorString(cudaErrorMemoryAllocation) + "\n");
}
