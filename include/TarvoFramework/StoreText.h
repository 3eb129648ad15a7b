/// @file
/// Which names and GUIDs the store can hold as the text they are.
#ifndef TARVOFRAMEWORK_STORETEXT_H_
#define TARVOFRAMEWORK_STORETEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "TarvoFramework/export.h"

namespace tarvo {

/// Why `text` cannot be stored as an area's name or GUID, or nullopt when it
/// can. Apply it to every name and GUID before addPolygons() and to every
/// GUID before removePolygon(); the tarvo tool refuses input with it.
///
/// The store writes names and GUIDs into its SQL between double quotes and
/// escapes nothing (DBManager.h), so an unchecked value can:
///  - contain a double quote: the statement no longer compiles (the area is
///    not stored, or a lookup finds nothing), or text made for the purpose
///    runs as SQL of its own;
///  - contain a NUL: the SQL ends there, the area row is not stored and its
///    vertices are written under polygon id -1, where no listing finds them;
///  - equal a column name of either table or a row-id alias (polygonid,
///    polygonname, polygonguid, latitude, longitude, rowid, oid, _rowid_; in
///    any ASCII letter case): SQLite reads a double-quoted word that names a
///    column as that column, so a lookup by such a GUID compares two columns
///    and matches every area (a replace or a remove then deletes another
///    area, or all of them);
///  - contain other control characters or bytes that are not UTF-8: stored,
///    but read back and shown differently from what was meant.
/// Each of these is refused here. Everything else (any other Unicode text,
/// blanks, empty text) is stored and read back unchanged; whether an empty
/// name or GUID makes sense is the host's decision.
///
/// The reason is one English sentence fragment, such as
/// "contains a double quote", for messages like "GUID 'x' contains ...".
/// Thread-safety: pure; safe from any thread. Never throws except
/// std::bad_alloc while building the reason; touches no store.
/// @param text the candidate, borrowed for the call; any bytes.
/// @return the reason, owned by the caller; nullopt when storable.
TARVO_EXPORT std::optional<std::string> storeTextProblem(std::string_view text);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_STORETEXT_H_
