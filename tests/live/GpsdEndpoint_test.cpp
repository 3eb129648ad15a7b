// --gpsd HOST:PORT as the watch reads it.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tracks/GpsdSource.h"

namespace tarvo::cli {
namespace {

struct Good {
  const char* text;
  const char* host;
  const char* port;
};

const Good kGood[] = {
    {"localhost:2947", "localhost", "2947"}, {"gps.local", "gps.local", "2947"},
    {":2948", "localhost", "2948"},          {"127.0.0.1:1", "127.0.0.1", "1"},
    {"[::1]:65535", "::1", "65535"},         {"[fe80::1]", "fe80::1", "2947"},
};

TEST(GpsdEndpoint, ReadsHostAndPort) {
  for (const Good& c : kGood) {
    const GpsdEndpoint e = parseGpsdEndpoint(c.text);
    EXPECT_EQ(c.host, e.host) << c.text;
    EXPECT_EQ(c.port, e.port) << c.text;
  }
}

TEST(GpsdEndpoint, RefusesWhatNamesNoPort) {
  const char* const kBad[] = {"",        ":",          "host:",  "host:0",
                              "h:65536", "h:2947x",    "h:-1",   "[::1",
                              "[::1]x",  "h:99999999", "h: 2947"};
  for (const char* text : kBad) {
    EXPECT_THROW(parseGpsdEndpoint(text), std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace tarvo::cli
