#pragma once

#include <QString>

/// "RW- R-- R--": what owner, group and others may do, of the mode of an entry.
QString permissionText(unsigned mode);
