#include "files/permissiontext.h"

namespace
{

constexpr char Letters[] = {'R', 'W', 'X'};
constexpr int RightsOfOne = 3;
constexpr int RightsOfAll = 3 * RightsOfOne;

} // namespace

QString permissionText(unsigned mode)
{
    QString text;
    for (int right = 0; right < RightsOfAll; ++right) {
        if (right > 0 && right % RightsOfOne == 0)
            text += QLatin1Char(' ');
        const bool granted = (mode >> (RightsOfAll - 1 - right) & 1U) != 0;
        text += QLatin1Char(granted ? Letters[right % RightsOfOne] : '-');
    }
    return text;
}
