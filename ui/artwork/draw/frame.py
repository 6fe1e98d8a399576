"""The outline of the window: a dressed slab with a lower shoulder on the left."""
import math
import random

from svg import MIST, Noise, ellipse, fade, num, poly, spline

# Corner points of the slab, clockwise; the tor stands on the low shoulder.
KEYS = [(23, 122), (30, 98), (54, 82), (120, 77), (210, 80), (300, 79), (346, 74), (382, 58),
        (424, 47), (520, 44.5), (640, 46), (760, 43.5), (860, 45), (940, 44), (966, 52), (977.5, 74),
        (979, 150), (977.5, 260), (979.5, 370), (977.5, 480), (979, 570), (974, 600), (950, 617),
        (860, 619.5), (740, 618), (600, 621), (460, 619), (300, 621.5), (160, 619), (56, 619.5),
        (32, 608), (21.5, 584), (23, 480), (20.5, 360), (22.5, 240)]


def dense(keys, step=9.0):
    """Sample a closed spline through the keys about every few points."""
    out, n = [], len(keys)
    for i in range(n):
        p0, p1, p2, p3 = (keys[(i + k) % n] for k in (-1, 0, 1, 2))
        m = max(2, int(math.hypot(p2[0] - p1[0], p2[1] - p1[1]) / step))
        for j in range(m):
            t = j / m
            c = []
            for a in (0, 1):
                m1, m2 = (p2[a] - p0[a]) * .42, (p3[a] - p1[a]) * .42
                c.append((2 * t ** 3 - 3 * t * t + 1) * p1[a] + (t ** 3 - 2 * t * t + t) * m1
                         + (3 * t * t - 2 * t ** 3) * p2[a] + (t ** 3 - t * t) * m2)
            out.append(tuple(c))
    return out


def offset(points, by):
    """Move a clockwise outline inwards; by(i) gives the distance at each point."""
    out, n = [], len(points)
    for i, (x, y) in enumerate(points):
        ax, ay = points[(i - 2) % n]
        bx, by_ = points[(i + 2) % n]
        length = math.hypot(bx - ax, by_ - ay) or 1
        d = by(i)
        out.append((x - (by_ - ay) / length * d, y + (bx - ax) / length * d))
    return out


def outlines():
    base = dense(KEYS, 24)
    chip, fine = Noise(3), Noise(4)
    outer = offset(base, lambda i: max(-.8, chip(i * .6, 3) * 1.3) + (1.5 if fine(i * .9, 1) > .8 else 0))

    def corner(x, y):
        return sum(math.exp(-((x - cx) ** 2 + (y - cy) ** 2) / 700) for cx, cy in
                   ((24, 616), (976, 616), (975, 48)))
    inner = offset(base, lambda i: 10.5 + fine(i * .5, 3) * 1.5 + 5 * corner(*base[i]))
    middle = offset(base, lambda i: 5.5)
    return outer, inner, middle


def shadow(pic):
    """Fine steps that fade out: on a light desktop a few even ones show as rings."""
    d = spline([(x, y + 5) for x, y in KEYS], True, 2.5 / 3 * 1.2)
    reach, steps, darkest = 18, 30, .36
    before = 0
    for k in range(1, steps):
        r = reach * (1 - k / steps)
        darkness = darkest * (1 - r / reach) ** 1.8
        pic.path(d, None, None, "#020506", 2 * r,
                 stroke_opacity=1 - (1 - darkness) / (1 - before))
        before = darkness


def ring(pic, outer, inner):
    """The stone rim: dressed, chipped, lit from the sky and a little by the spring."""
    rng = random.Random(11)
    d_out, d_in = spline(outer), spline(inner)
    soft = spline(inner[::2])
    for w, a in ((14, .07), (9, .10), (5, .16), (2.4, .25)):
        pic.path(soft, None, None, "#020607", w, stroke_opacity=a)
    pic.path(d_out + d_in, pic.linear(0, 44, 0, 620, (0, "#3B4644"), (.18, "#2C3634"), (.6, "#202A28"),
                                      (1, "#161E1E")), rule="evenodd")
    n = len(outer)
    # weathered patches along the band
    for tone, count, alpha in (("#0A1011", 100, .24), ("#8C9C95", 60, .08), ("#57694F", 40, .16)):
        d = ""
        for _ in range(count):
            i, t = rng.randrange(n), rng.uniform(.15, .85)
            x = outer[i][0] + (inner[i][0] - outer[i][0]) * t
            y = outer[i][1] + (inner[i][1] - outer[i][1]) * t
            ax, ay = outer[(i + 1) % n]
            ang = math.atan2(ay - outer[i][1], ax - outer[i][0])
            length, thick = rng.uniform(3, 15), rng.uniform(.5, 2)
            ca, sa = math.cos(ang), math.sin(ang)
            pts = []
            for k in range(5):
                q = k / 5 * math.tau
                rr = rng.uniform(.6, 1.1)
                px, py = math.cos(q) * length * rr, math.sin(q) * thick * rr
                pts.append((x + px * ca - py * sa, y + px * sa + py * ca))
            d += poly(pts)
        pic.path(d, tone, alpha)
    # joints between the dressed blocks
    dark = light = ""
    for i in range(6, n, 1):
        if rng.random() < .2:
            (x1, y1), (x2, y2) = outer[i], inner[(i + rng.choice((-1, 0, 0, 1))) % n]
            mx, my = (x1 + x2) / 2 + rng.uniform(-1.4, 1.4), (y1 + y2) / 2 + rng.uniform(-1.4, 1.4)
            dark += f"M{num(x1)} {num(y1)}Q{num(mx)} {num(my)} {num(x2)} {num(y2)}"
            light += f"M{num(x1 + .9)} {num(y1 + .9)}Q{num(mx + .9)} {num(my + .9)} {num(x2 + .9)} {num(y2 + .9)}"
    pic.path(light, None, None, MIST, .7, stroke_opacity=.22)
    pic.path(dark, None, None, "#060B0C", 1, stroke_opacity=.8)
    # bevels: a bright upper arris, a dark lower one
    pic.path(d_out, None, None, pic.linear(0, 44, 0, 620, (0, "#C4D0CB", .62), (.3, MIST, .26),
                                           (1, MIST, .10)), 1.1)
    pic.path(d_in, None, None, "#030708", 1.6, stroke_opacity=.7)
    pic.path(spline(offset(inner, lambda i: -1.5)), None, None,
             pic.linear(0, 60, 0, 610, (0, MIST, .10), (1, MIST, .34)), .8)
    pic.path(spline(offset(inner, lambda i: -.6)), None, None,
             pic.radial(372, 600, 330, 250, *fade("#5BC8B5", (0, .8), (.4, .32), (1, 0))), 1.3)


def cup_marks(pic, cx, cy, size, seed):
    """Worn ring carvings, cut and not lit."""
    rng = random.Random(seed)
    for k in range(3):
        r = size * (.28 + .34 * k)
        start, pts = rng.uniform(0, 6), []
        for j in range(11):
            q = start + j / 11 * 5.3
            rr = r * rng.uniform(.95, 1.05)
            pts.append((cx + math.cos(q) * rr, cy + math.sin(q) * rr))
        pic.path(spline([(x + .7, y + .7) for x, y in pts], False), None, None, MIST, .7, stroke_opacity=.25)
        pic.path(spline(pts, False), None, None, "#060B0C", 1, stroke_opacity=.8)
    pic.path(ellipse(cx, cy, .9, .9), "#060B0C", .8)
