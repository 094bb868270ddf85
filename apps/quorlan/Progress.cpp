#include "Progress.h"

#include <cstdio>
#include <string>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace QuorlanProgram {
namespace {

constexpr unsigned kWidth = 40;  ///< [characters] of the bar
constexpr unsigned kLine = 78;   ///< [characters] of all, so that a line covers the one before it

bool IsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(fileno(stderr)) != 0;
#endif
}

}  // namespace

Progress::Progress(std::uint64_t total) : total_(total), isTerminal_(IsTerminal()) {}

Progress::~Progress() {
    if (isTerminal_ && shown_ != ~0u) std::fprintf(stderr, "\r%*s\r", static_cast<int>(kLine), "");
}

void Progress::Report(char const* stage, std::uint64_t done, std::uint64_t total) {
    if (!isTerminal_ || total == 0) return;
    auto const percent = static_cast<unsigned>(100 * done / total);
    if (percent == shown_ && stage_ == stage) return;
    shown_ = percent;
    stage_ = stage;
    auto const filled = kWidth * percent / 100;
    auto line =
        '[' + std::string(filled, '#') + std::string(kWidth - filled, ' ') + "] " + std::to_string(percent) + '%';
    if (!stage_.empty()) line += ' ' + stage_ + ' ' + std::to_string(done) + '/' + std::to_string(total);
    line.resize(kLine, ' ');
    std::fprintf(stderr, "\r%s", line.c_str());
}

}  // namespace QuorlanProgram
