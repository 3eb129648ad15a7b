/// @file
/// The library's log.
///
/// Only the polygon store logs (its inserts and their errors, and failures to
/// create the database); the monitor logs nothing, and the sound player says
/// once when it falls back to silent output. Each message is one line of
/// fixed text, without a trailing newline.
#ifndef TARVOFRAMEWORK_LOG_H_
#define TARVOFRAMEWORK_LOG_H_

#include <functional>
#include <string>

#include "TarvoFramework/export.h"

namespace tarvo {

/// Receives one log message, without a trailing newline. The reference is
/// valid during the call only.
using LogSink = std::function<void(const std::string& message)>;

/// Replaces the process-wide sink; an empty function restores the default,
/// which writes the message and a newline to standard error. The sink is
/// called on whatever thread logs, while the library holds a lock, so it
/// must not log itself (that deadlocks) and must not throw (the exception
/// passes out of the store call that logged). Calls from several threads
/// are serialised by that lock. Thread-safe.
/// @param sink taken over and held until replaced.
/// @return the sink that was installed before (empty for the default).
TARVO_EXPORT LogSink setLogSink(LogSink sink);

/// Sends one message to the current sink, or to standard error, on the
/// calling thread. Thread-safe; never fails by itself.
/// @param message one line of text, passed on unchanged.
TARVO_EXPORT void logMessage(const std::string& message);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_LOG_H_
