// Reads any text as each of the identifier forms, and what reads goes round.

#include "Require.h"

#include <Tools/Identifiers.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace Quorlan::Tools;
    std::string const text(data, data + size);
    _GUID guid{};
    TextToGuid(text, guid);
    _GUID again{};
    Require(IfcGuidToGuid(GuidToIfcGuid(guid), again) && again == guid);
    TextToGuid(GuidToText(guid), again);
    Require(again == guid);
    IfcGuidToGuid(text, guid);

    std::vector<float> floats;
    std::vector<double> doubles;
    DecodeFloats(text, floats);
    DecodeDoubles(text, doubles);
    auto bytes = Base64Decode(text);
    bytes.resize(bytes.size() / 4 * 4);
    Require(Base64Decode(Base64Encode(bytes)) == bytes);
    return 0;
}
