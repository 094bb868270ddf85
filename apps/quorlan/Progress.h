#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace QuorlanProgram {

/// A bar on stderr, drawn only where stderr is a terminal. One thread at a time may report.
class Progress {
public:
    /// Of `total` steps in all, or of stages with steps of their own.
    explicit Progress(std::uint64_t total = 0);
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    /// Takes the bar away.
    ~Progress();

    void Report(std::uint64_t done) { Report("", done, total_); }

    /// The same with what is being done: "shapes 120/300".
    void Report(char const* stage, std::uint64_t done, std::uint64_t total);

private:
    std::uint64_t total_;
    bool isTerminal_;
    unsigned shown_ = ~0u;  ///< [percent]
    std::string stage_;
};

}  // namespace QuorlanProgram
