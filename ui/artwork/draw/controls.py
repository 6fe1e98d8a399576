"""Buttons, link icons and plates that the window places over the backdrop."""
import math
import random

from svg import BRASS, MIST, TEAL, Noise, Picture, ellipse, fade, mix, num, spline


# --- the play button -------------------------------------------------------------------------

def play_outline(grow=0.0):
    """A forged plate drawn out to two blunt points, its long edges a little hollow."""
    g = grow
    return [(5 - g, 32), (15, 19.6 - g * .6), (31, 7.4 - g), (64, 8.6 - g), (110, 9.2 - g),
            (156, 8.5 - g), (189, 7.4 - g), (205.4, 19.8 - g * .6), (215 + g, 32),
            (205.2, 44.4 + g * .6), (189, 56.6 + g), (156, 55.5 + g), (110, 54.9 + g),
            (64, 55.6 + g), (31, 56.6 + g), (14.8, 44.2 + g * .6)]


def plate_path(pts):
    """Straight cuts at the ends, slow curves along top and bottom."""
    p = [f"{num(x, 2)} {num(y, 2)}" for x, y in pts]
    return (f"M{p[0]}L{p[1]}L{p[2]}C{p[3]} {p[4]} {p[4]}C{p[4]} {p[5]} {p[6]}L{p[7]}L{p[8]}"
            f"L{p[9]}L{p[10]}C{p[11]} {p[12]} {p[12]}C{p[12]} {p[13]} {p[14]}L{p[15]}Z")


def inset(pts, by):
    out = []
    for x, y in pts:
        dx, dy = x - 110, y - 32
        sx = (abs(dx) - by * (1.5 if abs(dy) < 1 else 1.1)) / abs(dx) if abs(dx) > 20 else 1
        out.append((110 + dx * sx, 32 + dy * ((abs(dy) - by) / abs(dy) if abs(dy) > 1 else 1)))
    return out


def hammer_marks(pic, seed, colour, opacity, y1=11, y2=53, count=90):
    rng = random.Random(seed)
    d = ""
    for _ in range(count):
        x, y = rng.uniform(22, 198), rng.uniform(y1, y2)
        rx, ry = rng.uniform(2.5, 8), rng.uniform(.8, 2.4)
        d += ellipse(x, y, rx, ry)
    pic.path(d, colour, opacity)


def play(state):
    pic = Picture(220, 64, 2)
    pts = play_outline()
    body, rim = plate_path(pts), plate_path(inset(pts, 1.4))
    face, groove = plate_path(inset(pts, 4.6)), plate_path(inset(pts, 5.6))
    look = {
        "NORMAL": ("#F0CD84", BRASS, "#B98736", "#6B4A1B", "#FFE9B4"),
        "ROLLOVER": ("#FBE3A8", "#EFC873", "#CC9A47", "#7A5622", "#FFF4D2"),
        "PRESSED": ("#9A7130", "#B58A40", "#C39849", "#4A3212", "#E2BC70"),
        "DISABLED": ("#48554E", "#3D4A43", "#323D38", "#1F2825", "#66756D"),
    }[state]
    top, mid, low, edge, light = look
    pressed, hover, disabled = state == "PRESSED", state == "ROLLOVER", state == "DISABLED"
    if hover:
        for grow, a in ((4.6, .10), (3.6, .14), (2.4, .2), (1.2, .3)):
            pic.path(plate_path(play_outline(0)), None, None, "#FFDE93", grow * 2.1, None,
                     stroke_opacity=a)
    elif not pressed:
        for w, a in ((7, .10), (5, .14), (3, .2)):
            pic.path(plate_path([(x, y + 1.6) for x, y in pts]), None, None, "#05090A", w,
                     stroke_opacity=a)
    pic.path(body, edge)
    pic.path(rim, pic.linear(0, 8, 0, 57, (0, light), (.16, mid), (.8, low), (1, edge))
             if not pressed else pic.linear(0, 8, 0, 57, (0, edge), (.3, low), (1, light)))
    pic.path(face, pic.linear(0, 12, 0, 53, (0, top), (.42, mid), (1, low)))
    hammer_marks(pic, 7, light, .045 if not disabled else .03)
    hammer_marks(pic, 8, edge, .05)
    # the middle stays clean so that the caption reads
    pic.glow(110, 32, 84, 19, *fade(mix(mid, light, .3 if not pressed else .1), (0, .75), (.55, .5), (1, 0)))
    pic.path(groove, None, None, edge, .9, stroke_opacity=.55)
    pic.path(plate_path([(x, y + .9) for x, y in inset(pts, 5.6)]), None, None, light, .6,
             stroke_opacity=.4 if not pressed else .2)
    if pressed:
        for w, a in ((9, .08), (6, .10), (3, .14)):
            pic.path(plate_path([(x, y + 1) for x, y in inset(pts, 1.2)]), None, None, "#120B02", w,
                     stroke_opacity=a)
    # a rivet and an engraved stroke towards either point
    for s in (-1, 1):
        x = 110 + s * 88
        pic.path(ellipse(x, 32.5, 3, 3, 2), edge, .8)
        pic.path(ellipse(x, 31.8, 2.5, 2.5, 2), pic.radial(x - .8, 30.8, 3.4, 3.4, (0, light), (.5, mid), (1, edge)))
        for dy in (-1, 1):
            pic.path(f"M{num(x - s * 6, 2)} {num(32 + dy * 1.2, 2)}Q{num(x - s * 12, 2)} "
                     f"{num(32 + dy * 3, 2)} {num(x - s * 9, 2)} {num(32 + dy * 12, 2)}",
                     None, None, edge, .9, stroke_opacity=.5)
    pic.path(f"M32 9.1C64 10.2 110 10.8 110 10.8C110 10.8 156 10.2 188 9.1", None, None,
             light, 1, stroke_opacity=.15 if pressed else .75)
    return pic


# --- window buttons --------------------------------------------------------------------------

def window_button(kind, state):
    pic = Picture(28, 28, 2)
    pts = [(3.4, 6.2), (6, 3.3), (14.2, 2.7), (22.3, 3.5), (24.7, 6.4), (25.2, 14), (24.6, 22),
           (22, 24.7), (13.7, 25.3), (5.8, 24.6), (3.2, 21.8), (2.8, 13.8)]
    d = spline(pts, True, .7, 2)
    fill = {"NORMAL": ("#26332F", "#16201E"), "ROLLOVER": ("#3A3B2C", "#221F16"),
            "PRESSED": ("#0D1314", "#1B1D17")}[state]
    pic.path(spline([(x, y + 1) for x, y in pts], True, .7, 2), None, None, "#04080A", 2.4,
             stroke_opacity=.35)
    pic.path(d, pic.linear(0, 3, 0, 25, (0, fill[0]), (1, fill[1])), .92)
    if state == "ROLLOVER":
        pic.glow(14, 14, 13, 13, *fade(BRASS, (0, .30), (.6, .10), (1, 0)))
    line = {"NORMAL": MIST, "ROLLOVER": BRASS, "PRESSED": "#B98736"}[state]
    pic.path(d, None, None, line, 1, stroke_opacity=.34 if state == "NORMAL" else .85)
    pic.path("M6.4 3.9C10 3.4 18 3.3 21.8 4", None, None, "#DCE7E3" if state != "PRESSED" else "#04080A",
             .8, stroke_opacity=.28)
    dy = .6 if state == "PRESSED" else 0
    glyph = {"NORMAL": "#C9D6D1", "ROLLOVER": "#F6D48D", "PRESSED": "#C8993F"}[state]
    if kind == "CLOSE":
        marks = f"M9.6 {9.6 + dy}L18.4 {18.4 + dy}M18.4 {9.6 + dy}L9.6 {18.4 + dy}"
    else:
        marks = f"M9 {17.4 + dy}L19 {17.4 + dy}"
    pic.path(marks, None, None, glyph, 1.6)
    return pic


# --- link row --------------------------------------------------------------------------------

def icon_marks(name):
    """Line icons on a 20 x 20 field."""
    return {
        # a low house under its roof: the home page
        "home": "M2.6 9.9L10 3.2L17.4 9.9M4.9 8.3L4.9 16.8L15.1 16.8L15.1 8.3"
                "M8.2 16.8L8.2 12.6C8.2 10.3 11.8 10.3 11.8 12.6L11.8 16.8",
        # a lantern held out: support
        "support": "M6.3 7.4L13.7 7.4L14.8 15.2L5.2 15.2ZM4.2 17.6L15.8 17.6M7.4 7.2C7.4 3.9 12.6 3.9 12.6 7.2"
                   "M10 4.6L10 2.4M10 13.4C8.2 12.4 8.7 10.9 10 9.6C11.3 10.9 11.8 12.4 10 13.4Z",
        # three at one fire: community
        "community": "M10 9.6A2.7 2.7 0 1 0 10 4.2A2.7 2.7 0 1 0 10 9.6M4.9 17C5 13.8 7.2 12 10 12C12.8 12 15 13.8 15.1 17"
                     "M4.6 10.3A1.9 1.9 0 1 1 5.3 6.7M15.4 10.3A1.9 1.9 0 1 0 14.7 6.7"
                     "M1.7 15.6C1.8 13.6 2.8 12.6 4.4 12.2M18.3 15.6C18.2 13.6 17.2 12.6 15.6 12.2",
        # a key: the account
        "account": "M7 13.4A4.1 4.1 0 1 1 10.4 8.6M10.4 8.6A4.1 4.1 0 0 1 7 13.4M10.2 9.4L17.6 9.4L17.6 12.6"
                   "M14.4 9.4L14.4 11.8M6.2 9.3L6.21 9.3",
        # an open book: the guide
        "guide": "M10 5.4C8.2 3.7 5.2 3.3 2.4 3.7L2.4 15.4C5.2 15 8.2 15.4 10 17C11.8 15.4 14.8 15 17.6 15.4"
                 "L17.6 3.7C14.8 3.3 11.8 3.7 10 5.4ZM10 5.4L10 17M5 7.1C6 7.1 6.9 7.3 7.7 7.7"
                 "M5 10.3C6 10.3 6.9 10.5 7.7 10.9M15 7.1C14 7.1 13.1 7.3 12.3 7.7",
        # a written scroll: release notes
        "notes": "M5.2 14L5.2 4.6C5.2 3.4 4.3 2.6 3.4 2.6C2.4 2.6 1.8 3.6 2.2 4.8L5.2 4.8M3.6 2.6L13.2 2.6"
                 "C14.4 2.6 15 3.4 15 4.6L15 13.9M7.6 14L17.8 14C17.8 16 17 17.4 15.4 17.4L7 17.4"
                 "C5.9 17.4 5.2 16.4 5.2 14M8 6.4L12.3 6.4M8 9.8L12.3 9.8",
    }[name]


def link(icon, hover):
    pic = Picture(84, 44, 2)
    if hover:
        pic.glow(42, 13, 26, 17, *fade(BRASS, (0, .30), (.45, .13), (1, 0)))
        pic.path("M22 43.2Q42 41.6 62 43.2Q42 44.2 22 43.2Z", BRASS, .9)
    pic.open("translate(32 3)")
    pic.path(icon_marks(icon), None, None, "#05090A", 3, stroke_opacity=.35)
    pic.path(icon_marks(icon), None, None, "#F0C778" if hover else "#B4C6C0", 1.5)
    pic.close()
    return pic


def text_link(hover):
    """Plate under a line of text: a hairline at rest, a lit one when pointed at."""
    pic = Picture(170, 30, 2)
    if hover:
        pic.glow(85, 26, 78, 11, *fade(BRASS, (0, .26), (.5, .10), (1, 0)))
        pic.path("M10 26.2Q85 24.7 160 26.2Q85 27.5 10 26.2Z", BRASS)
    else:
        line = pic.linear(16, 0, 154, 0, *fade(MIST, (0, 0), (.3, .42), (.7, .42), (1, 0)))
        pic.path("M16 26Q85 25 154 26Q85 26.9 16 26Z", line)
    return pic


# --- plates ----------------------------------------------------------------------------------

def cut_panel(x, y, w, h, cut, seed, wobble=.5):
    """A panel with hollow-cut corners and a hand-dressed edge."""
    noise, pts = Noise(seed), []

    def edge(x1, y1, x2, y2):
        n = max(2, int(math.hypot(x2 - x1, y2 - y1) / 34))
        for i in range(n + 1):
            t = i / n
            j = noise(len(pts) * .9, 2) * wobble
            vertical = abs(x2 - x1) < .01
            pts.append((x1 + (x2 - x1) * t + (j if vertical else 0),
                        y1 + (y2 - y1) * t + (0 if vertical else j)))

    def corner(cx, cy, a):
        for k in (1, 2):
            t = math.radians(a + 30 * k)
            pts.append((cx + math.cos(t) * cut * .98, cy + math.sin(t) * cut * .98))
    edge(x + cut, y, x + w - cut, y)
    pts += [(x + w - cut * .42, y + cut * .16), (x + w - cut * .16, y + cut * .42)]
    edge(x + w, y + cut, x + w, y + h - cut)
    pts += [(x + w - cut * .16, y + h - cut * .42), (x + w - cut * .42, y + h - cut * .16)]
    edge(x + w - cut, y + h, x + cut, y + h)
    pts += [(x + cut * .42, y + h - cut * .16), (x + cut * .16, y + h - cut * .42)]
    edge(x, y + h - cut, x, y + cut)
    pts += [(x + cut * .16, y + cut * .42), (x + cut * .42, y + cut * .16)]
    return pts


def slot(pic, x, y, w, h, seed):
    d = spline(cut_panel(x, y, w, h, 5, seed, .25), True, .8, 2)
    pic.path(d, None, None, MIST, 2.6, stroke_opacity=.10)
    pic.path(d, pic.linear(0, y, 0, y + h, (0, "#05090A", .94), (.22, "#0A1113", .9), (1, "#101A1B", .86)))
    for w2, a in ((7, .12), (4, .18)):
        pic.path(f"M{x + 4} {y + 1.6}L{x + w - 4} {y + 1.6}", None, None, "#000000", w2, stroke_opacity=a)
    pic.path(d, None, None, MIST, 1, stroke_opacity=.46)
    pic.path(f"M{x + 8} {y + h + 1.2}Q{x + w / 2} {y + h + .6} {x + w - 8} {y + h + 1.2}", None, None,
             "#DCE7E3", .8, stroke_opacity=.22)


def login_plate():
    pic = Picture(340, 250, 2)
    pts = cut_panel(5, 5, 330, 240, 16, 21)
    d = spline(pts, True, .8, 2)
    for w, a in ((9, .07), (6, .10), (3, .14)):
        pic.path(d, None, None, "#04080A", w, stroke_opacity=a)
    pic.path(d, pic.linear(0, 5, 0, 245, (0, "#16211F", .86), (.5, "#101819", .84), (1, "#0B1113", .9)))
    pic.path(d, pic.radial(330, 250, 230, 190, *fade(TEAL, (0, .16), (.5, .05), (1, 0))))
    pic.path(d, None, None, MIST, 1, stroke_opacity=.38)
    pic.path(spline(cut_panel(9.5, 9.5, 321, 231, 14, 22, .3), True, .8, 2), None, None, MIST, .7,
             stroke_opacity=.16)
    slot(pic, 30, 64, 280, 40, 31)
    slot(pic, 30, 126, 280, 40, 32)
    return pic


def progress_frame():
    """A forged channel; the trough at (8, 8), 340 x 14, stays open."""
    pic = Picture(356, 30, 2)
    noise = Noise(5)
    top = [(x, 3.6 + noise(x * .05) * .7) for x in range(12, 346, 22)]
    low = [(x, 26.4 + noise(x * .05 + 40) * .7) for x in range(344, 10, -22)]
    outer = spline([(2.2, 15), (4.4, 7)] + top + [(351.6, 7), (353.8, 15), (351.6, 23)] + low + [(4.4, 23)],
                   True, .7, 2)
    hole = "M8 8L8 22L348 22L348 8Z"
    pic.path(outer, None, None, "#04080A", 3.4, stroke_opacity=.3)
    pic.path(outer + hole, pic.linear(0, 3, 0, 27, (0, "#42504B"), (.3, "#26322F"), (1, "#131B1B")),
             rule="evenodd")
    pic.path(outer, None, None, MIST, .9, stroke_opacity=.35)
    pic.path("M8 8L348 8", None, None, "#020506", 1.2, stroke_opacity=.7, cap="butt")
    pic.path("M8 22L348 22M7.6 8L7.6 22M348.4 8L348.4 22", None, None, MIST, .8, stroke_opacity=.3, cap="butt")
    for i in range(6):
        x = 26 + i * 60.8
        for y in (5.5, 24.6):
            pic.path(ellipse(x, y + .4, 1.7, 1.7, 2), "#060B0C", .7)
            pic.path(ellipse(x, y, 1.3, 1.3, 2), "#7F918B")
            pic.path(ellipse(x - .35, y - .4, .5, .5, 2), "#D3DEDA")
    return pic


def draw(out):
    for state in ("NORMAL", "ROLLOVER", "PRESSED", "DISABLED"):
        play(state).save(f"{out}/PLAY_{state}.svg")
    for kind in ("CLOSE", "MINIMIZE"):
        for state in ("NORMAL", "ROLLOVER", "PRESSED"):
            window_button(kind, state).save(f"{out}/{kind}_{state}.svg")
    for icon, normal, over in (
            ("home", "HOME_PAGE_NORMAL", "HOME_PAGE_ROLLOVER"),
            ("support", "REPORT_A_BUG_NORMAL", "REPORT_A_BUG_ROLLOVER"),
            ("community", "but_community", "but_community_over"),
            ("account", "but_manageacct", "but_manageacct_over"),
            ("guide", "but_playerguide", "but_playerguide_over"),
            ("notes", "but_releasenotes", "but_releasenotes_over")):
        link(icon, False).save(f"{out}/{normal}.svg")
        link(icon, True).save(f"{out}/{over}.svg")
    for normal, over in (("create_acct", "create_acct_over"), ("FORGOT_NORMAL", "FORGOT_ROLLOVER")):
        text_link(False).save(f"{out}/{normal}.svg")
        text_link(True).save(f"{out}/{over}.svg")
    login_plate().save(f"{out}/accountPasswordView.svg")
    progress_frame().save(f"{out}/progress_frame.svg")
