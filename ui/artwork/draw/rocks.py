"""Granite: the stacked tor and the standing stones."""
import math
import random

from svg import MIST, TEAL, Noise, fade, mix, poly, spline, strip


def slab(pic, x1, x2, y1, y2, seed, lit=1.0, teal=.5, tone=0):
    """One weathered layer of a tor: flat top to the sky, right end to the spring."""
    rng = random.Random(seed)
    h, w = y2 - y1, x2 - x1
    top, n = [], max(4, int(w / 13))
    for i in range(n + 1):
        t = i / n
        round_off = (abs(t - .5) * 2) ** 5 * h * .34
        top.append((x1 + w * t + rng.uniform(-1.5, 1.5), y1 + round_off + rng.uniform(-1.3, 1.3)))
    right = [(x2 + rng.uniform(1, 3), y1 + h * .5), (x2 + rng.uniform(-1.5, 1), y1 + h * .76)]
    low = []
    for i in range(n + 1):
        t = 1 - i / n
        round_off = (abs(t - .5) * 2) ** 5 * h * .16
        low.append((x1 + w * t + rng.uniform(-1.5, 1.5), y2 - round_off + rng.uniform(-1, 1)))
    left = [(x1 - rng.uniform(0, 2), y1 + h * .75), (x1 - rng.uniform(1, 3), y1 + h * .48)]
    outline = top + right + low + left
    d = spline(outline, True, .62)
    if teal:
        # spring light along the right end and under the lip
        k = 1.5 if h > 14 else 1.1
        pic.path(spline([(x + k, y + k * .4) for x, y in outline], True, .62),
                 pic.linear(x1, 0, x2, 0, *fade(TEAL, (0, teal * .15), (.6, teal * .45), (1, min(1, teal * 1.3)))))
    a, b, c = [("#3A4646", "#222D2E", "#10181A"), ("#333F40", "#1E2829", "#0E1517"),
               ("#424B49", "#273130", "#121A1B")][tone % 3]
    pic.path(d, pic.linear(0, y1, 0, y2, (0, a), (.45, b), (1, c)))
    # sky on the upper edge
    pic.path(strip(top[1:-1], lambda t: (1.2 + 1.4 * math.sin(t * math.pi)) * (.7 + .3 * math.sin(t * 19 + seed))),
             "#B9B1AC", .40 * lit)
    # facets and stains
    for tint, alpha, count in (("#0A1012", .30, 5), ("#8C9B96", .10, 4), ("#6E7D5C", .16, 3)):
        dd = ""
        for _ in range(count):
            fx, fy = rng.uniform(x1 + 4, x2 - 8), rng.uniform(y1 + h * .2, y2 - h * .15)
            fw, fh = rng.uniform(4, w * .2), rng.uniform(1, h * .18)
            pts = [(fx + math.cos(q) * fw * rng.uniform(.5, 1.1), fy + math.sin(q) * fh * rng.uniform(.5, 1.1))
                   for q in (0, 1.1, 2.3, 3.6, 4.9)]
            pts = [(min(max(px, x1 + 1), x2 - 1), min(max(py, y1 + 2), y2 - 1)) for px, py in pts]
            dd += spline(pts, True, .7)
        pic.path(dd, tint, alpha)
    # cracks
    dd = ""
    for _ in range(max(1, int(w / 42))):
        cx = rng.uniform(x1 + w * .15, x2 - w * .12)
        pts = [(cx + rng.uniform(-1, 1) + k * rng.uniform(0, 1.3), y1 + h * (.1 + .26 * k)) for k in range(4)]
        dd += poly(pts, False)
    pic.path(dd, None, None, "#070C0D", .8, stroke_opacity=.6)
    return d


def standing_stone(pic, cx, base, width, height, lean, seed, side=-1, light=1.0, depth=0.0, sky=.25):
    """A menhir. side is where the spring lies: -1 left, 1 right. depth fades it into mist."""
    rng, noise = random.Random(seed), Noise(seed + 100)
    n = max(6, int(height / 17))
    left, right = [], []
    for i in range(n + 1):
        t = i / n
        belly = .80 + .20 * math.sin(t * 2.6 + .5) - .30 * t ** 4
        x = cx + lean * t
        left.append((x - width / 2 * belly + noise(i * .7, 3) * width * .06, base - height * t * .97))
        right.append((x + width / 2 * belly + noise(50 + i * .6, 3) * width * .06, base - height * t * (.93 if side < 0 else .96)))
    tip = [(cx + lean + width * .16 * -side, base - height), (cx + lean + width * .05 * side, base - height * 1.004)]
    tip.sort()
    outline = left + tip + right[::-1]
    shade = lambda c: mix(c, "#46504F", depth)
    d = spline(outline, True, .62)
    xl, xr = cx - width / 2, cx + width / 2
    dark, mid, lit = shade("#0C1315"), shade("#1C2626"), shade(mix("#26312F", "#3D7F75", min(1, light)))
    stops = [(0, lit), (.3, mid), (1, dark)] if side < 0 else [(0, dark), (.7, mid), (1, lit)]
    pic.path(d, pic.linear(xl, 0, xr, 0, *stops))
    # darker upwards, away from the light
    pic.path(d, pic.linear(0, base - height, 0, base, *fade("#0C1214", (0, .72), (.45, .4), (1, 0))), .9 - depth * .5)
    # planes
    for _ in range(max(3, int(height / 22))):
        t = rng.uniform(.04, .86)
        y, hh = base - height * t, rng.uniform(height * .05, height * .15)
        fx = cx + lean * t + rng.uniform(-.26, .22) * width
        fw = rng.uniform(.1, .24) * width
        pts = [(fx - fw, y), (fx - fw * .3, y - hh * .6), (fx + fw * .6, y - hh * .4), (fx + fw, y + hh * .2),
               (fx + fw * .2, y + hh * .5)]
        pts = [(px + rng.uniform(-2, 2) * width / 34, py) for px, py in pts]
        pic.path(poly(pts), rng.choice(("#05090A", "#05090A", "#64776F", "#3F5A50")), rng.uniform(.06, .15) * (1 - depth))
    # cracks
    dd = ""
    for _ in range(2 + int(height / 80)):
        t = rng.uniform(.15, .8)
        x, y = cx + lean * t + rng.uniform(-.2, .2) * width, base - height * t
        pts = [(x, y)]
        for _ in range(4):
            x += rng.uniform(-.14, .10) * width
            y += rng.uniform(.02, .055) * height
            pts.append((x, y))
        dd += poly(pts, False)
    pic.path(dd, None, None, "#05090A", .8, stroke_opacity=.7 * (1 - depth))
    # lit arris towards the spring, strongest near the ground
    edge = left if side < 0 else right
    inward = 1 if side < 0 else -1
    glow = pic.linear(
        0, base, 0, base - height, (0, "#B6F2E6", .95 * light), (.25, TEAL, .85 * light), (.7, TEAL, .4 * light),
        (1, TEAL, .12 * light))
    wob = [rng.uniform(.65, 1.15) for _ in range(n + 2)]
    wf = width / 34
    pic.path(strip(edge, lambda t: (2.6 * (1 - t) + .7) * wob[int(t * n)] * wf, inward), glow)
    pic.path(strip(edge, lambda t: (9 * (1 - t) + 2) * wob[int(t * n)] * wf, inward), glow, .22)
    # last of the sky on the other shoulder
    if sky:
        other = (right if side < 0 else left)[n // 3:]
        pic.path(strip(other, lambda t: (.5 + .9 * t) * wf, -inward), "#C69A86", sky)
    return d


def boulder(pic, x, y, w, h, seed, teal=.3):
    """A fallen block: a dark body, a top plane to the sky, an edge to the spring."""
    rng = random.Random(seed)
    j = lambda a: rng.uniform(-a, a)
    top = [(x - w * (.9 + j(.1)), y - h * (.5 + j(.1))), (x - w * (.45 + j(.15)), y - h * (.98 + j(.06))),
           (x + w * (.28 + j(.16)), y - h * (1 + j(.1))), (x + w * (.86 + j(.1)), y - h * (.58 + j(.12)))]
    low = [(x + w * (1.04 + j(.05)), y - h * .12), (x + w * (1.1 + j(.05)), y + h * .3), (x, y + h * .38),
           (x - w * (1.12 + j(.05)), y + h * .3), (x - w * (1.04 + j(.05)), y - h * .1)]
    out = top + low
    if teal:
        pic.path(spline([(px + .9, py - .3) for px, py in out], True, .3),
                 pic.linear(x - w, 0, x + w, 0, *fade(TEAL, (0, 0), (.6, teal * .4), (1, teal))))
    pic.path(spline(out, True, .3), pic.linear(0, y - h, 0, y + h * .2, (0, "#222D2D"), (.5, "#161F20"), (1, "#10191A")))
    front = [top[0], (x - w * (.3 + j(.1)), y - h * (.56 + j(.08))), (x + w * (.34 + j(.1)), y - h * (.5 + j(.1))), top[3]]
    pic.path(spline(top + front[2:0:-1], True, .2), "#6E7C78", .15)
    pic.path(strip(top, lambda t: .3 + .9 * math.sin(t * math.pi)), "#B5ADA6", .30)
    m = front[1 + rng.randrange(2)]
    pic.path(poly([m, (m[0] + j(3), y - h * .25), (m[0] + j(4), y + h * .1)], False), None, None, "#05090A", .8, stroke_opacity=.6)
