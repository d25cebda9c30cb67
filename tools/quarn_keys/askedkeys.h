#pragma once

#include <QList>
#include <QString>

/// The phone's keys that are asked for, in their order: the codes of PhoneKey and characters.
const QList<int>& askedKeys();

/// What a user calls the phone's key of such a code, in the language in use.
QString nameOfAsked(int code);
