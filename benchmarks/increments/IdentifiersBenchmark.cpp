// GUID texts and base64: the library beside the conversions written down plainly.

#include <Tools/Identifiers.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Quorlan::Tools;

constexpr std::size_t kGuidCount = 1024;

std::vector<_GUID> MakeGuids() {
    std::mt19937 random(7);
    std::vector<_GUID> guids(kGuidCount);
    for (_GUID& guid : guids) {
        guid.Data1 = static_cast<std::uint32_t>(random());
        guid.Data2 = static_cast<std::uint16_t>(random());
        guid.Data3 = static_cast<std::uint16_t>(random());
        for (unsigned char& byte : guid.Data4) byte = static_cast<unsigned char>(random());
    }
    return guids;
}

template <class Input, class Convert>
void Run(benchmark::State& state, std::vector<Input> const& inputs, Convert const& convert) {
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(convert(inputs[i]));
        if (++i == inputs.size()) i = 0;
    }
}

template <class Convert>
std::vector<std::string> Texts(Convert const& convert) {
    std::vector<std::string> texts;
    for (_GUID const& guid : MakeGuids()) texts.push_back(convert(guid));
    return texts;
}

void GuidToCompressed(benchmark::State& state) { Run(state, MakeGuids(), GuidToIfcGuid); }
BENCHMARK(GuidToCompressed);

void CompressedToGuid(benchmark::State& state) {
    Run(state, Texts(GuidToIfcGuid), [](std::string const& text) {
        _GUID guid;
        if (!IfcGuidToGuid(text, guid)) std::abort();
        return guid;
    });
}
BENCHMARK(CompressedToGuid);

/// A linear search of the alphabet for every character.
void CompressedToGuidPlain(benchmark::State& state) {
    static std::string const alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
    Run(state, Texts(GuidToIfcGuid), [](std::string const& text) {
        std::uint64_t high = 0;
        std::uint64_t low = 0;
        for (char const c : text) {
            std::size_t digit = 0;
            while (digit < alphabet.size() && alphabet[digit] != c) ++digit;
            high = high << 6 | low >> 58;
            low = low << 6 | digit;
        }
        return high ^ low;
    });
}
BENCHMARK(CompressedToGuidPlain);

void GuidToHex(benchmark::State& state) { Run(state, MakeGuids(), GuidToText); }
BENCHMARK(GuidToHex);

void GuidToHexPlain(benchmark::State& state) {
    Run(state, MakeGuids(), [](_GUID const& g) {
        char text[39];
        auto const& d = g.Data4;
        std::snprintf(text, sizeof(text), "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", g.Data1, g.Data2, g.Data3,
                      d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
        return std::string(text);
    });
}
BENCHMARK(GuidToHexPlain);

void HexToGuid(benchmark::State& state) {
    Run(state, Texts(GuidToText), [](std::string const& text) {
        _GUID guid{};
        TextToGuid(text, guid);
        return guid;
    });
}
BENCHMARK(HexToGuid);

void HexToGuidPlain(benchmark::State& state) {
    Run(state, Texts(GuidToText), [](std::string const& text) {
        _GUID g{};
        auto& d = g.Data4;
        std::sscanf(text.c_str(), "%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx%2hhx%2hhx%2hhx%2hhx%2hhx", &g.Data1, &g.Data2,
                    &g.Data3, &d[0], &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7]);
        return g;
    });
}
BENCHMARK(HexToGuidPlain);

std::vector<char> MakeBytes(std::int64_t count) {
    std::mt19937 random(9);
    std::vector<char> bytes;
    for (std::int64_t i = 0; i < count; ++i) bytes.push_back(static_cast<char>(random()));
    return bytes;
}

void EncodeBase64(benchmark::State& state) {
    Run(state, std::vector<std::vector<char>>{MakeBytes(state.range(0))}, Base64Encode);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(EncodeBase64)->Arg(48)->Arg(1 << 20);

void DecodeBase64(benchmark::State& state) {
    Run(state, std::vector<std::string>{Base64Encode(MakeBytes(state.range(0)))}, Base64Decode);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(DecodeBase64)->Arg(48)->Arg(1 << 20);

}  // namespace
