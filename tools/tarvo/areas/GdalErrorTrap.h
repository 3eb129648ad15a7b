// GDAL's messages, caught: while a trap lives, every error and warning GDAL
// raises on this thread is kept instead of printed, so the tool can report
// it in its own words, with the file and feature it concerns.
#ifndef TARVO_TOOLS_AREAS_GDALERRORTRAP_H_
#define TARVO_TOOLS_AREAS_GDALERRORTRAP_H_

#include <gdal_priv.h>

#include <string>
#include <vector>

namespace tarvo::cli {

// Registers GDAL's drivers, once per process. Thread-safe.
void registerGdal();

class GdalErrorTrap;

// Opens a vector file with GDAL: format "auto" lets GDAL choose, any other
// value names the driver. Throws InputFailure (line 0) when the file cannot
// be opened or no driver reads it, with GDAL's reason.
GDALDatasetUniquePtr openVectorFile(const std::string& path,
                                    const std::string& format,
                                    GdalErrorTrap& trap);

class GdalErrorTrap {
 public:
  GdalErrorTrap();
  ~GdalErrorTrap();
  GdalErrorTrap(const GdalErrorTrap&) = delete;
  GdalErrorTrap& operator=(const GdalErrorTrap&) = delete;

  // The last error (CE_Failure or CE_Fatal) since the last take, or "".
  std::string takeError();
  // The warnings since the last take, in order.
  std::vector<std::string> takeWarnings();

  // Called by GDAL's handler; not for other use.
  void record(bool isError, const char* message);

 private:
  std::string error_;
  std::vector<std::string> warnings_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_GDALERRORTRAP_H_
