// Position reports from gpsd, the daemon that shares a GPS among programs,
// read through libgps as a pull source: "the next report, or why none".
#ifndef TARVO_TOOLS_TARVO_TRACKS_GPSDSOURCE_H_
#define TARVO_TOOLS_TARVO_TRACKS_GPSDSOURCE_H_

#include <memory>
#include <string>

#include "readers/Records.h"

struct gps_data_t;

namespace tarvo::cli {

// Where gpsd listens.
struct GpsdEndpoint {
  std::string host = "localhost";
  std::string port = "2947";

  std::string text() const { return host + ":" + port; }
};

// "HOST:PORT", "HOST" (port 2947), ":PORT" (localhost) or "[V6ADDR]:PORT".
// Throws std::invalid_argument naming what is wrong (empty host and port, a
// port that is not a number in 1..65535).
GpsdEndpoint parseGpsdEndpoint(const std::string& text);

// One result of GpsdSource::next().
struct GpsdReport {
  enum class Kind {
    kFix,      // a TPV report with a 2D or 3D fix, speed and track: fix
    kNoFix,    // a TPV report without a 2D or 3D fix; why gives the mode
    kPartial,  // a fix without speed or track; why says which. gpsd sends
               // one TPV per sentence of an epoch, and the sentence with the
               // position (GGA) often comes before the one with the motion
    kNothing,  // no TPV report within the wait (other reports are consumed)
    kLost,     // the connection failed; why says how. Call connect() again
  };
  Kind kind = Kind::kNothing;
  TrackFix fix;     // kFix: degrees, km/h (from m/s), track as heading
  std::string why;  // kNoFix and kLost
};

// A connection to gpsd in watch mode (JSON reports). The fix's timeSeconds
// is the report's time (Unix seconds) when gpsd gives one; timeText is its
// ISO 8601 form. sourceLine counts the TPV reports received, from 1.
//
// Threading: one thread at a time. Owns the libgps handle; the destructor
// closes it.
class GpsdSource {
 public:
  explicit GpsdSource(GpsdEndpoint endpoint);
  ~GpsdSource();
  GpsdSource(const GpsdSource&) = delete;
  GpsdSource& operator=(const GpsdSource&) = delete;

  // Opens the connection and asks for the reports. False, with why set to
  // libgps's reason, when gpsd cannot be reached.
  bool connect(std::string& why);
  bool connected() const { return connected_; }
  void disconnect();

  // Waits up to waitMilliseconds for the next report and reads it.
  GpsdReport next(int waitMilliseconds);

  const GpsdEndpoint& endpoint() const { return endpoint_; }

 private:
  GpsdReport readOne();

  GpsdEndpoint endpoint_;
  std::unique_ptr<gps_data_t> data_;
  bool connected_ = false;
  int tpvCount_ = 0;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_TRACKS_GPSDSOURCE_H_
