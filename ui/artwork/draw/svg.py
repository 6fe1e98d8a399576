"""Plain SVG Tiny pictures: paths, gradients, noise."""
import math
import random

INK, PEAT, MIST, TEAL, BRASS = "#0E1518", "#1B2724", "#9FB4AE", "#5BC8B5", "#E0B25B"


def num(value, digits=1):
    text = f"{value:.{digits}f}"
    if "." in text:
        text = text.rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def mix(a, b, t):
    """Blend two #rrggbb colours."""
    pa = [int(a[i:i + 2], 16) for i in (1, 3, 5)]
    pb = [int(b[i:i + 2], 16) for i in (1, 3, 5)]
    return "#" + "".join(f"{round(x + (y - x) * t):02X}" for x, y in zip(pa, pb))


class Noise:
    """Smooth one-dimensional value noise in [-1, 1], summed over octaves."""

    def __init__(self, seed):
        rng = random.Random(seed)
        self.table = [rng.uniform(-1, 1) for _ in range(512)]

    def base(self, x):
        i = math.floor(x)
        f = x - i
        f = f * f * (3 - 2 * f)
        a, b = self.table[i % 512], self.table[(i + 1) % 512]
        return a + (b - a) * f

    def __call__(self, x, octaves=4, gain=0.5):
        total, amp, norm = 0.0, 1.0, 0.0
        for k in range(octaves):
            total += amp * self.base(x * 2 ** k + 37.3 * k)
            norm += amp
            amp *= gain
        return total / norm


class Picture:
    def __init__(self, width, height, digits=1):
        self.width, self.height, self.digits = width, height, digits
        self.defs, self.body, self.count = [], [], 0

    def _stops(self, stops):
        out = []
        for stop in stops:
            opacity = f' stop-opacity="{num(stop[2], 3)}"' if len(stop) > 2 else ""
            out.append(f'<stop offset="{num(stop[0], 3)}" stop-color="{stop[1]}"{opacity}/>')
        return "".join(out)

    def linear(self, x1, y1, x2, y2, *stops):
        self.count += 1
        n = lambda v: num(v, 2)
        self.defs.append(
            f'<linearGradient id="g{self.count}" gradientUnits="userSpaceOnUse" x1="{n(x1)}" '
            f'y1="{n(y1)}" x2="{n(x2)}" y2="{n(y2)}">{self._stops(stops)}</linearGradient>')
        return f"url(#g{self.count})"

    def radial(self, cx, cy, rx, ry, *stops, turn=0):
        """A radial gradient, elliptical when rx and ry differ."""
        self.count += 1
        n = lambda v: num(v, 2)
        rot = f" rotate({num(turn)})" if turn else ""
        scale = f" scale(1 {num(ry / rx, 4)})" if abs(rx - ry) > 1e-6 else ""
        self.defs.append(
            f'<radialGradient id="g{self.count}" gradientUnits="userSpaceOnUse" cx="0" cy="0" '
            f'r="{n(rx)}" gradientTransform="translate({n(cx)} {n(cy)}){rot}{scale}">'
            f'{self._stops(stops)}</radialGradient>')
        return f"url(#g{self.count})"

    def path(self, d, fill=None, opacity=None, stroke=None, width=None, rule=None,
             cap="round", stroke_opacity=None):
        a = [f'd="{d}"', f'fill="{fill or "none"}"']
        if opacity is not None:
            a.append(f'opacity="{num(opacity, 3)}"')
        if rule:
            a.append(f'fill-rule="{rule}"')
        if stroke:
            a.append(f'stroke="{stroke}" stroke-width="{num(width or 1, 2)}"')
            if cap != "round":
                a.append(f'stroke-linecap="{cap}"')
            if stroke_opacity is not None:
                a.append(f'stroke-opacity="{num(stroke_opacity, 3)}"')
        self.body.append(f'<path {" ".join(a)}/>')

    def open(self, transform=None, opacity=None):
        t = f' transform="{transform}"' if transform else ""
        o = f' opacity="{num(opacity, 3)}"' if opacity is not None else ""
        self.body.append(f"<g{t}{o}>")

    def close(self):
        self.body.append("</g>")

    def glow(self, cx, cy, rx, ry, *stops, turn=0):
        """Soft light: an ellipse filled with a fading radial gradient."""
        fill = self.radial(cx, cy, rx, ry, *stops, turn=turn)
        if turn:
            r = max(rx, ry)
            self.path(ellipse(cx, cy, r, r), fill)
        else:
            self.path(ellipse(cx, cy, rx, ry), fill)

    def save(self, name):
        text = (f'<?xml version="1.0" encoding="UTF-8"?>\n'
                f'<svg xmlns="http://www.w3.org/2000/svg" version="1.2" baseProfile="tiny" '
                f'stroke-linecap="round" stroke-linejoin="round" '
                f'width="{self.width}" height="{self.height}" '
                f'viewBox="0 0 {self.width} {self.height}">\n')
        if self.defs:
            text += "<defs>\n" + "\n".join(self.defs) + "\n</defs>\n"
        text += "\n".join(self.body) + "\n</svg>\n"
        with open(name, "w", encoding="utf-8") as out:
            out.write(text)


def fade(colour, *pairs):
    """Stops of one colour: (offset, opacity) pairs."""
    return [(o, colour, a) for o, a in pairs]


def short(value, digits):
    text = num(value, digits)
    return text.replace("0.", ".", 1) if text.startswith(("0.", "-0.")) else text


class Pen:
    """Writes relative curves from rounded absolute points, which keeps files small."""

    def __init__(self, x, y, digits=1):
        self.digits = digits
        self.x, self.y = round(x, digits), round(y, digits)
        self.d = f"M{num(self.x, digits)} {num(self.y, digits)}"

    def to(self, letter, *points):
        out = []
        for x, y in points:
            out += [short(x - self.x, self.digits), short(y - self.y, self.digits)]
        last = points[-1]
        self.x, self.y = round(last[0], self.digits), round(last[1], self.digits)
        text = letter
        for k, item in enumerate(out):
            text += item if k == 0 or item.startswith("-") else " " + item
        self.d += text


def poly(points, closed=True, digits=1):
    pen = Pen(points[0][0], points[0][1], digits)
    for p in points[1:]:
        pen.to("l", p)
    return pen.d + ("Z" if closed else "")


def spline(points, closed=True, tension=1.0, digits=1):
    """A smooth path through all points."""
    n = len(points)
    at = (lambda i: points[i % n]) if closed else (lambda i: points[max(0, min(n - 1, i))])
    pen = Pen(points[0][0], points[0][1], digits)
    k = tension / 6
    for i in range(n if closed else n - 1):
        p0, p1, p2, p3 = at(i - 1), at(i), at(i + 1), at(i + 2)
        pen.to("c", (p1[0] + (p2[0] - p0[0]) * k, p1[1] + (p2[1] - p0[1]) * k),
               (p2[0] - (p3[0] - p1[0]) * k, p2[1] - (p3[1] - p1[1]) * k), p2)
    return pen.d + ("Z" if closed else "")


def ellipse(cx, cy, rx, ry, digits=1):
    k = 0.5523
    f = lambda v: num(v, digits)
    return (f"M{f(cx - rx)} {f(cy)}C{f(cx - rx)} {f(cy - ry * k)} {f(cx - rx * k)} {f(cy - ry)} "
            f"{f(cx)} {f(cy - ry)}C{f(cx + rx * k)} {f(cy - ry)} {f(cx + rx)} {f(cy - ry * k)} "
            f"{f(cx + rx)} {f(cy)}C{f(cx + rx)} {f(cy + ry * k)} {f(cx + rx * k)} {f(cy + ry)} "
            f"{f(cx)} {f(cy + ry)}C{f(cx - rx * k)} {f(cy + ry)} {f(cx - rx)} {f(cy + ry * k)} "
            f"{f(cx - rx)} {f(cy)}Z")


def strip(line, width, side=1, digits=1):
    """A tapering band along a line: width(t) gives its thickness, t in 0..1."""
    n = len(line)
    inner = []
    for i, (x, y) in enumerate(line):
        ax, ay = line[max(0, i - 1)]
        bx, by = line[min(n - 1, i + 1)]
        length = math.hypot(bx - ax, by - ay) or 1
        w = width(i / (n - 1)) * side
        inner.append((x - (by - ay) / length * w, y + (bx - ax) / length * w))
    return spline(line + inner[::-1], True, 0.9, digits)


def blade(x, y, length, lean, width, bend=0.5):
    """One blade of grass rising from (x, y); lean is the tip's sideways shift."""
    tx, ty = x + lean, y - length
    cx, cy = x + lean * (1 - bend) * 0.35, y - length * 0.62
    pen = Pen(x - width / 2, y)
    pen.to("q", (cx - width * .4, cy), (tx, ty))
    pen.to("q", (cx + width * .4, cy), (x + width / 2, y))
    return pen.d + "Z"


def lens(x1, x2, y, thick, sag=0.0):
    """A thin horizontal streak, pointed at both ends."""
    m = (x1 + x2) / 2
    return (f"M{num(x1)} {num(y)}Q{num(m)} {num(y - thick + sag)} {num(x2)} {num(y)}"
            f"Q{num(m)} {num(y + thick + sag)} {num(x1)} {num(y)}Z")
