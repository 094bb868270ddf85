#include <Tools/GraphicsContainerBuilder.h>

#include "model/ModelView.h"

#include <cstring>

namespace Quorlan::Tools {
namespace {

using Containers = flatbuffers::Vector<flatbuffers::Offset<Schema::GraphicsContainerTable>>;

/// The records are those of the buffer, member for member.
template <class Stored, class Record>
void CopyRecords(flatbuffers::Vector<Stored const*> const& stored, std::vector<Record>& out) {
    static_assert(sizeof(Stored) == sizeof(Record));
    out.clear();
    out.resize(stored.size());
    if (!out.empty()) std::memcpy(out.data(), stored.Data(), out.size() * sizeof(Record));
}

}  // namespace

bool GraphicsContainerBuilder::Build(void const* buffer) {
    auto const model = ModelView::Open(buffer);
    if (!model || model->geometry->graphicsContainers() == nullptr) return false;

    containers_ = model->geometry->graphicsContainers();
    count_ = model->geometry->graphicsContainers()->size();
    return true;
}

bool GraphicsContainerBuilder::GetGraphicsContainer(unsigned int index, GraphicsContainer& out) const {
    if (containers_ == nullptr || index >= count_) return false;
    auto const& container = *static_cast<Containers const*>(containers_)->Get(index);
    if (container.segments() == nullptr) return false;

    CopyRecords(*container.segments(), out.lines);
    if (container.arcs() == nullptr) return false;
    CopyRecords(*container.arcs(), out.arcs);
    return true;
}

}  // namespace Quorlan::Tools
