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

constexpr unsigned kWidth = 40;  ///< [characters]

bool IsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(fileno(stderr)) != 0;
#endif
}

}  // namespace

Progress::Progress(std::uint64_t total) : total_(total), isTerminal_(total > 0 && IsTerminal()) {}

Progress::~Progress() {
    if (isTerminal_) std::fprintf(stderr, "\r%*s\r", static_cast<int>(kWidth) + 8, "");
}

void Progress::Report(std::uint64_t done) {
    if (!isTerminal_) return;
    auto const percent = static_cast<unsigned>(100 * done / total_);
    if (percent == shown_) return;
    shown_ = percent;
    auto const filled = kWidth * percent / 100;
    std::fprintf(stderr, "\r[%s%s] %3u%%", std::string(filled, '#').c_str(), std::string(kWidth - filled, ' ').c_str(),
                 percent);
}

}  // namespace QuorlanProgram
