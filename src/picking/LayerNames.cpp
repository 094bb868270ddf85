#include "picking/LayerNames.h"

#include <string_view>
#include <unordered_set>

namespace Quorlan::Tools::Picking {

std::wstring DecodeLayerName(flatbuffers::String const& name) {
    std::wstring decoded;
    std::uint8_t const* const bytes = name.Data();
    std::size_t const size = name.size();
    for (std::size_t i = 0; i < size && bytes[i] != 0;) {
        unsigned const lead = bytes[i];
        auto const rest = [&](std::size_t k) { return bytes[i + k] & 0x3Fu; };
        if (lead < 0x80) {
            decoded += static_cast<wchar_t>(lead);
            i += 1;
        } else if ((lead & 0xE0) == 0xC0) {
            decoded += static_cast<wchar_t>((lead & 0x1F) << 6 | rest(1));
            i += 2;
        } else if ((lead & 0xF0) == 0xE0) {
            if (i + 2 >= size) break;
            decoded += static_cast<wchar_t>((lead & 0x0F) << 12 | rest(1) << 6 | rest(2));
            i += 3;
        } else {
            return {};
        }
    }
    return decoded;
}

DisabledLayers::DisabledLayers(Schema::Geometry const& geometry, std::vector<std::wstring> const& names) {
    if (names.empty() || geometry.layers() == nullptr) return;
    std::unordered_set<std::wstring_view> const disabled(names.begin(), names.end());
    isDisabled_.reserve(geometry.layers()->size());
    for (auto const* const name : *geometry.layers()) {
        isDisabled_.push_back(disabled.count(DecodeLayerName(*name)) != 0);
    }
}

}  // namespace Quorlan::Tools::Picking
