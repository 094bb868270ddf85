#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// Changes the text of a STEP file where its structure stands: references, values, classes and whole statements.
class StepMutator {
public:
    StepMutator(std::string text, unsigned seed) : text_(std::move(text)), random_(seed) {}

    std::string Mutate() {
        switch (random_() % 5) {
            case 0: Replace(FindWord('#'), FindWord('#')); break;
            case 1: Replace(FindWord('='), FindWord('=')); break;
            case 2: Replace(FindWord(','), FindWord(',')); break;
            case 3: Replace(FindWord(random_() % 2 == 0 ? ',' : '('), MakeValue()); break;
            default: Replace(FindStatement(), random_() % 2 == 0 ? FindStatement() : Run{}); break;
        }
        return text_;
    }

private:
    struct Run {
        std::size_t begin = 0;
        std::size_t size = 0;
    };

    /// A mark at a random place and what stands behind it up to the next separator.
    Run FindWord(char mark) {
        auto const at = text_.find(mark, random_() % text_.size());
        if (at == std::string::npos) return {};
        auto const end = text_.find_first_of(",();=", at + 1);
        return {at, std::min(end, text_.size()) - at};
    }

    Run FindStatement() {
        auto const at = text_.find('\n', random_() % text_.size());
        if (at == std::string::npos) return {};
        return {at, std::min(text_.find('\n', at + 1), text_.size()) - at};
    }

    std::string MakeValue() {
        static char const* const values[] = {"$", "*", "0.", "-1", "1.E300", "-1.E-300", "''", "()", "((1.,2.),(3.))"};
        return ',' + std::string(values[random_() % (sizeof(values) / sizeof(values[0]))]);
    }

    void Replace(Run const& target, Run const& source) { Replace(target, text_.substr(source.begin, source.size)); }
    void Replace(Run const& target, std::string const& by) { text_.replace(target.begin, target.size, by); }

    std::string text_;
    std::minstd_rand random_;
};

/// A mutator for inputs that are such texts.
inline std::size_t MutateStepText(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
    if (size == 0 || seed % 8 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    auto const mutated = StepMutator(std::string(data, data + size), seed).Mutate();
    auto const newSize = std::min(mutated.size(), maxSize);
    std::memcpy(data, mutated.data(), newSize);
    return newSize;
}
