// The hand-over of fixes from a GPS reader thread to the thread that talks
// to the library (the host's own, not part of the library).
#ifndef TARVO_EXAMPLES_HOST_FIXQUEUE_H_
#define TARVO_EXAMPLES_HOST_FIXQUEUE_H_

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

// One position fix: degrees, km/h, degrees clockwise from true north.
struct Fix {
  double latitude, longitude, speedKmh, headingDeg;
};

// Carries fixes from the reader thread to the main thread.
class FixQueue {
 public:
  void push(const Fix& fix) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      fixes_.push_back(fix);
    }
    ready_.notify_one();
  }

  // No more fixes will come.
  void close() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      closed_ = true;
    }
    ready_.notify_one();
  }

  // Waits for the next fix; nothing once closed and emptied.
  std::optional<Fix> pop() {
    std::unique_lock<std::mutex> lock(mutex_);
    ready_.wait(lock, [this] { return closed_ || !fixes_.empty(); });
    if (fixes_.empty()) return std::nullopt;
    const Fix fix = fixes_.front();
    fixes_.pop_front();
    return fix;
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<Fix> fixes_;
  bool closed_ = false;
};

#endif  // TARVO_EXAMPLES_HOST_FIXQUEUE_H_
