#pragma once

#include <QString>

/// What a symbolic link says, as it stands in it. Null if the path is no link.
QString linkText(const QString& path);
