#pragma once

#include "increments/DefinitionCopier.h"

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Where each definition of a source model went: its new index, and the move of its shape where there is one.
struct CopiedDefinitions {
    std::vector<std::uint32_t> indices;  ///< by source index; kInvalidIndex for none
    std::vector<std::uint32_t> moveOf;   ///< by source index, into `moves`; kInvalidIndex for none
    std::vector<DefinitionMove> moves;

    /// The move of a definition that was copied; null where its shape stands as it did.
    DefinitionMove const* FindMove(std::uint32_t definition) const {
        return moveOf[definition] == kInvalidIndex ? nullptr : &moves[moveOf[definition]];
    }
};

/// Copies geometry definitions, materials, textures and layers of source models into one model that is being written,
/// each distinct one once over the copier's whole life.
///
/// The masks say which of the source's indices are wanted; their lengths are the source's counts.
class ContentCopier {
public:
    explicit ContentCopier(ModelBuilder& target);

    /// From now on the bytes of sources outlive the target, which need not copy their shapes before it writes.
    void BorrowShapes() { definitions_.BorrowShapes(); }

    CopiedDefinitions CopyDefinitions(IGeometryReader const& source, std::vector<bool> const& wanted);

    /// Copies materials and the textures that they use, textures first. RETURNS the new indices by source index.
    std::vector<std::uint32_t> CopyMaterials(IGeometryReader const& source, std::vector<bool> const& wanted);

    /// RETURNS the new indices by source index.
    std::vector<std::uint32_t> CopyLayers(IGeometryReader const& source, std::vector<bool> const& wanted);

private:
    std::vector<std::uint32_t> CopyTextures(IGeometryReader const& source, std::vector<bool> const& wanted);

    template <class Write>
    std::uint32_t WriteOnce(std::string const& content, Write write);

    ModelBuilder& target_;
    DefinitionCopier definitions_;
    ITextureWriter& textures_;

    /// The index of each material, texture and layer that was written, by its kind and its bytes.
    std::unordered_map<std::string, std::uint32_t> written_;
};

/// `indices[index]`, and none for an index that leads nowhere.
inline std::uint32_t LookUp(std::vector<std::uint32_t> const& indices, std::uint32_t index) {
    return index < indices.size() ? indices[index] : kInvalidIndex;
}

}  // namespace Quorlan::Tools::Increments
