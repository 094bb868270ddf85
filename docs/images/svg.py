"""A page to draw on: lines, shapes and words with y upwards, written as SVG."""

INK, SOFT, PALE = "#1f2933", "#8a94a0", "#e4e8ec"
BLUE, ORANGE, GREEN, RED = "#2f6fb0", "#d9822b", "#3d8b5f", "#c23b3b"


def number(value):
    text = f"{value:.2f}".rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


class Picture:
    """A picture of `width` x `height` with the origin at the lower left corner."""

    def __init__(self, width, height, title):
        self.width, self.height = width, height
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}"'
            f' font-family="DejaVu Sans, Verdana, sans-serif" font-size="12" role="img">',
            f"<title>{title}</title>",
            f'<rect width="{width}" height="{height}" rx="6" fill="#ffffff"/>',
        ]

    def at(self, point):
        return number(point[0]) + "," + number(self.height - point[1])

    def _shape(self, tag, attributes, stroke, fill, width, dash):
        style = f' fill="{fill or "none"}"'
        if stroke:
            style += f' stroke="{stroke}" stroke-width="{number(width)}" stroke-linejoin="round" stroke-linecap="round"'
        if fill and not stroke:
            style += ' fill-opacity="0.85"'
        elif fill:
            style += ' fill-opacity="0.25"'
        self.parts.append(f"<{tag} {attributes}{style}" + (f' stroke-dasharray="{dash}"' if dash else "") + "/>")

    def line(self, points, stroke=INK, width=1.5, dash=None):
        self._shape("polyline", f'points="{" ".join(map(self.at, points))}"', stroke, None, width, dash)

    def polygon(self, points, stroke=INK, fill=None, width=1.5, dash=None):
        self._shape("polygon", f'points="{" ".join(map(self.at, points))}"', stroke, fill, width, dash)

    def box(self, low, high, stroke=INK, fill=None, width=1.5, dash=None):
        self.polygon([low, (high[0], low[1]), high, (low[0], high[1])], stroke, fill, width, dash)

    def dot(self, center, radius=3, fill=INK):
        self.circle(center, radius, None, fill)

    def circle(self, center, radius, stroke=INK, fill=None, width=1.5, dash=None):
        x, y = self.at(center).split(",")
        self._shape("circle", f'cx="{x}" cy="{y}" r="{number(radius)}"', stroke, fill, width, dash)

    def arc(self, start, end, bend, stroke=INK, width=1.5, dash=None, head=True):
        """A curved arrow whose middle lies `bend` to the left of the straight way."""
        dx, dy = end[0] - start[0], end[1] - start[1]
        middle = ((start[0] + end[0]) / 2 - 2 * bend * dy / (dx * dx + dy * dy) ** 0.5,
                  (start[1] + end[1]) / 2 + 2 * bend * dx / (dx * dx + dy * dy) ** 0.5)
        self._shape("path", f'd="M{self.at(start)} Q{self.at(middle)} {self.at(end)}"', stroke, None, width, dash)
        if head:
            self._head(middle, end, stroke)

    def arrow(self, start, end, stroke=INK, width=1.5, dash=None):
        self.line([start, end], stroke, width, dash)
        self._head(start, end, stroke)

    def _head(self, start, end, color, size=8):
        dx, dy = end[0] - start[0], end[1] - start[1]
        length = (dx * dx + dy * dy) ** 0.5
        x, y = dx / length * size, dy / length * size
        self.polygon([end, (end[0] - x - 0.4 * y, end[1] - y + 0.4 * x), (end[0] - x + 0.4 * y, end[1] - y - 0.4 * x)],
                     None, color)

    def text(self, point, words, color=INK, anchor="start", size=12, bold=False):
        x, y = self.at(point).split(",")
        weight = ' font-weight="bold"' if bold else ""
        words = words.replace("&", "&amp;").replace("<", "&lt;")
        self.parts.append(
            f'<text x="{x}" y="{y}" fill="{color}" text-anchor="{anchor}" font-size="{size}"{weight}>{words}</text>')

    def write(self, path):
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(self.parts + ["</svg>", ""]))
