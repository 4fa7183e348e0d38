#!/usr/bin/env python3
"""Makes the sample project: a small town as a photogrammetric office would hand it over.

Usage: make_samples.py [FOLDER]     writes into FOLDER, the folder "town" beside this script by default

Needs nothing but python3 and gives the same bytes every time. Coordinates are metres in a projected system (east,
north, height), so they are large: everything that shows them has to keep doubles.
"""
import json
import math
import random
import struct
import sys
import zlib
from pathlib import Path

EAST, NORTH, HEIGHT = 612000.0, 5071000.0, 312.0   # the middle of the town
HALF_WIDTH, HALF_DEPTH, STEP = 160.0, 120.0, 2.0   # of the terrain and its grid, metres
rng = random.Random(20240607)


# --- the lie of the land; u is east, v is north of the middle --------------------------------------------------------

def stream_v(u):
    return -84.0 + 11.0 * math.sin(u / 46.0 + 0.6)


def smooth(t):
    t = min(1.0, max(0.0, t))
    return t * t * (3.0 - 2.0 * t)


def causeway(u, v):
    """1 on the dam on which Mill Lane crosses the stream, 0 off it."""
    middle = 44.0 - 0.4 * (v + 72.0)
    return smooth((6.5 - abs(u - middle)) / 3.0) if -106.0 < v < -66.0 else 0.0


def stream_bed(u):
    return land(u, stream_v(u)) - 2.6


def ground(u, v):
    dip = 2.6 * math.exp(-((v - stream_v(u)) / 7.0) ** 2)
    return land(u, v) - dip * (1.0 - causeway(u, v))


def land(u, v):
    """The ground without the stream's bed."""
    rolling = 2.6 * math.sin(u / 58.0 + 0.5) * math.cos(v / 52.0) + 1.2 * math.sin(u / 31.0 - v / 43.0)
    hill = 17.0 * smooth((v - 35.0) / 110.0) + 5.0 * smooth((-u - 70.0) / 100.0)
    return 0.6 * rolling + hill - 3.0 * smooth((-v - 30.0) / 50.0)


def world(u, v, above=0.0):
    """World coordinates of a place above the ground."""
    return (EAST + u, NORTH + v, HEIGHT + ground(u, v) + above)


def noise(x, y, seed=0):
    """Smooth noise of 0 to 1 with a grid of 1."""
    def at(i, j):
        h = (i * 374761393 + j * 668265263 + seed * 974634777) & 0xFFFFFFFF
        h = ((h ^ (h >> 13)) * 1274126177) & 0xFFFFFFFF
        return ((h ^ (h >> 16)) & 0xFFFF) / 65535.0
    i, j = math.floor(x), math.floor(y)
    s, t = smooth(x - i), smooth(y - j)
    low = at(i, j) * (1 - s) + at(i + 1, j) * s
    high = at(i, j + 1) * (1 - s) + at(i + 1, j + 1) * s
    return low * (1 - t) + high * t


# --- streets: name, width, centre line ----------------------------------------------------------------------------

def curve(points, step=2.0):
    """A smooth line through the points (Catmull-Rom), as points about a step apart."""
    ends = [tuple(2 * a - b for a, b in zip(points[0], points[1]))] + list(points) + \
           [tuple(2 * a - b for a, b in zip(points[-1], points[-2]))]
    line = []
    for p0, p1, p2, p3 in zip(ends, ends[1:], ends[2:], ends[3:]):
        count = max(1, round(math.dist(p1, p2) / step))
        for k in range(count):
            t = k / count
            line.append(tuple(0.5 * (2 * b + (c - a) * t + (2 * a - 5 * b + 4 * c - d) * t * t +
                                     (3 * b - a - 3 * c + d) * t ** 3) for a, b, c, d in zip(p0, p1, p2, p3)))
    return line + [points[-1]]


STREETS = [
    ("Main Street", 6.5, curve([(-159, -6), (-110, -12), (-60, -4), (0, 0), (60, -6), (110, 4), (159, 10)])),
    ("Hill Road", 5.0, curve([(-28, -2), (-30, 24), (-22, 48), (-30, 76), (-46, 98), (-50, 119)])),
    ("Mill Lane", 4.5, curve([(38, -3.5), (42, -28), (36, -52), (44, -72), (52, -92), (56, -119)])),
    ("Garden Street", 4.5, curve([(-27, 50), (4, 44), (36, 48), (66, 42), (88, 24), (92, 0)])),
    ("Orchard Way", 4.0, curve([(-92, -10.5), (-88, -34), (-64, -48), (-30, -46), (0, -50), (36, -52)])),
]


def distance_to(line, u, v):
    best = 1e9
    for (ax, ay), (bx, by) in zip(line, line[1:]):
        dx, dy = bx - ax, by - ay
        t = min(1.0, max(0.0, ((u - ax) * dx + (v - ay) * dy) / (dx * dx + dy * dy)))
        best = min(best, math.hypot(u - ax - t * dx, v - ay - t * dy))
    return best


def distance_to_streets(u, v):
    return min(distance_to(line, u, v) - width / 2 for _, width, line in STREETS)


# --- houses ---------------------------------------------------------------------------------------------------------

WALLS = ["wall_white", "wall_cream", "wall_ochre", "wall_rose", "wall_grey", "wall_blue"]
ROOFS = ["roof_red", "roof_brick", "roof_brown", "roof_slate"]


class House:
    def __init__(self, u, v, angle, length, width, height, name, wall, roof, hipped=False):
        self.u, self.v, self.angle = u, v, angle
        self.length, self.width, self.height = length, width, height
        self.name, self.wall, self.roof, self.hipped = name, wall, roof, hipped
        floor = [ground(*self.place(x, y)) for x in (-0.5, 0, 0.5) for y in (-0.5, 0, 0.5)]
        self.base, self.floor = min(floor) - 0.5, max(floor) + 0.3
        self.eaves = self.floor + height

    def place(self, x, y):
        """Ground place of a point of the house; x along its length and y across, -0.5 to 0.5."""
        c, s = math.cos(self.angle), math.sin(self.angle)
        x, y = x * self.length, y * self.width
        return (self.u + x * c - y * s, self.v + x * s + y * c)


def place_houses():
    """Houses along both sides of the streets, turned to them, apart from each other, streets and stream."""
    houses = [House(-6, 19, 0.08, 20, 9.5, 8.5, "St Mary's Church", "wall_white", "roof_slate")]
    number = {}
    for street, width, line in STREETS:
        travelled = 14.0
        for (ax, ay), (bx, by) in zip(line, line[1:]):
            travelled += math.dist((ax, ay), (bx, by))
            if travelled < 15.5:
                continue
            angle = math.atan2(by - ay, bx - ax)
            built = False
            for side in (1, -1):
                length, depth = rng.uniform(10.5, 14.5), rng.uniform(7.5, 9.5)
                back = width / 2 + depth / 2 + rng.uniform(5.0, 7.5)
                u, v = ax - side * back * math.sin(angle), ay + side * back * math.cos(angle)
                house = House(u, v, angle, length, depth, rng.choice([3.2, 3.4, 5.6, 5.8]), "", rng.choice(WALLS),
                              rng.choice(ROOFS), rng.random() < 0.3)
                if abs(u) > 132 or abs(v) > 98 or abs(v - stream_v(u)) < 20:
                    continue
                if any(math.hypot(u - h.u, v - h.v) < (length + h.length) / 2 + 4.5 for h in houses):
                    continue
                corners = [house.place(x, y) for x in (-0.5, 0, 0.5) for y in (-0.5, 0, 0.5)]
                if min(distance_to_streets(*corner) for corner in corners) < 2.5:
                    continue
                number[street] = number.get(street, 0) + 1
                house.name = f"{street} {number[street]}"
                houses.append(house)
                built = True
            if built:
                travelled = 0.0
    return houses


# --- writing OBJ ---------------------------------------------------------------------------------------------------

MATERIALS = {
    "wall_white": (0.93, 0.91, 0.87), "wall_cream": (0.92, 0.86, 0.72), "wall_ochre": (0.85, 0.70, 0.47),
    "wall_rose": (0.85, 0.66, 0.60), "wall_grey": (0.74, 0.74, 0.72), "wall_blue": (0.66, 0.75, 0.82),
    "roof_red": (0.72, 0.29, 0.20), "roof_brick": (0.62, 0.34, 0.24), "roof_brown": (0.45, 0.29, 0.21),
    "roof_slate": (0.33, 0.37, 0.43), "glass": (0.20, 0.28, 0.36), "door": (0.36, 0.22, 0.14),
    "chimney": (0.52, 0.36, 0.30), "asphalt": (0.36, 0.37, 0.39), "lane": (0.47, 0.46, 0.44),
    "paving": (0.70, 0.65, 0.57), "path": (0.68, 0.62, 0.50), "water": (0.27, 0.47, 0.62), "trunk": (0.35, 0.25, 0.17),
    "leaf_dark": (0.17, 0.36, 0.16), "leaf_green": (0.25, 0.46, 0.18), "leaf_light": (0.40, 0.55, 0.22),
    "blossom": (0.86, 0.66, 0.72), "hedge": (0.20, 0.39, 0.17),
}


class ObjFile:
    """Collects objects; vertices are told by millimetres, faces keep their own corners so that edges stay sharp."""

    def __init__(self, title):
        self.lines = [f"# {title}; metres, east north height", "mtllib materials.mtl"]
        self.count = 0
        self.material = None

    def begin(self, name):
        self.lines.append(f"o {name}")
        self.material = None

    def vertex(self, point):
        self.lines.append("v %.3f %.3f %.3f" % point)
        self.count += 1
        return self.count

    def face(self, material, points):
        """A flat face of its own corners, counter-clockwise seen from outside."""
        self.faces(material, points, [list(range(len(points)))])

    def faces(self, material, points, polygons):
        numbers = [self.vertex(p) for p in points]
        if material != self.material:
            self.lines.append(f"usemtl {material}")
            self.material = material
        for polygon in polygons:
            self.lines.append("f " + " ".join(str(numbers[k]) for k in polygon))

    def write(self, path):
        path.write_text("\n".join(self.lines) + "\n", encoding="ascii")


def lift(place, z):
    return (EAST + place[0], NORTH + place[1], HEIGHT + z)


def add_box(obj, house, material, x0, x1, y0, y1, z0, z1, top=None):
    """An upright box in the house's own coordinates."""
    c = [house.place(x, y) for x, y in ((x0, y0), (x1, y0), (x1, y1), (x0, y1))]
    for k in range(4):
        a, b = c[k], c[(k + 1) % 4]
        obj.face(material, [lift(a, z0), lift(b, z0), lift(b, z1), lift(a, z1)])
    obj.face(top or material, [lift(p, z1) for p in c])


def add_window(obj, house, material, side, x, z, wide, high):
    """A dark pane a little in front of a long wall; x along the wall in metres."""
    y = side * (0.5 + 0.04 / house.width)
    x0, x1 = (x - wide / 2) / house.length, (x + wide / 2) / house.length
    if side > 0:
        x0, x1 = x1, x0
    a, b = house.place(x0, y), house.place(x1, y)
    obj.face(material, [lift(a, z), lift(b, z), lift(b, z + high), lift(a, z + high)])


def add_gable_window(obj, house, end, y, z, wide, high):
    x = end * (0.5 + 0.04 / house.length)
    y0, y1 = (y - wide / 2) / house.width, (y + wide / 2) / house.width
    if end < 0:
        y0, y1 = y1, y0
    a, b = house.place(x, y0), house.place(x, y1)
    obj.face("glass", [lift(a, z), lift(b, z), lift(b, z + high), lift(a, z + high)])


def add_roof(obj, house, rise):
    """Two or four slopes with eaves that stand out, and the gables."""
    ox, oy = 0.5 + 0.5 / house.length, 0.5 + 0.6 / house.width
    low, top = house.eaves - 1.2 * rise / house.width, house.eaves + rise
    eaves = [lift(house.place(x, y), low) for x, y in ((-ox, -oy), (ox, -oy), (ox, oy), (-ox, oy))]
    inset = 0.5 * house.width / house.length if house.hipped else 0.0
    ridge = [lift(house.place(-ox + inset, 0), top), lift(house.place(ox - inset, 0), top)]
    obj.face(house.roof, [eaves[0], eaves[1], ridge[1], ridge[0]])
    obj.face(house.roof, [eaves[2], eaves[3], ridge[0], ridge[1]])
    under = [(p[0], p[1], p[2] - 0.15) for p in eaves]
    obj.face(house.roof, under[::-1])
    for k in range(4):
        n = (k + 1) % 4
        obj.face(house.roof, [under[k], under[n], eaves[n], eaves[k]])
    if house.hipped:
        obj.face(house.roof, [eaves[1], eaves[2], ridge[1]])
        obj.face(house.roof, [eaves[3], eaves[0], ridge[0]])
        return
    for end in (-1, 1):
        wall = [lift(house.place(end * 0.5, y), house.eaves) for y in (-end * 0.5, end * 0.5)]
        obj.face(house.wall, wall + [lift(house.place(end * 0.5, 0), top - 0.05)])


def add_house(obj, house):
    obj.begin(house.name.replace(" ", "_").replace("'", ""))
    add_box(obj, house, house.wall, -0.5, 0.5, -0.5, 0.5, house.base, house.eaves)
    add_roof(obj, house, 0.42 * house.width)
    floors = 2 if house.height > 5 else 1
    count = int(house.length / 3.2)
    for side in (-1, 1):
        for k in range(count):
            x = (k + 0.5) * house.length / count - house.length / 2
            for storey in range(floors):
                z = house.floor + 0.9 + 2.7 * storey
                if storey == 0 and side == -1 and k == count // 2:
                    add_window(obj, house, "door", side, x, house.floor, 1.2, 2.2)
                else:
                    add_window(obj, house, "glass", side, x, z, 1.3, 1.3)
    for end in (-1, 1):
        for storey in range(floors):
            for y in (-house.width / 4, house.width / 4):
                add_gable_window(obj, house, end, y, house.floor + 0.9 + 2.7 * storey, 1.1, 1.3)
    if not house.hipped:
        x = 0.22
        add_box(obj, house, "chimney", x - 0.45 / house.length, x + 0.45 / house.length, 0.08, 0.08 + 0.9 / house.width,
                house.eaves + 0.2 * house.width, house.eaves + 0.42 * house.width + 1.0)


def add_church(obj, church):
    obj.begin("St_Marys_Church")
    add_box(obj, church, church.wall, -0.5, 0.5, -0.5, 0.5, church.base, church.eaves)
    add_roof(obj, church, 6.0)
    for side in (-1, 1):
        for k in range(5):
            add_window(obj, church, "glass", side, (k - 2) * 3.6 + 1.5, church.floor + 2.0, 1.2, 4.6)
    tower = House(*church.place(-0.62, 0), church.angle, 6.0, 6.0, 17.0, "", church.wall, "roof_slate")
    add_box(obj, tower, tower.wall, -0.5, 0.5, -0.5, 0.5, church.base, tower.eaves)
    for side in (-1, 1):
        add_window(obj, tower, "glass", side, 0, tower.eaves - 4.0, 1.6, 2.8)
        add_gable_window(obj, tower, side, 0, tower.eaves - 4.0, 1.6, 2.8)
    add_window(obj, tower, "door", -1, 0, tower.floor, 1.8, 3.0)
    edge = [lift(tower.place(x, y), tower.eaves) for x, y in
            ((-0.58, -0.58), (0.58, -0.58), (0.58, 0.58), (-0.58, 0.58))]
    tip = lift((tower.u, tower.v), tower.eaves + 13.0)
    for k in range(4):
        obj.face("roof_slate", [edge[k], edge[(k + 1) % 4], tip])
    obj.face("roof_slate", edge[::-1])


def make_buildings(houses):
    obj = ObjFile("houses of the town, one object each")
    add_church(obj, houses[0])
    for house in houses[1:]:
        add_house(obj, house)
    return obj


# --- ground that is built or grown over ----------------------------------------------------------------------------

def add_ribbon(obj, name, material, line, width, above, level=None):
    """A strip over the ground along a line; level gives heights of its own."""
    obj.begin(name)
    across = 5
    points, polygons = [], []
    for k, (u, v) in enumerate(line):
        (ax, ay), (bx, by) = line[max(0, k - 1)], line[min(len(line) - 1, k + 1)]
        size = math.hypot(bx - ax, by - ay)
        nx, ny = -(by - ay) / size, (bx - ax) / size
        for j in range(across):
            t = width * (j / (across - 1) - 0.5)
            place = (min(HALF_WIDTH, max(-HALF_WIDTH, u + t * nx)), min(HALF_DEPTH, max(-HALF_DEPTH, v + t * ny)))
            points.append(lift(place, (level(u, v) if level else ground(*place)) + above))
    for k in range(len(line) - 1):
        for j in range(across - 1):
            a = k * across + j
            polygons.append([a, a + across, a + across + 1, a + 1])
    obj.faces(material, points, polygons)


def add_disc(obj, name, material, u, v, radius, above):
    obj.begin(name)
    rings, sides = 6, 36
    points = [world(u, v, above)]
    polygons = []
    for ring in range(1, rings + 1):
        for k in range(sides):
            angle = 2 * math.pi * k / sides
            r = radius * ring / rings
            points.append(world(u + r * math.cos(angle), v + r * math.sin(angle), above))
    for k in range(sides):
        n = (k + 1) % sides
        polygons.append([0, 1 + k, 1 + n])
        for ring in range(rings - 1):
            a, b = 1 + ring * sides, 1 + (ring + 1) * sides
            polygons.append([a + k, b + k, b + n, a + n])
    obj.faces(material, points, polygons)


def make_surfaces(houses):
    obj = ObjFile("streets, square, garden paths and the stream")
    for name, width, line in STREETS:
        material = "asphalt" if width > 4.6 else "lane"
        level = 0.16 if name == "Main Street" else 0.12
        add_ribbon(obj, name.replace(" ", "_"), material, line, width, level)
    add_disc(obj, "Church_Square", "paving", -8, 17, 14.5, 0.08)
    for house in houses[1:]:
        start, end = house.place(0.05, -0.5), house.place(0.05, -0.5 - 5.5 / house.width)
        if distance_to_streets(*end) > distance_to_streets(*start):
            start, end = house.place(0.05, 0.5), house.place(0.05, 0.5 + 5.5 / house.width)
        line = [tuple(a + (b - a) * t / 3 for a, b in zip(start, end)) for t in range(4)]
        add_ribbon(obj, "path_to_" + house.name.replace(" ", "_"), "path", line, 1.4, 0.10)
    bed = [(u, stream_v(u)) for u in [-160 + 4 * k for k in range(81)]]
    add_ribbon(obj, "Stream", "water", bed, 6.4, 0.75, lambda u, v: stream_bed(u))
    return obj


def add_crown(obj, material, u, v, z, radius, height, sides=8):
    """A round crown of a few bands, leaning on nothing but sin and cos."""
    bands = [(0.45, 0.0), (0.92, 0.22), (1.0, 0.45), (0.72, 0.75), (0.0, 1.0)]
    turn = rng.uniform(0, 1)
    points, polygons = [], []
    for share, level in bands:
        for k in range(sides if share else 1):
            angle = 2 * math.pi * (k + turn) / sides
            r = radius * share * rng.uniform(0.9, 1.1)
            points.append(lift((u + r * math.cos(angle), v + r * math.sin(angle)), z + height * level))
    for band in range(len(bands) - 2):
        for k in range(sides):
            n = (k + 1) % sides
            a, b = band * sides, (band + 1) * sides
            polygons.append([a + k, a + n, b + n, b + k])
    last = (len(bands) - 2) * sides
    polygons += [[last + k, last + (k + 1) % sides, last + sides] for k in range(sides)]
    polygons.append(list(range(sides))[::-1])
    obj.faces(material, points, polygons)


def add_trunk(obj, u, v, z, radius, height):
    ring = [(u + radius * math.cos(a), v + radius * math.sin(a)) for a in (0.3, 1.87, 3.44, 5.01)]
    points = [lift(p, z - 0.3) for p in ring] + [lift(p, z + height) for p in ring]
    obj.faces("trunk", points, [[k, (k + 1) % 4, 4 + (k + 1) % 4, 4 + k] for k in range(4)])


def is_free(houses, u, v, room):
    if abs(u) > HALF_WIDTH - 3 or abs(v) > HALF_DEPTH - 3 or distance_to_streets(u, v) < 1.2 + room * 0.4:
        return False
    if abs(v - stream_v(u)) < 4.2 or math.hypot(u + 8, v - 17) < 15.5 + room:
        return False
    return all(math.hypot(u - h.u, v - h.v) > h.length / 2 + room + 0.6 for h in houses)


def place_trees(houses):
    trees = []

    def plant(u, v, radius, kind):
        if is_free(houses, u, v, radius) and all(math.hypot(u - t[0], v - t[1]) > 0.8 * (radius + t[2]) for t in trees):
            trees.append((u, v, radius, kind))

    for u in range(-156, 157, 7):                               # along the stream
        for side in (-1, 1):
            plant(u + rng.uniform(-2, 2), stream_v(u) + side * rng.uniform(5.5, 9), rng.uniform(2.0, 3.2),
                  rng.choice(["leaf_green", "leaf_light", "leaf_dark"]))
    for _ in range(420):                                        # the wood on the hill
        u, v = rng.uniform(20, 157), rng.uniform(84, 117)
        if v > 96 - 10 * math.sin(u / 30) + 4 * noise(u / 9, v / 9):
            plant(u, v, rng.uniform(2.2, 3.4), rng.choice(["leaf_dark", "leaf_dark", "leaf_green"]))
    for _ in range(500):                                        # gardens
        house = rng.choice(houses[1:])
        angle, far = rng.uniform(0, 2 * math.pi), rng.uniform(9, 15)
        plant(house.u + far * math.cos(angle), house.v + far * math.sin(angle), rng.uniform(1.2, 2.1),
              rng.choice(["leaf_green", "leaf_light", "leaf_dark", "blossom"]) if rng.random() < 0.4 else "leaf_green")
        if len(trees) > 290:
            break
    for row in range(4):                                        # the orchard
        for k in range(8):
            plant(-130 + 7.5 * k, 32 + 7.5 * row, 1.9, "blossom" if (row + k) % 5 == 0 else "leaf_light")
    return trees


def make_trees(houses):
    obj = ObjFile("trees and hedges")
    trees = place_trees(houses)
    obj.begin("trunks")
    for u, v, radius, _ in trees:
        add_trunk(obj, u, v, ground(u, v), 0.12 * radius, 0.9 * radius)
    for kind in ("leaf_dark", "leaf_green", "leaf_light", "blossom"):
        obj.begin("crowns_" + kind)
        for u, v, radius, own in trees:
            if own == kind:
                add_crown(obj, kind, u, v, ground(u, v) + 0.75 * radius, radius, radius * rng.uniform(1.9, 2.5))
    return obj


# --- terrain --------------------------------------------------------------------------------------------------------

FIELDS = [(150, 164, 84), (196, 178, 108), (122, 150, 70), (168, 140, 100), (206, 192, 112), (136, 158, 84)]


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def ground_colour(u, v, near_street):
    speckle = 0.7 * noise(u / 5, v / 5, 1) + 0.3 * noise(u / 1.7, v / 1.7, 2)
    lawn = mix((96, 134, 62), (134, 160, 84), speckle)
    # fields: strips of land in a turned grid, outside of the houses
    along, across = 0.94 * u + 0.34 * v, -0.34 * u + 0.94 * v
    strip = math.floor(across / 38.0 + 0.35 * noise(along / 60, 3, 5))
    piece = math.floor(along / 74.0 + 0.5 * strip)
    crop = FIELDS[(strip * 5 + piece * 3) % len(FIELDS)]
    furrow = 0.90 + 0.10 * math.sin(across * (1.3 if (strip + piece) % 2 else 1.05)) + 0.12 * (speckle - 0.5)
    field = tuple(c * furrow for c in crop)
    centre = math.hypot((u - 2) / 128.0, (v + 2) / 76.0)
    colour = mix(lawn, field, smooth((centre - 0.98) / 0.06))
    if 96 - 10 * math.sin(u / 30) < v < 150 + 12 * math.sin(u / 23) and 14 < u < 190 + 9 * math.sin(v / 11):
        colour = mix(colour, (70, 92, 48), 0.8)
    colour = mix((120, 132, 92), colour, smooth((abs(v - stream_v(u)) - 3.0) / 6.0))
    return mix((140, 134, 110), colour, smooth(near_street / 2.2))


def make_terrain():
    columns, rows = int(2 * HALF_WIDTH / STEP) + 1, int(2 * HALF_DEPTH / STEP) + 1
    vertices, faces = bytearray(), bytearray()
    for j in range(rows):
        for i in range(columns):
            u, v = i * STEP - HALF_WIDTH, j * STEP - HALF_DEPTH
            colour = ground_colour(u, v, distance_to_streets(u, v))
            vertices += struct.pack("<3d3B", *(round(c, 4) for c in world(u, v)),
                                    *(min(255, max(0, round(c))) for c in colour))
    for j in range(rows - 1):
        for i in range(columns - 1):
            a = j * columns + i
            for triangle in ((a, a + 1, a + columns + 1), (a, a + columns + 1, a + columns)):
                faces += struct.pack("<B3i", 3, *triangle)
    head = ("ply\nformat binary_little_endian 1.0\ncomment terrain of the sample town\n"
            f"element vertex {columns * rows}\nproperty double x\nproperty double y\nproperty double z\n"
            "property uchar red\nproperty uchar green\nproperty uchar blue\n"
            f"element face {2 * (columns - 1) * (rows - 1)}\nproperty list uchar int vertex_indices\nend_header\n")
    return head.encode("ascii") + vertices + faces


# --- the picture from above -------------------------------------------------------------------------------------------

PICTURE = (-480.0, 460.0, 450, 380)   # its upper left corner and its size in pixels
PIXEL = 2.0                           # metres


def street_lines():
    """Streets with their widths; those that lead out of the sample go straight on."""
    lines = []
    for _, width, line in STREETS:
        line = list(line)
        for end, before in ((0, 1), (-1, -2)):
            u, v = line[end]
            if abs(u) < HALF_WIDTH - 2 and abs(v) < HALF_DEPTH - 2:
                continue
            size = math.dist(line[end], line[before])
            far = (u + (u - line[before][0]) / size * 600, v + (v - line[before][1]) / size * 600)
            line.insert(0 if end == 0 else len(line), far)
        lines.append((width, line))
    return lines


def near_streets():
    """By pixel, how far its middle is from the edge of the next street (negative on it), where that is near."""
    left, top, columns, rows = PICTURE
    near = {}
    for width, line in street_lines():
        room = width / 2 + 4.0
        for a, b in zip(line, line[1:]):
            first, last = (min(a[0], b[0]) - room - left) / PIXEL, (max(a[0], b[0]) + room - left) / PIXEL
            upper, lower = (top - max(a[1], b[1]) - room) / PIXEL, (top - min(a[1], b[1]) + room) / PIXEL
            for j in range(max(0, int(upper)), min(rows, int(lower) + 1)):
                for i in range(max(0, int(first)), min(columns, int(last) + 1)):
                    far = distance_to([a, b], left + (i + 0.5) * PIXEL, top - (j + 0.5) * PIXEL) - width / 2
                    near[i, j] = min(far, near.get((i, j), 9.0))
    return near


def picture_colour(u, v, near_street, houses):
    for house in houses:
        if math.hypot(u - house.u, v - house.v) < house.length:
            c, s = math.cos(house.angle), math.sin(house.angle)
            x, y = (u - house.u) * c + (v - house.v) * s, (v - house.v) * c - (u - house.u) * s
            if abs(x) < house.length / 2 + 0.5 and abs(y) < house.width / 2 + 0.6:
                return tuple(255 * part for part in MATERIALS[house.roof])
    if abs(v - stream_v(u)) < 3.2 and near_street > 0:
        return tuple(255 * part for part in MATERIALS["water"])
    if near_street < 0:
        return tuple(255 * part for part in MATERIALS["lane"])
    return ground_colour(u, v, near_street)


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def make_picture(houses):
    """The land around the town from above, with a palette of few colours, so that the file is small."""
    left, top, columns, rows = PICTURE
    near = near_streets()
    palette, body = {}, bytearray()
    for j in range(rows):
        body.append(0)  # no filter
        for i in range(columns):
            u, v = left + (i + 0.5) * PIXEL, top - (j + 0.5) * PIXEL
            close = houses if abs(u) < HALF_WIDTH and abs(v) < HALF_DEPTH else []
            colour = picture_colour(u, v, near.get((i, j), 9.0), close)
            steps = tuple(min(240, 16 * round(part / 16)) for part in colour)
            body.append(palette.setdefault(steps, len(palette)))
    head = struct.pack(">IIBBBBB", columns, rows, 8, 3, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", head) + \
        png_chunk(b"PLTE", bytes(part for steps in palette for part in steps)) + \
        png_chunk(b"IDAT", zlib.compress(bytes(body), 9)) + png_chunk(b"IEND", b"")


def make_world_file():
    """The size of a pixel and the middle of the first one."""
    left, top, _, _ = PICTURE
    return "%g\n0\n0\n-%g\n%.1f\n%.1f\n" % (PIXEL, PIXEL, EAST + left + PIXEL / 2, NORTH + top - PIXEL / 2)


# --- tie points ------------------------------------------------------------------------------------------------------

def make_tie_points(houses):
    points = []
    for _ in range(2600):
        u, v = max(-150, min(150, rng.gauss(0, 62))), max(-110, min(110, rng.gauss(0, 44)))
        if all(math.hypot(u - h.u, v - h.v) > h.length / 2 for h in houses):
            points.append((world(u, v, rng.gauss(0.18, 0.05)),
                           mix(ground_colour(u, v, distance_to_streets(u, v)), (255, 250, 225), 0.28)))
    for house in houses:                                        # ridges, eaves and wall corners are matched best
        for x, y, z in [(-0.5, 0, 0.42), (0.5, 0, 0.42)] + [(x, y, 0.0) for x in (-0.5, 0.5) for y in (-0.5, 0.5)]:
            for _ in range(4):
                place = house.place(x * rng.uniform(0.9, 1.06), y * rng.uniform(1.0, 1.08))
                points.append((lift(place, house.eaves + z * house.width + rng.gauss(0.1, 0.05)), (250, 236, 190)))
    head = ("ply\nformat ascii 1.0\ncomment tie points of the sample town\n"
            f"element vertex {len(points)}\nproperty double x\nproperty double y\nproperty double z\n"
            "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n")
    rows = ["%.3f %.3f %.3f %d %d %d" % (*p, *(min(255, round(c)) for c in colour)) for p, colour in points]
    return head + "\n".join(rows) + "\n"


# --- GeoJSON -----------------------------------------------------------------------------------------------------------

def rounded(points):
    return [[round(c, 3) for c in p] for p in points]


def feature(kind, coordinates, **properties):
    return {"type": "Feature", "properties": {k.replace("_", "-"): v for k, v in properties.items()},
            "geometry": {"type": kind, "coordinates": coordinates}}


def write_features(path, features):
    rows = ",\n".join(json.dumps(f, separators=(",", ":")) for f in features)
    path.write_text('{"type":"FeatureCollection","features":[\n' + rows + "\n]}\n", encoding="utf-8")


def offset(line, distance):
    result = []
    for k, (u, v) in enumerate(line):
        (ax, ay), (bx, by) = line[max(0, k - 1)], line[min(len(line) - 1, k + 1)]
        size = math.hypot(bx - ax, by - ay)
        result.append((u - distance * (by - ay) / size, v + distance * (bx - ax) / size))
    return result


def make_roads():
    features = []
    for number, (name, width, line) in enumerate(STREETS):
        def is_own(u, v):
            """Whether the place is in the sample and on no street before this one."""
            return abs(u) <= HALF_WIDTH and abs(v) <= HALF_DEPTH and \
                all(distance_to(other, u, v) > wide / 2 + 0.1 for _, wide, other in STREETS[:number])

        inside = [(u, v) for u, v in line if is_own(u, v)]
        middle = rounded(world(u, v, 0.4) for u, v in inside)
        if width > 4.6:  # dashes count anew from each point, so points are far apart here
            sparse = middle[:-1:7] + middle[-1:]
            features.append(feature("LineString", sparse, name=name, street=name, stroke="#fdf6e3",
                                    stroke_dasharray="10 10", width=width))
        else:
            features.append(feature("LineString", middle, name=name, street=name, stroke="#ffd75e", stroke_width=1,
                                    width=width))
        for side in (-1, 1):
            edge = [(u, v) for u, v in offset(line, side * width / 2) if is_own(u, v)]
            features.append(feature("LineString", rounded(world(u, v, 0.3) for u, v in edge),
                                    name=f"{name}, {'left' if side > 0 else 'right'} edge", stroke="#f4f4f0",
                                    stroke_width=2 if width > 4.6 else 1))
    return features


def make_plots(houses):
    features = []
    for house in houses:
        half_x, half_y = 0.5 + 3.0 / house.length, 0.5 + 4.2 / house.width
        corners = [(-half_x, -half_y), (half_x, -half_y), (half_x, half_y), (-half_x, half_y), (-half_x, -half_y)]
        ring = []
        for (ax, ay), (bx, by) in zip(corners, corners[1:]):
            ring += [house.place(ax + (bx - ax) * t / 2, ay + (by - ay) * t / 2) for t in range(2)]
        ring.append(ring[0])
        style = {"stroke": "#ff8c42", "stroke_dasharray": "8 6"} if house.name.startswith("St") else \
                {"stroke": "#7b2d8b", "stroke_dasharray": "8 6"}
        features.append(feature("Polygon", [rounded(world(u, v, 0.5) for u, v in ring)], name="Plot " + house.name,
                                owner=f"owner {1 + len(features)}", **style))
    return features


def make_stations():
    """Two strips of a drone flight, looking down: each station a point and the lines of its view."""
    features = []
    for strip in range(2):
        for k in range(5):
            u, v = (-104 + 52 * k) * (1 if strip == 0 else -1), -42 + 84 * strip
            eye = (EAST + u, NORTH + v, HEIGHT + 78.0 + rng.uniform(-1, 1))
            name = f"IMG_{1 + strip * 5 + k:04d}"
            features.append(feature("Point", rounded([eye])[0], name=name, marker_color="#ffe14d", marker_size=9))
            corners = [(eye[0] + x, eye[1] + y, eye[2] - 9.0) for x, y in ((-6, -4), (6, -4), (6, 4), (-6, 4))]
            lines = [[eye, corner] for corner in corners] + [corners + [corners[0]]]
            features.append(feature("MultiLineString", [rounded(line) for line in lines], name=name + " view",
                                    stroke="#1f4fd8", stroke_width=2))
    return features


def make_survey():
    """What a surveyor adds: control points, one of them checked, a water pipe above the stream, a kerb."""
    features = []
    for number, (u, v) in enumerate([(-120.0, -60.0), (-118.0, 62.0), (122.0, -58.0), (118.0, 66.0)]):
        features.append(feature("Point", rounded([world(u, v, 0.05)])[0], name=f"GCP {number + 1}", control=True))
    features.append(feature("Point", rounded([world(8.0, 14.0, 0.05)])[0], name="Check 1", check=True, accuracy=1.5))
    bank = max(land(u, -84.0) for u in (60.0, 84.0)) + 1.2
    pipe = [world(60.0, -70.0, -0.5), (EAST + 60.0, NORTH - 74.0, HEIGHT + bank),
            (EAST + 84.0, NORTH - 98.0, HEIGHT + bank), world(87.0, -101.0, -0.5)]
    features.append(feature("LineString", rounded(pipe), name="Water pipe", radius=0.4, stroke="#5a7fb0"))
    kerb = [(u, v) for u, v in offset(STREETS[0][2], -STREETS[0][1] / 2 - 0.25) if 60.0 <= u <= 150.0]
    features.append(feature("LineString", rounded(world(u, v, 0.2) for u, v in kerb), name="Kerb of Main Street",
                            section=[[-0.2, 0], [-0.2, 0.25], [0.2, 0.3], [0.2, 0]], stroke="#b8b4aa"))
    return features


# --- all of it -----------------------------------------------------------------------------------------------------------

def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent / "town"
    folder.mkdir(parents=True, exist_ok=True)
    houses = place_houses()
    (folder / "terrain.ply").write_bytes(make_terrain())
    make_buildings(houses).write(folder / "buildings.obj")
    make_surfaces(houses).write(folder / "surfaces.obj")
    make_trees(houses).write(folder / "trees.obj")
    material_lines = [line for name, colour in MATERIALS.items()
                      for line in (f"newmtl {name}", "Kd %.3f %.3f %.3f" % colour, "")]
    (folder / "materials.mtl").write_text("\n".join(material_lines), encoding="ascii")
    (folder / "tie_points.ply").write_text(make_tie_points(houses), encoding="ascii")
    (folder / "ground.png").write_bytes(make_picture(houses))
    (folder / "ground.pgw").write_text(make_world_file(), encoding="ascii")
    write_features(folder / "roads.geojson", make_roads())
    write_features(folder / "plots.geojson", make_plots(houses))
    write_features(folder / "stations.geojson", make_stations())
    write_features(folder / "survey.geojson", make_survey())
    print(f"{len(houses)} buildings, {sum(f.stat().st_size for f in folder.iterdir()) / 1e6:.1f} MB in {folder}")


if __name__ == "__main__":
    main()
