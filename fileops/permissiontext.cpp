#include "fileops/permissiontext.h"

namespace
{

struct Right {
    QFileDevice::Permission permission;
    char letter;
};

// The owner's rights; what the toolkit calls the user's are those of whoever asks.
constexpr Right Rights[] = {
    {QFileDevice::ReadOwner, 'R'}, {QFileDevice::WriteOwner, 'W'}, {QFileDevice::ExeOwner, 'X'},
    {QFileDevice::ReadGroup, 'R'}, {QFileDevice::WriteGroup, 'W'}, {QFileDevice::ExeGroup, 'X'},
    {QFileDevice::ReadOther, 'R'}, {QFileDevice::WriteOther, 'W'}, {QFileDevice::ExeOther, 'X'},
};
constexpr int RightsOfOne = 3;

} // namespace

QString permissionText(QFileDevice::Permissions permissions)
{
    QString text;
    int count = 0;
    for (const Right& right : Rights) {
        if (count > 0 && count % RightsOfOne == 0)
            text += QLatin1Char(' ');
        text += QLatin1Char(permissions.testFlag(right.permission) ? right.letter : '-');
        ++count;
    }
    return text;
}
