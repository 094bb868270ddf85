#include "SampleModel.h"

#include "Textures.h"

#include <cmath>

namespace QuorlanSample {
namespace {

using GeometryObjectLib::Matrix4;
using Quorlan::MaterialRecord;
using Quorlan::OwnerHistoryChangeAction;

constexpr std::uint32_t kRoundSides = 16;
constexpr double kKeyStep = 1e-4;                  ///< [m] boxes whose sizes agree within it share a definition
constexpr std::int64_t kStartOfWork = 1704700800;  ///< 2024-01-08 08:00 UTC
constexpr std::int64_t kDay = 86400;               ///< [s]

struct Colour {
    std::uint8_t red, green, blue, alpha;
};

/// In the order of `Material`.
constexpr Colour kPalette[] = {
    {238, 231, 219, 255}, {168, 92, 70, 255},  {190, 188, 182, 255}, {176, 130, 88, 255},  {66, 71, 78, 255},
    {140, 184, 200, 90},  {200, 118, 84, 255}, {250, 249, 246, 255}, {206, 172, 126, 255}, {150, 158, 166, 255},
    {190, 118, 76, 255},  {80, 134, 190, 255}, {64, 126, 126, 255},  {222, 174, 72, 255},  {214, 206, 192, 255},
    {244, 244, 242, 255}, {136, 164, 96, 255}, {203, 196, 184, 255}, {92, 136, 76, 255},   {112, 86, 62, 255},
    {44, 62, 106, 255},   {40, 44, 52, 255},   {168, 166, 160, 255},
};

/// In the order of `Layer`.
constexpr char const* kLayerNames[] = {"Structure", "Walls", "Windows",   "Doors", "Stairs",     "Railings",
                                       "Pipes",     "Möbel", "Dach/Roof", "Site",  "Annotations"};

AffineTransform FromAxes(Vertex const& x, Vertex const& y, Vertex const& z, Vertex const& origin) {
    double const columns[16] = {x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, origin.x, origin.y, origin.z, 1};
    return AffineTransform::FromMatrix(Matrix4(columns, 16));
}

_GUID GuidOf(std::string const& name) {
    Random bits(HashOf(name));
    auto const a = bits.Next(), b = bits.Next();
    _GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(a);
    guid.Data2 = static_cast<std::uint16_t>(a >> 32);
    guid.Data3 = static_cast<std::uint16_t>((a >> 52) | 0x4000u);
    for (int i = 0; i < 8; ++i) guid.Data4[i] = static_cast<unsigned char>(b >> (8 * i));
    guid.Data4[0] = static_cast<unsigned char>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

}  // namespace

Turn Turn::Quarters(std::uint32_t count) {
    constexpr Turn kQuarters[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    return kQuarters[count % 4];
}

AffineTransform At(Vertex const& origin, Turn turn) {
    return FromAxes({turn.cosine, turn.sine, 0}, {-turn.sine, turn.cosine, 0}, {0, 0, 1}, origin);
}

AffineTransform Along(Vertex const& origin, Vertex const& x, Vertex const& y) {
    auto const unitX = x / Length(x);
    auto const z = Cross(unitX, y);
    auto const unitZ = z / Length(z);
    return FromAxes(unitX, Cross(unitZ, unitX), unitZ, origin);
}

AffineTransform Compose(AffineTransform const& outer, AffineTransform const& inner) {
    return AffineTransform::FromMatrix(outer.matrix * inner.matrix);
}

Element& Element::AddBox(Vertex const& lo, Vertex const& hi, Material material) {
    return Add(model_->Box(hi - lo), material, At(lo));
}

Element& Element::Add(GeometryDefinitionIndex_t shape, Material material, AffineTransform const& placement) {
    model_->GetBuilder().GetInstanceWriter().AddInstance(entity_, shape, static_cast<std::uint32_t>(material),
                                                         static_cast<std::uint32_t>(layer_), placement);
    return *this;
}

Element& Element::SetProperty(std::string const& set, std::string const& name,
                              std::variant<std::string, double, std::int64_t, bool> const& value) {
    model_->GetBuilder().GetPropertyWriter().AddProperty(entity_, {set, name, value});
    return *this;
}

SampleModel::SampleModel(SampleOptions const& options) : options_(options), random_(options.seed) {
    WritePalette();
    WriteOwnerHistories();
}

GeometryDefinitionIndex_t SampleModel::Box(Vertex const& size) {
    std::array<std::int64_t, 3> const key = {std::llround(size.x / kKeyStep), std::llround(size.y / kKeyStep),
                                             std::llround(size.z / kKeyStep)};
    auto const known = boxes_.find(key);
    return known != boxes_.end() ? known->second : boxes_.emplace(key, Write(MakeBox(size))).first->second;
}

GeometryDefinitionIndex_t SampleModel::Cylinder(double radius, double length) {
    auto const key = "cylinder " + std::to_string(radius) + " x " + std::to_string(length);
    return Shape(key, [&] { return MakeLathe({{radius, 0}, {radius, length}}, kRoundSides); });
}

Element SampleModel::AddEntity(std::string const& name, Layer layer, AffineTransform const& placement,
                               OwnerHistoryChangeAction action) {
    auto const entity =
        builder_.GetEntityWriter().AddEntity(GuidOf(name), std::wstring(name.begin(), name.end()), OnSite(placement));
    builder_.GetOwnerHistoryWriter().LinkOwnerHistory(entity, histories_[static_cast<std::size_t>(action)]);
    return {*this, entity, layer};
}

AffineTransform SampleModel::OnSite(AffineTransform const& placement) const {
    return Compose(At(options_.origin), placement);
}

GeometryDefinitionIndex_t SampleModel::Write(FacetedBRep const& solid) {
    return builder_.GetGeometryDefinitionBuilder().AddBRep(solid);
}

GeometryDefinitionIndex_t SampleModel::Write(SolidWithNormals const& solid) {
    return builder_.GetGeometryDefinitionBuilder().AddBRepWithNormals({&solid.brep, &solid.normals});
}

GeometryDefinitionIndex_t SampleModel::Write(SolidWithUVs const& solid) {
    return builder_.GetGeometryDefinitionBuilder().AddBRepWithUVs({&solid.brep, &solid.uvs});
}

GeometryDefinitionIndex_t SampleModel::Write(GraphicsContainer const& graphics) {
    return builder_.GetGeometryDefinitionBuilder().AddGraphicsContainer(graphics);
}

void SampleModel::WritePalette() {
    auto& textures = builder_.GetTextureWriter();
    auto const bricks = static_cast<std::int32_t>(textures.AddTexture(Quorlan::TextureType::PNG, MakeBrickTexture()));
    auto const cells = static_cast<std::int32_t>(textures.AddTexture(Quorlan::TextureType::PNG, MakeSolarTexture()));
    for (std::size_t i = 0; i < std::size(kPalette); ++i) {
        auto const& colour = kPalette[i];
        MaterialRecord record;
        record.color = {colour.red, colour.green, colour.blue, colour.alpha};
        record.twoSided = colour.alpha < 255;
        if (i == static_cast<std::size_t>(Material::Brick)) record.textureIndex = bricks;
        if (i == static_cast<std::size_t>(Material::Solar)) record.textureIndex = cells;
        builder_.GetMaterialWriter().AddMaterial(record);
    }
    for (auto const* const name : kLayerNames) builder_.GetLayerWriter().AddLayer(name);
}

void SampleModel::WriteOwnerHistories() {
    auto& writer = builder_.GetOwnerHistoryWriter();
    auto const architect = writer.AddOwnerPart({"A. Lindqvist", "Atelier Nord", "quorlan sample"});
    auto const engineer = writer.AddOwnerPart({"R. Okafor", "Tragwerk Süd", "quorlan sample"});
    for (std::uint32_t action = 0; action < 4; ++action) {
        auto const created = kStartOfWork + kDay * action;
        auto const modified = created + (action == 1 ? 30 * kDay : 0);
        auto const record =
            writer.AddOwnerHistoryRecord({0, static_cast<OwnerHistoryChangeAction>(action), created, modified});
        histories_[action] = writer.AddOwnerHistory(action % 2 == 0 ? architect : engineer, record,
                                                    {action == 1 ? "R. Okafor" : "", "quorlan sample"});
    }
}

}  // namespace QuorlanSample
