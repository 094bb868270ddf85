#pragma once

#include <cstdint>

namespace QuorlanProgram {

/// A bar on stderr, drawn only where stderr is a terminal. One thread at a time may report.
class Progress {
public:
    explicit Progress(std::uint64_t total);
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    /// Takes the bar away.
    ~Progress();

    void Report(std::uint64_t done);

private:
    std::uint64_t total_;
    bool isTerminal_;
    unsigned shown_ = ~0u;  ///< [percent]
};

}  // namespace QuorlanProgram
