#include "tracks/GpsdSource.h"

#include <gps.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace {

constexpr double kKmhPerMeterPerSecond = 3.6;

bool isPort(const std::string& text) {
  if (text.empty() || text.size() > 5 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  const long port = std::stol(text);
  return port >= 1 && port <= 65535;
}

}  // namespace

GpsdEndpoint parseGpsdEndpoint(const std::string& text) {
  GpsdEndpoint e;
  std::string host = text, port;
  bool portGiven = false;  // a ':' before the port, even if empty
  if (!text.empty() && text[0] == '[') {
    const std::size_t close = text.find(']');
    if (close == std::string::npos) {
      throw std::invalid_argument("'" + text + "' lacks the closing ']'");
    }
    host = text.substr(1, close - 1);
    if (close + 1 < text.size()) {
      if (text[close + 1] != ':') {
        throw std::invalid_argument("'" + text + "': expected ':' after ']'");
      }
      port = text.substr(close + 2);
      portGiven = true;
    }
  } else if (const std::size_t colon = text.rfind(':');
             colon != std::string::npos) {
    host = text.substr(0, colon);
    port = text.substr(colon + 1);
    portGiven = true;
  }
  if (host.empty() && port.empty()) {
    throw std::invalid_argument("'" + text + "' names no host and no port");
  }
  if (!host.empty()) e.host = host;
  if (portGiven) {
    if (!isPort(port)) {
      throw std::invalid_argument("'" + port +
                                  "' is not a port number (1 to 65535)");
    }
    e.port = port;
  }
  return e;
}

GpsdSource::GpsdSource(GpsdEndpoint endpoint)
    : endpoint_(std::move(endpoint)), data_(std::make_unique<gps_data_t>()) {}

GpsdSource::~GpsdSource() { disconnect(); }

bool GpsdSource::connect(std::string& why) {
  disconnect();
  std::memset(data_.get(), 0, sizeof(gps_data_t));
  errno = 0;
  if (gps_open(endpoint_.host.c_str(), endpoint_.port.c_str(), data_.get()) !=
      0) {
    why = gps_errstr(errno);
    return false;
  }
  connected_ = true;
  if (gps_stream(data_.get(), WATCH_ENABLE | WATCH_JSON, nullptr) != 0) {
    why = std::string("cannot ask for reports: ") + std::strerror(errno);
    disconnect();
    return false;
  }
  return true;
}

void GpsdSource::disconnect() {
  if (!connected_) return;
  gps_close(data_.get());
  connected_ = false;
}

GpsdReport GpsdSource::next(int waitMilliseconds) {
  if (!connected_) return {GpsdReport::Kind::kLost, {}, "not connected"};
  errno = 0;
  if (!gps_waiting(data_.get(), waitMilliseconds * 1000)) {
    // False on a socket error too; then gps_read() says which. A signal
    // that cut the wait short is no error.
    if (errno == 0 || errno == EINTR) return {};
  }
  return readOne();
}

// One JSON report. Only TPV reports carry fixes; the others (VERSION,
// DEVICES, WATCH, SKY, ...) are read and passed over.
GpsdReport GpsdSource::readOne() {
  char message[4096];
  errno = 0;
  const int status =
      gps_read(data_.get(), message, static_cast<int>(sizeof message));
  if (status < 0) {
    const std::string why =
        errno != 0 ? std::strerror(errno) : "gpsd closed the connection";
    disconnect();
    return {GpsdReport::Kind::kLost, {}, why};
  }
  if (status == 0 || std::strstr(message, "\"class\":\"TPV\"") == nullptr) {
    return {};
  }
  ++tpvCount_;
  const gps_fix_t& f = data_->fix;
  GpsdReport r;
  r.kind = GpsdReport::Kind::kNoFix;
  r.fix.sourceLine = tpvCount_;
  if (f.mode < MODE_2D || !(data_->set & LATLON_SET)) {
    r.why = "no fix (mode " + std::to_string(f.mode) + ")";
  } else if (!std::isfinite(f.speed) || !std::isfinite(f.track)) {
    r.kind = GpsdReport::Kind::kPartial;
    r.why =
        !std::isfinite(f.speed) ? "a fix without speed" : "a fix without track";
  }
  if (!r.why.empty()) return r;
  r.kind = GpsdReport::Kind::kFix;
  r.fix.latitude = f.latitude;
  r.fix.longitude = f.longitude;
  r.fix.speedKmh = f.speed * kKmhPerMeterPerSecond;
  r.fix.headingDeg = f.track;
  if ((data_->set & TIME_SET) && f.time.tv_sec != 0) {
    r.fix.timeSeconds = static_cast<double>(f.time.tv_sec) +
                        static_cast<double>(f.time.tv_nsec) * 1e-9;
    r.fix.timeText = text::formatIsoTime(*r.fix.timeSeconds);
  }
  return r;
}

}  // namespace tarvo::cli
