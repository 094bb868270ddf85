#pragma once

#include <string>

namespace QuorlanProgram {

/// A closed pipe and a file that may not grow become errors of the call that meets them. An interrupt (SIGINT, SIGTERM,
/// SIGHUP) removes the file that is being written, says so in one line and ends the program by its signal; one that the
/// caller ignores stays ignored.
void PrepareSignals();

/// A child process, one at a time. An interrupt of this process ends the child first and waits for it, so that nothing
/// of it is left when the program has ended; the child says nothing of its own. RETURNS what fork() does.
int ForkEndedOnInterrupt();

/// Waits for that child. RETURNS its exit code, or -1 where it was ended by a signal.
int WaitForChild(int child);

/// While it lives, an interrupt removes the file `path`. One at a time.
class RemovedOnInterrupt {
public:
    explicit RemovedOnInterrupt(std::string const& path);
    RemovedOnInterrupt(RemovedOnInterrupt const&) = delete;
    RemovedOnInterrupt& operator=(RemovedOnInterrupt const&) = delete;
    ~RemovedOnInterrupt();
};

}  // namespace QuorlanProgram
