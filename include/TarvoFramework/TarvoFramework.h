/// @file
/// Umbrella header: everything a host needs.
#ifndef TARVOFRAMEWORK_TARVOFRAMEWORK_H_
#define TARVOFRAMEWORK_TARVOFRAMEWORK_H_

#include "TarvoFramework/AreaEdits.h"
#include "TarvoFramework/Coordinate.h"
#include "TarvoFramework/DBManager.h"
#include "TarvoFramework/DMPoint.h"
#include "TarvoFramework/DMPolygon.h"
#include "TarvoFramework/Directories.h"
#include "TarvoFramework/Geometry.h"
#include "TarvoFramework/Log.h"
#include "TarvoFramework/MainQueue.h"
#include "TarvoFramework/SoundPlayer.h"
#include "TarvoFramework/StoreCheck.h"
#include "TarvoFramework/StoreSnapshot.h"
#include "TarvoFramework/StoreText.h"
#include "TarvoFramework/StoreWriteBatch.h"
#include "TarvoFramework/Tarvo.h"
#include "TarvoFramework/TarvoDelegate.h"
#include "TarvoFramework/version.h"

#endif  // TARVOFRAMEWORK_TARVOFRAMEWORK_H_
