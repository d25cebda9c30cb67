#pragma once

#include <QFileDevice>
#include <QString>

/// "RW- R-- R--": what owner, group and others may do.
QString permissionText(QFileDevice::Permissions permissions);
