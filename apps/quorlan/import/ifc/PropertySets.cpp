#include "ifc/PropertySets.h"

#include <ifcpp/IFC4/include/IfcAreaMeasure.h>
#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcBuilding.h>
#include <ifcpp/IFC4/include/IfcBuildingStorey.h>
#include <ifcpp/IFC4/include/IfcCountMeasure.h>
#include <ifcpp/IFC4/include/IfcDate.h>
#include <ifcpp/IFC4/include/IfcDateTime.h>
#include <ifcpp/IFC4/include/IfcDescriptiveMeasure.h>
#include <ifcpp/IFC4/include/IfcDuration.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcElementQuantity.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcInteger.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLogical.h>
#include <ifcpp/IFC4/include/IfcMassMeasure.h>
#include <ifcpp/IFC4/include/IfcNamedUnit.h>
#include <ifcpp/IFC4/include/IfcPlaneAngleMeasure.h>
#include <ifcpp/IFC4/include/IfcPropertyEnumeratedValue.h>
#include <ifcpp/IFC4/include/IfcPropertyListValue.h>
#include <ifcpp/IFC4/include/IfcPropertySet.h>
#include <ifcpp/IFC4/include/IfcPropertySetDefinitionSet.h>
#include <ifcpp/IFC4/include/IfcPropertySingleValue.h>
#include <ifcpp/IFC4/include/IfcQuantityArea.h>
#include <ifcpp/IFC4/include/IfcQuantityCount.h>
#include <ifcpp/IFC4/include/IfcQuantityLength.h>
#include <ifcpp/IFC4/include/IfcQuantityTime.h>
#include <ifcpp/IFC4/include/IfcQuantityVolume.h>
#include <ifcpp/IFC4/include/IfcQuantityWeight.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelContainedInSpatialStructure.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByProperties.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcText.h>
#include <ifcpp/IFC4/include/IfcTime.h>
#include <ifcpp/IFC4/include/IfcTimeMeasure.h>
#include <ifcpp/IFC4/include/IfcTimeStamp.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/IFC4/include/IfcURIReference.h>
#include <ifcpp/IFC4/include/IfcVolumeMeasure.h>

#include <optional>
#include <set>
#include <unordered_set>
#include <utility>

#include "step/WideText.h"

namespace QuorlanProgram::Import {

namespace {

using Quorlan::PropertyRecord;
using Value = decltype(PropertyRecord::value);

template <typename... Types>
std::optional<std::string> ReadText(IfcValue const* value) {
    std::optional<std::string> text;
    auto const read = [&](auto const* typed) {
        if (typed && !text) text = ToUtf8(typed->m_value);
    };
    (read(dynamic_cast<Types const*>(value)), ...);
    return text;
}

/// Converts values to metres and to the four types that a property may have.
class ValueReader {
public:
    explicit ValueReader(Units const& units) : units_(units) {}

    std::optional<Value> Read(IfcValue const* value, IfcUnit const* unit) const {
        if (!value) return std::nullopt;
        if (auto text = ReadText<IfcLabel, IfcText, IfcIdentifier, IfcDescriptiveMeasure, IfcDate, IfcDateTime, IfcTime,
                                 IfcDuration, IfcURIReference>(value)) {
            return Value(*text);
        }
        if (auto const* boolean = dynamic_cast<IfcBoolean const*>(value)) return Value(boolean->m_value);
        if (auto const* logical = dynamic_cast<IfcLogical const*>(value)) {
            if (logical->m_value == LOGICAL_UNKNOWN) return Value(std::string("UNKNOWN"));
            return Value(logical->m_value == LOGICAL_TRUE);
        }
        if (auto const* whole = dynamic_cast<IfcInteger const*>(value)) return Value(std::int64_t{whole->m_value});
        if (auto const* count = dynamic_cast<IfcCountMeasure const*>(value)) return Value(std::int64_t{count->m_value});
        if (auto const* stamp = dynamic_cast<IfcTimeStamp const*>(value)) return Value(std::int64_t{stamp->m_value});
        double number = 0;
        if (!ReadNumber(number, value)) return std::nullopt;
        return Value(number * GetScale(value, unit));
    }

    /// "a; b" of several values; nothing if one of them is none.
    template <typename Values>
    std::optional<Value> ReadJoined(Values const& values) const {
        std::string joined;
        for (auto const& entry : values) {
            auto const value = Read(entry.get(), nullptr);
            if (!value) return std::nullopt;
            if (!joined.empty()) joined += "; ";
            std::visit([&](auto const& v) { Append(joined, v); }, *value);
        }
        return Value(joined);
    }

private:
    static void Append(std::string& out, std::string const& text) { out += text; }
    static void Append(std::string& out, bool value) { out += value ? "true" : "false"; }
    template <typename Number>
    static void Append(std::string& out, Number number) {
        out += std::to_string(number);
    }

    double GetScale(IfcValue const* value, IfcUnit const* unit) const {
        auto const own = GetSize(unit);
        if (dynamic_cast<IfcLengthMeasure const*>(value)) return own > 0 ? own : units_.length;
        if (dynamic_cast<IfcAreaMeasure const*>(value)) return own > 0 ? own : units_.area;
        if (dynamic_cast<IfcVolumeMeasure const*>(value)) return own > 0 ? own : units_.volume;
        if (dynamic_cast<IfcMassMeasure const*>(value)) return own > 0 ? own : units_.mass;
        if (dynamic_cast<IfcTimeMeasure const*>(value)) return own > 0 ? own : units_.time;
        if (dynamic_cast<IfcPlaneAngleMeasure const*>(value)) return own > 0 ? own : units_.angle;
        return 1;
    }

    Units const& units_;
};

/// Gathers the properties of one object; of two with one set and name, the first stays.
class Collector {
public:
    Collector(Units const& units, std::map<std::string, std::size_t>& unread) : values_(units), unread_(unread) {}

    void AddText(char const* name, std::string const& text) {
        if (!text.empty()) Add("IFC", name, Value(text));
    }

    void AddSet(IfcPropertySetDefinition const* definition) {
        if (auto const* set = dynamic_cast<IfcPropertySet const*>(definition)) {
            auto const name = ToUtf8(set->m_Name);
            for (auto const& property : set->m_HasProperties) AddProperty(name, property.get());
        } else if (auto const* quantities = dynamic_cast<IfcElementQuantity const*>(definition)) {
            auto const name = ToUtf8(quantities->m_Name);
            for (auto const& quantity : quantities->m_Quantities) AddQuantity(name, quantity.get());
        } else if (definition) {
            ++unread_[definition->className()];
        }
    }

    std::vector<PropertyRecord> Take() { return std::move(records_); }

private:
    void Add(std::string const& set, std::string const& name, std::optional<Value> value) {
        if (value && names_.emplace(set, name).second) records_.push_back({set, name, std::move(*value)});
    }

    void AddProperty(std::string const& set, IfcProperty const* property) {
        if (!property) return;
        auto const name = ToUtf8(property->m_Name);
        if (auto const* single = dynamic_cast<IfcPropertySingleValue const*>(property)) {
            Add(set, name, values_.Read(single->m_NominalValue.get(), single->m_Unit.get()));
        } else if (auto const* choice = dynamic_cast<IfcPropertyEnumeratedValue const*>(property)) {
            Add(set, name, values_.ReadJoined(choice->m_EnumerationValues));
        } else if (auto const* list = dynamic_cast<IfcPropertyListValue const*>(property)) {
            Add(set, name, values_.ReadJoined(list->m_ListValues));
        } else {
            ++unread_[property->className()];
        }
    }

    void AddQuantity(std::string const& set, IfcPhysicalQuantity const* quantity) {
        if (!quantity) return;
        auto const* simple = dynamic_cast<IfcPhysicalSimpleQuantity const*>(quantity);
        auto const* unit = simple ? simple->m_Unit.get() : nullptr;
        IfcValue const* value = nullptr;
        if (auto const* q = dynamic_cast<IfcQuantityLength const*>(quantity)) value = q->m_LengthValue.get();
        if (auto const* q = dynamic_cast<IfcQuantityArea const*>(quantity)) value = q->m_AreaValue.get();
        if (auto const* q = dynamic_cast<IfcQuantityVolume const*>(quantity)) value = q->m_VolumeValue.get();
        if (auto const* q = dynamic_cast<IfcQuantityCount const*>(quantity)) value = q->m_CountValue.get();
        if (auto const* q = dynamic_cast<IfcQuantityWeight const*>(quantity)) value = q->m_WeightValue.get();
        if (auto const* q = dynamic_cast<IfcQuantityTime const*>(quantity)) value = q->m_TimeValue.get();
        if (!simple) ++unread_[quantity->className()];
        Add(set, ToUtf8(quantity->m_Name), values_.Read(value, unit));
    }

    ValueReader values_;
    std::map<std::string, std::size_t>& unread_;
    std::set<std::pair<std::string, std::string>> names_;
    std::vector<PropertyRecord> records_;
};

template <typename Relations>
IfcObjectDefinition const* FindWhole(Relations const& relations) {
    for (auto const& weak : relations) {
        auto const relation = weak.lock();
        if (relation && relation->m_RelatingObject) return relation->m_RelatingObject.get();
    }
    return nullptr;
}

/// What contains an object, or the whole that it is a part of.
IfcObjectDefinition const* FindParent(IfcObjectDefinition const& object) {
    if (auto const* element = dynamic_cast<IfcElement const*>(&object)) {
        for (auto const& weak : element->m_ContainedInStructure_inverse) {
            auto const relation = weak.lock();
            if (relation && relation->m_RelatingStructure) return relation->m_RelatingStructure.get();
        }
    }
    return FindWhole(object.m_Decomposes_inverse);
}

void AddPlace(Collector& collector, IfcObjectDefinition const& object) {
    std::string building;
    std::string storey;
    std::unordered_set<IfcObjectDefinition const*> met;
    for (auto const* at = &object; at && met.insert(at).second; at = FindParent(*at)) {
        if (storey.empty() && dynamic_cast<IfcBuildingStorey const*>(at)) storey = ToUtf8(at->m_Name);
        if (building.empty() && dynamic_cast<IfcBuilding const*>(at)) building = ToUtf8(at->m_Name);
    }
    collector.AddText("Building", building);
    collector.AddText("Storey", storey);
}

void AddOwnSets(Collector& collector, IfcObject const& object) {
    for (auto const& weak : object.m_IsDefinedBy_inverse) {
        auto const relation = weak.lock();
        if (!relation) continue;
        auto const* select = relation->m_RelatingPropertyDefinition.get();
        if (auto const* several = dynamic_cast<IfcPropertySetDefinitionSet const*>(select)) {
            for (auto const& set : several->m_vec) collector.AddSet(set.get());
        } else {
            collector.AddSet(dynamic_cast<IfcPropertySetDefinition const*>(select));
        }
    }
}

}  // namespace

std::vector<PropertyRecord> PropertyReader::Read(IfcObject const& object, std::string const& className) {
    Collector collector(units_, unread_);
    collector.AddText("Class", className.empty() ? object.className() : className);
    AddPlace(collector, object);
    AddOwnSets(collector, object);
    for (auto const& weak : object.m_IsTypedBy_inverse) {
        auto const relation = weak.lock();
        if (!relation || !relation->m_RelatingType) continue;
        for (auto const& set : relation->m_RelatingType->m_HasPropertySets) collector.AddSet(set.get());
    }
    return collector.Take();
}

}  // namespace QuorlanProgram::Import
