// Runs a fuzzer's function without libFuzzer, with any compiler: on every file of the folders given, and on seeded
// changes of each.
//
// usage: Replay... [--changes N] FOLDER...

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

/// Stands in for libFuzzer's own changes: one byte, or a shorter input.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t) {
    static std::minstd_rand random(1);
    if (size == 0) return 0;
    if (random() % 16 == 0) return random() % size;
    data[random() % size] = static_cast<std::uint8_t>(random());
    return size;
}

/// For fuzzers that have no mutator of their own.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                                             unsigned) {
    return LLVMFuzzerMutate(data, size, maxSize);
}

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRoom = 256;  // [bytes] by which a change may lengthen an input

void Run(Bytes const& input) {
    Bytes const exact(input.begin(), input.end());  // no slack behind the end, so that a sanitizer sees every step out
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

void Replay(std::filesystem::path const& path, unsigned changes) {
    std::ifstream file(path, std::ios::binary);
    Bytes const original{std::istreambuf_iterator<char>(file), {}};
    Run(original);
    for (unsigned seed = 1; seed <= changes; ++seed) {
        Bytes changed = original;
        for (unsigned step = 0; step <= seed % 4; ++step) {
            auto const size = changed.size();
            changed.resize(size + kRoom);
            changed.resize(LLVMFuzzerCustomMutator(changed.data(), size, changed.size(), 4 * seed + step));
        }
        Run(changed);
    }
}

}  // namespace

int main(int argc, char** argv) {
    unsigned changes = 0;
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--changes" && i + 1 < argc) {
            changes = static_cast<unsigned>(std::atoi(argv[++i]));
            continue;
        }
        if (!std::filesystem::is_directory(argv[i])) return std::fprintf(stderr, "%s: no folder\n", argv[i]), 2;
        for (auto const& entry : std::filesystem::directory_iterator(argv[i])) inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());  // the same order everywhere
    for (auto const& input : inputs) Replay(input, changes);
    std::printf("%zu inputs, %u changes of each\n", inputs.size(), changes);
    return inputs.empty() ? 2 : 0;
}
