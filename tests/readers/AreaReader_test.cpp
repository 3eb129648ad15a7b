// Area readers: TSV and, through GDAL, GeoJSON and KML, good and refused
// input, and the real Zurich runway files read both ways. The other GDAL
// formats are imported in the CLI test gdal_formats.sh.
#include "areas/AreaReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ReaderTestUtil.h"

namespace tarvo::cli {
namespace {

const char kTsvHeader[] = "guid\tname\tkind\tpoints\n";
const char kSquare[] = "10,50 10.001,50 10.001,50.001";

TEST(AreaReader, ReadsEachFormat) {
  struct Case {
    const char* what;
    const char* file;
    std::string content;
    AreaReadOptions options;
    std::vector<AreaRecord> expected;  // sourceLine compared too
  };
  AreaReadOptions byRef;
  byRef.nameProperty = "ref";
  byRef.idProperty = "key";
  const Case kCases[] = {
      {"TSV, points kept as written",
       "a.tsv",
       std::string(kTsvHeader) + "G1\tRWY 1/19\thazard\t" + kSquare +
           "\n\nG2\tHOLD SHORT 1\thold_short\t1.50,2.0 1.6,2 1.6,2.1\n",
       {},
       {{"G1", "RWY 1/19", kSquare, "hazard", 2},
        {"G2", "HOLD SHORT 1", "1.50,2.0 1.6,2 1.6,2.1", "hold_short", 4}}},
      {"TSV without a kind column, columns in another order",
       "a.txt",
       std::string("points\tname\tguid\n") + kSquare + "\tA\tG\n",
       {},
       {{"G", "A", kSquare, "", 2}}},
      {"GeoJSON polygon: closing vertex dropped, number text kept",
       "a.json",
       geoJson(R"({"type":"Feature","id":"F1","properties":{"name":"RWY",
          "kind":"hazard"},"geometry":{"type":"Polygon","coordinates":
          [[[8.536309,47.4756951],[8,47.1],[8.5,-0.00001],[8.536309,47.4756951]]]}},
          {"type":"Feature","properties":{"name":"line"},"geometry":
          {"type":"LineString","coordinates":[[1,2],[3,4]]}})"),
       {},
       {{"F1", "RWY", "8.536309,47.4756951 8,47.1 8.5,-0.00001", "hazard", 0}}},
      {"GeoJSON MultiPolygon and chosen properties, a kind not kept",
       "a.geojson",
       geoJson(R"({"type":"Feature","id":"ignored","properties":{"ref":"16/34",
          "key":7,"kind":"runway"},"geometry":{"type":"MultiPolygon",
          "coordinates":[[[[1,1],[2,1],[2,2]]],[[[5,5],[6,5],[6,6],[5,5]]]]}})"),
       byRef,
       {{"7-1", "16/34", "1,1 2,1 2,2", "", 0},
        {"7-2", "16/34", "5,5 6,5 6,6", "", 0}}},
      {"KML: name trimmed, altitude dropped, GUID from name and position",
       "a.kml",
       kml("<Placemark><name> RWY 10/28 </name>" +
           kmlPolygon("\n 8.5,47.4,0\t8.6,47.4,0 \n 8.6,47.5,0 8.5,47.4,0\n") +
           "</Placemark>"),
       {},
       {{"RWY 10/28#1", "RWY 10/28", "8.5,47.4 8.6,47.4 8.6,47.5", "", 0}}},
      {"KML: GUID from ExtendedData, or generated; MultiGeometry",
       "a.kml",
       kml("<Placemark><name>A</name><ExtendedData>"
           "<Data name=\"guid\"><value>X-1</value></Data><Data name=\"kind\">"
           "<value>hold_short</value></Data></ExtendedData>" +
           kmlPolygon("1,1 2,1 2,2") +
           "</Placemark>\n<Placemark><name>Pin</name><Point><coordinates>1,2"
           "</coordinates></Point></Placemark>\n<Placemark><name>B</"
           "name><MultiGeometry>" +
           kmlPolygon("1,1 2,1 2,2") + kmlPolygon("3,3 4,3 4,4") +
           "</MultiGeometry></Placemark>"),
       {},
       {{"X-1", "A", "1,1 2,1 2,2", "hold_short", 0},
        {"B#3-1", "B", "1,1 2,1 2,2", "", 0},
        {"B#3-2", "B", "3,3 4,3 4,4", "", 0}}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::vector<AreaRecord> areas =
        readAreas(writeInput(c.file, c.content), c.options);
    ASSERT_EQ(areas.size(), c.expected.size());
    for (std::size_t i = 0; i < areas.size(); ++i) {
      EXPECT_EQ(areas[i].guid, c.expected[i].guid);
      EXPECT_EQ(areas[i].name, c.expected[i].name);
      EXPECT_EQ(areas[i].points, c.expected[i].points);
      EXPECT_EQ(areas[i].kind, c.expected[i].kind);
      EXPECT_EQ(areas[i].sourceLine, c.expected[i].sourceLine);
    }
  }
}

TEST(AreaReader, RefusesBadAreasNamingFileLineAndField) {
  struct Case {
    const char* what;
    const char* file;
    std::string content;
    int line;
    const char* field;
    const char* message;  // a part of the message
  };
  const std::string ok = std::string("G0\tA\thazard\t") + kSquare + "\n";
  const std::string tsv = std::string(kTsvHeader) + ok;
  const std::string ring = "[[1,1],[2,1],[2,2]]";
  const Case kCases[] = {
      {"quote in a TSV name", "q.tsv",
       tsv + "G1\tRWY \"9\"\thazard\t" + kSquare + "\n", 3, "name",
       "double quote"},
      {"quote in a TSV GUID", "q.tsv", tsv + "G\"1\tB\t\t" + kSquare + "\n", 3,
       "guid", "store cannot hold"},
      {"empty GUID", "e.tsv", tsv + "\tB\t\t" + kSquare + "\n", 3, "guid",
       "empty GUID"},
      {"duplicate GUID", "d.tsv", tsv + ok, 3, "guid", "first used at line 2"},
      {"two vertices", "v.tsv", tsv + "G1\tB\t\t1,1 2,2\n", 3, "points",
       "at least 3"},
      {"wrong column count", "c.tsv", tsv + "G1\tB\t" + kSquare + "\n", 3,
       "columns", "expected 4"},
      {"bad number in points", "n.tsv", tsv + "G1\tB\t\t1,1 2,x 3,3\n", 3,
       "points", "vertex 2 latitude 'x'"},
      {"two blanks in points", "n.tsv", tsv + "G1\tB\t\t1,1  2,2 3,3\n", 3,
       "points", "vertex 2"},
      {"latitude out of range (swapped order)", "r.tsv",
       tsv + "G1\tB\t\t44,-93 44,-92 45,-92\n", 3, "points", "outside"},
      {"unknown kind", "k.tsv", tsv + "G1\tB\trunway\t" + kSquare + "\n", 3,
       "kind", "hold_short"},
      {"unknown header column", "h.tsv", "guid\tname\tpts\n", 1, "pts",
       "unknown column"},
      {"header without points", "h.tsv", "guid\tname\n", 1, "points",
       "no such column"},
      {"quote in a GeoJSON name", "q.geojson",
       geoJson(geoJsonFeature("\"A\"", "\"F1\"", ring) + "," +
               geoJsonFeature("\"B \\\"x\\\"\"", "\"F2\"", ring)),
       0, "name", "feature #2 'B \"x\"': name"},
      {"GeoJSON feature with a null name", "n.geojson",
       geoJson(geoJsonFeature("null", "\"F1\"", ring)), 0, "name",
       "no property 'name'"},
      {"GeoJSON polygon with a hole", "h.geojson",
       geoJson(geoJsonFeature(
           "\"A\"", "1", ring + ",[[1.1,1.1],[1.5,1.1],[1.5,1.2],[1.1,1.1]]")),
       0, "geometry", "feature #1 'A': the polygon has 1 hole(s)"},
      {"GeoJSON syntax error", "s.geojson", "{\n\"type\":\n,\n}", 0, "",
       "cannot read it as a vector format"},
      {"KML syntax error", "s.kml", "<kml>\n<Placemark>\n</kml>\n", 0, "",
       "cannot read it"},
      {"quote in a KML name", "q.kml",
       kml("<Placemark><name>A \"B\"</name>" + kmlPolygon("1,1 2,1 2,2") +
           "</Placemark>"),
       0, "name", "double quote"},
      {"no format reads it", "a.shp", "", 0, "", "cannot read it"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput(c.file, c.content);
    expectRefusal([&] { readAreas(path, {}); }, path, c.line, c.field,
                  c.message);
  }
}

std::vector<double> numbers(std::string points) {
  std::replace(points.begin(), points.end(), ',', ' ');
  std::istringstream in(points);
  return {std::istream_iterator<double>(in), std::istream_iterator<double>()};
}

// The same three Zurich runways, once as points text with 7 decimals and
// once as GeoJSON rings, must give the same vertices.
TEST(AreaReader, RealZurichRunwaysAgreeAcrossFormats) {
  const std::vector<AreaRecord> tsv =
      readAreas(fixturePath("areas/LSZH-areas.tsv"), {});
  AreaReadOptions options;
  options.nameProperty = "ref";
  options.idProperty = "ref";
  const std::vector<AreaRecord> json =
      readAreas(fixturePath("areas/LSZH.geojson"), options);
  ASSERT_EQ(tsv.size(), 3u);
  ASSERT_EQ(json.size(), 3u);
  for (std::size_t i = 0; i < tsv.size(); ++i) {
    SCOPED_TRACE(tsv[i].name);
    EXPECT_EQ(tsv[i].kind, "hazard");
    EXPECT_EQ(tsv[i].name, "LSZH RWY " + json[i].name);
    const std::vector<double> a = numbers(tsv[i].points);
    const std::vector<double> b = numbers(json[i].points);
    ASSERT_EQ(a.size(), 8u);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k) EXPECT_NEAR(a[k], b[k], 5e-8);
  }
}

TEST(AreaReader, ParsesFormatNames) {
  for (const char* name : {"auto", "tsv", "GeoJSON", "KML", "GPKG"}) {
    EXPECT_EQ(parseAreaFormat(name), name);
  }
  // Not a driver, and a driver of rasters only.
  for (const char* name : {"", "shapefile", "PNG"}) {
    EXPECT_THROW(parseAreaFormat(name), std::invalid_argument) << name;
  }
}

}  // namespace
}  // namespace tarvo::cli
