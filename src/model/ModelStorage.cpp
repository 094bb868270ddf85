#include "model/BufferGate.h"
#include "model/BufferReaders.h"
#include "model/LargePages.h"

#include <Quorlan/ModelStorage.h>

#include <utility>

namespace Quorlan {

struct ModelStorage::OpenedModel {
    std::vector<char> bytes;
    BufferModelReader reader;

    OpenedModel(std::vector<char> buffer, Schema::Model const& model) : bytes(std::move(buffer)), reader(model) {}
};

ModelStorage::ModelStorage(std::unique_ptr<OpenedModel> model) : model_(std::move(model)) {}
ModelStorage::ModelStorage(ModelStorage&&) noexcept = default;
ModelStorage& ModelStorage::operator=(ModelStorage&&) noexcept = default;
ModelStorage::~ModelStorage() = default;

ModelStorage ModelStorage::FromBuffer(std::vector<char> const& buffer) {
    if (buffer.size() >= kMaxBufferSize) return ModelStorage(nullptr);

    // The copy comes first: it is aligned, and what was checked is what is read. Its bytes stay where they are when
    // the vector moves.
    std::vector<char> bytes;
    ReserveLargePages(bytes, buffer.size());
    bytes = buffer;
    auto const* const model = OpenUntrustedModel(bytes);
    if (model == nullptr) return ModelStorage(nullptr);
    return ModelStorage(std::make_unique<OpenedModel>(std::move(bytes), *model));
}

bool ModelStorage::HasError() const { return model_ == nullptr; }

IModelReader const& ModelStorage::GetModelReader() const { return model_->reader; }

}  // namespace Quorlan
