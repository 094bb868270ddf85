#pragma once

#include <cstddef>

/// A global allocator that can be told to fail: the program that links it replaces `operator new`.
namespace TestSupport {

/// While it lives, the allocation with this number (from 0) throws std::bad_alloc; those before and after succeed.
class FailAllocation {
public:
    explicit FailAllocation(std::size_t number);
    ~FailAllocation();
    FailAllocation(FailAllocation const&) = delete;
    FailAllocation& operator=(FailAllocation const&) = delete;

    bool HasFailed() const;
};

/// The number of blocks that are allocated now.
std::ptrdiff_t GetLiveBlockCount();

}  // namespace TestSupport
