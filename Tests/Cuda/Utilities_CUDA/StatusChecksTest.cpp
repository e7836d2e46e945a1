#include "Utilities_CUDA/StatusChecks_CUDA.h"

#include <gtest/gtest.h>

#include "Messages.h"
#include "NonLocalMeans/CudaUtils_CUDA.h"
#include "Utilities_CUDA/StatusTexts_CUDA.h"

using namespace zel;
using namespace zel::cuda;
using test::messageOf;

TEST(CheckCudaStatusTest, NamesThePendingErrorOnlyWhenItIsAnother) {
    const auto message = [](cudaError_t status) { return messageOf([=] { checkCudaStatus(status); }); };
    const std::string text = cudaGetErrorString(cudaErrorMemoryAllocation);
    cudaGetLastError();
    EXPECT_EQ(message(cudaErrorMemoryAllocation), text + " ; " + cudaGetErrorString(cudaSuccess));

    const cudaError_t pending = cudaSetDevice(9999);  // there is none
    EXPECT_NO_THROW(checkCudaStatus(cudaSuccess)) << "success is not asked for what is pending";
    EXPECT_EQ(message(cudaErrorMemoryAllocation), text + " ; " + cudaGetErrorString(pending));
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess) << "reported, so no longer pending";

    EXPECT_EQ(message(cudaSetDevice(9999)), cudaGetErrorString(pending));
}

TEST(CheckCudaStatusTest, ReportsFromItsSource) {
    try {
        checkCudaStatus(cudaErrorInvalidValue);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.info().file, "Cuda/src/Utilities_CUDA");
        EXPECT_GT(error.info().line, 0U);
    }
}

TEST(CheckNppStatusTest, FailsOnWarningsToo) {
    EXPECT_NO_THROW(checkNppStatus(NPP_NO_ERROR));
    for (const auto& [status, text] : {std::pair{6, "Divisor is zero however does not terminate the execution."},
                                       {-6, "Size error."},
                                       {-9999, "Not supported mode."},
                                       {10000, "Speed reduction due to uncoalesced memory accesses warning."},
                                       {-4711, "<unknown>"}}) {
        EXPECT_EQ(messageOf([s = status] { checkNppStatus(static_cast<NppStatus>(s)); }), text);
    }
}

TEST(CheckCufftStatusTest, SpeaksByNumberWhateverTheToolkitStillNames) {
    EXPECT_NO_THROW(checkCufftStatus(CUFFT_SUCCESS));
    EXPECT_EQ(messageOf([] { checkCufftStatus(CUFFT_ALLOC_FAILED); }), "cuFFT failed to allocate GPU or CPU memory");
    EXPECT_STREQ(cufftStatusText(10), "Missing parameters in call");
    EXPECT_STREQ(cufftStatusText(16), "Operation is not supported for parameters given");
    EXPECT_STREQ(cufftStatusText(17), "<unknown>");
    EXPECT_STREQ(cufftStatusText(-1), "<unknown>");
}

TEST(CheckCudaFatalTest, ResetsTheDevice) {
    EXPECT_NO_THROW(amnlm::checkCudaFatal(cudaSuccess));
    void* memory = nullptr;
    ASSERT_EQ(cudaMalloc(&memory, 1), cudaSuccess);
    EXPECT_EQ(messageOf([] { amnlm::checkCudaFatal(cudaErrorMemoryAllocation); }),
              std::string("Fatal Cuda error: ") + cudaGetErrorString(cudaErrorMemoryAllocation) + "\n");
    EXPECT_NE(cudaFree(memory), cudaSuccess) << "the reset has freed it";
    cudaGetLastError();
}
