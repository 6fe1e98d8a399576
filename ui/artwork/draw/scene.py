"""The moor at dusk: sky, hills, mist, the tor, the pool and the spring."""
import math
import random

from frame import cup_marks, outlines, ring, shadow
from controls import cut_panel
from figures import pair
from rocks import boulder, slab, standing_stone
from svg import MIST, TEAL, Noise, Picture, blade, ellipse, fade, lens, mix, num, spline, strip

SPRING = (368, 560)


def sky(pic, panel):
    d = spline(panel)
    pic.path(d, pic.linear(0, 44, 0, 330, (0, "#17232A"), (.16, "#222F38"), (.34, "#3B3F4B"), (.5, "#5E4A55"),
                           (.62, "#86595A"), (.72, "#B2775A"), (.80, "#7A5A58"), (1, "#2A3335")))
    # afterglow gathers low, right of the middle
    pic.path(d, pic.radial(600, 236, 480, 104, *fade("#E3A468", (0, .62), (.35, .32), (.7, .09), (1, 0))))
    pic.path(d, pic.radial(990, 60, 420, 300, *fade("#0C1519", (0, .62), (.5, .3), (1, 0))))
    pic.path(d, pic.radial(20, 60, 330, 260, *fade("#0C1519", (0, .5), (.5, .25), (1, 0))))


def clouds(pic):
    rng = random.Random(91)
    for k in range(26):
        y = 60 + 150 * (k / 30) ** 1.1 + rng.uniform(-5, 5)
        x = rng.uniform(330, 900)
        w = rng.uniform(50, 190)
        x1, x2 = max(430 if y < 92 else 40, x - w), min(962, x + w)
        if x2 - x1 < 40:
            continue
        warm = (y - 60) / 150
        lit = rng.random() < .5
        tint = mix("#5D646E", "#E2A878", warm) if lit else mix("#141D24", "#4A3842", warm)
        thick = rng.uniform(1.2, 4.6) * (1.2 - warm * .6)
        n, noise = 6, Noise(700 + k)
        top = [(x1 + (x2 - x1) * i / n, y - math.sin(i / n * math.pi) * thick * (1 + .6 * noise(i * .8, 2))) for i in range(n + 1)]
        low = [(x1 + (x2 - x1) * i / n, y + math.sin(i / n * math.pi) * thick * .55 * (1 + .7 * noise(30 + i * .8, 2)))
               for i in range(n, -1, -1)]
        a = rng.uniform(.10, .26) * (1 if lit else 1.25)
        pic.path(spline(top + low[1:-1]), pic.linear(x1, 0, x2, 0, *fade(tint, (0, 0), (.3, a), (.65, a * .8), (1, 0))))


def star(pic, x, y, s=1.0):
    pic.glow(x, y, 20 * s, 20 * s, *fade("#DDEBF0", (0, .42), (.25, .16), (1, 0)))
    pic.path(f"M{num(x)} {num(y - 7.5 * s)}Q{num(x + .5 * s)} {num(y - .5 * s)} {num(x + 5.2 * s)} {num(y)}"
             f"Q{num(x + .5 * s)} {num(y + .5 * s)} {num(x)} {num(y + 7.5 * s)}"
             f"Q{num(x - .5 * s)} {num(y + .5 * s)} {num(x - 5.2 * s)} {num(y)}"
             f"Q{num(x - .5 * s)} {num(y - .5 * s)} {num(x)} {num(y - 7.5 * s)}Z", "#F3FAF8", .95)
    pic.path(ellipse(x, y, 1.25 * s, 1.25 * s), "#FFFFFF")


def ridge(noise, x1, x2, base, swell, scale, fine, step=7, tilt=0.0):
    pts, n = [], round((x2 - x1) / step)
    for i in range(n + 1):
        x = x1 + (x2 - x1) * i / n
        pts.append((x, base + noise(x / scale, 3) * swell + noise(x / 13 + 90, 2) * fine + tilt * (x - 500)))
    return pts


def hill(pic, pts, depth, top, low, edge=None, edge_opacity=.2):
    high = min(p[1] for p in pts)
    d = spline(pts, False, .9)
    d += f"L{num(pts[-1][0])} {num(depth)}L{num(pts[0][0])} {num(depth)}Z"
    pic.path(d, pic.linear(0, high, 0, depth, (0, top), (1, low)))
    if edge:
        pic.path(strip(pts, lambda t: .9 + .5 * math.sin(t * 40)), edge, edge_opacity)


def folds(pic, pts, depth, tint, count, seed, alpha):
    """Shadows that run down a hillside."""
    rng = random.Random(seed)
    d = ""
    for _ in range(count):
        x, y = rng.choice(pts[4:-8])
        y += rng.uniform(4, 14)
        w, h = min(rng.uniform(24, 90), 966 - x), rng.uniform(9, (depth - y) * .5 + 10)
        if w < 12:
            continue
        d += spline([(x, y), (x + w * .4, y + h * .35), (x + w, y + h), (x + w * .35, y + h * .8), (x - w * .1, y + h * .5)])
    pic.path(d, tint, alpha)


def mist(pic, y, spread, alpha, seed, count, tint=MIST, xr=(40, 960)):
    rng = random.Random(seed)
    for _ in range(count):
        w = rng.uniform(70, 250)
        x = rng.uniform(xr[0] + w * .6, xr[1] - w * .6)
        yy = y + rng.uniform(-spread, spread)
        thick = rng.uniform(2, 8)
        n, noise = 6, Noise(rng.random())
        x1, x2 = max(xr[0], x - w), min(xr[1], x + w)
        top = [(x1 + (x2 - x1) * i / n, yy - math.sin(i / n * math.pi) * thick * (1 + .5 * noise(i, 2))) for i in range(n + 1)]
        low = [(x1 + (x2 - x1) * i / n, yy + math.sin(i / n * math.pi) * thick * .7 * (1 + .5 * noise(40 + i, 2)))
               for i in range(n - 1, 0, -1)]
        a = alpha * rng.uniform(.4, 1)
        pic.path(spline(top + low), pic.linear(x1, 0, x2, 0, *fade(tint, (0, 0), (.35, a), (.6, a * .85), (1, 0))))


def bank_of_mist(pic, cx, cy, rx, ry, alpha, tint=MIST):
    """Wider than the window, so it is cut off below the rim."""
    x1, x2 = max(34, cx - rx), min(966, cx + rx)
    pic.path(f"M{num(x1)} {num(cy - ry)}H{num(x2)}V{num(cy + ry)}H{num(x1)}Z",
             pic.radial(cx, cy, rx, ry, *fade(tint, (0, alpha), (.4, alpha * .6), (.75, alpha * .16), (1, 0))))


def hills(pic):
    layers = [
        (201, 13, 120, 1.2, "#7B5A5C", "#9A7A72", 300, "#E9B98A", .34),
        (228, 17, 95, 1.6, "#584953", "#6F6468", 330, "#C9906F", .26),
        (262, 20, 110, 2.0, "#3F414B", "#59605F", 370, "#A58078", .20),
        (306, 22, 90, 2.4, "#2A363B", "#42504F", 420, "#8A8A86", .15),
        (362, 20, 120, 2.8, "#1D2A2C", "#30403D", 490, "#7D918B", .12),
        (420, 14, 80, 3.0, "#152022", "#22302F", 505, "#6B837C", .12),
    ]
    for k, (base, swell, scale, fine, top, low, depth, edge, a) in enumerate(layers):
        pts = ridge(Noise(40 + k), 27, 973, base, swell, scale, fine, 11 + k, -.012 * (k - 2))
        hill(pic, pts, depth, top, low, edge, a)
        folds(pic, pts, depth, mix(top, "#0B1113", .5), 12, 300 + k, .16)
        if k >= 3:
            d, rng = "", random.Random(k)
            for x, y in pts[::1]:
                for _ in range(2):
                    d += blade(x + rng.uniform(-6, 6), y + 1.5, rng.uniform(2, 3 + k), rng.uniform(-2.5, 2.5), .9)
            pic.path(d, top)
        y = base + 36 + 6 * k
        bank_of_mist(pic, 330 + 110 * k % 420 + 120, y, 380, 24 + 3 * k, .26 - .025 * k, mix("#C7B4AA", MIST, min(1, k / 3)))
        mist(pic, y, 12, .26 - .02 * k, 500 + k, 5, mix("#D9BFAE", MIST, min(1, k / 3)), (60, 950))


def water(pic):
    shore = [(973, 487), (900, 483), (800, 489), (700, 484), (620, 490), (540, 486), (480, 495), (430, 500),
             (380, 507), (330, 517), (282, 532), (246, 552), (226, 572), (222, 592), (240, 606), (262, 614)]
    d = spline(shore, False) + "L950 614L966 606L973 590Z"
    pic.path(d, pic.linear(0, 484, 0, 612, (0, "#545255"), (.12, "#39413F"), (.34, "#1C2728"), (.7, "#111A1C"), (1, "#0C1315")))
    pic.path(strip(shore[:-3], lambda t: 1.1 + .6 * math.sin(t * 60), -1), "#C9B6A8", .22)
    rng = random.Random(17)
    # reflected hills
    for _ in range(26):
        x, w = rng.uniform(460, 940), rng.uniform(14, 70)
        y = rng.uniform(490, 520)
        pic.path(lens(max(440, x - w), min(968, x + w), y, rng.uniform(1, 3.4)), "#0D1517", rng.uniform(.18, .4))
    for _ in range(52):
        t = rng.random() ** 1.6
        y = 489 + 118 * t
        x, w = rng.uniform(300 + 0 * t, 930), rng.uniform(10, 44 + 46 * t)
        if x - w < 250:
            continue
        x2 = min(964, x + w)
        a = rng.uniform(.05, .20) * (1 - .75 * t)
        tint = rng.choice((MIST, "#C9A491", "#8FB5AE"))
        pic.path(lens(x - w, x2, y, rng.uniform(.4, 1.3)), tint, a)
    return d


def spring_light(pic, panel):
    """The large light: it finds the tor, the stones and the mist."""
    x, y = SPRING
    pic.path(spline(panel), pic.radial(x, y - 20, 330, 290, *fade(TEAL, (0, .40), (.22, .21), (.5, .075), (1, 0))))
    pic.glow(x, y - 74, 50, 130, *fade("#A9EDE0", (0, .20), (.45, .10), (1, 0)))


def spring(pic):
    x, y = SPRING
    pic.glow(x, y, 128, 40, *fade(TEAL, (0, .62), (.4, .30), (1, 0)))
    pic.glow(x, y + 4, 62, 20, *fade("#9BEBDC", (0, .85), (.5, .36), (1, 0)))
    rng = random.Random(5)
    for k in range(6):
        rx = 18 + 15 * k + rng.uniform(-2, 2)
        ry, yy = rx * .27, y + 3 + k * .8
        for a0, a1 in ((.2, 2.7), (3.4, 5.9)):
            a0 += rng.uniform(-.3, .3)
            line = [(x + math.cos(a0 + (a1 - a0) * j / 10) * rx, yy + math.sin(a0 + (a1 - a0) * j / 10) * ry) for j in range(11)]
            w = 1.3 - .13 * k
            pic.path(strip(line, lambda t: w * math.sin(t * math.pi) + .05), "#C9FFF2", .62 - .085 * k)
    # the welling itself
    pic.path(spline([(x - 17, y + 3), (x - 9, y - 2.4), (x - 2, y - 5), (x + 6, y - 3.4), (x + 16, y + 2.6),
                     (x + 7, y + 5.2), (x - 6, y + 5.6)]), "#D8FFF6", .82)
    pic.path(spline([(x - 8, y + 1), (x - 3, y - 3.4), (x + 3, y - 3), (x + 8, y + 1), (x, y + 3)]), "#FFFFFF", .95)
    for _ in range(20):
        px, py = x + rng.gauss(0, 15), y - 10 - abs(rng.gauss(0, 52))
        r = rng.uniform(.4, 1.1)
        pic.path(ellipse(px, py, r, r), "#C9FFF2", rng.uniform(.25, .8))


def reflections(pic):
    """Broken verticals below the stones and the light."""
    rng = random.Random(33)
    x, y = SPRING
    for _ in range(40):
        yy = y + 6 + rng.random() ** 1.3 * 42
        w = rng.uniform(6, 30) * (1 - (yy - y) / 70)
        xx = x + rng.gauss(0, 17)
        pic.path(lens(xx - w, xx + w, yy, rng.uniform(.5, 1.3)), rng.choice(("#A8F0E2", TEAL)), rng.uniform(.12, .42))


def shore(pic):
    """Where the turf meets the water: a lit lip, its shadow, and grass hanging over."""
    line = [(330, 518), (306, 525), (282, 533), (262, 543), (246, 553), (233, 563), (226, 573), (222, 583), (224, 592), (231, 600), (240, 606)]
    pic.path(strip(line, lambda t: 5 + 5 * math.sin(t * math.pi), -1), "#060B0C", .26)
    pic.path(strip(line, lambda t: (.7 + 1.1 * math.sin(t * 3)) * (.6 + .4 * math.sin(t * 31)), -1),
             pic.linear(330, 0, 222, 0, *fade(TEAL, (0, .75), (.5, .45), (1, .12))))
    rng, spots = random.Random(19), []
    for _ in range(120):
        k = rng.randrange(len(line) - 1)
        t = rng.random()
        spots.append((line[k][0] * (1 - t) + line[k + 1][0] * t - rng.uniform(0, 7), line[k][1] * (1 - t) + line[k + 1][1] * t + rng.uniform(-1, 4)))
    grass(pic, spots, 20, "#0C1415", None, 5, 15, 1.4, 5)
    grass(pic, [p for p in spots[::3] if p[0] > 262], 21, "#3F8C80", .55, 4, 11, .9, 4)


def feet(pic, cx, base, width):
    """A stone's foot in the water: its dark double, broken by light."""
    rng = random.Random(int(cx))
    pic.glow(cx, base + 1, width * .95, 7, *fade("#040809", (0, .75), (.6, .4), (1, 0)))
    for k in range(7):
        y = base + 1 + k * 3.4
        w = width * (.56 - .04 * k) * rng.uniform(.8, 1.1)
        pic.path(lens(cx - w, cx + w, y, 1.9), "#060B0C", .6 - .06 * k)
    for k in range(4):
        y, x = base - 1 + k * 2.2, cx + rng.uniform(-6, 6)
        pic.path(lens(x - width * .62, x + width * .62, y, .6), "#9BEBDC", .42 - .08 * k)


def grass(pic, spots, seed, tint, alpha=None, hmin=8, hmax=26, width=1.5, lean=7):
    rng, d = random.Random(seed), ""
    for x, y in spots:
        d += blade(x, y, rng.uniform(hmin, hmax), rng.gauss(2, lean), rng.uniform(.6, 1) * width, rng.random())
    pic.path(d, tint, alpha)


def tor(pic):
    slope = [(26, 150), (70, 146), (140, 148), (230, 152), (318, 154), (340, 166), (352, 190), (366, 199), (371, 226), (388, 246),
             (394, 282), (410, 300), (416, 330), (446, 358), (458, 388), (490, 410), (516, 446), (556, 474), (600, 487), (540, 490),
             (480, 496), (430, 501), (380, 508),
             (330, 518), (282, 533), (246, 553), (226, 573), (224, 592), (240, 606), (262, 614), (60, 614), (34, 606), (27, 590)]
    d = spline(slope, True, .8)
    pic.path(d, pic.linear(120, 140, 300, 600, (0, "#232E2F"), (.3, "#182223"), (.7, "#111A1B"), (1, "#0C1315")))
    pic.path(d, pic.radial(SPRING[0], SPRING[1], 260, 230, *fade(TEAL, (0, .34), (.35, .15), (1, 0))))
    pic.path(strip(slope[4:19], lambda t: (.8 + .9 * math.sin(t * 37) ** 2) * (1.2 - t)), "#D0A08A", .34)
    rng = random.Random(12)
    # swells of turf, seen as soft lights and darks
    for k in range(30):
        t = k / 30
        y = 190 + 330 * t + rng.uniform(-10, 10)
        x = rng.uniform(80, 290 + 110 * t)
        w = min(rng.uniform(40, 120), x - 30, 350 + 110 * t - x + 20)
        q = rng.uniform(.10, .30)
        pic.glow(x, y, w, w * rng.uniform(.16, .34), *fade(rng.choice(("#3B4C46", "#06090A", "#06090A")), (0, q), (.5, q * .5), (1, 0)))
    spots = []
    for _ in range(210):
        t = rng.random()
        y = 165 + 400 * t
        xmax = 330 + 190 * min(1, t * 1.1) if t < .8 else 250
        spots.append((rng.uniform(36, xmax), y))
    grass(pic, spots[:100], 61, "#3A4A44", .6, 4, 11, 1.1, 4)
    grass(pic, spots[100:], 62, "#0A1011", .7, 5, 14, 1.2, 4)
    # lit tips near the spring
    lit = [rng.uniform(232, 330) for _ in range(80)]
    grass(pic, [(x, 540 - (x - 282) * .32 + rng.uniform(-8, 12)) for x in lit], 63, "#4FA697", .45, 4, 12, 1, 4)
    for k, (x, y, w, h, q) in enumerate((
            (346, 208, 22, 19, .35), (322, 222, 13, 10, .3), (384, 268, 16, 16, .4), (368, 278, 9, 7, .4), (388, 344, 11, 9, .5), (440, 384, 19, 16, .4), (420, 402, 11, 9, .5), (480, 424, 22, 16, .35), (252, 540, 20, 14, .3), (230, 552, 11, 8, .3), (292, 524, 11, 8, .4))):
        pic.glow(x, y + 3, w * 1.6, h * .5, *fade("#040708", (0, .6), (.6, .3), (1, 0)))
        boulder(pic, x, y, w, h, 70 + k, q)
        grass(pic, [(x + rng.uniform(-w, w) * 1.15, y + rng.uniform(4, 8)) for _ in range(int(w * .9))], 600 + k, "#111A1B", None, 5, 13, 1.2, 4)


def stacks(pic):
    """The rocks of the tor, from the back forwards; they stand in front of the frame."""
    for k, (x1, x2, y1, y2, q, tone) in enumerate((
            (44, 132, 132, 160, .2, 1), (26, 66, 116, 160, .2, 0), (58, 112, 110, 136, .35, 0), (36, 96, 91, 114, .45, 2),
            (22, 62, 74, 95, .35, 1), (56, 92, 71, 94, .5, 0), (34, 82, 55, 75, .5, 1), (44, 70, 43, 57, .5, 2),
            (124, 188, 148, 170, .2, 1), (182, 236, 150, 168, .3, 0), (288, 350, 152, 176, .55, 2), (230, 300, 146, 170, .45, 0),
            (134, 206, 126, 150, .3, 1), (262, 326, 128, 153, .6, 2), (200, 270, 125, 149, .45, 0), (168, 296, 118, 129, .6, 2))):
        # the status line stands on the lowest ones, which lie in the shadow of the others
        light = .25 if y1 >= 124 and x2 > 56 else 1
        slab(pic, x1, x2, y1, y2, 200 + k, light, q * light, tone)
    rng = random.Random(13)
    spots = [(rng.uniform(34, 356), 170 + rng.uniform(-6, 8)) for _ in range(130)]
    grass(pic, spots, 64, "#131C1D", None, 6, 18, 1.3, 5)
    pair(pic, 230, 117, .98, False, .8, .95, .8)


def cotton(pic, x, y, h, lean, seed):
    """Cotton grass: a thin stem and a torn white tuft."""
    rng = random.Random(seed)
    tx, ty = x + lean, y - h
    pic.path(f"M{num(x)} {num(y)}Q{num(x + lean * .1)} {num(y - h * .6)} {num(tx)} {num(ty)}", None, None, "#2A3633", .9)
    d = ""
    for _ in range(10):
        a, r = rng.gauss(1.5, .8), rng.uniform(3, 6.4)
        d += (f"M{num(tx)} {num(ty - 1)}Q{num(tx + math.cos(a) * r * .7 + 1.6)} {num(ty + math.sin(a) * r * .2)} "
              f"{num(tx + math.cos(a) * r + 1)} {num(ty + math.sin(a) * r * .9)}"
              f"Q{num(tx + math.cos(a) * r * .4)} {num(ty + math.sin(a) * r * .7)} {num(tx)} {num(ty - 1)}Z")
    pic.path(d, "#DCE7E3", .6)
    pic.path(ellipse(tx, ty + 1, 1.8, 2.2), "#EEF4F1", .7)


def reeds(pic, x1, x2, y, count, seed, hmin, hmax, tints=("#0B1113", "#111A1A", "#18231F")):
    rng = random.Random(seed)
    for k in range(count):
        x = rng.uniform(x1, x2)
        h = rng.uniform(hmin, hmax)
        lean = rng.gauss(0, h * .10)
        pic.path(blade(x, y + rng.uniform(-3, 4), h, lean, rng.uniform(1.8, 3.2), rng.random()), tints[k % len(tints)])
        if rng.random() < .24:
            tx, ty = x + lean * .8, y - h * .93
            a = math.degrees(math.atan2(lean, h))
            pic.path(spline([(tx - 1.6, ty + 8), (tx - 1.9, ty), (tx, ty - 9), (tx + 1.9, ty), (tx + 1.6, ty + 8)]), "#1F1A16")


def turf(pic, x1, x2, y, seed):
    """A clod that holds the reeds where they leave the frame."""
    rng, n = random.Random(seed), 9
    top = [(x1 + (x2 - x1) * i / n, y - math.sin(i / n * math.pi) * 10 + rng.uniform(-2, 2)) for i in range(n + 1)]
    low = [(x2 - (x2 - x1) * i / n, y + 3 + math.sin(i / n * math.pi) * 7 + rng.uniform(-1.5, 1.5)) for i in range(n + 1)]
    pic.path(spline(top + low), pic.linear(0, y - 10, 0, y + 9, (0, "#141D1B"), (1, "#080D0E")))
    grass(pic, [(rng.uniform(x1 + 4, x2 - 4), y + rng.uniform(0, 8)) for _ in range(60)], seed, "#0E1615", None, 8, 26, 1.6, 7)
    grass(pic, [(rng.uniform(x1 + 6, x2 - 6), y + rng.uniform(2, 8)) for _ in range(22)], seed + 1, "#33443B", .8, 6, 18, 1.2, 6)


def birds(pic):
    d = ""
    for x, y, s in ((356, 118, 5.2), (371, 110, 4.2), (388, 122, 3.6), (402, 106, 3), (414, 116, 2.5)):
        d += (f"M{num(x - s)} {num(y - s * .42)}Q{num(x - s * .45)} {num(y - s * .5)} {num(x)} {num(y)}"
              f"Q{num(x + s * .5)} {num(y - s * .62)} {num(x + s)} {num(y - s * .3)}"
              f"Q{num(x + s * .45)} {num(y - s * .32)} {num(x)} {num(y + s * .2)}Q{num(x - s * .45)} {num(y - s * .24)} {num(x - s)} {num(y - s * .42)}Z")
    pic.path(d, "#11191C", .85)


def news_ground(pic):
    pts = cut_panel(424, 108, 520, 400, 15, 77, .5)
    d = spline(pts, True, .8)
    for w, a in ((9, .06), (5, .10), (2.5, .14)):
        pic.path(d, None, None, "#04080A", w, stroke_opacity=a)
    pic.path(d, pic.linear(0, 108, 0, 508, (0, "#0E1518", .54), (.25, "#0E1518", .63), (.5, "#0E1518", .62), (1, "#0B1214", .66)))
    pic.path(d, None, None, MIST, .9, stroke_opacity=.30)


def backdrop():
    pic = Picture(1000, 640)
    outer, inner, panel = outlines()
    shadow(pic)
    sky(pic, panel)
    clouds(pic)
    star(pic, 846, 76, .9)
    hills(pic)
    birds(pic)
    water(pic)
    tor(pic)
    spring_light(pic, panel)
    shore(pic)
    for cx, base, w, h, lean, seed, side, light, depth in (
            (700, 492, 14, 40, 2, 31, -1, .25, .45), (628, 494, 17, 50, -3, 32, -1, .32, .34),
            (556, 498, 20, 62, 3, 33, -1, .45, .22), (486, 506, 26, 82, -4, 34, -1, .7, .08)):
        standing_stone(pic, cx, base, w, h, lean, seed, side, light, depth, .12)
    news_ground(pic)
    standing_stone(pic, 330, 564, 34, 96, -5, 35, 1, 1, 0, .1)
    standing_stone(pic, 408, 570, 34, 236, 3, 36, -1, 1, 0, .3)
    feet(pic, 330, 564, 34)
    feet(pic, 408, 570, 34)
    spring(pic)
    reflections(pic)
    mist(pic, 588, 7, .12, 901, 6, "#A9DCD2", (240, 620))
    # calm water under the row of links
    pic.glow(690, 562, 286, 34, *fade("#0A1113", (0, .62), (.6, .5), (.85, .2), (1, 0)))
    ring(pic, outer, inner)
    stacks(pic)
    cup_marks(pic, 962, 602, 11, 1)
    rng = random.Random(81)
    grass(pic, [(rng.uniform(60, 940), 617 + rng.uniform(-2, 3)) for _ in range(170)], 82, "#0A0F11", None, 5, 15, 1.5, 4)
    reeds(pic, 948, 982, 626, 26, 41, 50, 190)
    reeds(pic, 18, 52, 628, 20, 42, 30, 120)
    rng = random.Random(8)
    for k in range(9):
        cotton(pic, rng.uniform(17, 52), 623, rng.uniform(40, 92), rng.uniform(-9, 6), 800 + k)
    turf(pic, 938, 992, 624, 51)
    turf(pic, 8, 64, 625, 53)
    return pic


def draw(out):
    backdrop().save(f"{out}/backdrop.svg")
