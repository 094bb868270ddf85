#pragma once

#include <Quorlan/ModelTypes.h>

#include <utility>
#include <vector>

namespace Quorlan {

/// An encoded image that materials refer to. The bytes are passed through, never decoded.
class Texture {
public:
    Texture() = default;
    Texture(TextureType type, std::vector<char> data) : type_(type), data_(std::move(data)) {}

    std::vector<char> const& getData() const { return data_; }
    TextureType getType() const { return type_; }

private:
    TextureType type_ = TextureType::UNKNOWN;
    std::vector<char> data_;
};

}  // namespace Quorlan
