#include "Parts.h"

namespace QuorlanSample {
namespace {

/// Where pieces of one room go: names count up within the room.
class Room {
public:
    Room(SampleModel& model, std::string name, AffineTransform const& placement)
        : model_(model), name_(std::move(name)), placement_(placement) {}

    Element Add(std::string const& what, Vertex const& position, Turn turn) {
        return model_.AddEntity(what + " " + std::to_string(++count_) + ", " + name_, Layer::Furniture,
                                Compose(placement_, At(position, turn)));
    }
    SampleModel& GetModel() { return model_; }
    Random& GetRandom() { return model_.GetRandom(); }

    /// A quarter turn, and a little more, as furniture stands.
    Turn AnyTurn() {
        auto const quarter = Turn::Quarters(GetRandom().Below(4));
        auto const little = Turn::FromHalfTangent(GetRandom().Between(-0.06, 0.06));
        return {quarter.cosine * little.cosine - quarter.sine * little.sine,
                quarter.sine * little.cosine + quarter.cosine * little.sine};
    }

private:
    SampleModel& model_;
    std::string name_;
    AffineTransform placement_;
    std::uint32_t count_ = 0;
};

void AddLegs(Element& piece, double halfWidth, double halfDepth, double height, Material material) {
    for (double const x : {-halfWidth, halfWidth - 0.05}) {
        for (double const y : {-halfDepth, halfDepth - 0.05}) {
            piece.AddBox({x, y, 0}, {x + 0.05, y + 0.05, height}, material);
        }
    }
}

void AddTable(Room& room, Vertex const& position, Turn turn, double width, double depth, double height) {
    auto table = room.Add("Table", position, turn);
    table.AddBox({-width / 2, -depth / 2, height - 0.04}, {width / 2, depth / 2, height}, Material::Oak);
    AddLegs(table, width / 2 - 0.04, depth / 2 - 0.04, height - 0.04, Material::Metal);
}

/// Its back stands at +y.
void AddChair(Room& room, Vertex const& position, Turn turn, Material seat) {
    auto chair = room.Add("Chair", position, turn);
    chair.AddBox({-0.22, -0.22, 0.43}, {0.22, 0.22, 0.47}, seat);
    chair.AddBox({-0.22, 0.19, 0.47}, {0.22, 0.22, 0.90}, seat);
    AddLegs(chair, 0.21, 0.21, 0.43, Material::Metal);
}

void AddLamp(Room& room, Vertex const& position) {
    auto& model = room.GetModel();
    auto const shade = model.Shape("lamp shade", [] { return MakeLathe({{0.22, 0}, {0.12, 0.28}}, 12); });
    room.Add("Lamp", position, {})
        .Add(model.Cylinder(0.14, 0.02), Material::Metal)
        .Add(model.Cylinder(0.012, 1.35), Material::Metal, At({0, 0, 0.02}))
        .Add(shade, Material::Mustard, At({0, 0, 1.3}))
        .SetProperty("Lamp", "Power", 9.5);
}

void AddDiningRoom(Room& room) {
    auto const turn = room.AnyTurn();
    Vertex const centre{2.7, 2.6, 0};
    AddTable(room, centre, turn, 1.8, 0.9, 0.75);
    auto const place = At(centre, turn);
    for (std::uint32_t i = 0; i < 6; ++i) {
        auto const side = i < 3 ? 1.0 : -1.0;
        auto const at = TransformPoint(place.matrix, {0.55 * (i % 3) - 0.55, 0.62 * side, 0});
        Turn const facing{turn.cosine * side, turn.sine * side};
        AddChair(room, at, facing, i % 2 == 0 ? Material::Teal : Material::Mustard);
    }
    AddLamp(room, {0.6, 0.6, 0});
}

void AddLivingRoom(Room& room) {
    auto const fabric = room.GetRandom().Below(2) == 0 ? Material::Teal : Material::Linen;
    auto sofa = room.Add("Sofa", {2.7, 4.2, 0}, Turn::FromHalfTangent(room.GetRandom().Between(-0.05, 0.05)));
    sofa.AddBox({-1.0, -0.45, 0.1}, {1.0, 0.45, 0.3}, fabric);
    sofa.AddBox({-1.0, 0.25, 0.3}, {1.0, 0.45, 0.8}, fabric);
    for (double const x : {-1.0, 0.85}) sofa.AddBox({x, -0.45, 0.3}, {x + 0.15, 0.25, 0.58}, fabric);
    for (double const x : {-0.84, 0.01}) sofa.AddBox({x, -0.46, 0.3}, {x + 0.83, 0.24, 0.45}, Material::Linen);
    AddTable(room, {2.7, 2.9, 0}, room.AnyTurn(), 0.9, 0.6, 0.4);
    AddLamp(room, {1.1, 4.3, 0});
    auto board = room.Add("Sideboard", {2.7, 0.9, 0}, Turn::Quarters(2));
    board.AddBox({-0.9, -0.2, 0.1}, {0.9, 0.2, 0.6}, Material::Oak);
    board.AddBox({-0.6, -0.04, 0.6}, {0.6, 0.0, 1.3}, Material::Metal);
}

void AddBedroom(Room& room) {
    auto bed = room.Add("Bed", {2.6, 3.6, 0}, Turn::FromHalfTangent(room.GetRandom().Between(-0.03, 0.03)));
    bed.AddBox({-0.9, -1.05, 0.12}, {0.9, 1.05, 0.32}, Material::Oak);
    bed.AddBox({-0.86, -1.02, 0.32}, {0.86, 1.0, 0.52}, Material::White);
    bed.AddBox({-0.88, -1.03, 0.521}, {0.88, 0.3, 0.56}, Material::Teal);
    bed.AddBox({-0.9, 1.051, 0.12}, {0.9, 1.1, 1.0}, Material::Oak);
    for (double const x : {-0.75, 0.1}) bed.AddBox({x, 0.5, 0.521}, {x + 0.65, 0.9, 0.64}, Material::Linen);
    for (double const x : {1.35, 3.85}) {
        auto stand = room.Add("Nightstand", {x, 4.4, 0}, {});
        stand.AddBox({-0.22, -0.2, 0.05}, {0.22, 0.2, 0.5}, Material::Oak);
    }
    auto wardrobe = room.Add("Wardrobe", {0.5, 2.2, 0}, Turn::Quarters(1));
    wardrobe.AddBox({-0.9, -0.3, 0}, {0.9, 0.3, 2.2}, Material::White);
    for (double const x : {-0.05, 0.03}) wardrobe.AddBox({x, -0.33, 0.9}, {x + 0.02, -0.3, 1.3}, Material::Metal);
}

void AddOffice(Room& room) {
    for (std::uint32_t i = 0; i < 2; ++i) {
        Vertex const centre{1.7 + 2.2 * i, 2.4, 0};
        AddTable(room, centre, {}, 1.6, 0.8, 0.74);
        AddChair(room, {centre.x, 3.2, 0}, room.AnyTurn(), Material::Metal);
        auto screen = room.Add("Screen", {centre.x, 2.25, 0.74}, {});
        screen.AddBox({-0.12, -0.08, 0}, {0.12, 0.08, 0.015}, Material::Metal);
        screen.AddBox({-0.02, -0.01, 0.015}, {0.02, 0.01, 0.2}, Material::Metal);
        screen.AddBox({-0.32, 0.012, 0.12}, {0.32, 0.04, 0.5}, Material::Metal);
    }
    auto shelf = room.Add("Shelf", {2.7, 5.2, 0}, {});
    for (double const x : {-1.0, 0.96}) shelf.AddBox({x, -0.16, 0}, {x + 0.04, 0.16, 2.0}, Material::Oak);
    for (std::uint32_t i = 0; i < 5; ++i) {
        auto const z = 0.1 + 0.46 * i;
        shelf.AddBox({-0.96, -0.16, z}, {0.96, 0.16, z + 0.03}, Material::Oak);
        if (i == 4) break;
        auto const books = room.GetRandom().Between(0.3, 1.6);
        shelf.AddBox({-0.9, -0.1, z + 0.031}, {-0.9 + books, 0.12, z + 0.3},
                     i % 2 == 0 ? Material::Accent : Material::Teal);
    }
}

}  // namespace

void AddFurniture(SampleModel& model, std::uint32_t storey) {
    constexpr void (*kRooms[])(Room&) = {AddDiningRoom, AddLivingRoom, AddBedroom, AddOffice};
    for (std::uint32_t bay = 0; bay < 4; ++bay) {
        auto const place = Compose(AtStorey(storey), At({kBayWidth * bay + 0.3, 1.0, 0}));
        Room room(model, "room " + std::to_string(bay + 1) + ", " + StoreyName(storey), place);
        kRooms[model.GetRandom().Below(4)](room);
    }
}

}  // namespace QuorlanSample
