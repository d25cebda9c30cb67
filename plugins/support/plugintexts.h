#pragma once

#include <QString>

/// What the plugins say. "%1" and the like stand for names, numbers and reasons.
struct PluginTexts {
#define TEXT(name, key, english) QString name = QStringLiteral(english);
#include "plugins/support/plugintextlist.inc"
#undef TEXT
};

/// The texts in use, in English until others are loaded.
const PluginTexts& pluginTexts();

/// Takes the texts from the group "Language" of a language file; what that does not give is
/// English. To be called before another thread looks at them.
void loadPluginTexts(const QString& file);
