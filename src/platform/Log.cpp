// The process-wide log sink.
#include "TarvoFramework/Log.h"

#include <cstdio>
#include <mutex>

namespace tarvo {
namespace {

std::mutex& sinkMutex() {
  static std::mutex* mutex = new std::mutex;  // never destroyed: logs at exit
  return *mutex;
}

LogSink& currentSink() {
  static LogSink* sink = new LogSink;
  return *sink;
}

}  // namespace

LogSink setLogSink(LogSink sink) {
  std::lock_guard<std::mutex> lock(sinkMutex());
  LogSink previous = std::move(currentSink());
  currentSink() = std::move(sink);
  return previous;
}

void logMessage(const std::string& message) {
  std::lock_guard<std::mutex> lock(sinkMutex());
  if (currentSink()) {
    currentSink()(message);
    return;
  }
  std::fprintf(stderr, "%s\n", message.c_str());
}

}  // namespace tarvo
