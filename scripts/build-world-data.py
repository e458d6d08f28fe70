#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-3.0-or-later
"""Builds the map's world from the Natural Earth shapefiles of Debian's libmagics++-data.

    build-world-data.py [SOURCE_FOLDER [OUTPUT_FILE]]

Developers run it once; builds and users take the committed file. The result is the same, byte for
byte, at each run with the same zlib. libs/tellarix/qt/map/world/README.md tells its form.
"""

import collections
import hashlib
import math
import os
import struct
import sys
import zlib

SOURCE = "/usr/share/magics"
OUTPUT = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                      "../libs/tellarix/qt/map/world/world.dat")
HEADER = b"Tellarix world map 1\nSPDX-License-Identifier: LicenseRef-Public-Domain\n"

# Folder, steps per degree of the coordinates, and how far a line may be moved, in degrees.
SCALES = [("110m", 500, 0.0), ("50m", 1000, 0.002), ("10m", 2000, 0.0012)]
LAND, LAKES, RIVERS, COUNTRIES, DISPUTED, PROVINCES, PLACES = range(7)

# Shapes as lists of (longitude, latitude), by rank: 0 for what is shown first.
Shapes = collections.namedtuple("Shapes", "rank points")


def read_table(path):
    """The records of a dBase file as dictionaries of bytes."""
    with open(path, "rb") as file:
        data = file.read()
    count, start, length = struct.unpack("<IHH", data[4:12])
    fields = []
    at = 32
    while data[at] != 13:
        fields.append((data[at:at + 11].split(b"\0")[0].decode(), data[at + 16]))
        at += 32
    records = []
    for index in range(count):
        at = start + index * length + 1
        record = {}
        for name, width in fields:
            record[name] = data[at:at + width].strip(b" \0")
            at += width
        records.append(record)
    return records


def read_shapes(path):
    """For each record its parts, found by the index: some files have damaged record headers."""
    with open(path + ".shp", "rb") as file:
        data = file.read()
    with open(path + ".shx", "rb") as file:
        index = file.read()[100:]
    shapes = []
    for words, _ in struct.iter_unpack(">2i", index):
        at = 2 * words + 8
        form = struct.unpack_from("<i", data, at)[0]
        if form == 1:
            shapes.append([[struct.unpack_from("<2d", data, at + 4)]])
        elif form in (3, 5):
            parts, count = struct.unpack_from("<2i", data, at + 36)
            starts = struct.unpack_from(f"<{parts}i", data, at + 44) + (count,)
            flat = struct.unpack_from(f"<{2 * count}d", data, at + 44 + 4 * parts)
            points = list(zip(flat[::2], flat[1::2]))
            shapes.append([points[a:b] for a, b in zip(starts, starts[1:])])
        elif form == 0:
            shapes.append([])
        else:
            raise ValueError(f"{path}.shp: shape of type {form}")
    return shapes


def read_layer(source, scale, name):
    path = os.path.join(source, scale, f"ne_{scale}_{name}")
    if not os.path.exists(path + ".shp"):
        return []
    return list(zip(read_table(path + ".dbf"), read_shapes(path)))


def rank_of(text):
    try:
        return max(0, min(int(float(text)), 15))
    except ValueError:
        return 0


def snapped(ring):
    """The ring with its cuts exactly at the date line and at the south pole."""
    return [(math.copysign(180, x) if abs(x) > 179.9995 else x, -90 if y < -89.5 else y)
            for x, y in ring]


def is_clockwise(ring):
    return sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(ring, ring[1:])) < 0


def cut_of(point):
    """Which cuts of the map the point lies on."""
    return (point[0] if abs(point[0]) == 180 else 0), point[1] == -90


def thinned(points, tolerance):
    """Without the points that move the line by less than the tolerance; Douglas and Peucker (1973),
    with longitudes as wide as they are on the ground. Ends of cuts stay."""
    if len(points) < 3 or not tolerance:
        return points
    keep = [False] * len(points)
    fixed = [i for i in range(len(points)) if i in (0, len(points) - 1) or
             any(cut_of(points[i]) != cut_of(points[j]) for j in (i - 1, i + 1))]
    if points[0] == points[-1] and len(fixed) == 2:
        x0, y0 = points[0]
        fixed.insert(1, max(range(len(points)), key=lambda i: (points[i][0] - x0) ** 2 +
                            (points[i][1] - y0) ** 2))
    stack = list(zip(fixed, fixed[1:]))
    for i in fixed:
        keep[i] = True
    while stack:
        first, last = stack.pop()
        if last - first < 2:
            continue
        ax, ay = points[first]
        width = math.cos(math.radians(min(abs(ay), 85)))
        dx, dy = (points[last][0] - ax) * width, points[last][1] - ay
        square = dx * dx + dy * dy
        farthest, where = tolerance * tolerance, -1
        for i in range(first + 1, last):
            x, y = (points[i][0] - ax) * width, points[i][1] - ay
            along = max(0.0, min(1.0, (x * dx + y * dy) / square)) if square else 0.0
            x, y = x - along * dx, y - along * dy
            distance = x * x + y * y
            if distance > farthest:
                farthest, where = distance, i
        if where >= 0:
            keep[where] = True
            stack += [(first, where), (where, last)]
    return [point for point, kept in zip(points, keep) if kept]


def joined(lines):
    """The lines, strung together where exactly two ends meet."""
    ends = collections.defaultdict(list)
    for i, line in enumerate(lines):
        ends[line[0]].append(i)
        ends[line[-1]].append(i)
    left = dict(enumerate(lines))
    result = []
    for i in range(len(lines)):
        if i not in left:
            continue
        line = left.pop(i)
        for _ in range(2):
            while True:
                meeting = ends[line[-1]]
                others = [j for j in meeting if j in left]
                if len(meeting) != 2 or len(others) != 1:
                    break
                other = left.pop(others[0])
                line = line + (other if other[0] == line[-1] else other[::-1])[1:]
            line = line[::-1]
        result.append(line)
    return result


def land(source, scale):
    """Outer edges only, for lakes are painted over the land; but the Caspian, which the package keeps
    among the seas, is a hole with a coast."""
    for _, rings in read_layer(source, scale, "land"):
        yield from (Shapes(0, snapped(ring)) for ring in rings if is_clockwise(ring))
    for record, rings in read_layer(source, scale, "ocean"):
        if not record["featurec_2"]:
            yield from (Shapes(0, ring[::-1]) for ring in rings if is_clockwise(ring) and
                        46 < min(x for x, _ in ring) and max(x for x, _ in ring) < 56 and
                        36 < min(y for _, y in ring) and max(y for _, y in ring) < 48)


def lakes(source, scale):
    """The package keeps lakes among the seas."""
    for record, rings in read_layer(source, scale, "ocean"):
        if record["featurec_2"]:
            yield from (Shapes(rank_of(record["scaleran_2"]), ring) for ring in rings)


def rivers(source, scale):
    """Also through lakes, which are painted over them: those too small to be shown leave no gap."""
    for record, lines in read_layer(source, scale, "rivers_lake_centerlines"):
        yield from (Shapes(rank_of(record["scalerank"]), line) for line in lines)


def borders(source, scale, disputed):
    for record, lines in read_layer(source, scale, "admin_0_boundary_lines_land"):
        if record["featurecla"] in (b"Overlay limit", b"Lease limit") or \
                record.get("type") == b"Water Indicator":
            continue
        settled = record["featurecla"].startswith(b"International boundary")
        if settled != disputed:
            yield from (Shapes(0, line) for line in lines)


def provinces(source, scale):
    for record, lines in read_layer(source, scale, "admin_1_states_provinces_lines"):
        if record["featurecla"] in (b"Admin-1 boundary", b"Admin-1 region boundary"):
            rank = math.ceil(float(record["min_zoom"]))
            yield from (Shapes(rank, line) for line in lines)


def unsigned(value):
    result = bytearray()
    while value >= 128:
        result.append(value & 127 | 128)
        value >>= 7
    result.append(value)
    return bytes(result)


def signed(value):
    return unsigned(2 * value if value >= 0 else -2 * value - 1)


def packed_shapes(shapes, steps, tolerance, closed):
    """Ranks and counts of points, then the steps east, then the steps north: alike beside alike is
    smaller once compressed."""
    shapes = list(shapes)
    if not closed:
        by_rank = collections.defaultdict(list)
        for rank, points in shapes:
            by_rank[rank].append(points)
        shapes = [Shapes(rank, line) for rank in sorted(by_rank) for line in joined(by_rank[rank])]
    heads, easts, norths = [], [], []
    count, x, y, total = 0, 0, 0, 0
    for rank, points in shapes:
        line = []
        for point in thinned(points, tolerance):
            step = (round(point[0] * steps), round(point[1] * steps))
            if not line or step != line[-1]:
                line.append(step)
        if closed and line[0] == line[-1]:
            line.pop()
        if len(line) < (3 if closed else 2):
            continue
        count += 1
        total += len(line)
        heads += [unsigned(rank), unsigned(len(line))]
        for east, north in line:
            easts.append(signed(east - x))
            norths.append(signed(north - y))
            x, y = east, north
    return total, b"".join([unsigned(steps), unsigned(count), unsigned(total)] + heads + easts +
                           norths)


def packed_places(source, steps):
    """Most important first: rank, then capitals, then people."""
    places = []
    for record, parts in read_layer(source, "10m", "populated_places_simple"):
        name = record["name"].decode("cp1252", "replace")
        if "\ufffd" in name or "?" in name:
            name = record["nameascii"].decode("ascii")
        capital = record["featurecla"] == b"Admin-0 capital"
        people = int(record["pop_max"] or 0)
        places.append((rank_of(record["scalerank"]), not capital, -people, name, parts[0][0]))
    places.sort()
    data = [unsigned(steps), unsigned(len(places))]
    for rank, ordinary, _, name, (x, y) in places:
        text = name.encode("utf-8")
        data += [unsigned(2 * rank + (not ordinary)), signed(round(x * steps)),
                 signed(round(y * steps)), unsigned(len(text)), text]
    return len(places), b"".join(data)


def blocks(source):
    for scale, (folder, steps, tolerance) in enumerate(SCALES):
        for kind, shapes in ((LAND, land(source, folder)), (LAKES, lakes(source, folder)),
                             (RIVERS, rivers(source, folder)),
                             (COUNTRIES, borders(source, folder, False)),
                             (DISPUTED, borders(source, folder, True)),
                             (PROVINCES, provinces(source, folder))):
            count, data = packed_shapes(shapes, steps, tolerance, kind in (LAND, LAKES))
            if count:
                yield scale, kind, count, data
    yield (0, PLACES) + packed_places(source, 2000)


def main():
    source = sys.argv[1] if len(sys.argv) > 1 else SOURCE
    output = sys.argv[2] if len(sys.argv) > 2 else OUTPUT
    entries, bodies = [], []
    for scale, kind, count, data in blocks(source):
        body = zlib.compress(data, 9)
        entries.append((scale, kind, len(body), len(data), hashlib.sha1(body).digest()))
        bodies.append(body)
        print(f"scale {scale} kind {kind}: {count} points, {len(data)} bytes, {len(body)} packed")
    offset = len(HEADER) + 2 + 34 * len(entries) + 20
    head = HEADER + struct.pack(">H", len(entries))
    for scale, kind, length, plain, digest in entries:
        head += struct.pack(">BBIII", scale, kind, offset, length, plain) + digest
        offset += length
    with open(output, "wb") as file:
        file.write(head + hashlib.sha1(head).digest() + b"".join(bodies))
    print(f"{output}: {offset} bytes")


if __name__ == "__main__":
    main()
