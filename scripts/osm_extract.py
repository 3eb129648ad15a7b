#!/usr/bin/env python3
"""OpenStreetMap XML extracts for the tool's airport derivation.

  osm_extract.py from-geojson LSZH-OSM.geojson OUT.osm
      Writes the raw OSM features of the Zurich GeoJSON (runway centreline
      ways, taxiway ways, holding-position nodes, with their tags and OSM
      ids) as OSM XML. Ways that meet share one node, as in OSM. The file
      has no aerodrome feature, so one aerodrome node (icao=LSZH) is added
      at the airport's reference point.

  osm_extract.py synthetic AIRPORT.osm OUT.osm SIZE_MB
      Writes an extract of about SIZE_MB megabytes: the airport of
      AIRPORT.osm once as it is, then copies of it moved 0.5 degrees apart
      under made-up codes (ZZ00, ZZ01, ...), then filler ways (buildings)
      until the size is reached. For measuring how the derivation's time
      grows with the size of a country's extract.
"""
import json
import sys
from xml.sax.saxutils import quoteattr

ARP = (47.458056, 8.548056)  # Zurich's aerodrome reference point


def write_osm(out, nodes, ways):
    out.write('<?xml version="1.0" encoding="UTF-8"?>\n'
              '<osm version="0.6" generator="tarvo scripts/osm_extract.py">\n')
    for nid, (lat, lon, tags) in sorted(nodes.items()):
        out.write(f' <node id="{nid}" version="1" lat="{lat:.7f}" lon="{lon:.7f}"')
        if not tags:
            out.write('/>\n')
            continue
        out.write('>\n')
        for k, v in tags.items():
            out.write(f'  <tag k={quoteattr(k)} v={quoteattr(str(v))}/>\n')
        out.write(' </node>\n')
    for wid, (refs, tags) in sorted(ways.items()):
        out.write(f' <way id="{wid}" version="1">\n')
        for r in refs:
            out.write(f'  <nd ref="{r}"/>\n')
        for k, v in tags.items():
            out.write(f'  <tag k={quoteattr(k)} v={quoteattr(str(v))}/>\n')
        out.write(' </way>\n')
    out.write('</osm>\n')


def from_geojson(src, dst):
    features = json.load(open(src))["features"]
    nodes, ways, by_coord = {}, {}, {}
    next_id = [9_000_000_000]

    def node(lon, lat, nid=None, tags=None):
        key = (round(lat, 7), round(lon, 7))
        if key in by_coord:
            found = by_coord[key]
            if tags:
                nodes[found][2].update(tags)
            return found
        if nid is None:
            next_id[0] += 1
            nid = next_id[0]
        nodes[nid] = (lat, lon, dict(tags or {}))
        by_coord[key] = nid
        return nid

    for f in features:  # holding positions first: they keep their ids
        p = f["properties"]
        if p["kind"] == "holding_position":
            tags = {k: v for k, v in p.items() if k not in ("kind", "osm_node")}
            tags["aeroway"] = "holding_position"
            node(*f["geometry"]["coordinates"], nid=p["osm_node"], tags=tags)
    for f in features:
        p = f["properties"]
        if p["kind"] in ("runway_centreline", "runway_other", "taxiway"):
            tags = {k: v for k, v in p.items() if k not in ("kind", "osm_way")}
            if p["kind"] == "taxiway":
                tags["aeroway"] = "taxiway"
            refs = [node(lon, lat) for lon, lat in f["geometry"]["coordinates"]]
            ways[p["osm_way"]] = (refs, tags)
    next_id[0] += 1
    nodes[next_id[0]] = (ARP[0], ARP[1], {"aeroway": "aerodrome", "icao": "LSZH",
                                           "name": "Flughafen Zürich"})
    with open(dst, "w", encoding="utf-8") as out:
        write_osm(out, nodes, ways)


def read_osm(path):
    import xml.etree.ElementTree as ET
    root = ET.parse(path).getroot()
    nodes, ways = {}, {}
    for n in root.iter("node"):
        nodes[int(n.get("id"))] = (float(n.get("lat")), float(n.get("lon")),
                                   {t.get("k"): t.get("v") for t in n.iter("tag")})
    for w in root.iter("way"):
        ways[int(w.get("id"))] = ([int(r.get("ref")) for r in w.iter("nd")],
                                  {t.get("k"): t.get("v") for t in w.iter("tag")})
    return nodes, ways


def synthetic(src, dst, size_mb):
    nodes, ways = read_osm(src)
    target = size_mb * 1_000_000
    with open(dst, "w", encoding="utf-8") as out:
        out.write('<?xml version="1.0" encoding="UTF-8"?>\n<osm version="0.6" '
                  'generator="tarvo scripts/osm_extract.py synthetic">\n')
        # Every node first, then every way, as OSM files are sorted.
        copies = 20
        base = 10**11
        for c in range(copies + 1):
            dlat, dlon = (c // 10) * 0.5, (c % 10) * 0.5
            for nid, (lat, lon, tags) in sorted(nodes.items()):
                if c > 0 and tags.get("icao"):
                    tags = dict(tags, icao=f"ZZ{c:02d}")
                nid2 = nid if c == 0 else base * c + nid % base
                out.write(f' <node id="{nid2}" lat="{lat - dlat:.7f}" lon="{lon + dlon:.7f}"')
                if tags:
                    out.write(">" + "".join(f'<tag k={quoteattr(k)} v={quoteattr(v)}/>'
                                            for k, v in tags.items()) + "</node>\n")
                else:
                    out.write("/>\n")
        filler_nodes = 0
        fid = 50 * base
        # Four nodes per building, 0.0005 degrees apart, across Europe.
        while out.tell() < target * 0.8:
            i = filler_nodes // 4
            lat = 40 + (i % 20000) * 0.0005 + (filler_nodes % 2) * 0.0002
            lon = 0 + (i // 20000) * 0.001 + (filler_nodes % 4 // 2) * 0.0002
            out.write(f' <node id="{fid + filler_nodes}" lat="{lat:.7f}" lon="{lon:.7f}"/>\n')
            filler_nodes += 1
        for c in range(copies + 1):
            for wid, (refs, tags) in sorted(ways.items()):
                wid2 = wid if c == 0 else base * c + wid % base
                out.write(f' <way id="{wid2}">')
                for r in refs:
                    out.write(f'<nd ref="{r if c == 0 else base * c + r % base}"/>')
                out.write("".join(f'<tag k={quoteattr(k)} v={quoteattr(v)}/>'
                                  for k, v in tags.items()) + "</way>\n")
        for b in range(filler_nodes // 4):
            r = [fid + 4 * b + k for k in (0, 1, 3, 2, 0)]
            out.write(f' <way id="{fid + b}">' + "".join(f'<nd ref="{x}"/>' for x in r) +
                      '<tag k="building" v="yes"/></way>\n')
        out.write("</osm>\n")


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "from-geojson":
        from_geojson(sys.argv[2], sys.argv[3])
    elif len(sys.argv) == 5 and sys.argv[1] == "synthetic":
        synthetic(sys.argv[2], sys.argv[3], int(sys.argv[4]))
    else:
        sys.exit(__doc__)
