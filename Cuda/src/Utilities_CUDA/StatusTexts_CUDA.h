#pragma once

namespace zel::cuda {

/// Words for a cufftResult, by number: toolkits differ in which enumerators they still have.
const char* cufftStatusText(int status);

/// Words for an NppStatus, by number.
const char* nppStatusText(int status);

}  // namespace zel::cuda
