#include "Runs/ProgressBar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace zel::tool {

namespace {

/// As if the rest went on as fast as what is done. Nothing while that tells little.
std::string timeLeft(double fraction, double secondsSoFar) {
    constexpr double enoughSeconds = 2;
    if (fraction <= 0 || fraction >= 1 || secondsSoFar < enoughSeconds) return "";
    const auto seconds = static_cast<long>(std::ceil(secondsSoFar * (1 - fraction) / fraction));
    if (seconds < 120) return std::to_string(seconds) + " s left";
    if (seconds < 7200) return std::to_string(seconds / 60) + " min left";
    return std::to_string(seconds / 3600) + " h left";
}

/// A terminal that can erase a line; one that calls itself dumb cannot.
bool canDraw() {
    const char* const term = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): nobody sets it
    return isatty(STDERR_FILENO) == 1 && term != nullptr && std::string_view(term) != "dumb";
}

std::size_t terminalWidth() {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

}  // namespace

ProgressBar::ProgressBar(std::string work, bool isQuiet, std::uint64_t runCount)
    : work_(std::move(work)), isVisible_(!isQuiet && canDraw()), runCount_(runCount) {}

ProgressBar::~ProgressBar() {
    if (drawnPercent_ >= 0) std::fputs("\r\x1b[K", stderr);
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

Progress ProgressBar::forWork() {
    if (!isVisible_) return {};
    return [this](double fraction) { draw(fraction); };
}

void ProgressBar::draw(double fraction) {
    // Called for each row of an image; the time left is told anew now and then though the bar stands still.
    constexpr double secondsBetweenTimes = 0.25;
    const int percent = static_cast<int>(100 * fraction);
    const double seconds = sinceStart_.seconds();
    if (percent == drawnPercent_ && seconds < drawnAtSecond_ + secondsBetweenTimes) return;
    drawnPercent_ = percent;
    drawnAtSecond_ = seconds;

    const std::string rest = timeLeft(fraction, seconds);
    const std::string numbers = std::to_string(percent) + " %" + (rest.empty() ? "" : ", " + rest);
    // The last column stays free: a line that fills it would wrap. Where hardly a bar fits, the numbers stand alone.
    constexpr std::size_t maxBar = 40, minBar = 5, frame = 3;
    const std::size_t columns = terminalWidth() - 1;
    std::string text = work_ + " ";
    if (columns < text.size() + numbers.size() + frame + minBar) text.clear();
    const std::size_t taken = text.size() + numbers.size() + frame;
    if (columns >= taken + minBar) {
        const std::size_t width = std::min(maxBar, columns - taken);
        const std::size_t filled = static_cast<std::size_t>(percent) * width / 100;
        text.append("[").append(filled, '#').append(width - filled, '.').append("] ");
    }
    text.append(numbers.substr(0, columns));
    std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
    std::fflush(stderr);
}

}  // namespace zel::tool
