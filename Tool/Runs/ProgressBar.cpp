#include "Runs/ProgressBar.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace zel::tool {

namespace {

/// As if the rest went on as fast as what is done. Nothing while that tells little.
std::string timeLeft(double fraction, std::chrono::duration<double> sinceStart) {
    constexpr double enoughSeconds = 2;
    if (fraction <= 0 || fraction >= 1 || sinceStart.count() < enoughSeconds) return "";
    const auto seconds = static_cast<long>(std::ceil(sinceStart.count() * (1 - fraction) / fraction));
    if (seconds < 120) return std::to_string(seconds) + " s left";
    if (seconds < 7200) return std::to_string(seconds / 60) + " min left";
    return std::to_string(seconds / 3600) + " h left";
}

}  // namespace

ProgressBar::ProgressBar(bool isQuiet, std::uint64_t runCount)
    : isVisible_(!isQuiet && isatty(STDERR_FILENO) == 1), runCount_(runCount) {}

ProgressBar::~ProgressBar() {
    if (!drawn_.empty()) std::fputs("\r\x1b[K", stderr);
}

void ProgressBar::progress(std::uint64_t done, std::uint64_t total) {
    stepsOfRun_ = done;
    if (!isVisible_ || total == 0) return;
    const double runs = static_cast<double>(runsDone_) + static_cast<double>(done) / static_cast<double>(total);
    draw(runs / static_cast<double>(runCount_));
}

void ProgressBar::finishRun() {
    ++runsDone_;
    steps_ += stepsOfRun_;
    stepsOfRun_ = 0;
}

void ProgressBar::draw(double fraction) {
    constexpr int width = 40;
    const int percent = static_cast<int>(100 * fraction);
    const auto filled = static_cast<std::size_t>(percent * width / 100);
    std::string text = "[";
    text.append(filled, '#').append(width - filled, '.').append("] ").append(std::to_string(percent)).append(" %");
    const std::string rest = timeLeft(fraction, std::chrono::steady_clock::now() - start_);
    if (!rest.empty()) text.append(", ").append(rest);
    if (text == drawn_) return;
    drawn_ = text;
    std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
    std::fflush(stderr);
}

}  // namespace zel::tool
