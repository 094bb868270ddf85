#include "Signals.h"

#include <csignal>
#include <cstdlib>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <sys/prctl.h>
#endif

namespace QuorlanProgram {

#if defined(_WIN32)

void PrepareSignals() {}
void LeaveInterruptsToTheParent(int) {}
EndedOnInterrupt::EndedOnInterrupt(int) {}
EndedOnInterrupt::~EndedOnInterrupt() = default;
RemovedOnInterrupt::RemovedOnInterrupt(std::string const&) {}
RemovedOnInterrupt::~RemovedOnInterrupt() = default;

#else

namespace {

// What a signal handler may look at: plain memory, and a flag that says whether it is whole.
constexpr std::size_t kMaxPath = 4096;
char removedPath[kMaxPath];
volatile std::sig_atomic_t hasRemovedPath = 0;
volatile std::sig_atomic_t isQuiet = 0;
volatile std::sig_atomic_t endedChild = 0;

extern "C" void EndByInterrupt(int signal) {
    if (endedChild > 0 && kill(endedChild, SIGTERM) == 0) waitpid(endedChild, nullptr, 0);
    if (hasRemovedPath != 0) unlink(removedPath);
    constexpr char kLine[] = "quorlan: interrupted\n";
    if (isQuiet == 0 && write(STDERR_FILENO, kLine, sizeof(kLine) - 1) < 0) isQuiet = 1;  // no more can be done
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

void PrepareSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, &EndByInterrupt) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

void LeaveInterruptsToTheParent(int parent) {
    isQuiet = 1;
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGTERM);              // where no handler can tell: the parent was killed
#endif
    if (getppid() != parent) _exit(EXIT_FAILURE);  // before the line above took effect
}

EndedOnInterrupt::EndedOnInterrupt(int child) { endedChild = child; }

EndedOnInterrupt::~EndedOnInterrupt() { endedChild = 0; }

RemovedOnInterrupt::RemovedOnInterrupt(std::string const& path) {
    if (path.size() >= kMaxPath) return;
    path.copy(removedPath, path.size());
    removedPath[path.size()] = '\0';
    hasRemovedPath = 1;
}

RemovedOnInterrupt::~RemovedOnInterrupt() { hasRemovedPath = 0; }

#endif

}  // namespace QuorlanProgram
