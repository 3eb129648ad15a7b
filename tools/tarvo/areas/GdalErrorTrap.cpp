#include "areas/GdalErrorTrap.h"

#include <cpl_error.h>
#include <gdal.h>

#include <fstream>
#include <mutex>

#include "readers/Records.h"

namespace tarvo::cli {
namespace {

void CPL_STDCALL trapHandler(CPLErr level, CPLErrorNum, const char* message) {
  auto* trap = static_cast<GdalErrorTrap*>(CPLGetErrorHandlerUserData());
  // Debug messages (CE_Debug, only with CPL_DEBUG set) are dropped.
  if (trap == nullptr || level == CE_None || level == CE_Debug) return;
  trap->record(level != CE_Warning, message);
}

}  // namespace

void registerGdal() {
  static std::once_flag once;
  // Registration can complain (a plugin that does not load); the tool has
  // nothing to add to that, and GDAL must not print on its own.
  std::call_once(once, [] {
    CPLPushErrorHandler(CPLQuietErrorHandler);
    GDALAllRegister();
    CPLPopErrorHandler();
  });
}

GDALDatasetUniquePtr openVectorFile(const std::string& path,
                                    const std::string& format,
                                    GdalErrorTrap& trap) {
  registerGdal();
  if (!std::ifstream(path)) {
    throw InputFailure({path, 0, "", "cannot open the file"});
  }
  const char* drivers[] = {format.c_str(), nullptr};
  GDALDatasetUniquePtr dataset(GDALDataset::Open(
      path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR,
      format == "auto" ? nullptr : drivers));
  if (!dataset) {
    std::string why = trap.takeError();
    if (why.empty()) why = "no GDAL vector driver reads it";
    throw InputFailure({path, 0, "",
                        "cannot read it as " +
                            (format == "auto" ? std::string("a vector format")
                                              : "format " + format) +
                            ": " + why});
  }
  return dataset;
}

GdalErrorTrap::GdalErrorTrap() { CPLPushErrorHandlerEx(trapHandler, this); }

GdalErrorTrap::~GdalErrorTrap() { CPLPopErrorHandler(); }

std::string GdalErrorTrap::takeError() {
  std::string error = std::move(error_);
  error_.clear();
  return error;
}

std::vector<std::string> GdalErrorTrap::takeWarnings() {
  std::vector<std::string> warnings = std::move(warnings_);
  warnings_.clear();
  return warnings;
}

void GdalErrorTrap::record(bool isError, const char* message) {
  const std::string text = message == nullptr ? "" : message;
  if (isError) {
    error_ = text;
  } else {
    warnings_.push_back(text);
  }
}

}  // namespace tarvo::cli
