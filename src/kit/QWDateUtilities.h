#pragma once

#include <QDateTime>

namespace QWDateUtilities {

// The hour, 0 to 23, of the date in the Gregorian calendar and the system time zone.
int qw_hour(const QDateTime &date);

} // namespace QWDateUtilities
