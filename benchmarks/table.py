#!/usr/bin/env python3
"""Prints the tables of scripts/bench from the JSON files of the benchmark programs.

usage: table.py DIRECTORY [--markdown]

A row is one tool at one size: the median time per item, and the plain method's and each peer's time as a multiple of
it. What was not measured is left out. "limit" is how many times as long we take as copying the bytes that have to be
read and written would, at the bandwidth that the same run measured (CopyMemory). A second table has a row for each
whole model and a column for each tool, in parentheses the time of the plain method or the peer as a multiple of ours.
"""

import json
import pathlib
import sys

INSTANCE = 20 + 48 + 32  # record, placement, and the entity's record, which two instances share

# tool, what an item is, benchmark, sizes, plain method, peers, bytes per item that have to be moved
ROWS = [
    ("BoundingBoxBuilder", "instance", "BoundingBoxes", (10000, 100000, 1000000), "BoundingBoxesPlain",
     {"Eigen": "BoundingBoxesEigen"}, INSTANCE + 48),
    ("PlacementBuilder", "instance", "Placements", (10000, 100000, 1000000), "PlacementsPlain",
     {"Eigen": "PlacementsEigen", "glm": "PlacementsGlm"}, INSTANCE + 128),
    ("QaabBuilder, boxes included", "instance", "BoxTree", (10000, 100000, 1000000), "BoxTreePlain",
     {"Embree LOW": "BoxTreeEmbreeLow", "Bullet": "BoxTreeBullet"}, INSTANCE + 2 * 48 + 32),
    ("QuantificationBuilder, buildings", "instance", "Quantities", (10000, 100000, 1000000), "QuantitiesPlain", {}, None),
    ("QuantificationBuilder", "triangle", "SolidQuantities", range(4), None, {"CGAL": "SolidQuantitiesCgal"}, None),
    ("VertexNormalBuilder", "mesh", "VertexNormals", range(4), "VertexNormalsPlain",
     {"VTK": "VertexNormalsVtk", "CGAL": "VertexNormalsCgal"}, None),
    ("LodLineBRepBuilder", "vertex", "LodLines", range(3), None, {"Eigen": "LodLinesEigen"}, 12),
    ("UniqueGeometryDefinitionBuilder, copies", "shape", "PlacedCopies<Library>", (1000, 10000, 100000), None,
     {"buckets and fit": "PlacedCopies<BucketsAndFit>", "exact hash": "ExactCopies<ExactHash>"}, None),
    ("UniqueGeometryDefinitionBuilder, all new", "shape", "DistinctBoxes<Library>", (1000, 10000, 100000), None,
     {"buckets and fit": "DistinctBoxes<BucketsAndFit>"}, None),
    ("ModelPicker surfaces", "pick", "PickSurfaces", (1000, 10000, 100000, 1000000), "PickSurfacesOfAllInstances",
     {"Embree instances": "PickSurfacesWithEmbreeInstances", "Embree triangles": "PickSurfacesWithEmbreeTriangles"},
     None),
    ("ModelPicker candidates", "query", "FindCandidates", (1000, 10000, 100000, 1000000), None,
     {"Bullet": "FindCandidatesWithBullet", "Embree MEDIUM": "FindCandidatesWithEmbree"}, None),
    ("ModelPicker edges", "pick", "PickEdges", (1000, 10000, 100000, 1000000), None, {}, None),
    ("ModelPicker lines", "pick", "PickLines", (1000, 10000, 100000, 1000000), None, {}, None),
    ("Ray against the edges of a shape", "ray", "StoredBRepEdges", [f"side:{n}/planes:0" for n in (5, 16, 50, 158)],
     "PlainEdges", {}, None),
    ("Ray against segments", "ray", "Segments", (100, 1000, 10000, 100000), "PlainSegments", {}, None),
    ("Ray against arcs", "ray", "Arcs", (100, 1000, 10000), "SampledArcs", {}, None),
    ("GUID to 22 characters", "GUID", "GuidToCompressed", None, None, {}, None),
    ("22 characters to GUID", "GUID", "CompressedToGuid", None, "CompressedToGuidPlain", {}, None),
    ("GUID to 36 characters", "GUID", "GuidToHex", None, "GuidToHexPlain", {}, None),
    ("36 characters to GUID", "GUID", "HexToGuid", None, "HexToGuidPlain", {}, None),
    ("ConnectIdentifierResolver", "box", "ResolveBox", (1000, 10000, 100000), "ResolveBoxPlain", {}, None),
    ("Merge, one percent", "model", "MergeOnePercent", (1000, 10000, 100000), None,
     {"object API": "UnpackAndPackObjects"}, None),
    ("ModelStorage::FromBuffer", "MB", "OpenModel", (1000, 10000, 100000), None, {}, 2e6),
    ("ModelValidator", "MB", "ValidateModel", (1000, 10000, 100000), None, {}, 1e6),
    ("IModelReader, shapes and placements", "MB", "ReadModel", (1000, 10000, 100000), None, {}, 1e6),
]

# Of whole models, one row each: column, what an item is, benchmark, what is measured beside it
WHOLE_COLUMNS = [
    ("boxes", "instance", "BoundingBoxes", ()),
    ("placements", "instance", "Placements", ()),
    ("box tree", "instance", "BoxTree", ()),
    ("LOD lines", "instance", "LodLines", ()),
    ("quantities", "entity", "Quantities", ()),
    ("render mesh", "triangle", "RenderMeshes", ()),
    ("pick (Embree, plain)", "pick", "PickSurfaces", ("PickSurfacesEmbree", "PickSurfacesPlain")),
    ("open", "MB", "OpenModel", ()),
    ("validate", "MB", "ValidateModel", ()),
    ("merge (object API)", "MB", "MergeOnePercent", ("UnpackAndPack",)),
]

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_results(directory):
    """The median (or only) result of each benchmark by name."""
    results = {}
    for path in sorted(pathlib.Path(directory).glob("*.json")):
        with open(path) as file:
            data = json.load(file)
        for result in data["benchmarks"]:
            if result.get("aggregate_name", "median") == "median" and not result.get("error_occurred"):
                name = result.get("run_name", result["name"])
                results[name.split("/repeats:")[0].replace("/manual_time", "")] = result
    return results


def time_per_item(result):
    """[ns] of processor time, or of what a benchmark measured itself for as many items as its size."""
    if result.get("run_name", "").endswith("/manual_time"):
        return result["real_time"] * NANOSECONDS[result["time_unit"]] / int(result["run_name"].split("/")[1])
    for counter in ("perInstance", "perItem"):
        if counter in result:
            return result[counter] * 1e9
    if "items_per_second" in result:
        return 1e9 / result["items_per_second"]
    return result["cpu_time"] * NANOSECONDS[result["time_unit"]]


def find(results, name, size):
    return results.get(name if size is None else f"{name}/{size}")


def format_time(ns):
    for unit in ("ns", "us", "ms"):
        if ns < 1000:
            return f"{ns:.3g} {unit}"
        ns /= 1000
    return f"{ns:.3g} s"


def format_ratio(ratio):
    return f"{ratio:.0f} x" if ratio >= 20 else f"{ratio:.1f} x" if ratio >= 1 else f"{ratio:.2f} x"


def rows_of(results):
    copy = find(results, "CopyMemory", 256 << 20)
    nanoseconds_per_byte = 1e9 / copy["bytes_per_second"] if copy else None
    for tool, item, name, sizes, plain, peers, moved in ROWS:
        for size in [None] if sizes is None else sizes:
            ours = find(results, name, size)
            if ours is None:
                continue
            time = time_per_item(ours)
            label = ours.get("label")
            shown = f"{size:,}" if isinstance(size, int) else size or ""
            if label and label != "per MB":
                shown = label
            against = []
            for title, other in [("plain", plain)] + list(peers.items()):
                result = find(results, other, size) if other else None
                if result is not None:
                    against.append(f"{title} {format_ratio(time_per_item(result) / time)}")
            limit = format_ratio(time / (moved * nanoseconds_per_byte)) if moved and nanoseconds_per_byte else ""
            yield tool, shown, f"{format_time(time)} per {item}", ", ".join(against), limit


def whole_rows_of(results):
    prefix = f"Whole/{WHOLE_COLUMNS[0][2]}/"
    models = sorted((key[len(prefix):] for key in results if key.startswith(prefix)), key=str.lower)
    for model in models:
        row = [results[prefix + model].get("label", model)]
        for _, _, name, others in WHOLE_COLUMNS:
            ours = results.get(f"Whole/{name}/{model}")
            if ours is None:
                row.append("")
                continue
            time = time_per_item(ours)
            theirs = [results.get(f"Whole/{other}/{model}") for other in others]
            ratios = ", ".join(format_ratio(time_per_item(other) / time) for other in theirs if other)
            row.append(format_time(time) + (f" ({ratios})" if ratios else ""))
        yield row


def print_table(rows, is_markdown):
    if len(rows) == 1:
        return  # a head without rows
    if is_markdown:
        for i, row in enumerate(rows):
            print("| " + " | ".join(row) + " |")
            if i == 0:
                print("|" + "---|" * len(row))
        return
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def main():
    results = read_results(sys.argv[1])
    is_markdown = "--markdown" in sys.argv
    print_table([("tool", "size", "time", "others take", "limit")] + list(rows_of(results)), is_markdown)
    print()
    head = ["whole model"] + [f"{title}, per {item}" for title, item, _, _ in WHOLE_COLUMNS]
    print_table([head] + list(whole_rows_of(results)), is_markdown)


if __name__ == "__main__":
    main()
