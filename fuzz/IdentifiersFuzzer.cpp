// Reads any text as each of the identifier forms, and what reads goes round.

#include <Tools/Identifiers.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace Quorlan::Tools;
    std::string const text(data, data + size);
    _GUID guid{};
    TextToGuid(text, guid);
    _GUID again{};
    if (!IfcGuidToGuid(GuidToIfcGuid(guid), again) || again != guid) std::abort();
    TextToGuid(GuidToText(guid), again);
    if (again != guid) std::abort();
    IfcGuidToGuid(text, guid);

    std::vector<float> floats;
    std::vector<double> doubles;
    DecodeFloats(text, floats);
    DecodeDoubles(text, doubles);
    auto bytes = Base64Decode(text);
    bytes.resize(bytes.size() / 4 * 4);
    if (Base64Decode(Base64Encode(bytes)) != bytes) std::abort();
    return 0;
}
