#include "areas/AreaWriter.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <sys/stat.h>

#include <stdexcept>

#include "areas/GdalErrorTrap.h"

namespace tarvo::cli {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what,
                       GdalErrorTrap& trap) {
  std::string why = trap.takeError();
  throw std::runtime_error(path + ": " + what +
                           (why.empty() ? std::string() : ": " + why));
}

}  // namespace

void writeAreas(const std::string& path, const std::string& format,
                const std::vector<StoredArea>& areas) {
  registerGdal();
  GdalErrorTrap trap;
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(format.c_str());
  if (driver == nullptr ||
      driver->GetMetadataItem(GDAL_DCAP_VECTOR) == nullptr ||
      driver->GetMetadataItem(GDAL_DCAP_CREATE) == nullptr) {
    throw std::runtime_error("'" + format +
                             "' is no GDAL vector driver that writes files "
                             "(`ogrinfo --formats` lists them: \"rw\")");
  }
  struct stat info;
  if (stat(path.c_str(), &info) == 0) {
    throw std::runtime_error(path + ": the file exists; remove it first");
  }
  GDALDatasetUniquePtr out(
      driver->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
  if (!out) fail(path, "cannot create it as " + format, trap);
  OGRSpatialReference wgs84;
  wgs84.SetWellKnownGeogCS("WGS84");
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  OGRLayer* layer = out->CreateLayer("areas", &wgs84, wkbPolygon, nullptr);
  if (layer == nullptr) fail(path, "cannot create the layer", trap);
  for (const char* field : {"guid", "name", "kind"}) {
    OGRFieldDefn definition(field, OFTString);
    if (layer->CreateField(&definition) != OGRERR_NONE) {
      fail(path, std::string("cannot create the field ") + field, trap);
    }
  }
  for (const StoredArea& area : areas) {
    OGRFeature feature(layer->GetLayerDefn());
    feature.SetField("guid", area.guid.c_str());
    feature.SetField("name", area.name.c_str());
    feature.SetField("kind", area.kind.c_str());
    OGRLinearRing ring;
    for (const LatLon& v : area.vertices) ring.addPoint(v.lon, v.lat);
    if (!area.vertices.empty()) {
      ring.addPoint(area.vertices.front().lon, area.vertices.front().lat);
    }
    OGRPolygon polygon;
    polygon.addRing(&ring);
    feature.SetGeometry(&polygon);
    if (layer->CreateFeature(&feature) != OGRERR_NONE) {
      fail(path, "cannot write area " + area.guid, trap);
    }
  }
  // Closing flushes the file; a failure there is a GDAL error.
  out.reset();
  const std::string error = trap.takeError();
  if (!error.empty()) {
    throw std::runtime_error(path + ": cannot finish the file: " + error);
  }
}

}  // namespace tarvo::cli
