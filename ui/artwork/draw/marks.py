"""The sign of the spring between two stones: application icon, wordmark, narrow-bar pictures."""
import math
import random

from rocks import standing_stone
from svg import BRASS, MIST, TEAL, Noise, Pen, Picture, blade, ellipse, fade, num, spline, strip


def rounded(x, y, w, h, r):
    k = r * .36
    return (f"M{num(x + r)} {num(y)}L{num(x + w - r)} {num(y)}C{num(x + w - k)} {num(y)} {num(x + w)} {num(y + k)} "
            f"{num(x + w)} {num(y + r)}L{num(x + w)} {num(y + h - r)}C{num(x + w)} {num(y + h - k)} {num(x + w - k)} {num(y + h)} "
            f"{num(x + w - r)} {num(y + h)}L{num(x + r)} {num(y + h)}C{num(x + k)} {num(y + h)} {num(x)} {num(y + h - k)} "
            f"{num(x)} {num(y + h - r)}L{num(x)} {num(y + r)}C{num(x)} {num(y + k)} {num(x + k)} {num(y)} {num(x + r)} {num(y)}Z")


def star_path(x, y, s, waist=.1):
    w = s * waist
    return (f"M{num(x)} {num(y - s)}Q{num(x + w)} {num(y - w)} {num(x + s * .68)} {num(y)}Q{num(x + w)} {num(y + w)} {num(x)} {num(y + s)}"
            f"Q{num(x - w)} {num(y + w)} {num(x - s * .68)} {num(y)}Q{num(x - w)} {num(y - w)} {num(x)} {num(y - s)}Z")


def hill_line(x1, x2, base, swell, seed, step=24):
    noise = Noise(seed)
    n = int((x2 - x1) / step)
    return [(x1 + (x2 - x1) * i / n, base + noise(i * .34, 3) * swell) for i in range(n + 1)]


def icon():
    pic = Picture(512, 512)
    tile = rounded(20, 20, 472, 472, 112)
    for w, a in ((26, .05), (18, .07), (10, .10)):
        pic.path(rounded(20, 25, 472, 472, 112), None, None, "#020506", w, stroke_opacity=a)
    pic.path(tile, pic.linear(0, 20, 0, 492, (0, "#15222A"), (.28, "#2C3742"), (.46, "#5B4853"), (.58, "#9B6759"), (.64, "#BF8158"),
                              (.68, "#3A4142"), (1, "#0E1518")))
    # hills across the tile; the sides lie inside the straight part of the edge
    for base, swell, seed, top, low, depth in ((306, 16, 3, "#6B4F56", "#8E6E69", 372), (330, 18, 5, "#3F424B", "#5B605F", 380),
                                               (356, 14, 8, "#22302F", "#30423F", 380)):
        pts = hill_line(20, 492, base, swell, seed)
        pic.path(spline(pts, False) + f"L492 {depth}L20 {depth}Z", pic.linear(0, base - swell, 0, depth, (0, top), (1, low)))
        pic.glow(256, base + 30, 230, 18, *fade("#C9B9AE", (0, .26), (.5, .12), (1, 0)))
    ground = spline([(20, 384), (90, 376), (170, 384), (256, 392), (342, 384), (420, 375), (492, 382)], False)
    lower = "L492 384L492 380C492 451.7 451.7 492 380 492L132 492C60.3 492 20 451.7 20 380Z"
    pic.path(ground + lower, pic.linear(0, 380, 0, 492, (0, "#1B2927"), (1, "#0B1113")))
    # light from the water
    pic.path(tile, pic.radial(256, 380, 235, 215, *fade(TEAL, (0, .66), (.3, .34), (.6, .11), (1, 0))))
    pic.glow(256, 290, 60, 150, *fade("#B5F2E6", (0, .36), (.45, .17), (1, 0)))
    standing_stone(pic, 152, 416, 92, 268, 14, 12, 1, 1, 0, .35)
    standing_stone(pic, 362, 420, 100, 300, -12, 23, -1, 1, 0, .35)
    # pool
    pic.path(ellipse(256, 424, 128, 34), pic.radial(256, 420, 128, 34, (0, "#D9FFF6"), (.22, "#8DE9D8"), (.55, "#37998A"), (1, "#16403C")))
    for k, (rx, a) in enumerate(((104, .35), (74, .55), (44, .8))):
        line = [(256 + math.cos(.25 + 2.6 * j / 12) * rx, 424 + math.sin(.25 + 2.6 * j / 12) * rx * .25) for j in range(13)]
        pic.path(strip(line, lambda t: 3.4 * math.sin(t * math.pi) + .1), "#D9FFF6", a)
    pic.path(ellipse(256, 418, 26, 7.5), "#FFFFFF", .95)
    pic.glow(256, 418, 190, 62, *fade("#9BEBDC", (0, .5), (.5, .16), (1, 0)))
    rng, d = random.Random(2), ""
    for _ in range(90):
        s = rng.choice((-1, 1))
        x = 256 + s * rng.uniform(96, 214)
        d += blade(x, 446 + rng.uniform(-4, 10) - abs(x - 256) * .03, rng.uniform(16, 52), rng.gauss(-s * 3, 9), rng.uniform(3, 5), rng.random())
    pic.path(d, "#0A1012")
    pic.path(spline([(20.2, 391), (40, 434), (120, 444), (200, 456), (256, 462), (330, 455), (410, 441), (472, 432), (491.8, 390)], False)
             + "C490 452 450 492 380 492L132 492C62 492 22 452 20.2 391Z", pic.linear(0, 436, 0, 492, (0, "#0D1516"), (1, "#080D0E")))
    pic.glow(256, 96, 74, 74, *fade("#E7F3F4", (0, .6), (.2, .26), (1, 0)))
    pic.path(star_path(256, 96, 42, .12), "#F6FCFA")
    pic.path(rounded(23, 23, 466, 466, 109), None, None, pic.linear(0, 20, 0, 492, (0, "#C4D0CB", .5), (.5, MIST, .18), (1, TEAL, .3)), 5)
    return pic


def icon_small():
    """The same sign with only what survives at sixteen pixels."""
    pic = Picture(512, 512)
    pic.path(rounded(8, 8, 496, 496, 116), pic.linear(0, 8, 0, 504, (0, "#14222B"), (.4, "#33404A"), (.66, "#A26B57"), (.7, "#1D3532"), (1, "#0C1315")))
    pic.path(rounded(8, 8, 496, 496, 116), pic.radial(256, 400, 260, 250, *fade(TEAL, (0, .95), (.45, .5), (1, 0))))
    pic.path(spline([(70, 424), (80, 260), (98, 150), (128, 130), (168, 150), (186, 270), (194, 424)], True, .5), "#0A1113")
    pic.path(spline([(318, 424), (324, 240), (342, 128), (376, 104), (420, 130), (438, 260), (446, 424)], True, .5), "#0A1113")
    pic.path("M186 250L168 160L178 156Q202 270 206 424L176 424Z", "#8DE9D8")
    pic.path("M326 240L344 140L336 138Q308 250 304 424L334 424Z", "#8DE9D8")
    pic.path(ellipse(256, 424, 150, 42), "#4FC3AF")
    pic.path(ellipse(256, 420, 86, 24), "#D9FFF6")
    pic.path(star_path(256, 120, 88, .2), "#FFFFFF")
    return pic


# --- letters: flared stems and round bowls, as cut with a chisel -------------------------------

def stem(x, y1, y2, w, flare=1.5):
    """An upright, hollowed a little towards the middle."""
    m, h = (y1 + y2) / 2, w / 2
    return (f"M{num(x - h - flare, 2)} {num(y1, 2)}Q{num(x - h + .25, 2)} {num(m, 2)} {num(x - h - flare, 2)} {num(y2, 2)}"
            f"L{num(x + h + flare, 2)} {num(y2, 2)}Q{num(x + h - .25, 2)} {num(m, 2)} {num(x + h + flare, 2)} {num(y1, 2)}Z")


def upper(x1, x2, y1, y2, flare):
    """A stem flared at its head only; a curve carries on below."""
    return (f"M{num(x1 - flare, 2)} {num(y1, 2)}Q{num(x1, 2)} {num(y1 * .6 + y2 * .4, 2)} {num(x1, 2)} {num(y2, 2)}"
            f"L{num(x2, 2)} {num(y2, 2)}Q{num(x2, 2)} {num(y1 * .6 + y2 * .4, 2)} {num(x2 + flare, 2)} {num(y1, 2)}Z")


def arm(x1, x2, y, w, up):
    """A crossbar drawn out to a small spur."""
    return (f"M{num(x1, 2)} {num(y - w / 2, 2)}L{num(x2 - 1, 2)} {num(y - w / 2, 2)}"
            + (f"L{num(x2 + .6, 2)} {num(y - w / 2 - up, 2)}" if up > 0 else "")
            + f"L{num(x2 + .2, 2)} {num(y + w / 2, 2)}"
            + (f"L{num(x2 + .6, 2)} {num(y + w / 2 - up, 2)}" if up < 0 else "")
            + (f"L{num(x2 - 1, 2)} {num(y + w / 2, 2)}" if up < 0 else "") + f"L{num(x1, 2)} {num(y + w / 2, 2)}Z")


def bowl(cx, cy, rx, ry, w):
    def ring(a, b, tilt, back):
        pts = [(cx + math.cos(q) * a + math.sin(q) * tilt, cy + math.sin(q) * b) for q in [k / 12 * math.tau for k in range(12)]]
        return spline(pts[::-1] if back else pts, True, 1, 2)
    return ring(rx, ry, 0, False) + ring(rx - w, ry - w * .42, -.7, True)


def letters(text, x, base, cap, gap):
    """Pieces of path data for the capitals of QUELMOR; returns (pieces, end)."""
    top, s, d = base - cap, cap / 30, []
    w, thin = 4.1 * s, 2.1 * s
    for ch in text:
        if ch in "QO":
            r = 15.2 * s
            d.append(bowl(x + r, base - cap / 2, r, cap / 2 + .7 * s, 4.6 * s))
            if ch == "Q":
                q = Pen(x + r * .9, base - 5 * s, 2)
                q.to("c", (x + r * 1.3, base - 3 * s), (x + r * 1.6, base + 7 * s), (x + r * 2.7, base + 7.6 * s))
                q.to("c", (x + r * 2.1, base + 10.4 * s), (x + r * 1.3, base + 7 * s), (x + r * .9, base - 1.6 * s))
                d.append(q.d + "Z")
            x += 2 * r
        elif ch == "U":
            r = 10.6 * s
            d += [upper(x, x + w, top, base - 9.6 * s, .9 * s), upper(x + 2 * r - thin / 2, x + 2 * r + thin / 2, top, base - 9.6 * s, .9 * s)]
            p = Pen(x, base - 10 * s, 2)
            p.to("c", (x, base - 3 * s), (x + 4 * s, base + .7 * s), (x + 10.6 * s, base + .7 * s))
            p.to("c", (x + 18 * s, base + .7 * s), (x + 2 * r + thin / 2, base - 3 * s), (x + 2 * r + thin / 2, base - 10 * s))
            p.to("l", (x + 2 * r - thin / 2, base - 10 * s))
            p.to("c", (x + 2 * r - thin / 2, base - 3.4 * s), (x + 17 * s, base - 1.5 * s), (x + 12 * s, base - 1.5 * s))
            p.to("c", (x + 7 * s, base - 1.5 * s), (x + w, base - 4.4 * s), (x + w, base - 10 * s))
            d.append(p.d + "Z")
            x += 2 * r + thin / 2
        elif ch == "E":
            d += [stem(x + w / 2, top, base, w, .8 * s), arm(x + 1, x + 15.4 * s, top + thin / 2, thin, -2.6 * s)]
            d += [arm(x + 1, x + 12.6 * s, base - cap * .53, thin, 0), arm(x + 1, x + 16.4 * s, base - thin / 2, thin, 2.8 * s)]
            x += 16.2 * s
        elif ch == "L":
            d += [stem(x + w / 2, top, base, w, .9 * s), arm(x + 1, x + 15.6 * s, base - thin / 2, thin, 3 * s)]
            x += 15.2 * s
        elif ch == "M":
            wide = 29 * s
            d += [stem(x + thin / 2 + 1.2 * s, top, base, thin, .8 * s), stem(x + wide - w / 2 - .4 * s, top, base, w, .8 * s)]
            d += [f"M{num(x + .4 * s, 2)} {num(top, 2)}L{num(x + 5 * s, 2)} {num(top, 2)}L{num(x + wide / 2 + .9 * s, 2)} {num(base - 7 * s, 2)}"
                  f"L{num(x + wide / 2 - .6 * s, 2)} {num(base - .4 * s, 2)}Z",
                  f"M{num(x + wide - 2.6 * s, 2)} {num(top, 2)}L{num(x + wide - 4.8 * s, 2)} {num(top, 2)}L{num(x + wide / 2 - 1.6 * s, 2)} {num(base - 4.6 * s, 2)}"
                  f"L{num(x + wide / 2 - .6 * s, 2)} {num(base - .4 * s, 2)}Z"]
            x += wide
        elif ch == "R":
            d.append(stem(x + w / 2, top, base, w, .8 * s))
            p = Pen(x + w * .6, top, 2)
            p.to("l", (x + 9.6 * s, top))
            p.to("c", (x + 20.6 * s, top), (x + 20.6 * s, base - 14 * s), (x + 9.6 * s, base - 13.6 * s))
            p.to("l", (x + w * .6, base - 13.6 * s))
            p.to("l", (x + w * .6, base - 15.6 * s))
            p.to("l", (x + 9 * s, base - 15.6 * s))
            p.to("c", (x + 15.4 * s, base - 15.8 * s), (x + 15.4 * s, top + thin), (x + 8.6 * s, top + thin))
            p.to("l", (x + w * .6, top + thin))
            d.append(p.d + "Z")
            p = Pen(x + 8 * s, base - 14.6 * s, 2)
            p.to("l", (x + 12.6 * s, base - 15 * s))
            p.to("c", (x + 16 * s, base - 8 * s), (x + 18.6 * s, base - .6 * s), (x + 24.4 * s, base + .2 * s))
            p.to("c", (x + 19 * s, base + 1.6 * s), (x + 15.4 * s, base - .4 * s), (x + 13.6 * s, base - 4 * s))
            d.append(p.d + "Z")
            x += 21.4 * s
        x += gap
    return d, x - gap


def draw_letters(pic, text, x, base, cap, gap, fill, shade=.6):
    pieces, end = letters(text, x, base, cap, gap)
    d = "".join(pieces)
    if shade:
        pic.path(d, None, None, "#04080A", cap * .12, stroke_opacity=shade * .45)
        pic.path(d, None, None, "#04080A", cap * .05, stroke_opacity=shade)
    for piece in pieces:
        pic.path(piece, fill, rule="evenodd")
    return end


def wordmark():
    pic = Picture(260, 44, 2)
    fill = pic.linear(0, 4, 0, 36, (0, "#F3F8F5"), (.5, "#D6E1DC"), (1, "#93D8CA"))
    draw_letters(pic, "QUELLMOOR", 6, 32.5, 25, 6.2, fill)
    return pic


# --- narrow bar ----------------------------------------------------------------------------------

def bar_sign(pic, cx, cy, s):
    """The spring between two stones on a 30 point bar."""
    pic.glow(cx, cy + 5 * s, 13 * s, 8 * s, *fade(TEAL, (0, .75), (.5, .3), (1, 0)))
    for a, b in (((-8.6, 8), (-4, 8)), ((4, 8), (9, 8))):
        lean = 1 if a[0] < 0 else -1
        top = -7.4 if lean > 0 else -9.4
        pts = [(a[0], 8), (a[0] + .8 * lean, 0), (a[0] + 1 + .6 * lean, top + 1), ((a[0] + b[0]) / 2 + lean, top), (b[0] - .6 + .5 * lean, top + 2), (b[0], 8)]
        pic.path(spline([(cx + px * s, cy + py * s) for px, py in pts], True, .6, 2), "#C9D6D1")
    pic.path(ellipse(cx, cy + 8.4 * s, 8.6 * s, 2.4 * s, 2), TEAL)
    pic.path(ellipse(cx, cy + 8 * s, 3.4 * s, 1 * s, 2), "#F2FFFC")
    pic.path(star_path(cx, cy - 7.4 * s, 3.4 * s, .14), "#F6FCFA")


def bar_plate(w, over, brass):
    pic = Picture(w, 30, 2)
    d = rounded(1, 1.5, w - 2, 27, 6)
    if brass:
        tops = ("#FBE3A8", "#EFC873", "#CC9A47") if over else ("#F0CD84", BRASS, "#B98736")
        pic.path(d, pic.linear(0, 1, 0, 29, (0, tops[0]), (.4, tops[1]), (1, tops[2])))
        pic.path(d, None, None, "#FFF4D2" if over else "#6B4A1B", 1, stroke_opacity=.9 if over else .7)
        for x in (9, w - 9):
            pic.path(ellipse(x, 15, 1.8, 1.8, 2), "#6B4A1B")
            pic.path(ellipse(x - .3, 14.6, 1.2, 1.2, 2), "#FFE9B4", .8)
    else:
        pic.path(d, pic.linear(0, 1, 0, 29, (0, "#2A3735" if not over else "#3B3B2B"), (1, "#18211F")))
        pic.path(d, None, None, BRASS if over else MIST, 1, stroke_opacity=.9 if over else .32)
        if over:
            pic.path(f"M14 25.2Q{w / 2} 23.9 {w - 14} 25.2Q{w / 2} 26.3 14 25.2Z", BRASS, .9)
    return pic


def fingerprint(over):
    pic = Picture(30, 30, 2)
    if over:
        pic.glow(15, 15, 15, 15, *fade(BRASS, (0, .34), (.6, .12), (1, 0)))
    d = ("M6.6 11.2C8.4 7.6 11.4 5.6 15 5.6C18.8 5.6 21.8 7.6 23.5 11.2M7 20.4C7.7 18.8 7.6 17 7.8 15.2C8.4 11.4 11.2 9 15 9"
         "C19.4 9 22.2 12.2 22.3 16.4C22.3 18.2 22.2 19.7 21.8 21.2M10 23.2C11 20.8 10.9 18.6 11 16.4C11.2 13.8 12.8 12.3 15 12.3"
         "C17.5 12.3 19 14.1 19 16.6C19 19.4 18.7 21.8 17.8 24.2M13.6 25C14.8 22.2 15.1 19.4 15 16.2")
    pic.path(d, None, None, "#F0C778" if over else "#C9D6D1", 1.5)
    return pic


def bar_backdrop():
    pic = Picture(685, 30)
    pic.path("M0 0L685 0L685 30L0 30Z", pic.linear(0, 0, 0, 30, (0, "#1A272E"), (.45, "#4A3F4A"), (.62, "#8C5F57"), (.7, "#2B3437"), (1, "#0E1518")))
    for base, swell, seed, tint in ((17, 4, 3, "#54444D"), (20, 4, 5, "#2C353B"), (23.5, 3, 9, "#18231F")):
        pts = hill_line(0, 685, base, swell, seed, 14)
        pic.path(spline(pts, False) + "L685 30L0 30Z", tint)
        for cx in (120, 380, 590):
            pic.glow(min(cx + seed * 9, 560), base + 3, 120, 3.4, *fade(MIST, (0, .26), (1, 0)))
    pic.glow(78, 17, 78, 13, *fade(TEAL, (0, .30), (.5, .15), (1, 0)))
    rng, d = random.Random(3), ""
    for _ in range(150):
        d += blade(rng.uniform(0, 685), 30, rng.uniform(2, 8), rng.gauss(0, 2), 1.1, rng.random())
    pic.path(d, "#0A1012")
    return pic


def draw(out):
    icon().save(f"{out}/icon.svg")
    icon_small().save(f"{out}/icon_small.svg")
    wordmark().save(f"{out}/wordmark.svg")
    logo = Picture(160, 30, 2)
    bar_sign(logo, 16, 15, 1.1)
    draw_letters(logo, "QUELLMOOR", 34, 20.4, 12, 2.9, "#DCE7E3", 0)
    logo.save(f"{out}/touchbar_logo.svg")
    bar_plate(120, False, True).save(f"{out}/touchbar_play_normal.svg")
    bar_plate(120, True, True).save(f"{out}/touchbar_play_over.svg")
    bar_plate(96, False, False).save(f"{out}/touchbar_link.svg")
    bar_plate(96, True, False).save(f"{out}/touchbar_link_over.svg")
    fingerprint(False).save(f"{out}/touchbar_fingerprint.svg")
    fingerprint(True).save(f"{out}/touchbar_fingerprint_over.svg")
    bar_backdrop().save(f"{out}/touchbar_backdrop.svg")
