#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "ImportedModel.h"
#include "SmallIfc.h"

/// Identity, history and properties of imported products, and what becomes of broken files.
namespace Quorlan::Testing {
namespace {

using QuorlanProgram::Import::ImportIfc;
using QuorlanProgram::Import::ToJson;
using QuorlanProgram::Import::ToText;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::SizeIs;

using Value = decltype(PropertyRecord::value);

std::string AddUser(SmallIfc& ifc, std::string const& family) {
    auto const person = ifc.Add("IFCPERSON('id','" + family + "','Ada',$,$,$,$,$)");
    return ifc.Add("IFCPERSONANDORGANIZATION(" + person + "," + ifc.Add("IFCORGANIZATION($,'Office',$,$,$)") + ",$)");
}

TEST(Import, AnEntityHasItsGuidAndItsName) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$", "W\\X2\\00E4\\X0\\nd");
    ImportedModel const model(ifc.GetText());
    auto const identifier = model.GetEntity(0);
    EXPECT_EQ(identifier.kind, 0u);
    std::string guid;
    model.GetReader().GetEntities().GetGuidText(guid, identifier.reference);
    EXPECT_EQ(guid, SmallIfc::Guid(7));
    std::wstring name;
    model.GetReader().GetEntities().GetText(name, identifier.textReference);
    EXPECT_EQ(name, L"W\u00e4nd");
}

TEST(Import, ARepeatedGuidKeepsBothEntities) {
    SmallIfc ifc;
    for (int i = 0; i < 3; ++i) ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 3u);
    EXPECT_THAT(model.GetReport().duplicateGuids, ElementsAre(SmallIfc::Guid(7)));
}

TEST(Import, ShapesThatTheFileDoesNotShareBecomeOneDefinition) {
    SmallIfc ifc;
    for (int i = 1; i <= 3; ++i) ifc.AddWall(i, ifc.AddShape(ifc.AddBox(1, 2, 3)), "$");
    ifc.AddWall(4, ifc.AddShape(ifc.AddBox(1, 2, 4)), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 4u);
    EXPECT_EQ(model.GetGeometry().GetDefinitionCount(), 2u);
    EXPECT_EQ(model.GetReport().shapes, 4u);
    EXPECT_EQ(model.GetReport().definitions, 2u);
    EXPECT_LT(model.GetReport().largestDeviation, 1e-5);
}

TEST(Import, OpeningsAreCountedOrBecomeEntitiesOnALayerOfTheirOwn) {
    SmallIfc ifc;
    ifc.AddWall(1, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(2) + "',$,$,$,$,$," + ifc.AddShape(ifc.AddBox(2, 1, 1)) + ",$,$)");
    ImportedModel const without(ifc.GetText());
    EXPECT_EQ(without.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_EQ(without.GetReport().openings, 1u);

    QuorlanProgram::Import::ImportOptions options;
    options.takesOpenings = true;
    ImportedModel const with(ifc.GetText(), options);
    EXPECT_EQ(with.GetReader().GetEntities().GetCount(), 2u);
    EXPECT_EQ(with.GetReport().openings, 0u);
    std::string layer;
    with.GetGeometry().GetLayerName(layer, with.GetInstance(1).layerIndex);
    EXPECT_EQ(layer, "IfcOpeningElement");
}

TEST(Import, AGuidThatIsNoneIsKeptAsAnIdentifierText) {
    SmallIfc ifc;
    ifc.Add("IFCWALL('wall-1',$,$,$,$,$," + ifc.AddShape(ifc.AddBox(1, 1, 1)) + ",$,$)");
    ImportedModel const model(ifc.GetText());
    ASSERT_EQ(model.GetEntity(0).kind, 1u);
    std::string text;
    model.GetReader().GetEntities().GetIdentifierString(text, model.GetEntity(0).reference);
    EXPECT_EQ(text, "wall-1");
    EXPECT_THAT(model.GetReport().invalidGuids, ElementsAre("wall-1"));
}

TEST(Import, AnOwnerHistoryIsWrittenOnceForAllItsProducts) {
    SmallIfc ifc;
    auto const application =
        ifc.Add("IFCAPPLICATION(" + ifc.Add("IFCORGANIZATION($,'Maker',$,$,$)") + ",'1.2','Draw','d')");
    auto const history = ifc.Add("IFCOWNERHISTORY(" + AddUser(ifc, "Early") + "," + application +
                                 ",.LOCKED.,.MODIFIED.,1000," + AddUser(ifc, "Late") + "," + application + ",500)");
    auto const shape = ifc.AddShape(ifc.AddBox(1, 1, 1));
    ifc.AddWall(7, shape, "$", "A", history);
    ifc.AddWall(8, shape, "$", "B", history);
    ifc.AddWall(9, shape, "$", "C");
    ImportedModel const model(ifc.GetText());
    auto const& reader = model.GetReader().GetOwnerHistories();
    ASSERT_EQ(reader.GetLinkCount(), 2u);
    EXPECT_EQ(reader.GetReferenceCount(), 1u);
    OwnerHistoryLink link;
    reader.GetLink(link, 1);
    EXPECT_EQ(link.entity, EntityIndex_t{1});

    OwnerPart part;
    reader.GetOwnerPart(part, reader.GetOwnerPartIndex(link.reference));
    EXPECT_EQ(part.user, "Ada Early");
    EXPECT_EQ(part.organization, "Office");
    EXPECT_EQ(part.application, "Draw 1.2");
    OwnerHistoryRecord record;
    reader.GetOwnerHistory(record, reader.GetOwnerHistoryIndex(link.reference));
    EXPECT_EQ(record.changeAction, OwnerHistoryChangeAction::MODIFIED);
    EXPECT_EQ(record.state, 2u);
    EXPECT_EQ(record.creationDate, 500);
    EXPECT_EQ(record.lastModifiedDate, 1000);
    OwnerHistoryLinkRecord last;
    reader.GetOwnerHistoryLinkRecord(last, link.reference);
    EXPECT_EQ(last.lastModifyingUser, "Ada Late");
}

TEST(Import, AChangeActionLeftOpenIsNoChange) {
    SmallIfc ifc;
    auto const application =
        ifc.Add("IFCAPPLICATION(" + ifc.Add("IFCORGANIZATION($,'Maker',$,$,$)") + ",'','Draw','d')");
    auto const user = AddUser(ifc, "Early");
    auto const shape = ifc.AddShape(ifc.AddBox(1, 1, 1));
    for (std::string const action : {"$", ".NOTDEFINED."}) {
        auto const history = ifc.Add("IFCOWNERHISTORY(" + user + "," + application + ",$," + action + ",$,$,$,0)");
        ifc.AddWall(7, shape, "$", "A", history);
    }
    ImportedModel const model(ifc.GetText());
    auto const& reader = model.GetReader().GetOwnerHistories();
    ASSERT_EQ(reader.GetLinkCount(), 2u);
    for (std::uint32_t i = 0; i < 2; ++i) {
        OwnerHistoryRecord record;
        reader.GetOwnerHistory(record, reader.GetOwnerHistoryIndex(i));
        EXPECT_EQ(record.changeAction, OwnerHistoryChangeAction::NOCHANGE);
    }
}

TEST(Import, PropertiesHaveFourTypesAndLengthsAreMetres) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    std::string properties;
    for (auto const* single : {"'Label',$,IFCLABEL('x'),$", "'Count',$,IFCINTEGER(-3),$", "'Yes',$,IFCBOOLEAN(.T.),$",
                               "'Ratio',$,IFCREAL(0.1234567890123),$", "'Width',$,IFCLENGTHMEASURE(250.),$",
                               "'Area',$,IFCAREAMEASURE(2.5),$", "'Power',$,IFCPOWERMEASURE(60.),$", "'None',$,$,$"}) {
        properties += (properties.empty() ? "" : ",") + ifc.Add(std::string("IFCPROPERTYSINGLEVALUE(") + single + ")");
    }
    properties += "," + ifc.Add("IFCPROPERTYENUMERATEDVALUE('Status',$,(IFCLABEL('NEW'),IFCLABEL('TEMP')),$)");
    properties += "," + ifc.Add("IFCPROPERTYBOUNDEDVALUE('Range',$,$,$,$,$)");
    auto const set = ifc.Add("IFCPROPERTYSET('" + SmallIfc::Guid(99) + "',$,'Pset',$,(" + properties + "))");
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + set);
    auto const length = ifc.Add("IFCQUANTITYLENGTH('Height',$,$,2500.,$)");
    auto const quantities = ifc.Add("IFCELEMENTQUANTITY('" + SmallIfc::Guid(98) + "',$,'Qto',$,$,(" + length + "))");
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + quantities);

    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetProperties(0),
                ElementsAre(Pair("IFC.Class", Value("IfcWall")), Pair("Pset.Area", Value(2.5)),
                            Pair("Pset.Count", Value(std::int64_t{-3})), Pair("Pset.Label", Value("x")),
                            Pair("Pset.Power", Value(60.0)), Pair("Pset.Ratio", Value(0.1234567890123)),
                            Pair("Pset.Status", Value("NEW; TEMP")), Pair("Pset.Width", Value(0.25)),
                            Pair("Pset.Yes", Value(true)), Pair("Qto.Height", Value(2.5))));
    EXPECT_THAT(model.GetReport().unreadProperties, ElementsAre(Pair("IfcPropertyBoundedValue", 1u)));
}

TEST(Import, QuantitiesAreInSiUnitsOfTheirOwnOrOfTheFile) {
    SmallIfc ifc;  // millimetres
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    auto const squareCentimetre = ifc.Add("IFCSIUNIT(*,.AREAUNIT.,.CENTI.,.SQUARE_METRE.)");
    auto const gram = ifc.Add("IFCSIUNIT(*,.MASSUNIT.,$,.GRAM.)");
    auto const tonne = ifc.Add("IFCSIUNIT(*,.MASSUNIT.,.MEGA.,.GRAM.)");
    std::string quantities;
    for (auto const& quantity :
         {std::string("IFCQUANTITYLENGTH('Length',$,$,2500.,$)"),
          "IFCQUANTITYAREA('Area',$," + squareCentimetre + ",30000.,$)",
          std::string("IFCQUANTITYVOLUME('Volume',$,$,1.5,$)"), "IFCQUANTITYWEIGHT('Grams',$," + gram + ",2500.,$)",
          "IFCQUANTITYWEIGHT('Tonnes',$," + tonne + ",2.,$)", std::string("IFCQUANTITYCOUNT('Count',$,$,3.,$)"),
          std::string("IFCQUANTITYTIME('Time',$,$,60.,$)")}) {
        quantities += (quantities.empty() ? "" : ",") + ifc.Add(quantity);
    }
    auto const set = ifc.Add("IFCELEMENTQUANTITY('" + SmallIfc::Guid(98) + "',$,'Qto',$,$,(" + quantities + "))");
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + set);
    ImportedModel const model(ifc.GetText());
    auto const properties = model.GetProperties(0);
    EXPECT_EQ(properties.at("Qto.Length"), Value(2.5));
    EXPECT_EQ(properties.at("Qto.Area"), Value(3.0));
    EXPECT_EQ(properties.at("Qto.Volume"), Value(1.5));
    EXPECT_EQ(properties.at("Qto.Grams"), Value(2.5));
    EXPECT_EQ(properties.at("Qto.Tonnes"), Value(2000.0));
    EXPECT_EQ(properties.at("Qto.Time"), Value(60.0));
    EXPECT_EQ(properties.at("Qto.Count"), Value(std::int64_t{3}));
}

TEST(Import, AnAngleInDegreesIsRadians) {
    auto text = [] {
        SmallIfc ifc;
        auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
        auto const radian = ifc.Add("IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)");
        auto const measure = ifc.Add("IFCMEASUREWITHUNIT(IFCPLANEANGLEMEASURE(0.0174532925199433)," + radian + ")");
        auto const degree = ifc.Add("IFCCONVERSIONBASEDUNIT($,.PLANEANGLEUNIT.,'DEGREE'," + measure + ")");
        auto const slope = ifc.Add("IFCPROPERTYSINGLEVALUE('Slope',$,IFCPLANEANGLEMEASURE(180.)," + degree + ")");
        auto const set = ifc.Add("IFCPROPERTYSET('" + SmallIfc::Guid(99) + "',$,'Pset',$,(" + slope + "))");
        ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + set);
        return ifc.GetText();
    }();
    ImportedModel const model(text);
    EXPECT_NEAR(std::get<double>(model.GetProperties(0).at("Pset.Slope")), 3.14159265358979, 1e-12);
}

TEST(Import, AValueWithoutContentIsNoPropertyAndNoMessage) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    auto const empty = ifc.Add("IFCPROPERTYSINGLEVALUE('Empty',$,IFCLABEL($),$)");
    auto const set = ifc.Add("IFCPROPERTYSET('" + SmallIfc::Guid(99) + "',$,'Pset',$,(" + empty + "))");
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + set);
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReport().typedNulls, 1u);
    EXPECT_EQ(model.GetReport().CountWarnings(), 0u);
    EXPECT_EQ(model.GetProperties(0).count("Pset.Empty"), 0u);
}

TEST(Import, AnOccurrencesPropertyGoesBeforeThatOfItsType) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    auto const addSet = [&](int guid, std::string const& values) {
        return ifc.Add("IFCPROPERTYSET('" + SmallIfc::Guid(guid) + "',$,'Pset',$,(" + values + "))");
    };
    auto const add = [&](std::string const& name, std::string const& value) {
        return ifc.Add("IFCPROPERTYSINGLEVALUE('" + name + "',$,IFCLABEL('" + value + "'),$)");
    };
    auto const ofType = addSet(90, add("A", "type") + "," + add("B", "type"));
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + addSet(91, add("A", "own")));
    auto const type =
        ifc.Add("IFCWALLTYPE('" + SmallIfc::Guid(92) + "',$,'T',$,$,(" + ofType + "),$,$,$,.NOTDEFINED.)");
    ifc.AddRelation("IFCRELDEFINESBYTYPE", "(" + wall + ")," + type);
    ImportedModel const model(ifc.GetText());
    auto const properties = model.GetProperties(0);
    EXPECT_EQ(properties.at("Pset.A"), Value("own"));
    EXPECT_EQ(properties.at("Pset.B"), Value("type"));
}

TEST(Import, AnElementKnowsItsBuildingAndStoreyAlsoAsAPart) {
    SmallIfc ifc;
    auto const building = ifc.Add("IFCBUILDING('" + SmallIfc::Guid(50) + "',$,'House',$,$,$,$,$,$,$,$,$)");
    auto const storey = ifc.Add("IFCBUILDINGSTOREY('" + SmallIfc::Guid(51) + "',$,'Ground',$,$,$,$,$,$,$)");
    auto const stair = ifc.Add("IFCSTAIR('" + SmallIfc::Guid(52) + "',$,'Stair',$,$,$,$,$,$)");
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    ifc.AddRelation("IFCRELAGGREGATES", building + ",(" + storey + ")");
    ifc.AddRelation("IFCRELCONTAINEDINSPATIALSTRUCTURE", "(" + stair + ")," + storey);
    ifc.AddRelation("IFCRELAGGREGATES", stair + ",(" + wall + ")");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetProperties(0).at("IFC.Building"), Value("House"));
    EXPECT_EQ(model.GetProperties(0).at("IFC.Storey"), Value("Ground"));
    EXPECT_THAT(model.GetReport().withoutBody,
                ElementsAre(Pair("IfcBuilding", 1u), Pair("IfcBuildingStorey", 1u), Pair("IfcStair", 1u)));
}

TEST(Import, SpacesStandOnALayerOfTheirOwn) {
    SmallIfc ifc;
    ifc.Add("IFCSPACE('" + SmallIfc::Guid(7) + "',$,'Room',$,$,$," + ifc.AddShape(ifc.AddBox(1, 1, 1)) + ",$,$,$,$)");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetLayer(0), "IfcSpace");
    EXPECT_EQ(model.GetReport().spaces, 1u);
}

TEST(Import, ElementsOfALaterSchemaComeInUnderTheirOwnClass) {
    SmallIfc ifc("IFC4X3_ADD2");
    auto const shape = ifc.AddShape(ifc.AddBox(1, 1, 1));
    ifc.Add("IFCKERB('" + SmallIfc::Guid(8) + "',$,'Kerb',$,$,$," + shape + ",'tag',.T.)");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReport().schema, "IFC4X3_ADD2");
    EXPECT_EQ(model.GetProperties(0).at("IFC.Class"), Value("IfcKerb"));
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 1u);
    EXPECT_EQ(model.GetReport().CountWarnings(), 0u);
}

TEST(Import, ProductsOfALaterSchemaThatCannotBeReadAreNamed) {
    SmallIfc ifc("IFC4X3_ADD2");
    auto const shape = ifc.AddShape(ifc.AddBox(1, 1, 1));
    ifc.AddWall(7, shape, "$");
    ifc.Add("IFCALIGNMENT('" + SmallIfc::Guid(8) + "',$,$,$,$,$," + shape + ",$)");
    ifc.Add("IFCALIGNMENTPARAMETERSEGMENT($,$)");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_THAT(model.GetReport().unknownProducts, ElementsAre(SmallIfc::Guid(8) + " IFCALIGNMENT"));
    EXPECT_THAT(model.GetReport().unknownClasses, ElementsAre(Pair("IFCALIGNMENTPARAMETERSEGMENT", 1u)));
    EXPECT_EQ(model.GetReport().CountWarnings(), 1u);
}

TEST(Import, AProductPlacedByWhatIsNotKnownIsLeftOutRatherThanPutAtTheOrigin) {
    SmallIfc ifc("IFC4X3_ADD2");
    auto const linear = ifc.Add("IFCLINEARPLACEMENT($,$,$)");
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), linear);
    ImportedModel const model("\xEF\xBB\xBF" + ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 0u);
    EXPECT_THAT(model.GetReport().misplacedProducts, ElementsAre(SmallIfc::Guid(7) + " IfcWall"));
}

TEST(Import, FeetBecomeMetres) {
    auto ifc = SmallIfc("IFC2X3", "$").GetText();
    auto const foot = std::string(
        "#900=IFCCONVERSIONBASEDUNIT(#901,.LENGTHUNIT.,'FOOT',#902);\n"
        "#901=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n"
        "#902=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(0.3048),#903);\n"
        "#903=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
        "#904=IFCUNITASSIGNMENT((#900));\n"
        "#905=IFCCARTESIANPOINT((10.,0.,0.));\n"
        "#906=IFCAXIS2PLACEMENT3D(#905,$,$);\n"
        "#907=IFCLOCALPLACEMENT($,#906);\n"
        "#908=IFCRECTANGLEPROFILEDEF(.AREA.,$,#909,1.,1.);\n"
        "#909=IFCAXIS2PLACEMENT2D(#910,$);\n"
        "#910=IFCCARTESIANPOINT((0.,0.));\n"
        "#911=IFCDIRECTION((0.,0.,1.));\n"
        "#912=IFCEXTRUDEDAREASOLID(#908,#906,#911,10.);\n"
        "#913=IFCSHAPEREPRESENTATION($,'Body','SweptSolid',(#912));\n"
        "#914=IFCPRODUCTDEFINITIONSHAPE($,$,(#913));\n"
        "#915=IFCBEAM('0000000000000000000009',$,$,$,$,#907,#914,$);\n");
    ifc.insert(ifc.find("ENDSEC;\nEND-ISO"), foot);
    auto const unit = ifc.find("IFCUNITASSIGNMENT((");
    ifc.replace(unit, ifc.find(';', unit) - unit, "IFCUNITASSIGNMENT((#900))");
    ImportedModel const model(ifc);
    EXPECT_DOUBLE_EQ(model.GetEntity(0).placement.offset.x, 3.048);
    DefinitionBounds bounds;
    model.GetGeometry().GetDefinitionBounds(bounds, 0);
    EXPECT_NEAR(bounds.max.z, 3.048, 1e-6);
}

TEST(Import, AProjectWithoutProductsIsAnEmptyModel) {
    ImportedModel const model(SmallIfc().GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 0u);
    EXPECT_EQ(model.GetReport().products, 0u);
}

TEST(Import, TheSameFileGivesTheSameBytes) {
    SmallIfc ifc;
    for (int i = 0; i < 20; ++i) {
        auto const box = ifc.AddBox(1 + i, 1, 1);
        ifc.AddStyle(box, "0." + std::to_string(i) + ",0.,1.");
        ifc.AddWall(7 + i, ifc.AddShape(box), "$");
    }
    EXPECT_EQ(ImportIfc(ifc.GetText()).model, ImportIfc(ifc.GetText()).model);
}

TEST(Import, WhatIsNoWholeFileWithAProjectGivesAnErrorAndNoModel) {
    auto const whole = SmallIfc().GetText();
    auto noProject = whole;
    noProject.replace(noProject.find("IFCPROJECT("), 11, "IFCPROJEKT(");
    for (auto const& text : {std::string(), std::string("hello"), whole.substr(0, whole.size() / 3), noProject}) {
        auto const result = ImportIfc(text);
        EXPECT_NE(result.error, "");
        EXPECT_THAT(result.model, SizeIs(0));
    }
}

TEST(Import, BrokenInstancesDoNoHarm) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    ifc.AddWall(8, ifc.AddShape("#4711"), "#4712");
    ifc.Add("IFCWALL($,$,$,$,$,$,$,$,$)");
    ifc.Add("IFCWALL('too few')");
    ifc.Add("IFCWALL()");
    ifc.AddWall(9, ifc.AddShape(ifc.Add("IFCEXTRUDEDAREASOLID($,$,$,$)")), "$");
    ifc.AddWall(10, ifc.AddShape(ifc.Add("IFCFACETEDBREP($)")), "$");
    ifc.AddWall(11, ifc.AddShape(ifc.Add("IFCMAPPEDITEM($,$)")), ifc.Add("IFCLOCALPLACEMENT($,$)"));
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 1u);
}

TEST(Import, EveryPrefixOfAFileComesInAsFarAsItGoesOrIsRefusedInOneLine) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    auto const text = ifc.GetText();
    auto const end = text.rfind("END-ISO-10303-21;") + 16;
    auto const wall = text.find(";", text.find("IFCWALL("));
    for (std::size_t length = 0; length < end; ++length) {
        auto const result = ImportIfc(text.substr(0, length));
        ASSERT_EQ(result.error.find('\n'), std::string::npos);
        if (!result.error.empty()) continue;
        ASSERT_TRUE(result.report.isCutOff) << length;
        ASSERT_GE(result.report.CountWarnings(), 1u);
        ASSERT_EQ(result.report.entities, length > wall ? 1u : 0u) << length;
    }
}

TEST(Import, TheReportSaysWhatIsLeftOut) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1), "Axis"), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(ToText({model.GetReport()}), HasSubstr("left out, products without a body: 1\n    IfcWall: 1\n"));
    auto const json = nlohmann::json::parse(ToJson({model.GetReport()}))["files"][0];
    EXPECT_EQ(json["withoutBody"]["IfcWall"], 1);
    EXPECT_EQ(json["schema"], "IFC4");
}

}  // namespace
}  // namespace Quorlan::Testing
