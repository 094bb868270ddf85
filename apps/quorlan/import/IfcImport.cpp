#include "IfcImport.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/Identifiers.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcOwnerHistory.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelVoidsElement.h>
#include <ifcpp/IFC4/include/IfcSpace.h>
#include <ifcpp/IFC4/include/IfcSpatialZone.h>
#include <ifcpp/model/BuildingModel.h>

#include <chrono>
#include <new>
#include <set>
#include <unordered_map>

#include "BodyWriter.h"
#include "IfcFile.h"
#include "ImportRecord.h"
#include "OwnerHistories.h"
#include "PropertySets.h"
#include "TextRepair.h"
#include "WideText.h"

namespace QuorlanProgram::Import {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

char const* Describe(TextProblem problem) {
    switch (problem) {
        case TextProblem::kEmpty: return "the file is empty";
        case TextProblem::kNoStepFile: return "this is no IFC file: it does not start with ISO-10303-21";
        case TextProblem::kNoIfcSchema: return "this is no IFC file: its header names no IFC schema";
        case TextProblem::kTruncated: return "the file is cut off: END-ISO-10303-21 is missing at its end";
        default: return "";
    }
}

/// The inverse of a rotation and translation.
Matrix4 InverseOfRigid(Matrix4 const& m) {
    Matrix4 inverse;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) inverse(row, column) = m(column, row);
    }
    auto const origin = TransformDirection(inverse, m.GetColumn(3));
    inverse(0, 3) = -origin.x;
    inverse(1, 3) = -origin.y;
    inverse(2, 3) = -origin.z;
    return inverse;
}

void CountUnknownClasses(ImportReport& report, RepairedText const& text, BuildingModel const& model) {
    auto const& entities = model.getMapIfcEntities();
    for (auto const& [id, classIndex] : text.ids) {
        if (entities.count(static_cast<int>(id)) == 0) ++report.unknownClasses[text.classes[classIndex]];
    }
}

/// Writes the products of one file.
class Importer {
public:
    Importer(std::shared_ptr<BuildingModel> const& model, Units const& units, ImportOptions const& options,
             ImportReport& report, MessageLog& log)
        : model_(model),
          takesOpenings_(options.takesOpenings),
          writesRecord_(options.writesRecord),
          report_(report),
          placements_(units.length),
          properties_(units),
          geometry_(model, units.length, options.verticesPerCircle, log),
          histories_(builder_.GetOwnerHistoryWriter()),
          bodies_(builder_, geometry_, report) {}

    std::vector<char> Run(std::function<void(double)> const& progress) {
        auto const& entities = model_->getMapIfcEntities();
        std::size_t done = 0;
        for (auto const& entry : entities) {
            if (auto const product = std::dynamic_pointer_cast<IfcProduct>(entry.second)) Add(*product);
            if (progress && ++done % 256 == 0)
                progress(static_cast<double>(done) / static_cast<double>(entities.size()));
        }
        report_.ownerHistories = histories_.GetCount();
        report_.unreadProperties = properties_.GetUnread();
        if (placements_.GetUnreadCount() > 0) report_.unreadItems["IfcGridPlacement"] = placements_.GetUnreadCount();
        if (writesRecord_ && report_.entities > 0) {
            WriteImportRecord(builder_, {report_.shapes, report_.definitions, report_.largestDeviation});
        }
        return builder_.Create();
    }

private:
    static bool IsOpening(IfcProduct const& product) {
        return dynamic_cast<IfcFeatureElementSubtraction const*>(&product) != nullptr;
    }

    void Add(IfcProduct const& product) {
        ++report_.products;
        if (IsOpening(product) && !takesOpenings_) {
            ++report_.openings;
            return;
        }
        auto const body = CollectBody(product, placements_);
        for (auto const& identifier : body.otherRepresentations) ++report_.representations[identifier];
        if (!body.hasRepresentation) {
            ++report_.withoutBody[product.className()];
            return;
        }
        auto const world = placements_.GetWorld(product.m_ObjectPlacement.get());
        auto const entity = AddEntity(product, world);
        histories_.Link(entity, product.m_OwnerHistory.get());
        for (auto const& property : properties_.Read(product)) {
            builder_.GetPropertyWriter().AddProperty(entity, property);
            ++report_.properties;
        }
        AddBody(entity, product, body, world);
    }

    Quorlan::EntityIndex_t AddEntity(IfcProduct const& product, Matrix4 const& world) {
        auto const guidText = ToUtf8(product.m_GlobalId);
        auto const name = product.m_Name ? product.m_Name->m_value : std::wstring();
        auto const placement = Quorlan::AffineTransform::FromMatrix(world);
        auto& writer = builder_.GetEntityWriter();
        ++report_.entities;
        if (++guidCounts_[guidText] == 2) report_.duplicateGuids.push_back(guidText);
        _GUID guid{};
        if (Quorlan::Tools::IfcGuidToGuid(guidText, guid)) return writer.AddEntity(guid, name, placement);
        report_.invalidGuids.push_back(guidText);
        return writer.AddEntityWithIdentifierText(guidText, name, placement);
    }

    void AddBody(Quorlan::EntityIndex_t entity, IfcProduct const& product, Body const& body, Matrix4 const& world) {
        auto const isSpace = dynamic_cast<IfcSpace const*>(&product) || dynamic_cast<IfcSpatialZone const*>(&product);
        if (isSpace) ++report_.spaces;
        auto const written = report_.instances;
        auto const missed = bodies_.Write(entity, body, CollectOpenings(product, world), FindMaterialStyle(product),
                                          isSpace              ? "IfcSpace"
                                          : IsOpening(product) ? "IfcOpeningElement"
                                                               : "");
        auto const guid = ToUtf8(product.m_GlobalId);
        if (missed > 0) report_.missedCuts.push_back(guid + ": " + std::to_string(missed));
        if (report_.instances == written) report_.productsWithoutShape.push_back(guid);
    }

    /// The openings of a product and of the wholes that it is a part of, in the frame of the product.
    std::vector<PlacedItem> CollectOpenings(IfcProduct const& product, Matrix4 const& world) {
        std::vector<PlacedItem> openings;
        std::set<IfcObjectDefinition const*> met;
        auto const toProduct = InverseOfRigid(world);
        for (auto const* at = dynamic_cast<IfcObjectDefinition const*>(&product); at && met.insert(at).second;) {
            auto const* element = dynamic_cast<IfcElement const*>(at);
            if (!element) break;
            for (auto const& weak : element->m_HasOpenings_inverse) {
                auto const relation = weak.lock();
                if (relation && relation->m_RelatedOpeningElement) {
                    AddOpening(openings, *relation->m_RelatedOpeningElement, toProduct);
                }
            }
            at = FindWhole(*at);
        }
        return openings;
    }

    static IfcObjectDefinition const* FindWhole(IfcObjectDefinition const& part) {
        for (auto const& weak : part.m_Decomposes_inverse) {
            auto const relation = weak.lock();
            if (relation) return relation->m_RelatingObject.get();
        }
        return nullptr;
    }

    void AddOpening(std::vector<PlacedItem>& openings, IfcProduct const& opening, Matrix4 const& toProduct) {
        auto const placement = toProduct * placements_.GetWorld(opening.m_ObjectPlacement.get());
        for (auto& item : CollectBody(opening, placements_).items) {
            openings.push_back({item.placed.item, placement * item.placed.placement});
        }
    }

    std::shared_ptr<BuildingModel> model_;
    bool takesOpenings_;
    bool writesRecord_;
    ImportReport& report_;
    Quorlan::ModelBuilder builder_;
    PlacementReader placements_;
    PropertyReader properties_;
    IfcGeometry geometry_;
    OwnerHistories histories_;
    BodyWriter bodies_;
    std::unordered_map<std::string, std::size_t> guidCounts_;
};

ImportResult Failed(std::string error) {
    ImportResult result;
    result.error = std::move(error);
    return result;
}

}  // namespace

ImportResult ImportIfc(std::string_view text, ImportOptions const& options) {
    auto const problem = CheckText(text);
    if (problem != TextProblem::kNone) return Failed(Describe(problem));

    SilentStreams const silence;
    auto const start = Clock::now();
    MessageLog log;
    auto repaired = RepairText(text, options.verticesPerCircle);
    auto const model = ReadIfc(repaired.text, log);
    repaired.text = {};
    if (!model) return Failed("no IFC project can be read from this file");

    ImportResult result;
    auto& report = result.report;
    report.schema = repaired.schema;
    report.curvesRewritten = repaired.curvesRewritten;
    if (repaired.curvesKept > 0) report.unreadItems["IfcIndexedPolyCurve"] = repaired.curvesKept;
    CountUnknownClasses(report, repaired, *model);
    report.secondsRead = SecondsSince(start);

    auto const shapeStart = Clock::now();
    try {
        result.model = Importer(model, ReadUnits(*model->getIfcProject()), options, report, log).Run(options.progress);
    } catch (std::bad_array_new_length const&) {
        return Failed("the model is too large: a model buffer holds less than 2 GiB");
    }
    CutCycles(*model);
    report.messages = log.GetCounts();
    report.secondsShape = SecondsSince(shapeStart);
    return result;
}

}  // namespace QuorlanProgram::Import
