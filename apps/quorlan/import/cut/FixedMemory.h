#pragma once

namespace QuorlanProgram::Import {

/// While one lives, what this thread asks for with `new` comes from a region that stands at the same address in every
/// run, one piece behind the other. Code whose results hang on the addresses of its objects (sets of pointers, hashes
/// of pointers) then does the same in every run.
///
/// Nothing is reused before the end of its life, when all of the region is free again: whatever was made of its memory
/// must be gone by then. One at a time: another one within it does nothing. Where the region cannot be had, and under
/// AddressSanitizer, memory is as usual.
/// REQUIRES that the code inside was run once outside, so that what it keeps for good lies outside.
class FixedMemory {
public:
    FixedMemory();
    FixedMemory(FixedMemory const&) = delete;
    FixedMemory& operator=(FixedMemory const&) = delete;
    ~FixedMemory();

    /// While one lives, memory is as usual: for what is to outlive the region.
    class Pause {
    public:
        Pause();
        Pause(Pause const&) = delete;
        Pause& operator=(Pause const&) = delete;
        ~Pause();

    private:
        bool wasActive_;
    };

private:
    bool isOwner_;
};

}  // namespace QuorlanProgram::Import
