#pragma once

#include <Quorlan/Guid.h>
#include <Tools/Export.h>

#include <string>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Combines two consecutive increments into one that has the effect of both.
///
/// Entities are matched by GUID as `Merge` matches them. An entity that only one increment names keeps its action; of
/// one that both name, the later increment supplies the content, and the action is (base downwards, increment across)
///
///                 NOCHANGE   MODIFIED   ADDED      DELETED
///     NOCHANGE    NOCHANGE   ADDED      ADDED      dropped
///     MODIFIED    MODIFIED   MODIFIED   MODIFIED   DELETED
///     ADDED       NOCHANGE   ADDED      ADDED      dropped
///     DELETED     MODIFIED   MODIFIED   MODIFIED   DELETED
///
/// A base action above DELETED counts like DELETED under an increment that says MODIFIED or DELETED, and like NOCHANGE
/// under one that says NOCHANGE or ADDED. An increment entity with an action above DELETED is dropped, and removes the
/// base entity of its GUID.
class QUORLAN_TOOLS_API Squash {
public:
    /// `base` may be empty, which stands for an increment without entities; `increment` may not.
    ///
    /// RETURNS false, with the earlier results kept, and sets the error to "base is invalid" or "increment is invalid",
    /// if `ModelStorage` opens one of them with an error. After an exception nothing has changed.
    /// COST: linear in the size of both increments.
    bool Build(std::vector<char> const& base, std::vector<char> const& increment);

    /// Moves the squashed increment of the last successful build out; the next call returns an empty vector.
    std::vector<char> GetResult();

    /// Moves out the GUIDs that the two increments delete: DELETED in the base and not named by the increment, then
    /// DELETED in the increment, unless the base says NOCHANGE or ADDED.
    std::vector<_GUID> GetDeleted();

    /// Moves out the GUIDs that the two increments modify: MODIFIED in the base and not named by the increment, then
    /// MODIFIED in the increment, unless the base says ADDED, and ADDED in the increment where the base says MODIFIED
    /// or DELETED. An entity that is MODIFIED over NOCHANGE stands here, although it is written as ADDED.
    std::vector<_GUID> GetModified();

    /// The error of the last build that failed, if any did; a later success does not clear it.
    std::string const& GetError() const { return error_; }

private:
    std::string error_;
    std::vector<char> result_;
    std::vector<_GUID> modified_;
    std::vector<_GUID> deleted_;
};

}  // namespace Quorlan::Tools::Increments
