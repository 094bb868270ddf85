#pragma once

#include <string>

namespace Quorlan::Testing {

/// Writes small IFC files, instance by instance. Every Add returns the new instance as a reference, "#12".
class SmallIfc {
public:
    /// A project in millimetres. `prefix` ".MILLI." or "$" for metres.
    explicit SmallIfc(std::string schema = "IFC4", std::string const& prefix = ".MILLI.");

    std::string Add(std::string const& instance);

    /// A GUID of 22 digits that ends in `number`.
    static std::string Guid(int number);

    std::string AddPoint(double x, double y, double z);
    std::string AddAxes(double x, double y, double z);
    std::string AddPlacement(double x, double y, double z, std::string const& relativeTo = "$");

    /// An extruded box whose lower face is centred at (x, y, z).
    std::string AddBox(double dx, double dy, double dz, double x = 0, double y = 0, double z = 0);

    std::string AddRepresentation(std::string const& items, std::string const& identifier = "Body");
    std::string AddShape(std::string const& items, std::string const& identifier = "Body");

    /// A wall with the given items as its body. `shape` may be "$", `history` too.
    std::string AddWall(int guid, std::string const& shape, std::string const& placement,
                        std::string const& name = "Wall", std::string const& history = "$");

    /// A relation with its four first attributes filled: AddRelation("IFCRELVOIDSELEMENT", "#1,#2").
    std::string AddRelation(std::string const& name, std::string const& rest);

    /// A colour, its transparency and its side, as a styled item of `item` ("$" for one that stands alone).
    std::string AddStyle(std::string const& item, std::string const& rgb, std::string const& transparency = "0.",
                         std::string const& side = ".POSITIVE.");

    std::string const& GetContext() const { return context_; }
    std::string GetText() const;

private:
    std::string schema_;
    std::string data_;
    int nextId_ = 1;
    int nextGuid_ = 5000;
    std::string context_;
};

}  // namespace Quorlan::Testing
