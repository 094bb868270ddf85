#include "reference/Manual.h"

namespace QuorlanProgram {
namespace {

struct ManualText {
    char const* command;
    char const* text;
};

/// What options cannot say by themselves.
constexpr ManualText kTexts[] = {
    {"", R"(**Exit codes.** 0: done. 1: bad input, or a question answered with "no" (nothing under the pixel, the
models differ). 2: wrong usage; the usage is printed.

**Messages** go to stderr, one line each: `quorlan: FILE: PLACE: REASON`. Results go to stdout.

**Inputs** are checked whole before anything is done with them: every index in range, every loop well formed. A file
that is missing, empty, cut off or damaged is named with the first problem found and the number of others.

**Outputs** are written whole or not at all: into a temporary beside the target that takes its name at the end. An
output that is one of the inputs, by whatever name or link, is refused. A file that is replaced keeps its permissions;
a device (`/dev/null`) is written to directly.

**Units** are metres. x runs east, y north, z up.

**GUIDs** are written in the 22 characters of IFC and read in either form.)"},
    {"sample", R"(A residential building with everything a model can hold: solids of all kinds, with openings, with
normals, with texture coordinates and textures, lines and arcs, two-sided glass, layers, owner histories, properties,
and entities of every kind of identifier. The same arguments give the same bytes; whatever two seeds have in common
keeps its GUID.)"},
    {"import", R"(Every product with a body becomes an entity with its placement, owner history and properties; openings
are cut, spaces stand on the layer `IfcSpace`. Every node of a mesh file that has meshes becomes an entity. Several files
become one model, their entities side by side, shapes that they have in common written once. What is missing or wrong is
counted as warnings on stderr and named by `--report`; the rest comes in. [import.md](import.md) says what becomes of
what, and how well it agrees with another engine.)"},
    {"info", R"(Counts of everything, the kinds of entities and shapes, the change actions of the owner histories,
instances by layer, the world bounds, and the bytes of each table of the buffer. Of a model that `import` wrote also how
many shapes were read and how many kept, as copies of one another are stored once, and the farthest that this moved a
vertex.)"},
    {"validate",
     R"(Says whether every tool can be trusted with the model: every index and reference in range, every loop
well formed, no part of a shape used twice. Each problem stands on a line of its own, with its place (`instance 12:
material index 9 of 4`); at most 100 are named. Exit code 0 for a sound model, 1 for any other. JSON has `file`,
`bytes`, `sound`, `problems` and `complete`, which is false where there may be more problems than are named.)"},
    {"boxes", R"(One row per instance, in instance order, with the entity's index, GUID (empty where none identifies it)
and name, and `minX minY minZ maxX maxY maxZ`: the box of the placed shape's own box.

CSV has a header line and quotes as RFC 4180 says; JSON is an array of one object per row. Numbers read back as the same
bits; what is not finite is empty in CSV and `null` in JSON.)"},
    {"placements", R"(Rows as those of `boxes`, with the images of the axes, `xAxisX ... zAxisZ`, and the origin,
`originX originY originZ`.)"},
    {"quantities",
     R"(Area (m2), volume (m3) and centre of gravity of every entity with shapes, and the total. `--by layer`
and `--by name` add up instead; an entity whose shapes stand on several layers counts under `several`. Only plain faceted
shapes count. The last column says what stands against the figures; `closed` means nothing is known against them:

| mark | meaning |
| --- | --- |
| `open` | an edge belongs to one face only, so there is no inside and the volume means nothing |
| `edges not used once in each direction` | faces are turned against their neighbours, or more than two meet at an edge |
| `inverted` | closed, but the faces look inwards: the volume is negative |
| `scaled placement` | a stored axis is not of unit length: area and volume are those of the unscaled shape |
| `faces without area` | degenerate faces, which add no area |
| `lines left out`, `shapes with normals left out`, ... | kinds of shapes that are not counted |
| `not finite` | a flat shape has no centre, or coordinates are not finite |

An entity that is not there is an error.)"},
    {"lod", R"(One row per instance: the world ends of its line, the radius in metres, and the material's index.)"},
    {"lines", R"(Every segment and arc of all line graphics, in definition coordinates; of an arc its first and last
point, radius and sweep angle in radians.)"},
    {"mesh", R"(Triangles with smoothed normals, as Wavefront OBJ.)"},
    {"export",
     R"(One mesh per shape and material, one node per instance with its matrix, the entity's name, and GUID and
layer in `extras`. Y is up, as glTF has it; the middle of the model is moved to the origin, so that models far away keep
their precision, and the root node's `extras.offset` says by how much. Colours, transparency, two-sidedness, textures and
line graphics come along.)"},
    {"pick",
     R"(Says which surface is seen at the pixel: the entity's GUID and name, its layer, the entity's, instance's and
face's indices, the world point and normal, and the distance from the camera. Exit code 1, and `nothing there` or `null`,
where nothing is. Where a ray crosses several faces of one shape, the one that stands last in the shape is reported;
among several shapes the nearest.

`--edges` and `--lines` find what lies within the tolerance of the pixel. The nearest to the camera wins, also behind a
surface. The answer has the `kind` (`edge`, `line`, `arc`), the `face` of an edge or the `segment` of a line or arc (lines
are numbered first, then arcs), the world point, its distance from the camera, and how many `pixels` lie between it and
the pixel.

Of the views, `front` looks north, `back` south, `left` east, `right` west. A GUID or layer that the model does not have
is an error.

    quorlan pick house.qln --pixel 400,300
    quorlan pick house.qln --pixel 400,300 --edges)"},
    {"render", R"(Casts a picture of the render meshes: surfaces smooth up to a crease angle, textures (PNG), glass that
tints and mirrors, lines one pixel wide, the light of a sky and of a sun that stands up and left behind the camera, with
soft shadows. The ground is transparent. Backs of faces are seen where their material is two-sided; solids that a
`--clip` plane cuts are closed at the cut, in a dark shade of their colour. The same call gives the same bytes, on any
number of processors.

With `--picked` the picture is cast with the pickers: it shows what `pick` finds, no more and no less. A program that was
built without Embree always does so, and says it on stderr.

- `--color entity` gives each entity a plain colour of its own, neither shaded nor smoothed; `--edges`, `--snap` and
  `--shadows` are wrong usage with it. Its `--legend` is a JSON array of the entities seen, each with `color`, `guid`,
  `name`, `entity` and the number of its `pixels`.
- `--color layer` has a colour per layer, `--color normal` colours that show where surfaces face.
- `--snap` marks what `pick --edges` finds: a ring at the point, the edge in red. Exit code 1 where that is nothing.

A progress bar is drawn where stderr is a terminal; at the end the number of rays a second goes to stderr.

    quorlan sample -o house.qln
    quorlan render house.qln -o house.png --size 1200x900
    quorlan render house.qln -o check.png --picked --shadows
    quorlan render house.qln -o plan.png --view top --clip 0,0,1,4.5
    quorlan render house.qln -o snap.png --edges --snap 400,300)"},
    {"diff", R"(Compares two full models entity by entity, by GUID: name, placement, shapes, materials, layers and
properties. Tells what was added, modified and deleted, and writes the increment that leads from the old model to the new
one, so that `quorlan merge OLD.qln INCREMENT.qln` gives the new one. Exit code 0 if the models are equal, 1 if they
differ; the increment is written either way.

    IfcWall 'Basic Wall:Exterior' 2O2Fr$t4X7Zf8NOew3FLOH: moved by 0.350 m, 1 shape changed, volume 2.41 → 2.87

Shapes are compared where they stand in the world, so that another way to store them is no difference: another order of
instances, or a shape shared by its rotated copies. A shape whose vertices or faces stand in another order is a changed
one, though its volume stays. A shape's size adds 2e-5 of itself to the tolerance; normals, axes and texture coordinates
may differ by 1e-4, numbers in properties by 1e-6 of themselves.

- The report `text` has a line per changed entity, then the counts; `md` a table each of what was added, modified and
  deleted; `json` the counts, and per entity its `guid`, `class`, `name`, the phrases `what`, `moved` in metres, `turned`
  in degrees, `old` and `new` volume and area.
- The class is the property `Class` of the set `IFC`, as `import` writes it.
- How far an entity went is exact where its shapes stayed as they are; where all of them changed, it is what is less: the
  way of its placement or that of the middle of its box.
- Owner histories are not compared. Entities without a GUID, and those that repeat one, cannot be: they are counted.)"},
    {"merge", R"(What the increment does not name stays as it is, what it adds or modifies is taken from it, what it
deletes is left out. Entities that no GUID identifies are not copied, as no increment can speak of them. `--verify` holds
every entity of the result against the model that it comes from, as `diff` compares; a difference is an error.)"},
    {"squash",
     R"(The result has the effect of both increments, one after the other. A line is printed per entity that it
deletes or modifies, sorted: `deleted GUID`, `modified GUID`.)"},
    {"extract",
     R"(Each entity comes with its placement, shapes, materials, layers, properties and owner history. A GUID that
the model does not have is an error.)"},
    {"combine",
     R"(Each model becomes an entity, with all its shapes where they were. The first `--guid` and `--name` belong
to the first model, and so on; a model without a name takes its file's, a model without a GUID gets one by its place in
the list. The names, properties and owner histories of a model's own entities become property sets of its entity, each
named after the entity it came from: `2O2Fr$t4X7Zf8NOew3FLOH/Pset_WallCommon`. What one entity cannot hold, such as
which shape was whose, is named on stderr.)"},
    {"resolve", R"(Names the entities, a line each: index, GUID, name. Exit code 1 if the text means none.)"},
    {"guid",
     R"(A line each: the 22 characters of IFC become 36 in hexadecimal, and 36 in hexadecimal, in either case and
with or without braces, become 22.

    quorlan guid 2O2Fr$t4X7Zf8NOew3FLOH)"},
};

}  // namespace

std::string ManualTextOf(std::string const& commandName) {
    for (auto const& entry : kTexts) {
        if (commandName == entry.command) return entry.text;
    }
    return "";
}

}  // namespace QuorlanProgram
