#include "output/ReportContext.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <iostream>
#include <memory>

#include "areas/GdalErrorTrap.h"
#include "readers/Records.h"

namespace tarvo::cli {
namespace {

using nlohmann::json;

// Degrees to 1e-7, about a centimetre.
double round7(double v) { return std::round(v * 1e7) / 1e7; }

json flat(const OGRSimpleCurve& curve) {
  json out = json::array();
  for (int i = 0; i < curve.getNumPoints(); ++i) {
    out.push_back(round7(curve.getY(i)));
    out.push_back(round7(curve.getX(i)));
  }
  return out;
}

std::string field(OGRFeature& f, const char* name) {
  const int i = f.GetFieldIndex(name);
  return i >= 0 && f.IsFieldSetAndNotNull(i) ? f.GetFieldAsString(i) : "";
}

std::string kindOf(OGRFeature& f, bool line) {
  std::string kind = field(f, "kind");
  if (kind.empty()) kind = field(f, "aeroway");
  const std::string building = field(f, "building");
  if (kind.empty() && !building.empty() && building != "no") kind = "building";
  return kind.empty() ? (line ? "line" : "pavement") : kind;
}

class ContextLayers {
 public:
  void add(OGRGeometry& g, const std::string& kind, const std::string& name,
           double width) {
    switch (wkbFlatten(g.getGeometryType())) {
      case wkbLineString:
        lines_.push_back({kind, name, width, flat(*g.toLineString())});
        break;
      case wkbPolygon: {
        json rings = json::array();
        const OGRPolygon& p = *g.toPolygon();
        if (!p.getExteriorRing()) break;
        rings.push_back(flat(*p.getExteriorRing()));
        for (int i = 0; i < p.getNumInteriorRings(); ++i) {
          rings.push_back(flat(*p.getInteriorRing(i)));
        }
        polygons_.push_back({kind, name, rings});
        break;
      }
      case wkbMultiLineString:
      case wkbMultiPolygon:
      case wkbGeometryCollection:
        for (OGRGeometry* part : *g.toGeometryCollection()) {
          add(*part, kind, name, width);
        }
        break;
      default:
        ++skipped_;
    }
  }
  json result(const std::vector<std::string>& files) const {
    return {{"files", files}, {"lines", lines_}, {"polygons", polygons_}};
  }
  std::size_t skipped() const { return skipped_; }

 private:
  json lines_ = json::array();
  json polygons_ = json::array();
  std::size_t skipped_ = 0;
};

}  // namespace

json readReportContext(const std::vector<std::string>& files) {
  ContextLayers layers;
  OGRSpatialReference wgs84;
  wgs84.importFromEPSG(4326);
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  for (const std::string& path : files) {
    GdalErrorTrap trap;
    GDALDatasetUniquePtr dataset = openVectorFile(path, "auto", trap);
    const std::size_t skippedBefore = layers.skipped();
    for (OGRLayer* layer : dataset->GetLayers()) {
      std::unique_ptr<OGRCoordinateTransformation> toWgs84;
      if (const OGRSpatialReference* srs = layer->GetSpatialRef();
          srs && !srs->IsSame(&wgs84)) {
        toWgs84.reset(OGRCreateCoordinateTransformation(srs, &wgs84));
      }
      for (auto& feature : *layer) {
        const std::string error = trap.takeError();
        if (!error.empty()) throw InputFailure({path, 0, "", error});
        OGRGeometry* g = feature->GetGeometryRef();
        if (g == nullptr || g->IsEmpty()) continue;
        if (toWgs84 && g->transform(toWgs84.get()) != OGRERR_NONE) {
          throw InputFailure({path, 0, "",
                              "feature " + std::to_string(feature->GetFID()) +
                                  " cannot be taken to WGS 84"});
        }
        const auto type = wkbFlatten(g->getGeometryType());
        const bool line = type == wkbLineString || type == wkbMultiLineString;
        std::string name = field(*feature, "name");
        if (name.empty()) name = field(*feature, "ref");
        const int w = feature->GetFieldIndex("width");
        const double width = w >= 0 && feature->IsFieldSetAndNotNull(w)
                                 ? std::max(0.0, feature->GetFieldAsDouble(w))
                                 : 0.0;
        layers.add(*g, kindOf(*feature, line), name, width);
      }
      const std::string error = trap.takeError();
      if (!error.empty()) throw InputFailure({path, 0, "", error});
    }
    if (layers.skipped() > skippedBefore) {
      std::cerr << "tarvo replay: " << path << ": "
                << layers.skipped() - skippedBefore
                << " point features not drawn (the map context draws lines "
                   "and polygons)\n";
    }
  }
  return layers.result(files);
}

}  // namespace tarvo::cli
