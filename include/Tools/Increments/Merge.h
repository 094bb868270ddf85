#pragma once

#include <Tools/Export.h>

#include <string>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Applies an increment to a full model and makes the new full model of both.
///
///     Quorlan::Tools::Increments::Merge merge;
///     if (!merge.Build(fullModel, increment)) return Report(merge.GetError());
///     std::vector<char> const newFullModel = merge.GetResult();
///
/// Entities are matched by GUID; those without one are not copied. The base keeps what the increment does not name,
/// with its change action; of the increment, everything but DELETED is taken, as NOCHANGE. An increment entity with an
/// action above DELETED is not copied, and removes the base entity of its GUID. Of equal GUIDs in one model the first
/// entity counts. Base entities come first, each model's in its own order.
class QUORLAN_TOOLS_API Merge {
public:
    /// `fullModel` may be empty, which stands for a model without entities; `increment` may not.
    ///
    /// RETURNS false, with the earlier result kept, and sets the error to "original full is invalid" or "increment is
    /// invalid", if `ModelStorage` opens one of them with an error. After an exception nothing has changed.
    /// COST: linear in the size of both models.
    bool Build(std::vector<char> const& fullModel, std::vector<char> const& increment);

    /// Moves the model buffer of the last successful build out; the next call returns an empty vector.
    std::vector<char> GetResult();

    /// The error of the last build that failed, if any did; a later success does not clear it.
    std::string const& GetError() const { return error_; }

private:
    std::string error_;
    std::vector<char> result_;
};

}  // namespace Quorlan::Tools::Increments
