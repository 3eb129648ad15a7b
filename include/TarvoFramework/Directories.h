/// @file
/// Where the library keeps its database and finds its resources.
///
/// All four functions are thread-safe (one mutex guards the two settings)
/// and never throw; the paths they take are copied, and the ones they
/// return are new strings owned by the caller. Neither directory is checked
/// for being readable or writable: the store and the sound player report
/// that when they use them.
#ifndef TARVOFRAMEWORK_DIRECTORIES_H_
#define TARVOFRAMEWORK_DIRECTORIES_H_

#include <string>

#include "TarvoFramework/export.h"

namespace tarvo {

/// The documents directory, which holds the database "Polygon.db". In order
/// of precedence: the directory set with setDocumentsDirectory(); the
/// environment variable TARVO_DOCUMENTS_DIR; $XDG_DATA_HOME/TarvoFramework;
/// ~/.local/share/TarvoFramework. The directory is created (with its parents)
/// when missing; if that fails the path is still returned and opening the
/// database then fails and is logged. Never empty. The environment is read
/// on every call, so a variable changed later changes the answer, but the
/// store keeps the path it took on its first use. With HOME unset as well,
/// the default is relative to the working directory.
TARVO_EXPORT std::string documentsDirectory();

/// Fixes the documents directory. The store reads it once, on its first use,
/// so call this before anything touches the store. An empty path restores
/// the default lookup.
/// @param path absolute or relative to the working directory at the time of
///        the lookup; not created or checked here.
TARVO_EXPORT void setDocumentsDirectory(const std::string& path);

/// The directory that holds the library's resources ("localcaution.mp3"). In
/// order of precedence: the directory set with setResourceDirectory(); the
/// environment variable TARVO_RESOURCE_DIR; the share/TarvoFramework directory
/// beside the shared library's own lib directory, found from the library's
/// location at run time (so it works in the build tree and after install).
/// Neither created nor checked: a directory without the sound file leaves
/// the monitor silent (Tarvo::initializes()). Never empty.
TARVO_EXPORT std::string resourceDirectory();

/// Fixes the resource directory, for hosts that relocate the resources. An
/// empty path restores the default lookup. Read by the next
/// Tarvo::initializes(); a player made before keeps its sound.
/// @param path the directory holding "localcaution.mp3"; not checked.
TARVO_EXPORT void setResourceDirectory(const std::string& path);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_DIRECTORIES_H_
