#pragma once

#include "platform/zconfig.h"

#include <QString>

/// Reads the texts of a language file by their keys, which stand in its group "Language".
class LanguageReader
{
public:
    /// A file that cannot be read has no texts.
    explicit LanguageReader(const QString& file);

    /// The text of a key; `fallback` if the file does not give one.
    QString text(const char* key, const QString& fallback) const;

private:
    ZConfig config_;
};

/// A text of a structure of texts, and its key in the language files.
template<typename Texts>
struct KeyedText {
    QString Texts::* text;
    const char* key;
};

/// The texts of a structure as a language file gives them; what it does not give is as the
/// structure is made.
template<typename Texts, size_t Count>
Texts readTexts(const QString& file, const KeyedText<Texts> (&keys)[Count])
{
    const LanguageReader reader(file);
    Texts texts;
    for (const KeyedText<Texts>& each : keys)
        texts.*each.text = reader.text(each.key, texts.*each.text);
    return texts;
}
