#include "kit/QWDateUtilities.h"

#include <QTimeZone>

namespace QWDateUtilities {

int qw_hour(const QDateTime &date)
{
    if (!date.isValid())
        return 0;
    return date.toTimeZone(QTimeZone::systemTimeZone()).time().hour();
}

} // namespace QWDateUtilities
