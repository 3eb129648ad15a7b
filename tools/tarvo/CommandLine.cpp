#include "CommandLine.h"

#include <cerrno>
#include <cstdlib>

namespace tarvo::cli {
namespace {

const char kImportHelp[] =
    R"(Usage: tarvo import FILE [options]
       tarvo import SOURCE --airport ICAO [options]

Registers every area of FILE in the store. The whole file is read and
checked first: a file with any error changes nothing.

With --airport, derives the areas of airport ICAO from open data instead:
  SOURCE.dat      an X-Plane/FlightGear apt.dat: runways (row 100) and
                  hold-short areas from the runway-hold lines (line types
                  4 and 54), each the strip from the line to the runway edge
  SOURCE.csv      OurAirports' runways.csv: runways only (it has no
                  hold-short positions); closed runways are left out
  SOURCE.osm/.pbf an OpenStreetMap extract with the aerodrome (aeroway=
                  aerodrome, icao=ICAO): runways from aeroway=runway ways
                  (ref, width; without width 18/23/30/45 m for runways under
                  800/1200/1800 m and longer), hold-short areas from
                  aeroway=holding_position nodes with holding_position:
                  type=runway: the taxiway from the node to the runway edge,
                  as wide as the taxiway (width tag, else 23 m); disused
                  runways are left out
Runways are rectangles from end to end, as wide as the source says. Names:
"ICAO RWY 12R/30L" (a hazard area) and "ICAO HOLD SHORT RWY 12R/30L #03" or
"... A1" with the holding position's ref (a hold-short area). The GUIDs
(ICAO-RWY-12R-30L, ICAO-HS-12R-30L-03) stay the same for the same source,
so --replace updates a re-import in place.
The airport's context for the replay report's map is written beside the
store as ICAO.context.geojson (overwritten by a re-import): the paved
surfaces (row 110) and painted taxi lines (row 120) of an apt.dat; the
taxiway ways (ref, width), aprons and buildings of an OSM extract;
nothing from OurAirports. These are never areas of the monitor. A context
that cannot be written fails the import (exit 1); its areas stay stored.

FILE formats: TSV (.tsv, .txt) with columns guid, name, points (kind
optional; points are "lon,lat lon,lat ..."), or any vector format GDAL
reads: GeoJSON, KML, Shapefile, GeoPackage, FlatGeobuf, GML, CSV with WKT,
... Polygons are reprojected to WGS 84 and become areas (each part of a
multipolygon its own, GUID suffixed -1, -2, ...); a polygon with a hole is
refused; lines and points are skipped and counted on standard error. The
name comes from the attribute "name" (any case, so KML's Name works), the
GUID from "id" or else "guid", else "<name>#<N>" with N the feature's position in its
layer; an attribute "kind" of hazard or hold_short is kept.

Options:
  --format F          auto (default: TSV by extension, else GDAL decides),
                      tsv, or a GDAL vector driver (GeoJSON, KML, GPKG, ...)
  --name-property P   attribute that holds the name (default name)
  --id-property P     attribute that holds the GUID (default id)
  --where SQL         OGR SQL attribute filter, e.g. "kind = 'runway'"
  --layer L           read only layer L (default: every layer)
  --airport ICAO      derive the areas of this airport from SOURCE
  --include-closed    with --airport: keep closed or disused runways
  --dry-run           print what would be stored (GUID, kind, vertices,
                      name) and leave the store alone
  --replace           overwrite areas already stored under the same GUID
  --data-dir DIR      directory of the store (default: the library's
                      documents directory, or $TARVO_DOCUMENTS_DIR)
  --verbose           show the store's log (every SQL insert)
  --help              show this text

Exit status: 0 on success, 1 on bad input or a store failure, 2 on usage.
)";

const char kListHelp[] =
    R"(Usage: tarvo list [options]

Lists the stored areas in store order: GUID, kind (hazard or hold-short,
from the name: a name containing "HOLD SHORT" is a hold-short area), number
of vertices and name.

Options:
  --data-dir DIR  directory of the store
  --json          one JSON object per area and line (guid, name, kind, points)
  --help          show this text
)";

const char kRemoveHelp[] =
    R"(Usage: tarvo remove GUID... [options]

Deletes the areas stored under the given GUIDs.

Options:
  --data-dir DIR  directory of the store
  --help          show this text

Exit status: 1 when a GUID is not stored or the store fails.
)";

const char kClearHelp[] =
    R"(Usage: tarvo clear [options]

Deletes every stored area, and the map context files (*.context.geojson)
beside the store.

Options:
  --data-dir DIR  directory of the store
  --help          show this text
)";

const char kExportHelp[] =
    R"(Usage: tarvo export FILE [options]

Writes the stored areas to FILE, a new file, for a look in a GIS: one
polygon per area in WGS 84 with the attributes guid, name and kind
(hazard or hold-short, by the name).

Options:
  --format F      GDAL vector driver to write with (default GeoJSON; for
                  example GPKG, KML, "ESRI Shapefile", FlatGeobuf)
  --data-dir DIR  directory of the store
  --help          show this text

Exit status: 1 when there is no store, FILE exists or cannot be written.
)";

const char kReplayHelp[] =
    R"(Usage: tarvo replay TRACK [options]

Hands every fix of a recorded track to the monitor, in file order, against
the stored areas, and prints what a pilot's app would hear: each entry into
and exit from an area, and each start and stop of the caution sound, with the
time of the fix. Ends with a summary: fixes read and skipped, every
incursion episode (area, kind, start, end, duration), and the warning lead
time: for each entry of the aircraft into a runway, the seconds since the
first warning of the unbroken run of warnings (for that runway or its
hold-short areas, tied by name: "KMSP HOLD SHORT RWY 12R/30L #3" belongs to
"KMSP RWY 12R/30L") that led to it; entries with no warning; and warnings
that no entry followed.

TRACK formats: CSV (with a header line), NMEA 0183 (RMC sentences), GPX.

TRACK "-" (standard input), a pipe, a FIFO or a serial device is read as a
stream: each line is handed in as soon as it arrives, and its events are
printed at once (for example: gpspipe -r | tarvo replay -). A stream is CSV
or NMEA, told by --format or else by its first line; in a stream a bad NMEA
sentence is skipped and counted instead of ending the replay, and
--realtime only turns the sound on, since the stream sets the pace.

Options:
  --data-dir DIR         directory of the store
  --format auto|csv|nmea|gpx   track format (default: from the extension)
  --lat-column C         CSV column of the latitude (degrees)
  --lon-column C         CSV column of the longitude (degrees)
  --speed-column C       CSV column of the ground speed
  --heading-column C     CSV column of the track (degrees true)
  --time-column C        CSV column of the time
  --speed-unit kmh|kt|mps  unit of the speed column (default kmh)
  --where COLUMN=VALUE   use only the CSV rows whose COLUMN is VALUE
  --group-by COLUMN      replay each value of the CSV COLUMN as a flight of
                         its own, with a fresh monitor (rows may interleave);
                         a GPX file's trkseg and an NMEA log's runs without
                         a gap over 5 min are flights without this option
  --all-notices          print every notice (the monitor sends one per fix),
                         not only entries and exits
  --json                 JSON Lines: one object per notice, entry, exit and
                         sound event, then one summary object
  --realtime [FACTOR]    pace the fixes by their times (FACTOR 2: twice as
                         fast) and play the caution sound
  --report FILE.html     also write a self-contained HTML map of the replay;
                         it draws every *.context.geojson beside the store
                         (taxiways, aprons, buildings, paved surfaces that
                         import --airport wrote) under the areas
  --context FILE         with --report: draw FILE instead (any vector file
                         GDAL reads; the attributes kind, name or ref, and
                         width in metres are used)
  --quiet                print the summary only
  --help                 show this text

Without --realtime the replay runs as fast as it can and no sound is heard;
the sound events are then timed on the track's own clock.
)";

const char kWatchHelp[] =
    R"(Usage: tarvo watch [options]

Connects to gpsd and hands every position report with a 2D or 3D fix to
the monitor as it arrives (speed from m/s to km/h, track as the heading),
against the stored areas, and prints each event as replay does. The caution
sound plays as the monitor decides. Ends on Ctrl-C or SIGTERM with the
summary of the session.

On standard error it says when gpsd reports no fix, when fixes go stale
(none for 2 s), and when gpsd goes away; it then reconnects by itself,
waiting 0.5 s, then twice as long each time, up to 8 s. In a terminal a
status line shows the area, its kind, whether the aircraft is inside it or
predicted to enter it, speed, heading, the age of the last fix and the
connection.

Options:
  --gpsd HOST:PORT       where gpsd listens (default localhost:2947)
  --data-dir DIR         directory of the store
  --record FILE.csv      also write every fix received as a CSV track that
                         `tarvo replay` reads and that gives the same events
  --json                 JSON Lines, as replay --json
  --all-notices          print every notice, not only entries and exits
  --quiet                print the summary only
  --no-sound             play no sound; time the sound events on the fixes'
                         own clock, as replay does without --realtime
  --voice                also speak the name of each area entered, the way
                         a pilot reads it ("hold short runway one two
                         right"), one callout at a time, through espeak-ng
  --max-fixes N          stop after N fixes
  --exit-after-idle S    stop when no fix has arrived for S seconds
  --help                 show this text

Exit status: 0 after a session with fixes, 1 when no fix arrived or on a
store failure, 2 on usage.
)";

const std::vector<CommandSpec>& commandTable() {
  static const std::vector<CommandSpec> table = {
      {"import",
       "register areas from a file, or derive an airport's (--airport)",
       1,
       1,
       {{"format", OptionValue::Required},
        {"where", OptionValue::Required},
        {"layer", OptionValue::Required},
        {"airport", OptionValue::Required},
        {"include-closed", OptionValue::None},
        {"dry-run", OptionValue::None},
        {"name-property", OptionValue::Required},
        {"id-property", OptionValue::Required},
        {"replace", OptionValue::None},
        {"data-dir", OptionValue::Required},
        {"verbose", OptionValue::None}},
       kImportHelp},
      {"list",
       "list the stored areas",
       0,
       0,
       {{"data-dir", OptionValue::Required}, {"json", OptionValue::None}},
       kListHelp},
      {"remove",
       "delete stored areas by GUID",
       1,
       -1,
       {{"data-dir", OptionValue::Required}},
       kRemoveHelp},
      {"clear",
       "delete every stored area",
       0,
       0,
       {{"data-dir", OptionValue::Required}},
       kClearHelp},
      {"export",
       "write the stored areas to a GeoJSON or other GIS file",
       1,
       1,
       {{"format", OptionValue::Required}, {"data-dir", OptionValue::Required}},
       kExportHelp},
      {"replay",
       "replay a recorded track against the stored areas",
       1,
       1,
       {{"data-dir", OptionValue::Required},
        {"format", OptionValue::Required},
        {"lat-column", OptionValue::Required},
        {"lon-column", OptionValue::Required},
        {"speed-column", OptionValue::Required},
        {"heading-column", OptionValue::Required},
        {"time-column", OptionValue::Required},
        {"speed-unit", OptionValue::Required},
        {"where", OptionValue::Required},
        {"group-by", OptionValue::Required},
        {"all-notices", OptionValue::None},
        {"json", OptionValue::None},
        {"realtime", OptionValue::Optional},
        {"report", OptionValue::Required},
        {"context", OptionValue::Required},
        {"quiet", OptionValue::None}},
       kReplayHelp},
      {"watch",
       "warn live from a GPS shared by gpsd",
       0,
       0,
       {{"gpsd", OptionValue::Required},
        {"data-dir", OptionValue::Required},
        {"record", OptionValue::Required},
        {"json", OptionValue::None},
        {"all-notices", OptionValue::None},
        {"quiet", OptionValue::None},
        {"no-sound", OptionValue::None},
        {"voice", OptionValue::None},
        {"max-fixes", OptionValue::Required},
        {"exit-after-idle", OptionValue::Required}},
       kWatchHelp},
  };
  return table;
}

bool looksLikeNumber(const std::string& text) {
  if (text.empty()) return false;
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size();
}

const OptionSpec* findOption(const CommandSpec& command,
                             const std::string& name) {
  for (const OptionSpec& option : command.options) {
    if (name == option.name) return &option;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> ParsedArgs::value(const std::string& name) const {
  auto it = options.find(name);
  if (it == options.end()) return std::nullopt;
  return it->second;
}

const CommandSpec* findCommand(const std::string& name) {
  for (const CommandSpec& command : commandTable()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

const std::vector<CommandSpec>& allCommands() { return commandTable(); }

std::string toolHelp() {
  std::string text =
      "Usage: tarvo COMMAND [ARGS...]\n"
      "       tarvo --version | --help\n\n"
      "Runway-incursion warnings on real airports and recorded tracks.\n\n"
      "Commands:\n";
  for (const CommandSpec& command : commandTable()) {
    std::string name = command.name;
    text += "  " + name + std::string(9 - name.size(), ' ') + command.summary +
            "\n";
  }
  text +=
      "\nRun `tarvo COMMAND --help` for the options of a command.\n"
      "Example:\n"
      "  tarvo import KMSP.apt.dat --airport KMSP --data-dir demo-data\n"
      "  tarvo replay kmsp-kden-tracks.csv --data-dir demo-data \\\n"
      "      --where segment=KMSP-4-taxi-out-takeoff --report out.html\n";
  return text;
}

ParsedArgs parseArguments(const CommandSpec& command,
                          const std::vector<std::string>& args) {
  ParsedArgs parsed;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg.size() < 2 || arg.compare(0, 2, "--") != 0 || arg == "--") {
      parsed.positional.push_back(arg);
      continue;
    }
    std::string name = arg.substr(2);
    std::optional<std::string> inlineValue;
    if (auto eq = name.find('='); eq != std::string::npos) {
      inlineValue = name.substr(eq + 1);
      name.resize(eq);
    }
    const OptionSpec* option = findOption(command, name);
    if (option == nullptr) {
      throw UsageError(command.name, "unknown option '--" + name + "'");
    }
    std::string value;
    switch (option->value) {
      case OptionValue::None:
        if (inlineValue) {
          throw UsageError(command.name, "--" + name + " takes no value");
        }
        break;
      case OptionValue::Required:
        if (inlineValue) {
          value = *inlineValue;
        } else if (i + 1 < args.size()) {
          value = args[++i];
        } else {
          throw UsageError(command.name, "--" + name + " needs a value");
        }
        break;
      case OptionValue::Optional:
        // Only a number is taken as the value, so that a track file name
        // after a bare --realtime stays a positional argument.
        if (inlineValue) {
          value = *inlineValue;
        } else if (i + 1 < args.size() && looksLikeNumber(args[i + 1])) {
          value = args[++i];
        }
        break;
    }
    parsed.options[name] = value;
  }
  const int count = static_cast<int>(parsed.positional.size());
  if (count < command.minPositional) {
    throw UsageError(command.name, "missing argument");
  }
  if (command.maxPositional >= 0 && count > command.maxPositional) {
    throw UsageError(command.name,
                     "unexpected argument '" +
                         parsed.positional[command.maxPositional] + "'");
  }
  return parsed;
}

double parseNumberOption(const std::string& command, const std::string& option,
                         const std::string& text) {
  if (!looksLikeNumber(text)) {
    throw UsageError(command,
                     "--" + option + ": '" + text + "' is not a number");
  }
  return std::strtod(text.c_str(), nullptr);
}

}  // namespace tarvo::cli
