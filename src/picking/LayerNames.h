#pragma once

#include "model/ModelView.h"

#include <string>
#include <vector>

namespace Quorlan::Tools::Picking {

/// Decodes a layer name from UTF-8, up to a zero byte, with sequences of one to three bytes. Continuation bytes are
/// taken for such without a test. A two-byte lead at the very end takes the string's terminating zero; a three-byte
/// lead that lacks a byte ends the name; any other lead byte makes the whole name empty.
std::wstring DecodeLayerName(flatbuffers::String const& name);

/// The layers of a model whose names are among `names`, by index; empty where none can be.
class DisabledLayers {
public:
    DisabledLayers(Schema::Geometry const& geometry, std::vector<std::wstring> const& names);

    /// False for an index beyond the layers, which stands for none.
    bool Contains(std::uint32_t layer) const { return layer < isDisabled_.size() && isDisabled_[layer]; }

private:
    std::vector<bool> isDisabled_;
};

}  // namespace Quorlan::Tools::Picking
