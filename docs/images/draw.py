#!/usr/bin/env python3
"""Draws the pictures of the pages, with the algorithms that they are about in two dimensions.

usage: docs/images/draw.py [FOLDER]      default: beside this script
"""

import math
import os
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from svg import BLUE, GREEN, INK, ORANGE, PALE, RED, SOFT, Picture  # noqa: E402


def add(p, q, factor=1):
    return (p[0] + factor * q[0], p[1] + factor * q[1])


def along(degrees, length=1):
    return (length * math.cos(math.radians(degrees)), length * math.sin(math.radians(degrees)))


def place(points, origin, degrees, scale=1):
    c, s = along(degrees, scale)
    return [(origin[0] + c * x - s * y, origin[1] + s * x + c * y) for x, y in points]


def draw_box_tree():
    picture = Picture(760, 270, "Boxes, and the array that the tree over them is")
    boxes = {"a": ((60, 130), (120, 215), 7), "b": ((95, 75), (190, 120), 2), "c": ((250, 95), (315, 185), 9)}
    picture.box((45, 60), (330, 230), SOFT)
    picture.text((45, 238), "root", SOFT)
    picture.box((52, 67), (198, 223), BLUE, None, 1.5, "4 3")
    picture.text((175, 207), "A", BLUE, bold=True)
    for name, (low, high, item) in boxes.items():
        picture.box(low, high, GREEN, GREEN)
        picture.text(((low[0] + high[0]) / 2, (low[1] + high[1]) / 2 - 4), f"{name}: {item}", INK, "middle")
    picture.text((45, 40), "the boxes of instances 7, 2 and 9", SOFT)

    cells = [("root", "-5", SOFT), ("A", "-3", BLUE), ("a", "7", GREEN), ("b", "2", GREEN), ("c", "9", GREEN)]
    left, width, bottom = 400, 64, 110
    for i, (name, value, color) in enumerate(cells):
        low = (left + i * width, bottom)
        picture.box(low, add(low, (width, 60)), color, color)
        picture.text(add(low, (width / 2, 38)), name, INK, "middle", bold=True)
        picture.text(add(low, (width / 2, 15)), value, INK, "middle")
        picture.text(add(low, (width / 2, -16)), str(i), SOFT, "middle", 11)
    for i in range(4):
        start = (left + (i + 0.5) * width + 6, bottom + 64)
        picture.arc(start, add(start, (width - 12, 0)), 9, INK, 1.2)
    picture.text((left, bottom + 108), "hit, or a leaf: the next node", INK)
    picture.arc((left + 1.5 * width, bottom - 24), (left + 4.5 * width, bottom - 24), -20, RED, 1.2)
    picture.text((left + 3 * width, bottom - 66), "A is missed: 3 further", RED, "middle")
    return picture


def draw_normals():
    picture = Picture(760, 280, "Normals of a profile: shared where it is smooth, two where it is sharp")
    crease = 30
    steps = [(90, 60), (75, 40), (55, 40), (35, 40), (15, 40), (-5, 110), (-85, 100)]  # direction, length
    points = [(70, 70)]
    for direction, length in steps:
        points.append(add(points[-1], along(direction, length)))
    points = [(1.05 * x + 20, 1.05 * y - 25) for x, y in points]
    faces = list(zip(points, points[1:]))
    normals = []
    for p, q in faces:
        length = math.dist(p, q)
        normals.append(((p[1] - q[1]) / length, (q[0] - p[0]) / length))
    picture.line(points, INK, 2.5)
    for (p, q), n in zip(faces, normals):
        middle = add(p, (q[0] - p[0], q[1] - p[1]), 0.5)
        picture.arrow(middle, add(middle, n, 20), SOFT, 1)
    for v in range(1, len(faces)):
        found = []
        for face in (v - 1, v):
            total = (0, 0)
            for other in (v - 1, v):
                cosine = sum(a * b for a, b in zip(normals[face], normals[other]))
                if cosine > math.cos(math.radians(crease)):
                    total = add(total, normals[other])
            length = math.hypot(*total)
            unit = (total[0] / length, total[1] / length)
            if not any(math.dist(unit, known) < 1e-5 for known in found):
                found.append(unit)
        for unit in found:
            picture.arrow(points[v], add(points[v], unit, 42), BLUE if len(found) == 1 else ORANGE, 2)
        picture.dot(points[v], 3.5)
    picture.arrow((475, 228), (505, 228), SOFT, 1)
    picture.text((515, 224), "the normal of a face", SOFT)
    picture.arrow((475, 198), (505, 198), BLUE, 2)
    picture.text((515, 194), "below the crease angle: one corner", BLUE)
    picture.arrow((475, 168), (505, 168), ORANGE, 2)
    picture.text((515, 164), "above it: a corner for each side", ORANGE)
    picture.text((475, 130), f"crease angle {crease} degrees; the faces turn", INK)
    picture.text((475, 112), "by 15, 20, 20, 20, 20 and 80 degrees", INK)
    return picture


def farthest_from(points, start, end):
    """The index of the point that is farthest from the line from start to end."""
    dx, dy = end[0] - start[0], end[1] - start[1]
    return max(range(len(points)), key=lambda i: abs(dx * (points[i][1] - start[1]) - dy * (points[i][0] - start[0])))


def draw_unique_shapes():
    picture = Picture(760, 270, "Rigid copies are found by a frame of three vertices")
    shape = [(0, 0), (80, 0), (80, 26), (30, 26), (30, 60), (0, 60)]
    mirrored = [(-x, y) for x, y in shape]
    copies = [(shape, (60, 70), 0, "stored"), (shape, (270, 75), 35, "moved, turned: a copy"),
              (shape, (520, 190), 200, "a copy"), (mirrored, (690, 75), -10, "mirrored: another shape")]
    for outline, origin, degrees, words in copies:
        points = place(outline, origin, degrees, 1.25)
        isCopy = outline is shape
        color = GREEN if words == "stored" else BLUE if isCopy else RED
        picture.polygon(points, color, color)
        x = max(range(len(points)), key=lambda i: math.dist(points[i], points[0]))
        y = farthest_from(points, points[0], points[x])
        picture.arrow(points[0], points[x], INK, 1.6)
        picture.arrow(points[0], points[y], ORANGE, 1.6)
        picture.dot(points[0], 4)
        for tip, name, ink in ((points[x], "X", INK), (points[y], "Y", ORANGE)):
            away = add(tip, points[0], -1)
            label = add(tip, away, 12 / math.hypot(*away))
            picture.text(add(label, (0, -4)), name, ink, "middle", bold=True)
        low = min(p[1] for p in points)
        middle = sum(p[0] for p in points) / len(points)
        picture.text((middle, low - 20), words, color, "middle")
    picture.text((20, 245), "X: to the vertex farthest from vertex 0.   Y: to the vertex farthest from that line.", INK)
    picture.text((20, 20), "The frames of two copies give the one transform that is tried, vertex by vertex.", SOFT)
    return picture


def draw_picking():
    picture = Picture(760, 320, "A ray through the boxes of a tree, and the pick box around a pixel")
    eye, hit = (40, 85), (260, 116.6)
    slope = (hit[1] - eye[1]) / (hit[0] - eye[0])
    picture.text((30, 295), "surfaces: a ray", INK, bold=True)
    picture.box((165, 190), (325, 275), SOFT, None, 1.2, "4 3")
    picture.box((175, 200), (235, 262), SOFT, PALE)
    picture.box((250, 210), (312, 265), SOFT, PALE)
    picture.text((333, 250), "missed: all", SOFT)
    picture.text((333, 235), "inside is", SOFT)
    picture.text((333, 220), "jumped over", SOFT)
    picture.box((215, 55), (380, 175), BLUE, None, 1.2, "4 3")
    picture.box((230, 80), (290, 145), BLUE, BLUE)
    picture.box((325, 65), (362, 165), BLUE, BLUE)
    picture.polygon([(235, 85), (285, 85), (285, 141)], INK, INK)
    picture.polygon([(330, 72), (357, 72), (357, 158), (330, 158)], INK, INK)
    end = (395, eye[1] + slope * (395 - eye[0]))
    picture.line([hit, end], ORANGE, 1.2, "3 3")
    picture.arrow(eye, hit, ORANGE, 2)
    picture.line([(90, 60), (90, 130)], INK, 1)
    for k in range(8):
        picture.line([(87, 60 + 10 * k), (93, 60 + 10 * k)], INK, 1)
    picture.text((90, 44), "pixels", INK, "middle")
    picture.dot(eye, 5)
    picture.text((40, 65), "eye", INK, "middle")
    picture.circle(hit, 5, RED, None, 2)
    picture.text((298, 40), "two candidates", BLUE, "middle")
    picture.text((30, 16), "Exact tests on the candidates alone; the nearest wins.", INK)

    center, half = (590, 165), 60
    picture.text((440, 295), "edges: a box around the pixel", INK, bold=True)
    picture.box(add(center, (-half, -half)), add(center, (half, half)), ORANGE, ORANGE, 1.5, "5 3")
    picture.line([add(center, (-6, 0)), add(center, (6, 0))], ORANGE, 2)
    picture.line([add(center, (0, -6)), add(center, (0, 6))], ORANGE, 2)
    picture.arrow(add(center, (0, -half - 10)), add(center, (half, -half - 10)), ORANGE, 1)
    picture.text(add(center, (half / 2, -half - 26)), "tolerance", ORANGE, "middle")
    edges = (((480, 185), (735, 245), BLUE), ((675, 90), (700, 275), SOFT), ((455, 235), (545, 110), BLUE))
    for start, finish, color in edges:
        dx, dy = finish[0] - start[0], finish[1] - start[1]
        t = ((center[0] - start[0]) * dx + (center[1] - start[1]) * dy) / (dx * dx + dy * dy)
        nearest = add(start, (dx, dy), t)
        picture.line([start, finish], color, 2.5)
        inside = abs(nearest[0] - center[0]) <= half and abs(nearest[1] - center[1]) <= half
        picture.dot(nearest, 4, color if inside else SOFT)
        if inside and color == BLUE and start[0] == 480:
            picture.line([center, nearest], INK, 1, "2 2")
            picture.circle(nearest, 8, RED, None, 2)
    picture.text((712, 135), "outside", SOFT, "middle")
    picture.text((485, 250), "nearest to the camera: snaps", BLUE)
    picture.text((440, 16), "Its point nearest to the ray must lie inside.", INK)
    return picture


def principal_line(points):
    """The line through the mean along the greatest spread: its ends, and the largest distance from it."""
    n = len(points)
    mean = (sum(p[0] for p in points) / n, sum(p[1] for p in points) / n)
    sxx = sum((p[0] - mean[0]) ** 2 for p in points) / n
    syy = sum((p[1] - mean[1]) ** 2 for p in points) / n
    sxy = sum((p[0] - mean[0]) * (p[1] - mean[1]) for p in points) / n
    axis = along(math.degrees(0.5 * math.atan2(2 * sxy, sxx - syy)))
    t = [(p[0] - mean[0]) * axis[0] + (p[1] - mean[1]) * axis[1] for p in points]
    radius = max(abs((p[0] - mean[0]) * axis[1] - (p[1] - mean[1]) * axis[0]) for p in points)
    return add(mean, axis, min(t)), add(mean, axis, max(t)), radius, axis


def draw_thick_line(picture, start, end, radius, axis, color):
    side = (-axis[1], axis[0])
    corners = [add(start, side, radius), add(end, side, radius), add(end, side, -radius), add(start, side, -radius)]
    picture.polygon(corners, color, color, 1.2, "5 3")
    picture.line([start, end], color, 2.5)


def draw_lod_lines():
    picture = Picture(760, 270, "Two lines for a brace, and the one that is kept")
    foot = [(0, 0), (14, 0), (14, 10), (196, 10), (196, 0), (210, 0)]
    brace = foot + [(x, 40 - y) for x, y in reversed(foot)]
    for left, words in ((0, "the box line: along the longest side of the box"),
                        (380, "the principal line: kept, its cylinder is smaller")):
        points = place(brace, (left + 75, 60), 28)
        low = (min(p[0] for p in points), min(p[1] for p in points))
        high = (max(p[0] for p in points), max(p[1] for p in points))
        if left == 0:
            picture.box(low, high, SOFT, None, 1)
            middle = (low[1] + high[1]) / 2
            draw_thick_line(picture, (low[0], middle), (high[0], middle), middle - low[1], (1, 0), ORANGE)
        else:
            start, end, radius, axis = principal_line(points)
            draw_thick_line(picture, start, end, radius, axis, GREEN)
            side = (-axis[1], axis[0])
            picture.arrow(start, add(start, side, radius), INK, 1.2)
            picture.text(add(start, (-42, 24)), "radius", INK)
        picture.polygon(points, INK, INK, 1.5)
        for p in points:
            picture.dot(p, 2.5)
        picture.text((left + 190, 24), words, ORANGE if left == 0 else GREEN, "middle")
    return picture


def draw_quantities():
    picture = Picture(760, 270, "A face with a hole, and a solid as a sum of signed tetrahedra")
    picture.text((30, 245), "area: loops as they turn", INK, bold=True)
    outer, hole = [(60, 60), (290, 60), (290, 210), (60, 210)], [(130, 100), (130, 170), (220, 170), (220, 100)]
    picture.polygon(outer, BLUE, BLUE)
    picture.polygon(hole, ORANGE, None)
    picture.polygon(hole, None, "#ffffff")
    for loop, color in ((outer, BLUE), (hole, ORANGE)):
        for p, q in zip(loop, loop[1:] + loop[:1]):
            picture.arrow(p, add(p, (q[0] - p[0], q[1] - p[1]), 0.55), color, 2)
    picture.text((95, 80), "+ outer loop", BLUE)
    picture.text((175, 131), "- hole", ORANGE, "middle")
    picture.arrow((60, 60), (60 + 45, 60), INK, 2)
    picture.arrow((60, 60), (60, 60 + 45), INK, 2)
    picture.text((106, 44), "U: the longest edge", INK)
    picture.text((40, 100), "V", INK)

    picture.text((410, 245), "volume: tetrahedra from one vertex r", INK, bold=True)
    points = [(430, 60), (700, 75), (690, 215), (565, 115), (450, 205)]
    r = points[0]
    for i in range(1, len(points) - 1):
        p, q = points[i], points[i + 1]
        signed = (p[0] - r[0]) * (q[1] - r[1]) - (p[1] - r[1]) * (q[0] - r[0])
        color = BLUE if signed > 0 else ORANGE
        picture.polygon([r, p, q], color, color, 1, "4 3")
        middle = ((r[0] + 2 * p[0] + 2 * q[0]) / 5, (r[1] + 2 * p[1] + 2 * q[1]) / 5)
        picture.text(add(middle, (0, -5)), "+" if signed > 0 else "\u2212", color, "middle", 18, True)
    picture.polygon(points, INK, None, 2.5)
    picture.dot(r, 5)
    picture.text((410, 55), "r", INK, bold=True)
    picture.text((410, 24), "What one tetrahedron has too much, another takes away.", SOFT)
    return picture


def draw_increments():
    picture = Picture(760, 300, "Two increments, one after the other or squashed")
    actions = {"ADDED": GREEN, "MODIFIED": ORANGE, "DELETED": RED, "": BLUE}

    def draw_entities(left, bottom, entities, title):
        picture.text((left, bottom + 50), title, INK, bold=True)
        for i, (name, action) in enumerate(entities):
            low = (left + 52 * i, bottom)
            color = actions[action]
            picture.box(low, add(low, (42, 34)), color, color, 1.5, "4 3" if action == "DELETED" else None)
            picture.text(add(low, (21, 13)), name, INK, "middle", bold=True)
            picture.text(add(low, (21, -13)), action.lower(), color, "middle", 10)

    draw_entities(30, 120, [("A", ""), ("B", ""), ("C", "")], "full model")
    draw_entities(310, 120, [("A", ""), ("B\u2032", ""), ("C", ""), ("D", "")], "on Monday evening")
    draw_entities(590, 120, [("B\u2032", ""), ("C", ""), ("D\u2032", "")], "on Tuesday evening")
    draw_entities(196, 220, [("B\u2032", "MODIFIED"), ("D", "ADDED")], "Monday's increment")
    draw_entities(490, 220, [("A", "DELETED"), ("D\u2032", "MODIFIED")], "Tuesday's increment")
    draw_entities(300, 30, [("A", "DELETED"), ("B\u2032", "MODIFIED"), ("D\u2032", "ADDED")], "both, squashed")
    picture.arrow((190, 137), (302, 137), INK, 2)
    picture.text((246, 145), "merge", INK, "middle")
    picture.arrow((522, 137), (582, 137), INK, 2)
    picture.text((552, 145), "merge", INK, "middle")
    picture.arc((100, 96), (290, 40), -26, INK, 2, None, False)
    picture.arc((456, 40), (664, 112), -26, INK, 2)
    picture.text((560, 24), "merge", INK, "middle")
    return picture


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, draw in sorted(globals().items()):
        if name.startswith("draw_") and name != "draw_thick_line":
            draw().write(os.path.join(folder, name[len("draw_"):].replace("_", "-") + ".svg"))


if __name__ == "__main__":
    main()
