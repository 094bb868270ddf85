#pragma once

#include "increments/StoredPart.h"

#include <Quorlan/ModelBuilder.h>

#include <vector>

namespace Quorlan::Tools::Increments {

/// Writes entities of model buffers that stay until the result is written: the bytes are those that
/// `IncrementModelBuilder` gives for the same calls, without a copy of the content in between.
class StoredComposition {
public:
    StoredComposition();

    /// As `IncrementModelBuilder::Add`. REQUIRES: the reader and its buffer outlive the composition.
    void Add(BufferModelReader const& source, EntityList const& entities);

    /// The model buffer of everything added. REQUIRES: it is called once.
    std::vector<char> Write();

private:
    class Content;

    ModelBuilder builder_;
    ContentCopier content_{builder_};
    OwnerHistoryWriter& histories_;
    std::vector<StoredPart> parts_;
};

}  // namespace Quorlan::Tools::Increments
