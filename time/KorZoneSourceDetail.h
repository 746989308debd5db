#pragma once

#include "time/KorZoneDataDetail.h"

#include <memory>
#include <string>

using KorZonePointer = std::shared_ptr<const CKorZoneData>;

/// What became of looking for a zone.
enum EKorZoneSearch
{
    ZONE_FOUND,
    ZONE_ABSENT, ///< there is no file of that name, and it is no rule either
    ZONE_REFUSED ///< the name leads out of the directory, or the file is not one of a zone
};

/// The file that a name means, whether there is one or not.
/// @param strName   a path that begins with "/", or a name below the zone directory
/// @param rstrPath  receives its path
/// @return false for a name with "..", which may lead out of the directory
bool KorZonePath(const std::string& strName, std::string& rstrPath);

/// Loads a zone file, or when there is no file a rule.
/// @param strPath  where the file may be, from KorZonePath()
/// @param strRule  the text that may be a rule
/// @param rpZone   receives the zone; unchanged when there is none
EKorZoneSearch KorLoadZone(const std::string& strPath, const std::string& strRule,
                           KorZonePointer& rpZone);

/// The process's zone: what TZ names, or else /etc/localtime. Loads it anew when it has changed.
/// May be called from any thread while none changes the environment.
/// @param rpZone  receives the zone; null when there is none
EKorZoneSearch KorProcessZone(KorZonePointer& rpZone);
