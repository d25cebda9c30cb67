#pragma once

#include <QString>

/// Makes a socket that nobody listens at. Fails the test if it cannot be made.
void makeSocket(const QString& path);
