// The fixed parts of the replay report: style, body skeleton and script.
// The script reads the replay from the JSON in #tarvo-data (see
// HtmlReport.cpp for its shape), draws it with Leaflet, and keeps its state
// in window.tarvoReport and, as JSON text, in #state for a headless browser.
// "?select=N" in the page's address clicks the N-th event row (from 0) once
// the page is drawn; "?flight=N" shows flight N on the timeline.
#ifndef TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORTPAGE_H_
#define TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORTPAGE_H_

namespace tarvo::cli {

inline constexpr char kPageHead[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";

inline constexpr char kPageStyle[] = R"css(<style>
body { font: 14px system-ui, sans-serif; margin: 12px 16px; color: #222; }
h1 { font-size: 20px; margin: 0 0 4px; } h2 { font-size: 17px; margin: 18px 0 6px; }
h3 { font-size: 15px; margin: 12px 0 4px; }
#facts { display: flex; flex-wrap: wrap; gap: 2px 18px; margin: 0 0 8px; font-size: 13px; }
#facts div { display: flex; gap: 4px; } #facts dt { color: #666; } #facts dd { margin: 0; }
#flights button { margin: 0 4px 4px 0; } #flights button.active { background: #36c; color: #fff; }
#map { height: 560px; background: #e9e6df; border: 1px solid #999; }
.area.runway { fill: #c22; fill-opacity: 0.35; stroke: #900; }
.area.hold { fill: #f0a000; fill-opacity: 0.55; stroke: #b70; }
.area.other { fill: #889; fill-opacity: 0.25; stroke: #667; }
.leaflet-tooltip.label { background: rgba(255,255,255,0.8); border: 0; box-shadow: none; padding: 0 3px; font-weight: 600; }
.leaflet-tooltip.label.runway { color: #800; font-size: 13px; }
.leaflet-tooltip.label.hold { color: #840; font-size: 10px; }
.leaflet-tooltip.label.other { color: #445; font-size: 10px; }
.leaflet-tooltip.label.part { color: #800; font-size: 10px; font-weight: 400; }
.leaflet-tooltip.label.twy { color: #333; font-size: 10px; background: rgba(255,255,255,0.65); }
.zoom-mid .leaflet-tooltip.label.twy, .zoom-far .leaflet-tooltip.label.twy { display: none; }
.zoom-far .leaflet-tooltip.label.hold, .zoom-far .leaflet-tooltip.label.other, .zoom-far .leaflet-tooltip.label.part { display: none; }
.arrow { color: #124; font-size: 13px; line-height: 13px; text-align: center; }
.endmark { background: #000; border: 2px solid #fff; }
.north-arrow { background: #fff; padding: 2px 6px; border: 2px solid rgba(0,0,0,0.3); border-radius: 4px; text-align: center; font-weight: 700; line-height: 14px; }
.leaflet-control-layers-toggle { background-image: none !important; }
.leaflet-control-layers-toggle::after { content: "Layers"; display: block; text-align: center; line-height: 36px; font-size: 11px; }
#timeline { width: 100%; height: 150px; border: 1px solid #999; border-top: 0; background: #fafafa; cursor: crosshair; display: block; }
#timeline text { font-size: 11px; fill: #444; } #timeline .speed { fill: none; stroke: #36c; stroke-width: 1.5; }
#timeline .band.s1 { fill: rgba(240,140,0,0.25); } #timeline .band.s2 { fill: rgba(200,0,0,0.25); }
#timeline .ev { stroke-width: 2; cursor: pointer; } #timeline .ev.enter { stroke: #c00; } #timeline .ev.hold { stroke: #d80; }
#timeline .ev.sound { stroke: #609; } #timeline .ev.leave { stroke: #999; } #timeline .cursor { stroke: #000; stroke-dasharray: 3 2; }
#selection { min-height: 1.4em; margin: 4px 0; font-size: 13px; }
.legend span { display: inline-block; margin-right: 14px; font-size: 13px; }
.legend i { display: inline-block; width: 14px; height: 12px; vertical-align: -1px; margin-right: 4px; }
table { border-collapse: collapse; font-size: 13px; } td, th { padding: 2px 8px; border-bottom: 1px solid #ddd; text-align: left; }
tr[data-fix] { cursor: pointer; } tr.active { background: #dde6ff; }
.stats { margin: 2px 0; } #summary { font-size: 12px; white-space: pre-wrap; }
</style>
)css";

inline constexpr char kPageBody[] = R"html(<nav id="flights"></nav>
<div id="map"></div>
<svg id="timeline" role="img" aria-label="speed and events over time"></svg>
<p id="selection">Click an event, the path or the timeline to see a fix and its six look-ahead points.</p>
<div class="legend">
<span><i style="background: rgba(200,30,30,0.45); border: 1px solid #900"></i>runway (hazard)</span>
<span><i style="background: rgba(240,160,0,0.6); border: 1px solid #b70"></i>hold-short</span>
<span><i style="background: rgba(120,120,140,0.35); border: 1px solid #667"></i>other area</span>
<span><i style="background: #d2d2d2; border: 1px solid #aaa"></i>apron, pavement</span>
<span><i style="background: #b0b0b0; border: 1px solid #888"></i>building</span>
<span><i style="background: #9a9a9a; height: 5px; vertical-align: 3px"></i>taxiway (its width)</span>
<span><i style="background: #2a7; height: 3px; vertical-align: 4px"></i>path, no area</span>
<span><i style="background: #e80; height: 3px; vertical-align: 4px"></i>look-ahead in an area</span>
<span><i style="background: #c00; height: 3px; vertical-align: 4px"></i>aircraft in the area</span>
<span><i style="background: #16c; border-radius: 7px"></i>look-ahead points (2 s and 4 s ahead)</span>
</div>
<div id="sections"></div>
<p id="status">script did not run</p>
<pre id="state" hidden></pre>
)html";

inline constexpr char kPageScript[] = R"js(<script>
(function () {
  'use strict';
  var D = JSON.parse(document.getElementById('tarvo-data').textContent);
  var S = { map: false, areas: 0, labels: 0, context: { lines: 0, polygons: 0, labels: 0, kinds: {} }, scale: false, north: false, timeline: false,
            events: 0, flights: D.flights.length, drawnFixes: 0, shownFlight: -1, selected: null };
  window.tarvoReport = S;
  var M_PER_DEG = 111195;
  function el(tag, attrs, text) {
    var e = document.createElement(tag);
    for (var k in attrs || {}) e.setAttribute(k, attrs[k]);
    if (text !== undefined) e.textContent = text;
    return e;
  }
  function svg(tag, attrs) {
    var e = document.createElementNS('http://www.w3.org/2000/svg', tag);
    for (var k in attrs || {}) e.setAttribute(k, attrs[k]);
    return e;
  }
  function clock(t) {
    if (t > 1e8) return new Date(t * 1000).toISOString().substr(11, 8);
    return t.toFixed(1) + ' s';
  }
  function secs(v) { return v === null ? '-' : v.toFixed(1) + ' s'; }

  // --- the map -------------------------------------------------------------
  var map = L.map('map', { maxZoom: 22, zoomSnap: 0.25 });
  L.control.scale({ imperial: false, maxWidth: 160 }).addTo(map);
  S.scale = true;
  var North = L.Control.extend({ options: { position: 'topleft' }, onAdd: function () {
    var d = L.DomUtil.create('div', 'north-arrow');
    d.innerHTML = '&#9650;<br>N'; d.title = 'north is up'; return d; } });
  new North().addTo(map);
  S.north = true;
  var none = L.layerGroup().addTo(map);
  var osm = L.tileLayer('https://tile.openstreetmap.org/{z}/{x}/{y}.png',
      { maxZoom: 22, maxNativeZoom: 19, attribution: '&copy; OpenStreetMap contributors' });
  // The airport's context (taxiways, aprons, buildings) in a pane of its
  // own under the areas, so that switching it back on keeps it under them.
  map.createPane('context').style.zIndex = 350;
  var contextLayer = L.layerGroup().addTo(map);
  var areaLayer = L.layerGroup().addTo(map), labelLayer = L.layerGroup().addTo(map);
  var pathLayer = L.layerGroup().addTo(map), selLayer = L.layerGroup().addTo(map);
  L.control.layers({ 'No basemap (offline)': none, 'OpenStreetMap (online)': osm },
      { 'Taxiways, aprons, buildings': contextLayer, 'Areas': areaLayer, 'Area names': labelLayer, 'Path': pathLayer, 'Selected fix': selLayer },
      { collapsed: true }).addTo(map);
  function shortName(a) {
    if (a.kind !== 'hold') return a.name.replace(/^\S+ (?=RWY)/, '');
    return a.name.replace(/^.*HOLD SHORT RWY /, 'HS ');
  }
  // The first view: the areas the monitor named for the flight (or all
  // flights), else the flight's path; airborne legs are a zoom out away.
  var polys = {};
  function fitFlight(fi) {
    var b = L.latLngBounds([]);
    D.flights.forEach(function (f, i) {
      if (fi === undefined || fi === i) f.episodes.forEach(function (e) { if (polys[e.area]) b.extend(polys[e.area]); });
    });
    if (!b.isValid()) {
      D.flights.forEach(function (f, i) { if (fi === undefined || fi === i) f.path.forEach(function (p) { b.extend(ll(p)); }); });
    }
    if (b.isValid()) map.fitBounds(b, { padding: [24, 24] }); else map.setView([0, 0], 2);
  }
  D.areas.forEach(function (a) {
    var poly = L.polygon(a.ring, { className: 'area ' + a.kind, weight: 1 }).addTo(areaLayer);
    poly.bindTooltip(a.name + ' (' + a.guid + ')', { sticky: true });
    // A part of a runway named apart (stopway, displaced threshold) gets a
    // small label, shown from near by only, like the hold-shorts.
    var part = a.kind === 'runway' && /RWY \S+ \S/.test(a.name);
    L.tooltip({ permanent: true, direction: 'center', className: 'label ' + (part ? 'part' : a.kind), interactive: false })
        .setLatLng(poly.getBounds().getCenter()).setContent(shortName(a)).addTo(labelLayer);
    S.areas++; S.labels++;
    polys[a.name] = polys[a.name] ? polys[a.name].extend(poly.getBounds()) : poly.getBounds();
  });
  // Taxiway lines are as wide on the map as on the ground (at least 1.5 px).
  var C = D.context || { lines: [], polygons: [] }, taxiways = [];
  var contextStyle = { apron: ['#d2d2d2', '#aaa'], pavement: ['#d6d6d6', '#b0b0b0'], building: ['#b0b0b0', '#888'] };
  C.polygons.forEach(function (p) {
    var st = contextStyle[p[0]] || contextStyle.pavement;
    var rings = p[2].map(function (r) { var out = []; for (var i = 0; i + 1 < r.length; i += 2) out.push([r[i], r[i + 1]]); return out; });
    var poly = L.polygon(rings, { pane: 'context', color: st[1], weight: 1, fillColor: st[0], fillOpacity: 0.9 }).addTo(contextLayer);
    poly.bindTooltip(p[0] + (p[1] ? ': ' + p[1] : ''), { sticky: true });
    S.context.polygons++; S.context.kinds[p[0]] = (S.context.kinds[p[0]] || 0) + 1;
  });
  C.lines.forEach(function (l) {
    var pts = []; for (var i = 0; i + 1 < l[3].length; i += 2) pts.push([l[3][i], l[3][i + 1]]);
    var taxiway = l[0] === 'taxiway';
    var line = L.polyline(pts, { pane: 'context', color: taxiway ? '#9a9a9a' : '#8c8a6a', weight: taxiway ? 3 : 1,
        opacity: taxiway ? 0.85 : 0.8, lineCap: 'round', lineJoin: 'round' }).addTo(contextLayer);
    if (l[1]) line.bindTooltip(l[0] + ' ' + l[1], { sticky: true });
    if (taxiway) { line.widthM = l[2] || 23; taxiways.push(line); }
    if (taxiway && l[1] && pts.length) {
      L.tooltip({ permanent: true, direction: 'center', className: 'label twy', interactive: false })
          .setLatLng(pts[Math.floor(pts.length / 2)]).setContent(l[1]).addTo(contextLayer);
      S.context.labels++;
    }
    S.context.lines++; S.context.kinds[l[0]] = (S.context.kinds[l[0]] || 0) + 1;
  });
  function widenTaxiways() {
    var mpp = 156543.03 * Math.cos(map.getCenter().lat * Math.PI / 180) / Math.pow(2, map.getZoom());
    taxiways.forEach(function (t) { t.setStyle({ weight: Math.max(1.5, t.widthM / mpp) }); });
  }
  function toggleFar() {
    map.getContainer().classList.toggle('zoom-far', map.getZoom() < 15);
    map.getContainer().classList.toggle('zoom-mid', map.getZoom() < 16);
    widenTaxiways();
  }
  map.on('zoomend', toggleFar);

  var colours = ['#2a7', '#e80', '#c00'];
  function ll(p) { return [p[1], p[2]]; }
  var flightLayers = [];
  D.flights.forEach(function (f, fi) {
    var path = f.path, layer = L.featureGroup().addTo(pathLayer);
    flightLayers.push(layer);
    S.drawnFixes += path.length;
    for (var i = 0; i < path.length;) {
      var j = i;
      while (j + 1 < path.length && path[j + 1][6] === path[i][6]) j++;
      var run = path.slice(i, Math.min(j + 2, path.length)).map(ll);
      L.polyline(run, { color: colours[path[i][6]], weight: 3, opacity: 0.9 })
          .on('click', function (ev) { selectNearest(fi, ev.latlng); }).addTo(layer);
      i = j + 1;
    }
    var every = Math.max(1, Math.floor(path.length / 30));
    for (var k = every; k < path.length - 1; k += every) {
      L.marker(ll(path[k]), { interactive: false, icon: L.divIcon({ className: 'arrow', iconSize: [13, 13],
          html: '<div style="transform: rotate(' + path[k][5] + 'deg)">&#9650;</div>' }) }).addTo(layer);
    }
    if (path.length) {
      var name = f.name ? ' of ' + f.name : '';
      L.circleMarker(ll(path[0]), { radius: 7, color: '#fff', weight: 2, fillColor: '#1a5', fillOpacity: 1 })
          .bindTooltip('start' + name).addTo(layer);
      L.marker(ll(path[path.length - 1]), { icon: L.divIcon({ className: 'endmark', iconSize: [11, 11] }) })
          .bindTooltip('end' + name).addTo(layer);
    }
  });
  fitFlight(D.flights.length > 1 ? undefined : 0);
  toggleFar();
  S.map = true;

  // --- selection: a fix and its six look-ahead points ----------------------
  function lookAheadPoints(fix) {
    var la = fix[7] || [], pts = [];
    for (var i = 0; i + 1 < la.length; i += 2) {
      pts.push([fix[1] + la[i + 1] / M_PER_DEG,
                fix[2] + la[i] / (M_PER_DEG * Math.cos(fix[1] * Math.PI / 180))]);
    }
    return pts;
  }
  function select(fix, flightIndex, what) {
    selLayer.clearLayers();
    var at = ll(fix), pts = lookAheadPoints(fix), reach = 0;
    pts.forEach(function (p, i) {
      L.polyline([at, p], { color: '#16c', weight: 2, dashArray: i < 3 ? null : '4 3' }).addTo(selLayer);
      L.circleMarker(p, { radius: i < 3 ? 7 : 5, color: '#fff', weight: 1.5, fillColor: i < 3 ? '#16c' : '#6af',
          fillOpacity: 1 }).bindTooltip((i < 3 ? '4 s' : '2 s') + ' ahead, ' + ['left', 'middle', 'right'][i % 3])
          .addTo(selLayer);
      reach = Math.max(reach, map.distance(at, p));
    });
    L.circleMarker(at, { radius: 8, color: '#000', weight: 2, fillColor: colours[fix[6]], fillOpacity: 1 }).addTo(selLayer);
    var metresAtZoom0 = 156543.03 * Math.cos(fix[1] * Math.PI / 180);
    var zoom = reach > 1 ? Math.log2(metresAtZoom0 * 170 / reach) : 19;
    zoom = Math.max(13, Math.min(21, Math.floor(zoom * 4) / 4));
    map.setView(at, zoom, { animate: false });
    document.querySelectorAll('tr.active').forEach(function (r) { r.classList.remove('active'); });
    document.querySelectorAll('tr[data-fix="' + fix[0] + '"]').forEach(function (r) { r.classList.add('active'); });
    if (flightIndex !== S.shownFlight) drawTimeline(flightIndex);
    drawCursor(fix[3]);
    var f = D.flights[flightIndex];
    document.getElementById('selection').textContent = (what ? what + ': ' : '') + 'fix ' + (fix[0] + 1) +
        (f.name ? ' of ' + f.name : '') + ', ' + (fix[8] || clock(fix[3])) + (fix[9] ? ', line ' + fix[9] : '') +
        ', ' + fix[4] + ' km/h, heading ' + fix[5] + '\u00b0, look-ahead reaches ' + reach.toFixed(0) + ' m';
    S.selected = { fix: fix[0], flight: flightIndex, lat: fix[1], lon: fix[2], zoom: map.getZoom(),
                   center: [map.getCenter().lat, map.getCenter().lng], lookAhead: pts.length, reachMetres: reach };
    writeState();
  }
  function nearestByTime(f, t) {
    var p = D.flights[f].path, lo = 0, hi = p.length - 1;
    while (lo < hi) { var mid = (lo + hi) >> 1; if (p[mid][3] < t) lo = mid + 1; else hi = mid; }
    if (lo > 0 && Math.abs(p[lo - 1][3] - t) < Math.abs(p[lo][3] - t)) lo--;
    return p[lo];
  }
  function selectNearest(f, latlng) {
    var best = null, bestD = Infinity;
    D.flights[f].path.forEach(function (p) {
      var d = map.distance(latlng, ll(p)); if (d < bestD) { bestD = d; best = p; } });
    if (best) select(best, f, 'path');
  }
  function selectFix(index, f, what) {
    var fix = D.fixes[String(index)];
    if (fix) select(fix, f, what);
  }

  // --- the timeline ----------------------------------------------------------
  var tl = document.getElementById('timeline'), T = null;
  function drawTimeline(f) {
    S.shownFlight = f;
    // The flight on the timeline stands out; the others fade.
    flightLayers.forEach(function (layer, i) {
      var o = D.flights.length === 1 || i === f ? 1 : 0.25;
      layer.eachLayer(function (l) { if (l.setStyle) l.setStyle({ opacity: 0.9 * o, fillOpacity: o }); else l.setOpacity(o); });
      if (o === 1) layer.bringToFront();
    });
    while (tl.firstChild) tl.removeChild(tl.firstChild);
    document.querySelectorAll('#flights button').forEach(function (b, i) { b.classList.toggle('active', i === f); });
    var path = D.flights[f].path;
    var W = tl.clientWidth || 1200, H = tl.clientHeight || 150, L0 = 52, R0 = 10, top = 8, bottom = H - 22;
    if (!path.length) return;
    var t0 = path[0][3], t1 = Math.max(path[path.length - 1][3], t0 + 1), vmax = 10;
    path.forEach(function (p) { vmax = Math.max(vmax, p[4]); });
    vmax = Math.ceil(vmax / 20) * 20;
    T = { f: f, x: function (t) { return L0 + (t - t0) / (t1 - t0) * (W - L0 - R0); },
          t: function (x) { return t0 + (x - L0) / (W - L0 - R0) * (t1 - t0); },
          y: function (v) { return bottom - v / vmax * (bottom - top); }, top: top, bottom: bottom };
    for (var i = 0; i < path.length;) {
      var j = i; while (j + 1 < path.length && path[j + 1][6] === path[i][6]) j++;
      if (path[i][6]) {
        var xa = T.x(path[i][3]), xb = T.x(path[Math.min(j + 1, path.length - 1)][3]);
        tl.appendChild(svg('rect', { 'class': 'band s' + path[i][6], x: xa, y: top, width: Math.max(1, xb - xa), height: bottom - top }));
      }
      i = j + 1;
    }
    tl.appendChild(svg('polyline', { 'class': 'speed', points: path.map(function (p) {
      return T.x(p[3]).toFixed(1) + ',' + T.y(p[4]).toFixed(1); }).join(' ') }));
    [0, vmax / 2, vmax].forEach(function (v) {
      var t = svg('text', { x: 2, y: T.y(v) + 4 }); t.textContent = v + ' km/h'; tl.appendChild(t); });
    for (var k = 0; k <= 6; k++) {
      var tt = t0 + (t1 - t0) * k / 6, x = T.x(tt);
      tl.appendChild(svg('line', { x1: x, x2: x, y1: bottom, y2: bottom + 4, stroke: '#444' }));
      var label = svg('text', { x: x, y: H - 6, 'text-anchor': k === 0 ? 'start' : k === 6 ? 'end' : 'middle' });
      label.textContent = clock(tt); tl.appendChild(label);
    }
    D.flights[f].events.forEach(function (e) {
      var fix = D.fixes[String(e[0])]; if (!fix) return;
      var kind = /^enter hazard/.test(e[1]) ? 'enter' : /^enter hold/.test(e[1]) ? 'hold' : /^sound/.test(e[1]) ? 'sound' : 'leave';
      var line = svg('line', { 'class': 'ev ' + kind, x1: T.x(fix[3]), x2: T.x(fix[3]), y1: top, y2: bottom, 'data-fix': e[0] });
      var title = svg('title'); title.textContent = (fix[8] || clock(fix[3])) + ' ' + e[1] + ' ' + e[2];
      line.appendChild(title);
      line.addEventListener('click', function (ev) { ev.stopPropagation(); selectFix(e[0], f, e[1]); });
      tl.appendChild(line);
    });
    S.timeline = true;
  }
  function drawCursor(t) {
    var old = tl.querySelector('.cursor'); if (old) old.remove();
    if (!T) return;
    tl.appendChild(svg('line', { 'class': 'cursor', x1: T.x(t), x2: T.x(t), y1: T.top, y2: T.bottom }));
  }
  tl.addEventListener('click', function (ev) {
    if (!T) return;
    var r = tl.getBoundingClientRect();
    select(nearestByTime(T.f, T.t(ev.clientX - r.left)), T.f, 'moment');
  });

  // --- flights, tables ---------------------------------------------------------
  var nav = document.getElementById('flights');
  if (D.flights.length > 1) {
    D.flights.forEach(function (f, i) {
      var b = el('button', { type: 'button' }, f.name + ' (' + f.lead.stats.entries + ' entries)');
      b.addEventListener('click', function () {
        drawTimeline(i);
        fitFlight(i);
        writeState();
      });
      nav.appendChild(b);
    });
  }
  function table(parent, heads, rows) {
    var t = el('table'), tr = el('tr');
    heads.forEach(function (h) { tr.appendChild(el('th', {}, h)); });
    t.appendChild(el('thead')).appendChild(tr);
    var body = t.appendChild(el('tbody'));
    rows.forEach(function (r) {
      var row = el('tr', r.fix === undefined ? {} : { 'data-fix': r.fix });
      r.cells.forEach(function (c) { row.appendChild(el('td', {}, c)); });
      if (r.click) row.addEventListener('click', r.click);
      body.appendChild(row);
    });
    parent.appendChild(t);
  }
  function statsText(s) {
    return s.entries + ' runway entries (' + s.warned + ' warned, ' + s.unwarned + ' with no warning), ' +
        s.unentered + ' warnings with no entry; lead time minimum ' + secs(s.minimum) + ', median ' + secs(s.median);
  }
  var sections = document.getElementById('sections');
  D.flights.forEach(function (f, fi) {
    var sec = sections.appendChild(el('section', { 'class': 'flight', id: 'flight-' + fi }));
    sec.appendChild(el('h2', {}, f.name ? 'Flight ' + f.name : 'Track'));
    sec.appendChild(el('p', { 'class': 'stats' }, f.fixes + ' fixes; ' + statsText(f.lead.stats)));
    sec.appendChild(el('h3', {}, 'Warning lead time'));
    table(sec, ['Runway', 'Area entered', 'First warning', 'Entry', 'Seconds'], f.lead.entries.map(function (e) {
      return { fix: e.fix, cells: [e.runway, e.area, e.firstWarning ? e.firstWarning + ' (' + e.warningArea + ')' : 'no warning',
          e.entry, secs(e.seconds)], click: function () { selectFix(e.fix, fi, 'entry'); } };
    }));
    if (f.lead.unentered.length) {
      sec.appendChild(el('h3', {}, 'Warnings with no entry'));
      table(sec, ['Runway', 'Area', 'Start', 'Lasted'], f.lead.unentered.map(function (u) {
        return { cells: [u.runway, u.area, u.start, secs(u.seconds)] }; }));
    }
    sec.appendChild(el('h3', {}, 'Events'));
    table(sec, ['Time', 'Line', 'Event', 'Detail'], f.events.map(function (e) {
      var fix = D.fixes[String(e[0])];
      S.events++;
      return { fix: e[0], cells: [fix[8], String(fix[9]), e[1], e[2]], click: function () { selectFix(e[0], fi, e[1]); } };
    }));
  });

  function writeState() {
    document.getElementById('state').textContent = JSON.stringify(S);
    document.getElementById('status').textContent = 'rendered: ' + S.areas + ' areas, ' + S.labels + ' labels, ' +
        S.context.lines + ' context lines, ' + S.context.polygons + ' context polygons, ' +
        S.events + ' events, ' + S.flights + ' flights, ' + S.drawnFixes + ' fixes drawn' +
        (S.selected ? '; selected fix ' + (S.selected.fix + 1) + ' at zoom ' + S.selected.zoom : '');
  }
  var params = new URLSearchParams(location.search);
  drawTimeline(Math.min(D.flights.length - 1, Math.max(0, parseInt(params.get('flight') || '0', 10) || 0)));
  if (params.has('flight')) fitFlight(S.shownFlight);
  writeState();
  if (params.has('select')) {
    var rows = document.querySelectorAll('.flight tr[data-fix]');
    var row = rows[parseInt(params.get('select'), 10)];
    if (row) row.click();
  }
})();
</script>
)js";

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORTPAGE_H_
