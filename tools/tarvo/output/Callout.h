// The spoken callout of `tarvo watch --voice`: an area's name read out the
// way a pilot says it, spoken by espeak-ng on a thread of its own.
#ifndef TARVO_TOOLS_TARVO_OUTPUT_CALLOUT_H_
#define TARVO_TOOLS_TARVO_OUTPUT_CALLOUT_H_

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace tarvo::cli {

// The words for an area's name. A leading four-letter airport code is not
// read. "RWY 12R/30L" reads "runway one two right, three zero left"
// (digits one by one, L/R/C as left/right/center); a name that contains
// "HOLD SHORT" reads "hold short runway ..." without the hold point's own
// label or number; other words after a runway designator follow it in
// lower case ("..., stopway"). A name without a runway designator is read
// in lower case as written, less the airport code. Pure; thread-safe.
std::string calloutText(const std::string& areaName);

// Renders text to a 16-bit mono WAV file through espeak-ng, synchronously.
// Returns "" on success, else the reason. Uses espeak-ng's process-wide
// state: not for a process that also has a SpokenCallout.
std::string renderCalloutWav(const std::string& text, const std::string& path);

// Speaks callouts one at a time on its own thread, so that speaking never
// delays the thread that hands in the fixes, and never over itself: a
// callout asked for while another is spoken waits, and a newer request
// replaces one still waiting (only the latest area matters).
//
// start() initialises espeak-ng for playback; the destructor lets the
// callout being spoken finish and stops the thread. say() may be called
// from any thread.
class SpokenCallout {
 public:
  SpokenCallout() = default;
  ~SpokenCallout();
  SpokenCallout(const SpokenCallout&) = delete;
  SpokenCallout& operator=(const SpokenCallout&) = delete;

  // "" when the voice is ready, else why it cannot speak (no voice data,
  // no audio output).
  std::string start();

  // Queues text; returns at once. Ignored before a successful start().
  void say(const std::string& text);

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::optional<std::string> waiting_;
  bool stopping_ = false;
  bool started_ = false;
  std::thread worker_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_CALLOUT_H_
