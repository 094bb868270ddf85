#pragma once

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelTypes.h>
#include <Tools/Export.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace Quorlan::Tools {

/// The bounding box of an entity: min x, y, z, max x, y, z.
using EntityBox_t = std::array<double, 6>;

class ConnectIdentifierResolver;

/// Either a resolver or the reason why there is none; the other one is empty.
struct ConnectIdentifierResolverResult {
    std::shared_ptr<ConnectIdentifierResolver> resolver;
    std::string error;
};

/// Makes the resolver of a model. `boxes` holds one box per entity, in entity order; the resolver's tolerance is a / b,
/// a length in one unit over that unit's scale.
///
/// Errors: "no entities" where `boxes` is empty, "entity count mismatch" where the model has another number of them.
/// Neither the model nor the boxes are needed after the call. COST: n log n for n entities.
QUORLAN_TOOLS_API ConnectIdentifierResolverResult CreateConnectIdentifierResolver(IModelReader const& model,
                                                                                  std::vector<EntityBox_t> const& boxes,
                                                                                  double a, double b);

/// Finds the entities of one model that an identifier text names.
///
/// An entity is named as its model identifies it: by GUID (kind 0), by a text (kinds 1 and 3), by a geometric key of
/// eleven values (kind 2), or, for all other kinds, by its bounding box of six values. Keys and boxes match where no
/// value differs by more than the tolerance; values that are not numbers match nothing, nor does anything within a
/// tolerance that is not a number. All queries are const and may run on several threads at once.
class QUORLAN_TOOLS_API ConnectIdentifierResolver {
public:
    ~ConnectIdentifierResolver();

    /// Appends the entities with this identifier to `out`, in entity order. What the identifier is:
    /// - the text of entities of kind 1 or 3, whatever its length; otherwise
    /// - 32 characters: base64 of 6 floats, a box;
    /// - 64 characters: base64 of 6 doubles, a box;
    /// - 60 characters: base64 of 11 floats, a geometric key;
    /// - 76 characters: base64 of 3 doubles in 32 characters, then of 8 floats in 44, a geometric key.
    /// RETURNS false, with nothing appended, if it names none: another length, another number of values or no match.
    /// GUIDs are not looked up. COST: logarithmic in the number of keys where few of them match.
    bool Resolve(std::string const& identifier, std::vector<EntityIndex_t>& out) const;

    /// The entity with this GUID, given in its 36-character or its 22-character form; of several the first.
    /// A text of 36 characters is read as `TextToGuid` reads it, with zero for fields that it does not reach.
    /// RETURNS false, with `out` unchanged, if there is none.
    bool ResolveGuid(std::string const& identifier, EntityIndex_t& out) const;

private:
    friend QUORLAN_TOOLS_API ConnectIdentifierResolverResult CreateConnectIdentifierResolver(
        IModelReader const& model, std::vector<EntityBox_t> const& boxes, double a, double b);

    struct Data;
    QUORLAN_TOOLS_LOCAL explicit ConnectIdentifierResolver(double tolerance);
    QUORLAN_TOOLS_LOCAL bool BuildData(IModelReader const& model, std::vector<EntityBox_t> const& boxes);

    double tolerance_;
    std::unique_ptr<Data const> data_;  ///< null until built
};

}  // namespace Quorlan::Tools
