#pragma once

#include <string>

namespace QuorlanProgram {

/// A closed pipe and a file that may not grow become errors of the call that meets them. An interrupt (SIGINT, SIGTERM,
/// SIGHUP) removes the file that is being written, says so in one line and ends the program by its signal; one that the
/// caller ignores stays ignored.
void PrepareSignals();

/// For a child process, with the number of its parent: an interrupt of the parent ends it too, and it says nothing of
/// its own.
void LeaveInterruptsToTheParent(int parent);

/// While it lives, an interrupt ends the process `child` first and waits for it, so that nothing of it is left when the
/// program has ended. One at a time.
class EndedOnInterrupt {
public:
    explicit EndedOnInterrupt(int child);
    EndedOnInterrupt(EndedOnInterrupt const&) = delete;
    EndedOnInterrupt& operator=(EndedOnInterrupt const&) = delete;
    ~EndedOnInterrupt();
};

/// While it lives, an interrupt removes the file `path`. One at a time.
class RemovedOnInterrupt {
public:
    explicit RemovedOnInterrupt(std::string const& path);
    RemovedOnInterrupt(RemovedOnInterrupt const&) = delete;
    RemovedOnInterrupt& operator=(RemovedOnInterrupt const&) = delete;
    ~RemovedOnInterrupt();
};

}  // namespace QuorlanProgram
