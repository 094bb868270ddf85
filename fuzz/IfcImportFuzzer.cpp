// Imports any text as an IFC file: one line that says why not, or a model that validates.
//
// The IFC library breaks down over some broken files. The program runs it in a process of its own and says so in one
// line; here such a breakdown leads back to the fuzzer, and what it held is lost.

#include "Require.h"
#include "StepMutator.h"

#include <IfcImport.h>
#include <Quorlan/ModelValidator.h>

#include <csetjmp>
#include <csignal>

extern "C" char const* __asan_default_options() { return "handle_segv=0:detect_leaks=0"; }

static sigjmp_buf beforeImport;

static void LeaveImport(int) { siglongjmp(beforeImport, 1); }

/// On the first input, so that the handler stands in place of the fuzzer's own; on a stack of its own, since the
/// library's recursion may have used up the other.
static bool CatchBreakdowns() {
    static char stack[1 << 16];
    stack_t alternative{};
    alternative.ss_sp = stack;
    alternative.ss_size = sizeof(stack);
    struct sigaction action {};
    action.sa_handler = &LeaveImport;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    return sigaltstack(&alternative, nullptr) == 0 && sigaction(SIGSEGV, &action, nullptr) == 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    return MutateStepText(data, size, maxSize, seed);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static bool const isReady = CatchBreakdowns();
    Require(isReady);
    if (sigsetjmp(beforeImport, 1) != 0) return 0;
    QuorlanProgram::Import::ImportResult result;
    try {
        result = QuorlanProgram::Import::ImportIfc({reinterpret_cast<char const*>(data), size});
    } catch (...) {
        return 0;
    }
    Require(result.error.find('\n') == std::string::npos);
    Require(result.error.empty() == Quorlan::ModelValidator().Build(result.model));
    return 0;
}
