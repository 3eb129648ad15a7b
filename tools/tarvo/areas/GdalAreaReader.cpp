// Areas from any vector format GDAL reads: the polygons of every layer,
// reprojected to WGS 84.
#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "areas/AreaFormats.h"
#include "areas/GdalErrorTrap.h"
#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace detail {
namespace {

// A string attribute, trimmed; nullopt when the layer has no such field or
// the feature leaves it unset or empty.
std::optional<std::string> attribute(OGRFeature& feature,
                                     const std::string& name) {
  const int index = feature.GetFieldIndex(name.c_str());
  if (index < 0 || !feature.IsFieldSetAndNotNull(index)) return std::nullopt;
  std::string value(text::trim(feature.GetFieldAsString(index)));
  if (value.empty()) return std::nullopt;
  return value;
}

// Reprojects a layer's geometries to WGS 84 in longitude, latitude order.
class ToWgs84 {
 public:
  ToWgs84(const OGRSpatialReference* source, const Place& place) {
    wgs84_.SetWellKnownGeogCS("WGS84");
    wgs84_.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    if (source == nullptr || source->IsSame(&wgs84_)) return;
    OGRSpatialReference from(*source);
    from.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    if (from.IsSame(&wgs84_)) return;
    transform_.reset(OGRCreateCoordinateTransformation(&from, &wgs84_));
    if (!transform_) {
      place.fail("", "cannot reproject the layer's CRS to WGS 84");
    }
  }

  // Throws InputFailure naming place when a vertex cannot be reprojected.
  void apply(OGRGeometry& geometry, const Place& place) const {
    if (transform_ && geometry.transform(transform_.get()) != OGRERR_NONE) {
      place.fail("geometry", "cannot reproject it to WGS 84");
    }
  }

 private:
  OGRSpatialReference wgs84_;
  std::unique_ptr<OGRCoordinateTransformation> transform_;
};

std::string ringPoints(const OGRPolygon& polygon, const Place& place) {
  if (polygon.getNumInteriorRings() > 0) {
    place.fail("geometry",
               "the polygon has " +
                   std::to_string(polygon.getNumInteriorRings()) +
                   " hole(s); an area is one outer ring (the warnings test "
                   "outer rings only), so split it or drop the holes");
  }
  const OGRLinearRing* ring = polygon.getExteriorRing();
  if (ring == nullptr) place.fail("geometry", "an empty polygon");
  std::vector<VertexText> vertices;
  for (int i = 0; i < ring->getNumPoints(); ++i) {
    vertices.push_back({text::formatShortest(ring->getX(i)),
                        text::formatShortest(ring->getY(i))});
  }
  return pointsFromVertices(std::move(vertices), place);
}

struct LayerReader {
  const std::string& path;
  const AreaReadOptions& options;
  AreaFile& file;
  GdalErrorTrap& trap;
  bool namedLayers;
  std::vector<SourcedArea>& areas;

  void read(OGRLayer& layer) {
    const std::string layerName = layer.GetName();
    const Place layerPlace{path, 0,
                           namedLayers ? "layer " + layerName : std::string()};
    if (!options.where.empty() &&
        layer.SetAttributeFilter(options.where.c_str()) != OGRERR_NONE) {
      layerPlace.fail("where", "GDAL refused the filter '" + options.where +
                                   "': " + trap.takeError());
    }
    const ToWgs84 toWgs84(layer.GetSpatialRef(), layerPlace);
    layer.ResetReading();
    int index = 0;
    while (true) {
      OGRFeatureUniquePtr feature(layer.GetNextFeature());
      const std::string error = trap.takeError();
      ++index;
      Place place{path, 0,
                  (namedLayers ? "layer " + layerName + " " : std::string()) +
                      "feature #" + std::to_string(index)};
      if (!error.empty()) place.fail("", error);
      if (!feature) break;
      add(*feature, index, place, toWgs84);
      for (const std::string& w : trap.takeWarnings()) {
        file.warnings.push_back(place.label + ": " + w);
      }
    }
  }

  void add(OGRFeature& feature, int index, Place& place,
           const ToWgs84& toWgs84) {
    OGRGeometry* geometry = feature.GetGeometryRef();
    const OGRwkbGeometryType type =
        geometry ? wkbFlatten(geometry->getGeometryType()) : wkbNone;
    if (type != wkbPolygon && type != wkbMultiPolygon) {
      ++(OGR_GT_IsCurve(type) || OGR_GT_IsSubClassOf(type, wkbMultiCurve)
             ? file.skippedLines
         : type == wkbPoint || type == wkbMultiPoint ? file.skippedPoints
                                                     : file.skippedOther);
      return;
    }
    const auto name = attribute(feature, options.nameProperty);
    if (name) place.label += " '" + *name + "'";
    if (!name) {
      place.fail("name", "no property '" + options.nameProperty +
                             "' to take the area name from");
    }
    std::string guid =
        attribute(feature, options.idProperty)
            .value_or(attribute(feature, "guid")
                          .value_or(*name + "#" + std::to_string(index)));
    const std::string kind = knownKind(attribute(feature, "kind").value_or(""));
    toWgs84.apply(*geometry, place);
    if (type == wkbPolygon) {
      areas.push_back(
          {{guid, *name, ringPoints(*geometry->toPolygon(), place), kind, 0},
           place.label});
      return;
    }
    const OGRMultiPolygon& multi = *geometry->toMultiPolygon();
    for (int i = 0; i < multi.getNumGeometries(); ++i) {
      Place part = place;
      part.label += " polygon " + std::to_string(i + 1);
      areas.push_back({{guid + "-" + std::to_string(i + 1), *name,
                        ringPoints(*multi.getGeometryRef(i), part), kind, 0},
                       part.label});
    }
  }
};

}  // namespace

std::vector<SourcedArea> parseGdalAreas(const std::string& path,
                                        const AreaReadOptions& options,
                                        AreaFile& file) {
  GdalErrorTrap trap;
  GDALDatasetUniquePtr dataset = openVectorFile(path, options.format, trap);
  std::vector<SourcedArea> areas;
  LayerReader reader{path,
                     options,
                     file,
                     trap,
                     dataset->GetLayerCount() > 1 && options.layer.empty(),
                     areas};
  if (!options.layer.empty()) {
    OGRLayer* layer = dataset->GetLayerByName(options.layer.c_str());
    if (layer == nullptr) {
      std::string names;
      for (OGRLayer* l : dataset->GetLayers()) {
        names += (names.empty() ? "" : ", ") + std::string(l->GetName());
      }
      throw InputFailure(
          {path, 0, "layer",
           "no layer '" + options.layer + "' (the file has: " + names + ")"});
    }
    reader.read(*layer);
  } else {
    for (OGRLayer* layer : dataset->GetLayers()) reader.read(*layer);
  }
  for (const std::string& w : trap.takeWarnings()) file.warnings.push_back(w);
  return areas;
}

}  // namespace detail

std::string parseAreaFormat(const std::string& name) {
  if (name == "auto" || name == "tsv") return name;
  registerGdal();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(name.c_str());
  if (driver == nullptr ||
      driver->GetMetadataItem(GDAL_DCAP_VECTOR) == nullptr) {
    throw std::invalid_argument(
        "unknown area format '" + name +
        "' (use auto, tsv or a GDAL vector driver such as GeoJSON, KML, "
        "\"ESRI Shapefile\", GPKG, FlatGeobuf, GML, CSV or OSM; "
        "`ogrinfo --formats` lists them)");
  }
  return name;
}

}  // namespace tarvo::cli
