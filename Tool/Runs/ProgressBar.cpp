#include "Runs/ProgressBar.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace zel::tool {

ProgressBar::ProgressBar(bool isQuiet, std::uint64_t runCount)
    : isVisible_(!isQuiet && isatty(STDERR_FILENO) == 1), runCount_(runCount) {}

ProgressBar::~ProgressBar() {
    if (percentDrawn_ >= 0) std::fputs("\r\x1b[K", stderr);
}

void ProgressBar::progress(std::uint64_t done, std::uint64_t total) {
    stepsOfRun_ = done;
    if (!isVisible_ || total == 0) return;
    const double runs = static_cast<double>(runsDone_) + static_cast<double>(done) / static_cast<double>(total);
    draw(static_cast<int>(100 * runs / static_cast<double>(runCount_)));
}

void ProgressBar::finishRun() {
    ++runsDone_;
    steps_ += stepsOfRun_;
    stepsOfRun_ = 0;
}

void ProgressBar::draw(int percent) {
    if (percent == percentDrawn_) return;
    percentDrawn_ = percent;
    constexpr int width = 40;
    const int filled = percent * width / 100;
    const std::string bar =
        std::string(static_cast<std::size_t>(filled), '#') + std::string(static_cast<std::size_t>(width - filled), '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), percent);
    std::fflush(stderr);
}

}  // namespace zel::tool
