#pragma once

#include <Quorlan/IModelReader.h>
#include <Tools/Export.h>

#include <memory>
#include <vector>

namespace Quorlan {

/// Opens a model buffer that comes from anywhere.
///
///     auto const storage = Quorlan::ModelStorage::FromBuffer(bytes);
///     if (storage.HasError()) return;
///     auto const count = storage.GetModelReader().GetEntities().GetCount();
///
/// The storage keeps a copy of the bytes, so that the caller's buffer may go at once. It can be moved, not copied.
class QUORLAN_TOOLS_API ModelStorage {
public:
    /// Opens `buffer` after checking that it is a model: the identifier, the root, the entities with their records and
    /// the geometry are there, the FlatBuffers verifier passes, the placement, entity and definition of every
    /// instance exist, and shapes and texts are not named so often that a copy of the model would hold more than 64
    /// times the buffer. No sequence of bytes does harm. Nothing else need be there; what is missing reads as none.
    ///
    /// Buffers of 2 GiB and more are refused. COST: one copy and one pass over the buffer.
    static ModelStorage FromBuffer(std::vector<char> const& buffer);

    ModelStorage(ModelStorage&& other) noexcept;
    ModelStorage& operator=(ModelStorage&& other) noexcept;
    ModelStorage(ModelStorage const&) = delete;
    ModelStorage& operator=(ModelStorage const&) = delete;
    ~ModelStorage();

    /// True when the bytes were no model.
    bool HasError() const;

    /// REQUIRES: HasError() is false. The reader lives as long as the storage, also when the storage is moved.
    IModelReader const& GetModelReader() const;

private:
    struct OpenedModel;
    QUORLAN_TOOLS_LOCAL explicit ModelStorage(std::unique_ptr<OpenedModel> model);

    std::unique_ptr<OpenedModel> model_;
};

}  // namespace Quorlan
