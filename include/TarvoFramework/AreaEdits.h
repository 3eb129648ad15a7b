/// @file
/// Telling the monitor that its areas were edited in place.
///
/// The monitor finds the areas near the aircraft through an index of its list
/// (Tarvo::polygons()). It rebuilds the index by itself when the list is
/// replaced (setPolygons, getPolygons, initializes) and when the list object
/// grows, shrinks or moves its elements to new storage. It cannot see, at a
/// cost independent of the number of areas, an edit inside the list that
/// keeps its size. After any of these, and before the next fix:
///
///   - an element of the list replaced or the elements reordered;
///   - setPolygonPoints() on a record in the list;
///   - a vertex array in the list changed (vertices added, removed, moved);
///
/// call polygonsEdited(monitor). Until then the monitor evaluates the areas
/// as they were when it built the index, of which it keeps its own copy of
/// the vertices. Names and GUIDs are read when an area matches, so renaming
/// needs no notice. A host that cannot tell when it
/// edits turns on the full check instead, which costs time in proportion to
/// all the vertices on every evaluation.
///
/// Thread-safety: as the monitor: call on the thread that hands in fixes.
#ifndef TARVOFRAMEWORK_AREAEDITS_H_
#define TARVOFRAMEWORK_AREAEDITS_H_

#include "TarvoFramework/Tarvo.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// The next evaluation rebuilds the monitor's area index from its list, at
/// a cost in proportion to all the vertices. Cheap in itself; does nothing
/// on a monitor that has not evaluated yet (its first evaluation builds the
/// index anyway). Never fails.
/// @param monitor borrowed for the call.
TARVO_EXPORT void polygonsEdited(Tarvo& monitor);

/// With `on`, every evaluation compares the list, its records, their vertex
/// arrays and every vertex with the copy taken when the index was built, and
/// rebuilds on any difference: edits need no notice. Off by default; off
/// again restores the ordinary checks. Takes effect at the next evaluation.
/// Never fails.
/// @param monitor borrowed for the call; the setting stays with it.
/// @param on true: check in full on every evaluation.
TARVO_EXPORT void setFullAreaCheck(Tarvo& monitor, bool on);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_AREAEDITS_H_
