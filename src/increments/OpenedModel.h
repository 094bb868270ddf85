#pragma once

#include "model/BufferReaders.h"

#include <Quorlan/ModelStorage.h>

#include <optional>
#include <vector>

namespace Quorlan::Tools::Increments {

/// A model buffer that was opened where it stands, with the checks of `ModelStorage` and without its copy.
/// REQUIRES: the bytes outlive it and do not change.
class OpenedModel {
public:
    explicit OpenedModel(std::vector<char> const& buffer);
    OpenedModel(OpenedModel const&) = delete;
    OpenedModel& operator=(OpenedModel const&) = delete;

    bool HasError() const { return !reader_; }

    /// REQUIRES: HasError() is false.
    BufferModelReader const& GetReader() const { return *reader_; }

private:
    std::vector<char> copy_;  ///< of bytes that do not stand where their numbers are aligned
    ShapeScans scans_;
    std::optional<BufferModelReader> reader_;
};

/// The model that an increment builds on: no bytes at all stand for the empty model, whose bytes `empty` keeps.
std::vector<char> const& SelectBase(std::vector<char> const& buffer, std::vector<char>& empty);

}  // namespace Quorlan::Tools::Increments
