"""The two swordsmen, back to back, as silhouettes with light along their edges."""
import math
import random

from rocks import slab
from svg import MIST, TEAL, Picture, blade, ellipse, fade, lens, num, poly, spline, strip

INK_TOP, INK_LOW = "#0A1012", "#0D1618"


class Figure:
    """Draws parts in units of a body 100 high; x points forwards, the feet stand at y = 0."""

    def __init__(self, pic, x, y, scale, facing, rim=.9, teal=.9, sky=.5):
        self.pic, self.x, self.y, self.s, self.f = pic, x, y, scale, facing
        self.rim, self.queue = rim, []
        self.ink = pic.linear(0, y - 104 * scale, 0, y, (0, INK_TOP), (1, INK_LOW))
        self.teal = pic.linear(0, y, 0, y - 112 * scale, (0, "#8FEBDA", teal), (.3, TEAL, teal * .8),
                               (.75, TEAL, teal * .42), (1, TEAL, teal * .3))
        self.sky = pic.linear(0, y, 0, y - 112 * scale, (0, "#C9A08C", sky * .12), (.5, "#D9A67E", sky * .6),
                              (1, "#F0C294", sky))

    def at(self, p):
        return (self.x + p[0] * self.s * self.f, self.y + p[1] * self.s)

    def part(self, pts, smooth=.9, rim=1.0):
        """Queue one part; parts flushed together share a single lit outline."""
        p = [self.at(q) for q in pts]
        if sum(ax * by - bx * ay for (ax, ay), (bx, by) in zip(p, p[1:] + p[:1])) < 0:
            p.reverse()
        self.queue.append((p, smooth, rim))

    def flush(self, alpha=1.0):
        def whole(dx, dy):
            return "".join(spline([(x + dx * k, y + dy * k) for x, y in p], True, t, 2)
                           for p, t, k in self.queue)
        r = self.rim
        self.pic.path(whole(r, r * .45), self.teal, alpha)
        self.pic.path(whole(-r * .55, -r * .6), self.sky, alpha)
        self.pic.path("".join(spline(p, True, t, 2) for p, t, _ in self.queue), self.ink, rule="nonzero")
        self.queue = []

    def limb(self, joints, widths, rim=1.0):
        """A tapered limb through joints, with the swell of muscle in the widths."""
        n = len(joints)
        a, b = [], []
        for i, (x, y) in enumerate(joints):
            ax, ay = joints[max(0, i - 1)]
            bx, by = joints[min(n - 1, i + 1)]
            length = math.hypot(bx - ax, by - ay) or 1
            nx, ny, w = -(by - ay) / length, (bx - ax) / length, widths[i] / 2
            a.append((x + nx * w, y + ny * w))
            b.append((x - nx * w, y - ny * w))
        self.part(a + b[::-1], .95, rim)

    def leg(self, hip, knee, ankle, toe):
        thigh = tuple((h + k) / 2 for h, k in zip(hip, knee))
        calf = (knee[0] * .62 + ankle[0] * .38 - .7, knee[1] * .62 + ankle[1] * .38)
        self.limb([hip, thigh, knee, calf, ankle], [9.4, 8.6, 5.8, 6.4, 4])
        # boot: a turned cuff under the knee, the foot set flat
        cx, cy = knee[0] * .72 + ankle[0] * .28, knee[1] * .72 + ankle[1] * .28
        self.part([(cx - 3.7, cy - 1.6), (cx + 3.6, cy - 2.2), (cx + 3.3, cy + 1.8), (cx - 3.3, cy + 2.2)], .6)
        ax, ay = ankle
        self.part([(ax - 2.6, ay - 3), (ax + 2, ay - 3.4), (ax + 2.6 + toe * .2, ay + .4), (ax + toe, ay + 2.3),
                   (ax + toe + .4, ay + 4), (ax, ay + 4), (ax - 3.2, ay + 4), (ax - 3.3, ay + .8)], .6)

    def arm(self, shoulder, elbow, hand):
        mid = tuple((a * .45 + b * .55) for a, b in zip(shoulder, elbow))
        fore = tuple((a * .62 + b * .38) for a, b in zip(elbow, hand))
        self.limb([shoulder, mid, elbow, fore, hand], [6.4, 5.6, 4.5, 4.9, 3])
        hx, hy = hand
        # glove cuff and fist
        gx, gy = elbow[0] * .3 + hx * .7, elbow[1] * .3 + hy * .7
        self.part([(gx - 2.2, gy - 2.2), (gx + 2.2, gy - 2.2), (gx + 2.2, gy + 2.2), (gx - 2.2, gy + 2.2)], .9, .7)
        self.part([(hx - 2, hy - 1.6), (hx + .6, hy - 2.3), (hx + 2.2, hy - .4), (hx + 1.2, hy + 2), (hx - 1.4, hy + 1.8)], .9, .7)

    def sword(self, hand, angle, length=54, glint=None):
        """A long sword; the grip passes through the hand, angle in degrees from forwards, up positive."""
        a = math.radians(angle)
        ux, uy = math.cos(a), -math.sin(a)
        nx, ny = -uy, ux
        p = lambda t, w: (hand[0] + ux * t + nx * w, hand[1] + uy * t + ny * w)
        self.part([p(-9, 1), p(-9, -1), p(3.4, -.9), p(3.4, .9)], .3, .6)
        self.part([p(-11.4, 0), p(-10.4, 1.5), p(-8.8, 1.4), p(-8, 0), p(-8.8, -1.4), p(-10.4, -1.5)], .9, .6)
        self.part([p(3, 7), p(4, 7.3), p(4.4, 2), p(4.4, -2), p(4, -7.3), p(3, -7), p(2.6, 0)], .5, .7)
        self.flush()
        steel = self.pic.linear(*self.at(p(4, 0)), *self.at(p(4 + length, 0)), (0, "#2A3738"), (.5, "#53666A"), (1, "#91A5A3"))
        tip = 4 + length
        outline = [p(4, 1.35), p(tip - 9, .95), p(tip - 3, .6), p(tip, 0), p(tip - 3, -.6), p(tip - 9, -.95), p(4, -1.35)]
        self.pic.path(poly([self.at(q) for q in outline], True, 2), steel)
        dark = [p(4, 0), p(tip - 1, 0), p(tip - 9, -.95), p(4, -1.35)]
        self.pic.path(poly([self.at(q) for q in dark], True, 2), "#0C1315", .62)
        if glint:
            a0, b0 = self.at(p(4, 0)), self.at(p(tip, 0))
            light = self.pic.linear(*a0, *b0, ("0" and 0, glint, .15), (.42, glint, .5), (.62, "#FFF0C8", 1), (.8, glint, .7), (1, glint, .9))
            edge = [p(5, 1.35), p(tip - 9, .95), p(tip, 0), p(tip - 9, .35), p(5, .5)]
            self.pic.path(poly([self.at(q) for q in edge], True, 2), light)
            gx, gy = self.at(p(4 + length * .64, .8))
            r = 7 * self.s
            self.pic.glow(gx, gy, r, r, *fade("#FFDF9A", (0, .6), (.3, .2), (1, 0)))
            k = 3 * self.s
            self.pic.path(f"M{num(gx - k, 2)} {num(gy, 2)}Q{num(gx, 2)} {num(gy, 2)} {num(gx, 2)} {num(gy - k * 1.4, 2)}"
                          f"Q{num(gx, 2)} {num(gy, 2)} {num(gx + k, 2)} {num(gy, 2)}Q{num(gx, 2)} {num(gy, 2)} {num(gx, 2)} "
                          f"{num(gy + k * 1.4, 2)}Q{num(gx, 2)} {num(gy, 2)} {num(gx - k, 2)} {num(gy, 2)}Z", "#FFF3D6", .9)

    def torso(self, lean=0.0):
        l = lean
        self.part([(-6 + l, -81), (-2.6 + l, -84.6), (2.2 + l, -85), (6 + l, -80.5), (7.8 + l * .9, -74), (7 + l * .6, -66),
                   (4.9 + l * .3, -58.5), (6.4, -49), (-6.2, -49), (-5 + l * .3, -59), (-7.4 + l * .7, -68), (-7.8 + l, -76)], .85)

    def skirt(self, back=-13, front=11):
        """The coat below the belt, split for walking."""
        self.part([(5.2, -59), (8.2, -49), (front, -37), (front - 1, -31.5), (front - 4.4, -34), (3.6, -31.5), (1, -40), (-1.8, -33),
                   (-6, -31), (back + 2, -26), (back - 1, -27), (-10, -38), (-7.6, -49), (-5.2, -59.5)], .6)
        self.part([(-5.6, -59.8), (5.4, -59.4), (5.8, -57), (-5.8, -57.2)], .5, .8)


def cloak(fig):
    """A long cloak torn by the wind, streaming ahead of its wearer."""
    fig.part([(-5, -84), (1.5, -85), (6, -80), (9, -72), (14, -63), (23, -55), (33, -51), (44, -50.5), (55, -54),
              (49, -47.5), (53, -43), (44, -41), (47, -35.5), (37, -34), (39, -27), (29, -28.5), (28, -20), (20, -23),
              (15, -13), (9, -18), (3, -9), (-1, -17), (-6, -11), (-9, -26), (-10.5, -48), (-9.5, -66), (-8, -78)], .62)


def folds(fig):
    """The cloak's folds catch a little light."""
    for a, b, c, o in (((0, -74), (10, -50), (38, -44), .4), ((-3, -64), (5, -38), (28, -32), .34), ((-5, -52), (-1, -30), (13, -19), .3),
                       ((3, -70), (16, -56), (42, -48), .25)):
        line = []
        for k in range(9):
            t = k / 8
            line.append(fig.at(((1 - t) ** 2 * a[0] + 2 * t * (1 - t) * b[0] + t * t * c[0],
                                (1 - t) ** 2 * a[1] + 2 * t * (1 - t) * b[1] + t * t * c[1])))
        fig.pic.path(strip(line, lambda t: .9 * fig.s * math.sin(t * math.pi) + .02, 1, 2), fig.teal, o)


def hood(fig, lean=0.0):
    l = lean
    fig.part([(x + l, y) for x, y in (
        (6, -79.4), (3.6, -84), (5, -86.4), (5.6, -88.6), (6.8, -90.4), (5.9, -92), (7.6, -95), (5.6, -99), (1, -101.6), (-3.6, -100.6),
        (-8, -96), (-10.4, -90), (-9.6, -84), (-9.4, -78), (-3, -77))], .72)


def head(fig, lean=0.0):
    l = lean
    # hair tied back
    fig.part([(-3 + l, -98.5), (-6 + l, -99.6), (-8.4 + l, -97.4), (-9 + l, -92), (-11.4 + l, -87.4), (-7.4 + l, -89.4),
              (-6.6 + l, -93), (-4 + l, -93)], .8)
    fig.part([(-2.8 + l, -83.5), (-3.4 + l, -87), (-5.6 + l, -90.6), (-5.6 + l, -95.6), (-2.8 + l, -99.2), (1.2 + l, -100),
              (4.6 + l, -98.2), (5.6 + l, -95.2), (5.5 + l, -93.6), (7 + l, -91.4), (5.9 + l, -90.7), (6.1 + l, -89.3),
              (5.6 + l, -88.7), (5.7 + l, -86.8), (4.2 + l, -85.7), (2.2 + l, -86.2), (2.4 + l, -83)], .55)


def scarf(fig):
    """A torn scarf; its tails lift behind the shoulder."""
    fig.part([(-3, -86.4), (4.4, -86.6), (6, -82.4), (0, -80), (-6, -81), (-8, -77), (-6.4, -72), (-9.4, -75), (-9.6, -81)], .75)


def pauldron(fig, x, y):
    fig.part([(x - 4.8, y + 2), (x - 4.4, y - 3), (x, y - 5), (x + 4.4, y - 2.6), (x + 4.8, y + 2.6), (x, y + 4.2)], .85)
    fig.part([(x - 4, y + 5), (x - 4.3, y + 2), (x, y + 3), (x + 4.4, y + 2), (x + 4, y + 6), (x, y + 7.2)], .85, .7)


def pair(pic, x, y, s, drawn, rim=.9, teal=.9, sky=.5, gap=9.6):
    """Two swordsmen. drawn: both on guard; otherwise they wait, one point down, one raised."""
    a = Figure(pic, x - gap * s, y, s, -1, rim, teal * .85, sky)
    b = Figure(pic, x + gap * s, y, s, 1, rim, teal, sky)
    # --- the hooded one, facing left
    if drawn:
        a.arm((-1, -78), (9, -70), (16.5, -68))
        a.leg((-2, -50), (-5, -27), (-12, -4), 7)
        a.leg((2, -50), (14, -30), (19, -4), 8)
    else:
        a.leg((-2, -50), (-3, -27), (-7, -4), 7)
        a.leg((2, -50), (9, -28), (11, -4), 8)
    cloak(a)
    a.torso(.8)
    hood(a, 1.2)
    a.flush()
    folds(a)
    if drawn:
        a.sword((18.5, -69), 72, 58, "#F0C670")
        a.arm((3, -78), (12, -64.5), (19, -66.5))
    else:
        a.sword((17.5, -55), -86, 46)
        a.arm((3, -78), (8.4, -64), (17, -56))
    a.flush(.8)
    pauldron(a, 2, -78.6)
    a.flush(.6)
    # --- the bareheaded one, facing right
    if drawn:
        b.arm((1, -78), (11, -66), (20, -56))
        b.leg((-2, -50), (-6, -27), (-15, -4), 7)
        b.leg((2, -50), (15, -31), (20, -4), 8)
    else:
        b.leg((-2, -50), (-4, -27), (-8, -4), 7)
        b.leg((2, -50), (8, -28), (12, -4), 8)
    b.skirt(-15 if drawn else -12, 13 if drawn else 10)
    b.torso(1)
    scarf(b)
    head(b, 1.6)
    b.flush()
    if drawn:
        b.sword((22, -55.5), 13, 58)
        b.arm((1, -78), (7.4, -62.4), (18, -54.8))
    else:
        b.sword((19, -65.5), 63, 54, "#F0C670")
        b.arm((1, -78), (10.6, -62.5), (19, -66))
    b.flush(.8)
    pauldron(b, .4, -78.6)
    b.flush(.6)
    belt = [b.at(p) for p in ((-5, -59.6), (0, -58.4), (6, -59))]
    pic.path(strip(belt, lambda t: .7 * s * (.3 + t), 1, 2), b.teal, .6)


def updating():
    pic = Picture(340, 250, 1)
    cx, foot = 172, 204
    # light from the spring, behind and below them
    pic.glow(cx, 150, 168, 100, *fade("#7FB5AB", (0, .50), (.35, .34), (.7, .11), (1, 0)))
    pic.glow(cx + 22, 206, 140, 44, *fade("#9FE9DA", (0, .50), (.4, .22), (1, 0)))
    pic.glow(cx, 92, 96, 86, *fade("#C9B59C", (0, .20), (.5, .09), (1, 0)))
    rng = random.Random(4)
    for k in range(15):
        y = 70 + 9 * k + rng.uniform(-5, 5)
        w = rng.uniform(40, 108)
        x = cx + rng.uniform(-44, 44)
        q = rng.uniform(.07, .17)
        h = rng.uniform(3, 9)
        pic.glow(x, y, w, h, *fade("#BFE3DA", (0, q), (.5, q * .6), (1, 0)))
    # their tor
    slab(pic, 34, 150, 214, 240, 401, .5, .35, 1)
    slab(pic, 206, 310, 216, 241, 402, .5, .7, 0)
    slab(pic, 92, 256, 219, 248, 403, .6, .5, 2)
    slab(pic, 78, 270, 200, 224, 404, 1, .75, 0)
    pair(pic, cx - 2, foot, 1.50, True, 1.25, 1, .55)
    d = ""
    for _ in range(90):
        d += blade(rng.choice((rng.gauss(52, 16), rng.gauss(292, 15), rng.uniform(40, 300))), rng.uniform(242, 249),
                   rng.uniform(5, 17), rng.gauss(-3, 4), rng.uniform(1, 2), rng.random())
    pic.path(d, "#0A1012")
    # low mist over their feet's rock
    for x1, x2, y, th, q in ((10, 220, 236, 9, .20), (120, 334, 240, 8, .24), (60, 300, 228, 4, .16)):
        pic.path(lens(x1, x2, y, th), pic.linear(x1, 0, x2, 0, *fade("#A9DCD2", (0, 0), (.5, q), (1, 0))))
    for _ in range(26):
        r = rng.uniform(.5, 1.3)
        pic.path(ellipse(cx + rng.gauss(10, 70), rng.uniform(60, 226), r, r, 2), "#C9FFF2", rng.uniform(.2, .75))
    return pic


def draw(out):
    updating().save(f"{out}/swordsmen.svg")
