#pragma once

#include "render/Colors.h"

#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <vector>

namespace QuorlanProgram {

/// A decoded image that repeats in both directions.
class Texture {
public:
    /// The textures of a model, by index. Those that cannot be decoded, JPEGs among them, are empty.
    static std::vector<Texture> ReadAll(Quorlan::IGeometryReader const& geometry);

    bool IsEmpty() const { return levels_.empty(); }

    /// The mean light of a square around (u, v), `footprint` of the whole texture wide; v grows upwards.
    /// REQUIRES: not empty.
    Light Sample(float u, float v, float footprint) const;

private:
    /// The image at one of its sizes (Williams, "Pyramidal Parametrics", 1983).
    struct Level {
        std::int64_t width = 0;
        std::int64_t height = 0;
        std::vector<Light> texels;  ///< row by row from the top

        Light const& At(std::int64_t x, std::int64_t y) const;
        Light Sample(float u, float v) const;
        Level Halve() const;
    };

    std::vector<Level> levels_;  ///< from the finest to a single texel
};

}  // namespace QuorlanProgram
