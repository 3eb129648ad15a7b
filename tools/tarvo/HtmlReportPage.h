// The fixed parts of the replay report: style, legend and script.
#ifndef TARVO_TOOLS_TARVO_HTMLREPORTPAGE_H_
#define TARVO_TOOLS_TARVO_HTMLREPORTPAGE_H_

namespace tarvo::cli {

inline constexpr char kPageHead[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";

inline constexpr char kPageStyle[] = R"(<style>
body { font: 14px system-ui, sans-serif; margin: 16px; color: #222; }
h1 { font-size: 20px; margin: 0 0 8px; }
#map { width: 100%; max-height: 70vh; background: #f4f1ea; border: 1px solid #aaa; }
.area { vector-effect: non-scaling-stroke; stroke-width: 1; }
.area.hazard { fill: rgba(200, 40, 40, 0.35); stroke: #a00; }
.area.hold { fill: rgba(240, 160, 0, 0.55); stroke: #b70; }
.track { fill: none; stroke: #555; stroke-width: 1; vector-effect: non-scaling-stroke; }
.fix { stroke: #fff; stroke-width: 0.5; vector-effect: non-scaling-stroke; }
.fix.outside { fill: #2a7; } .fix.near { fill: #e80; } .fix.inside { fill: #c00; }
.fan line { stroke: #36c; stroke-width: 0.7; opacity: 0.45; vector-effect: non-scaling-stroke; }
.fan.active line { stroke: #00f; stroke-width: 2; opacity: 1; }
.fix.active { r: 7; stroke: #000; }
.legend span { display: inline-block; margin-right: 16px; }
.legend i { display: inline-block; width: 14px; height: 14px; vertical-align: -2px; margin-right: 4px; }
table { border-collapse: collapse; } td, th { padding: 2px 10px; border-bottom: 1px solid #ddd; text-align: left; }
tr[data-fix] { cursor: pointer; } tr.active { background: #dde6ff; }
</style>
)";

inline constexpr char kLegend[] = R"(<div class="legend">
<span><i style="background: rgba(200,40,40,0.35); border: 1px solid #a00"></i>hazard area (runway)</span>
<span><i style="background: rgba(240,160,0,0.55); border: 1px solid #b70"></i>hold-short area</span>
<span><i style="background: #2a7; border-radius: 7px"></i>fix, no area</span>
<span><i style="background: #e80; border-radius: 7px"></i>fix, predicted position in an area</span>
<span><i style="background: #c00; border-radius: 7px"></i>fix, aircraft inside the area</span>
<span><i style="background: #36c; height: 2px; vertical-align: 4px"></i>look-ahead to the six predicted positions</span>
</div>
)";

// Clicking an event highlights its fix and look-ahead on the map. The
// status line proves to a headless browser that the script ran cleanly.
inline constexpr char kPageScript[] = R"(<script>
(function () {
  'use strict';
  var rows = document.querySelectorAll('#events tr[data-fix]');
  function select(fix) {
    document.querySelectorAll('.active').forEach(function (e) { e.classList.remove('active'); });
    var dot = document.getElementById('fix' + fix);
    if (dot) dot.classList.add('active');
    var fan = document.querySelector('.fan[data-fix="' + fix + '"]');
    if (fan) fan.classList.add('active');
    rows.forEach(function (r) { if (r.dataset.fix === fix) r.classList.add('active'); });
  }
  rows.forEach(function (row) {
    row.addEventListener('click', function () { select(row.dataset.fix); });
  });
  var counts = { outside: 0, near: 0, inside: 0 };
  document.querySelectorAll('circle.fix').forEach(function (c) {
    ['outside', 'near', 'inside'].forEach(function (k) { if (c.classList.contains(k)) counts[k]++; });
  });
  document.getElementById('status').textContent = 'rendered: ' + rows.length + ' events, ' +
      counts.outside + ' fixes outside, ' + counts.near + ' near, ' + counts.inside + ' inside';
})();
</script>
)";

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_HTMLREPORTPAGE_H_
