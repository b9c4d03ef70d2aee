#pragma once

#include "platform/PropertyList.h"

// File systems count seconds from 1970, dates from 2001.
inline constexpr double SnapshotReferenceDate = 978307200;

inline platform::Date dateOfSnapshotTime(double secondsSince1970)
{
    return {secondsSince1970 - SnapshotReferenceDate};
}

inline double snapshotTimeOfDate(platform::Date date)
{
    return date.secondsSinceReferenceDate + SnapshotReferenceDate;
}
